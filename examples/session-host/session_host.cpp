// Draws a key of 32 bytes and prints it in hexadecimal, and then the numbers from 1 to 6 in random order. The bytes come
// from the default generator, or from the one that is named: session_host [KIND [DEVICE]]

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include <rngaggregator/session.h>

namespace {

rng::Generator FindGenerator(const rng::Session& session, int count, char** arguments) {
  if (count < 2) return session.Default();
  return session.Find(arguments[1], count > 2 ? arguments[2] : "");
}

void Print(const rng::Generator& generator) {
  for (const std::uint8_t byte : generator.Bytes<32>()) std::printf("%02x", byte);
  std::array<int, 6> order = {1, 2, 3, 4, 5, 6};
  std::shuffle(order.begin(), order.end(), rng::Engine(generator));
  std::printf("\nfrom %s, in the order", generator.Name().c_str());
  for (const int number : order) std::printf(" %d", number);
  std::puts("");
}

}  // namespace

int main(int count, char** arguments) try {
  const rng::Session session;
  Print(FindGenerator(session, count, arguments));
} catch (const rng::Error& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
