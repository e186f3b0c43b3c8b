#ifndef HELPERS_GATHERING_GATHERING_H
#define HELPERS_GATHERING_GATHERING_H

#include "helpers/gathering/hmac.h"
#include "helpers/gathering/hmac_drbg.h"
#include "helpers/gathering/key_credit.h"
#include "helpers/gathering/motion_credit.h"

#include <array>
#include <openssl/crypto.h>

#include <rngaggregator/health.h>

/// 64 bytes of the system's generator. They are never credited. With them the result is no worse than what
/// the system gives if the user is a machine, and no worse than the user if the system's generator is broken.
struct SystemBytes : std::array<unsigned char, 64> {
  ~SystemBytes() { OPENSSL_cleanse(data(), size()); }
};

/// Collects what a user does until there is enough entropy for one draw, with 256 bits of strength. It has no input or
/// output of its own.
class Gathering {
 public:
  /// 256 bits of strength, and 64 more for the loss in conditioning.
  static constexpr int kNeededBits = 320;

  /// `isRemote`: see `KeyCredit`.
  Gathering(const SystemBytes& system, bool isRemote);
  Gathering(const Gathering&) = delete;
  Gathering& operator=(const Gathering&) = delete;

  /// Every event goes into the result, whether it is credited or not.
  void Add(const KeyPress& press);
  void Add(const Motion& motion);

  /// The bits credited so far, at most `kNeededBits`.
  int Bits() const { return bits; }

  /// The same as a percentage of what is needed, rounded down: 100 only when it is complete.
  int Percent() const { return bits * 100 / kNeededBits; }
  bool IsComplete() const { return bits == kNeededBits; }

  /// True once the credited events are too much alike to be a person's. The draw must then fail.
  bool HasAlarm() const { return !isHealthy; }

  /// Returns the generator of this draw. Call it once. Throws a `std::logic_error` if there is not enough entropy, or
  /// after an alarm.
  HmacDrbg Finish();

 private:
  void Record(unsigned char type, std::chrono::nanoseconds time, std::uint32_t first,
              std::uint32_t second, std::uint32_t third);
  void Credit(int count, unsigned char sample, RngHealthTest& test);

  Hmac<Sha512> conditioning;
  KeyCredit keyCredit;
  MotionCredit motionCredit;
  RngHealthTest keyTest;
  RngHealthTest motionTest;
  int bits = 0;
  bool isHealthy = true;
};

#endif
