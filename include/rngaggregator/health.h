#ifndef RNGAGGREGATOR_HEALTH_H
#define RNGAGGREGATOR_HEALTH_H

/// \file
/// Continuous health tests of a source of random bytes, for plug-ins and hosts.
///
/// They find defects that are visible in the bytes themselves: a device that is stuck, a buffer that was not
/// filled, values that occur too often. They cannot show whether bytes are predictable: an encrypted counter
/// passes every such test.
///
///     RngHealthTest test(GetRngHealthCutoffs(1.0, std::ldexp(1.0, -30)));  // claims 1 bit per byte
///     if (!test.Feed(noise, size)) return false;                            // until test.Reset()

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

/// When the tests raise an alarm.
struct RngHealthCutoffs {
  std::uint32_t repetitions;  ///< this many equal bytes in a row
  std::uint32_t proportion;   ///< this many bytes in a window that equal its first, itself included
  std::uint32_t window;       ///< the bytes in such a window: a multiple of 16, at most 4,080
  bool comparesBlocks;        ///< whether 16 bytes that equal the 16 before them do, at any offset
};

/// Computes the cutoffs of the repetition count test and the adaptive proportion test, as NIST SP 800-90B
/// defines them in section 4.4. A sample is a byte.
///
/// `minEntropy` is what the source claims, in bits per byte: more than 0, at most 8. `falseAlarm` is the
/// probability of an alarm at one sample (for the proportion: in one window) if the claim is true, for example
/// 2^-30: more than 0, less than 1. `samples` is the size of the window. `comparesBlocks` is false in the
/// result; set it if the claim is near 8.
///
/// Threads: any. Failure: none.
inline RngHealthCutoffs GetRngHealthCutoffs(double minEntropy, double falseAlarm,
                                            std::uint32_t samples = 512) {
  const double probability = std::exp2(-minEntropy);  // of the most likely byte
  const double repetitions = 1 + std::ceil(-std::log2(falseAlarm) / minEntropy);
  // The exact binomial sum, from its far end. In logarithms, because the first terms are very small.
  const double window = samples;
  const double odds = std::log1p(-probability) - std::log(probability);
  double term = window * std::log(probability);
  double tail = 0;  // the probability of more than `count`
  std::uint32_t count = samples;
  while (count > 0 && tail + std::exp(term) <= falseAlarm) {
    tail += std::exp(term);
    term += std::log(count / (window - count + 1)) + odds;
    --count;
  }
  return {static_cast<std::uint32_t>(repetitions), count + 1, samples, false};
}

/// What raised an alarm.
enum class RngHealthAlarm { kNone, kRepetition, kProportion, kBlock };

/// The tests, over a stream of bytes that may come in pieces of any size. An alarm lasts until `Reset`.
///
/// Copies are independent. Each keeps the last 16 bytes of the stream to compare them with the next ones, and
/// wipes them when it is reset or destroyed. Threads: one at a time.
class RngHealthTest {
 public:
  /// A stream without bytes, and without an alarm.
  explicit RngHealthTest(const RngHealthCutoffs& when) : cutoffs(when) {}
  RngHealthTest(const RngHealthTest&) = default;             ///< with the stream so far
  RngHealthTest& operator=(const RngHealthTest&) = default;  ///< likewise
  ~RngHealthTest() {
    ::explicit_bzero(block, sizeof block);
    ::explicit_bzero(&last, sizeof last);
    ::explicit_bzero(&first, sizeof first);
  }

  /// Takes the next `size` bytes of the stream. Returns false from the first alarm on.
  bool Feed(const void* bytes, std::size_t size) {
    const unsigned char* next = static_cast<const unsigned char*>(bytes);
    const unsigned char* const end = next + size;
    while (next != end && alarm == RngHealthAlarm::kNone) {
      if (position == 0 && end - next >= Window() && LooksHarmless(next)) {
        SkipWindow(next);
        next += Window();
      } else {
        Take(*next++);
      }
    }
    return alarm == RngHealthAlarm::kNone;
  }

  /// What raised the alarm, if there was one.
  RngHealthAlarm Alarm() const { return alarm; }

