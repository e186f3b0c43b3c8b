// Draws for OpenSSL's provider "rngaggregator", in a process of its own. Plug-ins and the libraries that they load can
// use OpenSSL here: this process ignores OpenSSL's configuration, so their calls do not come back to the provider.

#include "openssl/helper/chosen_generator.h"
#include "openssl/helper/host_connection.h"

#include <cstdlib>
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
  // For other copies of OpenSSL, and for programs that a plug-in starts.
  ::setenv("OPENSSL_CONF", "/dev/null", 1);
  // The kinds that need a display ask the user. An X server that does not answer would make every draw fail.
  ::unsetenv("DISPLAY");
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
}

// Answers one request. Returns false if the connection must be closed.
bool Answer(const HostConnection& host, const ProviderRequest& request, ChosenGenerator& generator,
            Reply& reply) {
  try {
    if (!generator.draw) generator = ChooseGenerator(request.choice);
    generator.draw(reply.bytes, request.size);
  } catch (const rng::Error& error) {
    const bool isAlarm = error.code() == rng::ErrorCode::kAlarm;
    host.Answer(request, isAlarm ? DrawAnswer::kRefused : DrawAnswer::kFailed, error.what(), reply);
    return false;
  } catch (const std::exception& error) {
    host.Answer(request, DrawAnswer::kFailed, error.what(), reply);
    return false;
  }
  host.Answer(request, DrawAnswer::kDrawn, generator.name, reply);
  return true;
}

void Serve() {
  const HostConnection host;
  ChosenGenerator generator;
  Reply reply = {};
  while (const auto request = host.Receive()) {
    if (!Answer(host, *request, generator, reply)) return;
  }
}

}  // namespace

int main() {
  SeparateFromHost();
  try {
    Serve();
  } catch (const std::exception& error) {
    std::cerr << "rng-openssl-draw: " << error.what() << '\n';
    return 1;
  }
}
