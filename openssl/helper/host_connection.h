#ifndef OPENSSL_HELPER_HOST_CONNECTION_H
#define OPENSSL_HELPER_HOST_CONNECTION_H

#include "openssl/request.h"

#include <optional>
#include <string>

/// Sent in one piece, so that the host wakes up only once.
struct Reply {
  DrawAnswer answer;
  unsigned char bytes[kLargestDraw];
};

/// The connection to the process that started this one, over descriptor 3. When that process terminates or closes its
/// socket, this process exits within two seconds, whatever a plug-in is doing. At most one object exists.
class HostConnection {
 public:
  /// Throws a `std::runtime_error` if this process was not started by the provider.
  HostConnection();
  HostConnection(const HostConnection&) = delete;
  HostConnection& operator=(const HostConnection&) = delete;
  ~HostConnection();

  /// Waits for the next request. Returns nothing if the host has closed the connection or sent an invalid request.
  std::optional<ProviderRequest> Receive() const;

  /// Sends the bytes of `reply`, with the generator in `text`. If `result` is a failure, sends zeros, with the reason
  /// in `text`. Wipes the bytes of `reply` in either case.
  void Answer(const ProviderRequest& request, DrawAnswer::Result result, const std::string& text,
              Reply& reply) const;
};

#endif
