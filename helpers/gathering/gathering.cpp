#include "helpers/gathering/gathering.h"

#include <algorithm>
#include <cmath>
#include <openssl/crypto.h>
#include <stdexcept>

namespace {

constexpr char kNonce[] = "rngaggregator gathering 1";

// A draw has about 200 samples, so the window is smaller than usual. Each sample is assumed to have one bit.
RngHealthCutoffs Cutoffs() { return GetRngHealthCutoffs(1, std::ldexp(1.0, -30), 64); }

unsigned char* Write(unsigned char* place, std::uint64_t value, int bytes) {
  for (; bytes > 0; --bytes, value >>= 8) *place++ = static_cast<unsigned char>(value);
  return place;
}

}  // namespace

Gathering::Gathering(const SystemBytes& system, bool isRemote)
    : conditioning(system.data(), system.size()),
      keyCredit(isRemote),
      keyTest(Cutoffs()),
      motionTest(Cutoffs()) {}

void Gathering::Add(const KeyPress& press) {
  Record('k', press.time, press.key, press.isAlone, 0);
  Credit(keyCredit.Take(press), static_cast<unsigned char>(press.key), keyTest);
}

void Gathering::Add(const Motion& motion) {
  Record('m', motion.time, static_cast<std::uint32_t>(motion.x),
         static_cast<std::uint32_t>(motion.y), motion.buttons);
  // The low bits of both axes: those in which a person's motions differ.
  if (const auto bend = motionCredit.Take(motion)) {
    Credit(1, static_cast<unsigned char>((bend->x & 0xF) << 4 | (bend->y & 0xF)), motionTest);
  }
}

// All records have the same length, so different sequences of events never give the same bytes.
void Gathering::Record(unsigned char type, std::chrono::nanoseconds time, std::uint32_t first,
                       std::uint32_t second, std::uint32_t third) {
  unsigned char record[1 + 8 + 3 * 4];
  unsigned char* place = Write(record, type, 1);
  place = Write(place, static_cast<std::uint64_t>(time.count()), 8);
  place = Write(place, first, 4);
  place = Write(place, second, 4);
  Write(place, third, 4);
  conditioning.Add(record, sizeof record);
  OPENSSL_cleanse(record, sizeof record);
}

void Gathering::Credit(int count, unsigned char sample, RngHealthTest& test) {
  if (count == 0) return;
  isHealthy = test.Feed(&sample, 1) && isHealthy;
  bits = std::min(bits + count, kNeededBits);
}

HmacDrbg Gathering::Finish() {
  if (!IsComplete() || HasAlarm()) throw std::logic_error("there is no entropy for a draw");
  struct Seed {
    unsigned char bytes[Sha512::kSize] = {};
    ~Seed() { OPENSSL_cleanse(bytes, sizeof bytes); }
  } seed;
  conditioning.Finish(seed.bytes);
  return HmacDrbg({reinterpret_cast<const char*>(seed.bytes), sizeof seed.bytes}, kNonce);
}
