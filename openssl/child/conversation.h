#ifndef OPENSSL_CHILD_CONVERSATION_H
#define OPENSSL_CHILD_CONVERSATION_H

#include "openssl/request.h"

#include <optional>
#include <string>

/// What is sent in one piece, so that the host wakes up once.
struct Reply {
  DrawAnswer answer;
  unsigned char bytes[kLargestDraw];
};

/// The conversation with the program that has started this one, over descriptor 3. When that program ends or closes its
/// socket, this process ends within two seconds, whatever a plug-in is doing. At most one object exists.
class Conversation {
 public:
  /// Throws a `std::runtime_error` if nobody has started a conversation.
  Conversation();
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation();

  /// Waits for the next request. Nothing if the conversation has ended.
  std::optional<ProviderRequest> Receive() const;

  /// `text` is the generator if the bytes of `reply` are drawn, otherwise why they are not. Wipes the bytes, also before
  /// it reports a failure.
  void Answer(const ProviderRequest& request, DrawAnswer::Result result, const std::string& text,
              Reply& reply) const;
};

#endif
