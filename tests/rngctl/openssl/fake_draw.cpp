// Stands in for the helper of OpenSSL's provider. The variable FAKE_DRAW says what it does.

#include "openssl/request.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kSocket = 3;

void Answer(const ProviderRequest& request, DrawAnswer::Result result, const char* text) {
  DrawAnswer answer = {request.number, result, {}};
  std::strncpy(answer.text.text, text, sizeof answer.text.text - 1);
  ::send(kSocket, &answer, sizeof answer, MSG_NOSIGNAL);
  const std::string bytes(request.size, result == DrawAnswer::kDrawn ? 'R' : '\0');
  ::send(kSocket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

}  // namespace

int main() {
  const char* const given = std::getenv("FAKE_DRAW");
  const std::string word = given ? given : "";
  ProviderRequest request;
  while (::recv(kSocket, &request, sizeof request, MSG_WAITALL) == sizeof request) {
    if (word == "hang") ::sleep(60);
    if (word == "end") return 1;
    if (word == "no-token") {
      Answer(request, DrawAnswer::kFailed, "There is no token. Run \"rngctl doctor\".");
    } else if (word == "fail_without_advice") {
      Answer(request, DrawAnswer::kFailed, "The token is gone.");
    } else if (word == "fail" || (word == "fail_second" && request.number == 2)) {
      Answer(request, DrawAnswer::kFailed, "The token is gone. Fix: insert it.");
    } else {
      Answer(request, DrawAnswer::kDrawn, "Rutoken 3A7F");
    }
  }
}
