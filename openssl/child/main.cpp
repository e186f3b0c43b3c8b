// Draws for OpenSSL's provider "rngaggregator", in a process of its own. The plug-ins, and the libraries that they
// load, can use OpenSSL here, because this process uses no configuration of OpenSSL, and so not the provider either.

#include "openssl/child/chosen_generator.h"
#include "openssl/child/conversation.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <openssl/crypto.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <rngaggregator/session.h>

namespace {

// Signals that the terminal sends to the host's process group are meant for the host.
void SeparateFromHost() {
  ::setsid();
  ::prctl(PR_SET_DUMPABLE, 0);
  ::setenv("OPENSSL_CONF", "/dev/null",
           1);  // for other copies of the library, and for other programs
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
}

class Buffer {
 public:
  Buffer() = default;
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  ~Buffer() { ::explicit_bzero(bytes.data(), bytes.size()); }
  unsigned char* data() { return bytes.data(); }

 private:
  std::array<unsigned char, kLargestDraw> bytes = {};
};

// Answers one request. Returns whether the conversation goes on.
bool Answer(const Conversation& host, const DrawRequest& request, ChosenGenerator& generator) {
  Buffer buffer;
  try {
    if (!generator.draw) generator = ChooseGenerator(request.choice);
    generator.draw(buffer.data(), request.size);
  } catch (const rng::Error& error) {
    const bool isAlarm = error.code() == rng::ErrorCode::kAlarm;
    host.AnswerFailure(request, isAlarm ? DrawAnswer::kRefused : DrawAnswer::kFailed, error.what());
    return isAlarm;
  } catch (const std::exception& error) {
    host.AnswerFailure(request, DrawAnswer::kFailed, error.what());
    return false;
  }
  host.AnswerBytes(request, generator.name, buffer.data());
  return true;
}

void Converse() {
  const Conversation host;
  ChosenGenerator generator;
  while (const auto request = host.Receive()) {
    if (!Answer(host, *request, generator)) return;
  }
}

}  // namespace

int main() {
  SeparateFromHost();
  try {
    Converse();
  } catch (const std::exception& error) {
    std::cerr << "rng-openssl-draw: " << error.what() << '\n';
    return 1;
  }
}
