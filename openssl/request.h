#ifndef OPENSSL_REQUEST_H
#define OPENSSL_REQUEST_H

#include <cstddef>
#include <cstdint>

/// The protocol between the OpenSSL provider, which runs in other people's programs, and its helper process, which
/// makes the draws. The provider sends one request at a time. The helper sends back a `DrawAnswer`, followed by as many
/// bytes as were requested, which are zeros if the draw failed. Either side ends the connection by closing its socket.

constexpr std::uint32_t kLargestDraw = 16384;  ///< bytes

/// NUL-terminated UTF-8.
struct DrawText {
  char text[512];
};

/// The parameters in the provider's section of OpenSSL's configuration. All are empty for the user's default.
struct ProviderParameters {
  DrawText kind;
  DrawText hardwareId;
  DrawText from;  ///< the sources of a combined draw
};

struct ProviderRequest {
  std::uint32_t number;       ///< the answer repeats it
  std::uint32_t size;         ///< bytes, 1 to `kLargestDraw`
  ProviderParameters choice;  ///< the same in all requests of a connection
};

struct DrawAnswer {
  enum Result : std::uint32_t {
    kFailed = 0,  ///< the helper closes the connection
    kDrawn = 1,
    kRefused =
        2  ///< after an alarm: the helper closes the connection; the host must not start another
  };

  std::uint32_t number;
  Result result;
  DrawText text;  ///< the generator, such as "Rutoken 3A7F", or why the draw failed
};

#endif