  /// Forgets the stream and its alarm.
  void Reset() { *this = RngHealthTest(cutoffs); }

 private:
  static constexpr std::uint32_t kBlock = 16;

  std::ptrdiff_t Window() const { return static_cast<std::ptrdiff_t>(cutoffs.window); }

  // The tests as they are defined, one byte at a time.
  void Take(unsigned char byte) {
    run = run != 0 && byte == last ? run + 1 : 1;
    last = byte;
    if (run >= cutoffs.repetitions) alarm = RngHealthAlarm::kRepetition;

    if (position == 0) {
      first = byte;
      count = 0;
    }
    count += byte == first ? 1 : 0;
    if (count >= cutoffs.proportion) alarm = RngHealthAlarm::kProportion;

    unsigned char& before = block[position % kBlock];
    equal = hasBlock && byte == before ? equal + 1 : 0;
    before = byte;
    if (cutoffs.comparesBlocks && equal >= kBlock) alarm = RngHealthAlarm::kBlock;

    ++position;
    hasBlock = hasBlock || position == kBlock;
    if (position == cutoffs.window) position = 0;
  }

  // Whether a whole window certainly raises no alarm. Testing its bytes one by one takes longer than the
  // system needs to draw them. False for about one window of good bytes in 100,000.
  bool LooksHarmless(const unsigned char* window) const {
    // An aligned word of four equal bytes is suspicious: any seven equal bytes in a row contain one. Without
    // such a word, a run that began before the window can grow by three bytes at most.
    if (cutoffs.repetitions < 7 || (*window == last && run + 3 >= cutoffs.repetitions))
      return false;
    // The same goes for an aligned word that equals the one 16 bytes before it. `SkipWindow` looks for that one
    // in the window, because the caller's bytes before the window may be gone.
    if (!hasBlock || equal + 3 >= kBlock || cutoffs.window == kBlock) return false;
    const __m128i firsts = _mm_set1_epi8(static_cast<char>(*window));
    __m128i before = Load(block);
    __m128i counts = _mm_setzero_si128();
    __m128i suspicions = _mm_setzero_si128();
    for (std::ptrdiff_t i = 0; i < Window(); i += kBlock) {
      const __m128i now = Load(window + i);
      counts = _mm_sub_epi8(counts, _mm_cmpeq_epi8(now, firsts));
      const __m128i rotated = _mm_or_si128(_mm_slli_epi32(now, 8), _mm_srli_epi32(now, 24));
      suspicions = _mm_or_si128(suspicions, _mm_cmpeq_epi32(now, rotated));
      suspicions = _mm_or_si128(suspicions, _mm_cmpeq_epi32(now, before));
      before = now;
    }
    return _mm_movemask_epi8(suspicions) == 0 && Sum(counts) < cutoffs.proportion;
  }

  // The state after a harmless window. Neither count reaches back to the beginning of the window.
  void SkipWindow(const unsigned char* window) {
    const unsigned char* const end = window + Window();
    last = end[-1];
    run = 1;
    while (end[-1 - static_cast<std::ptrdiff_t>(run)] == last) ++run;
    equal = 0;
    const unsigned char* place = end - 1;
    for (; *place == place[-static_cast<std::ptrdiff_t>(kBlock)]; --place) ++equal;
    std::memcpy(block, end - kBlock, kBlock);
  }

  static __m128i Load(const unsigned char* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  }

  static std::uint32_t Sum(__m128i bytes) {
    const __m128i halves = _mm_sad_epu8(bytes, _mm_setzero_si128());
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(halves) +
                                      _mm_cvtsi128_si32(_mm_srli_si128(halves, 8)));
  }

  RngHealthCutoffs cutoffs;
  RngHealthAlarm alarm = RngHealthAlarm::kNone;
  std::uint32_t position = 0;  // in the window
  std::uint32_t run = 0;       // how many of the last bytes are equal
  std::uint32_t count = 0;     // bytes of the window that equal its first
  std::uint32_t equal = 0;     // how many of the last bytes equal those 16 before them
  unsigned char last = 0;
  unsigned char first = 0;
  bool hasBlock = false;
  unsigned char block[kBlock] = {};  // the last 16 bytes; the next one goes to position % 16
};

#endif
