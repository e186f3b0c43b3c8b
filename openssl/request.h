#ifndef OPENSSL_REQUEST_H
#define OPENSSL_REQUEST_H

#include <cstddef>
#include <cstdint>

/// The conversation of the OpenSSL provider, which runs in other people's programs, with the program that draws
/// for it. The provider sends one request at a time. The answer to it is a `DrawAnswer`, followed by as many bytes as the
/// request asks for, which are zeros unless they are drawn. Either side ends the conversation by closing its socket.

constexpr std::uint32_t kLargestDraw = 16384;  ///< bytes

/// NUL-terminated UTF-8.
struct DrawText {
  char text[512];
};

/// The parameters of the provider's section in OpenSSL's configuration. All are empty for the user's default.
struct ProviderParameters {
  DrawText kind;
  DrawText hardwareId;
  DrawText from;  ///< the sources of a combined draw
};

struct ProviderRequest {
  std::uint32_t number;       ///< the answer repeats it
  std::uint32_t size;         ///< bytes, 1 to `kLargestDraw`
  ProviderParameters choice;  ///< the same in all requests of a conversation
};

struct DrawAnswer {
  enum Result : std::uint32_t {
    kFailed = 0,  ///< the conversation ends
    kDrawn = 1,
    kRefused = 2  ///< after an alarm, every later draw of the conversation is refused, too
  };

  std::uint32_t number;
  Result result;
  DrawText text;  ///< the generator, such as "Rutoken 3A7F", or why there are no bytes
};

#endif
