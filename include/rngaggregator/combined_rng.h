#ifndef RNGAGGREGATOR_COMBINED_RNG_H
#define RNGAGGREGATOR_COMBINED_RNG_H

/// \file
/// A generator that combines several others, for hosts that trust no single one. C++11; link
/// `librngcombine.so.1` beside the aggregator.
///
///     rng::CombinedRng combined(rng::FindSources("unixdev,biokbd,Rutoken:3a2f01"));
///     if (!combined.Generate(key, sizeof key)) ...   // one of them was missing or failed
///
/// What it guarantees. The bytes are unpredictable as long as one source is good: nobody can predict its bytes, and the
/// other sources cannot see them. A source that knows or copies the bytes of the others can neither cancel them nor
/// choose the result, as it could if they were combined by XOR.
///
/// What it does not guarantee. All plug-ins are in this process, so a malicious one could read the memory of the
/// others, and the result. The combination protects against bad generators and devices, not against bad code.
///
/// How. For each draw, every source gives 64 fresh bytes, which are checked as `CheckedRng` does. Then HMAC_DRBG
/// with SHA-256 (NIST SP 800-90A, section 10.1.2) is instantiated once, generates the result, and is wiped:
///
///     entropy input          for each source in the given order:
///                              the number of bytes of its kind, as 8 bytes, most significant first; its kind;
///                              the number of bytes of its device, likewise; its device, possibly empty;
///                              the number of bytes that it gave, likewise; these bytes
///     nonce                  empty: each source's 512 bits are more than the input and the nonce need together
///     personalization string "rngaggregator combined draw 1"
///     requests               one for each 65,536 bytes of the result, the last one possibly smaller
///
/// Of libcrypto only the hash function is used, and no configuration of OpenSSL is read.
///
/// So the result depends on kinds, devices and order as well as on the bytes, and no two lists of sources have the same
/// input. A draw of any size has at most 256 bits of strength. Draw again for each independent key.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <rngaggregator/aggregator.h>
#include <rngaggregator/health.h>
#include <rngaggregator/provider.h>

namespace rng {

/// One source of a combined draw.
struct CombinedSource {
  /// Copies both texts.
  explicit CombinedSource(std::string kindOfRng, std::string hardwareId = "",
                          IRngProvider* rng = nullptr)
      : kind(std::move(kindOfRng)), device(std::move(hardwareId)), provider(rng) {}

  std::string kind;        ///< the name by which `GetRng` finds it, 1 to 17 bytes
  std::string device;      ///< selected before each draw, at most 17 bytes; "": the one in use
  IRngProvider* provider;  ///< borrowed; if it is null, the source is missing and its draws fail
};

/// How a draw used a source.
enum class SourceResult {
  kUsed,           ///< its bytes are part of the result
  kMissing,        ///< it has no provider
  kOtherName,      ///< the provider does not report the kind as its name
  kDeviceRefused,  ///< it did not accept the device
  kFailed,         ///< its draw failed or was cancelled
  kAlarm,          ///< its bytes are not random, now or in an earlier draw
  kThrew,          ///< it threw an exception
  kNotAsked        ///< the draw ended before its turn
};

/// How a draw used one of the sources.
struct SourceOutcome {
  std::string kind;      ///< as it was given
  std::string device;    ///< as it was given
  SourceResult result;   ///< whether it was used, and if not, why
  RngHealthAlarm alarm;  ///< with `kAlarm`: which check raised it
  std::string message;   ///< with `kThrew`: the exception's text, which comes from the plug-in
};

struct CombinedState;

#pragma GCC visibility push(default)

/// Reads a list such as "unixdev,biokbd,Rutoken:3a2f01": kinds, separated by commas, each possibly with a colon and
/// the identifier of its device. An identifier may contain colons, but no comma. The providers are null.
///
/// Threads: any. Failure: throws `std::invalid_argument` with a sentence for people if an item, kind or device is
/// empty, an item begins or ends with a blank, a kind or device is longer than 17 bytes or contains control characters,
/// or a kind appears twice.
std::vector<CombinedSource> ParseSources(const std::string& text);

/// Returns a sentence that says why a source was not used, such as: The generator "dsdr" is not usable now. Returns ""
/// if it was used. The sentence contains the kind and the message unchanged, so escape it before you print it.
///
/// Threads: any.
std::string Explain(const SourceOutcome& outcome);

/// The combination, itself a provider: its operations keep the contract of `IRngProvider`.
///
/// Ownership: borrows the providers, which must stay loaded as long as this object is used. `SetSettings` and
///            `Release` do nothing: only the aggregator calls them.
/// Threads:   any, without locks; draws may be concurrent, and a child process may draw after a fork.
/// Failure:   the constructors throw. Operations do not: if a source throws, or memory runs out, the draw fails. Only
///            the forced unwinding of a cancelled thread passes through.
class CombinedRng final : public IRngProvider {
 public:
  /// Combines all of these sources: a draw fails unless each of them gives its bytes.
  ///
  /// Calls no source yet. Throws `std::invalid_argument` with a sentence if there are no sources, if `ParseSources`
  /// would refuse a kind or device, and if two have the same kind or the same provider, because a provider has only
  /// one selected device.
  explicit CombinedRng(const std::vector<CombinedSource>& sources);

  /// Combines at least `need` of the sources: one that cannot be used is left out, as long as `need` others can be. The
  /// result may then be only as strong as the weakest `need` sources. Also throws `std::invalid_argument` if `need` is
  /// 0 or larger than the number of sources.
  CombinedRng(const std::vector<CombinedSource>& sources, std::size_t need);

  CombinedRng(const CombinedRng&) = delete;
  CombinedRng& operator=(const CombinedRng&) = delete;
  ~CombinedRng();

  /// Draws, and stores in `outcomes` how each source was used, in their order. If it returns false although enough
  /// sources were used, memory ran out. A draw of 0 bytes asks no source.
  bool Generate(void* buffer, std::size_t size, std::vector<SourceOutcome>& outcomes);

  /// Forgets alarms. Until then a source that raised one is not asked again.
  void Reset();

  bool Generate(void* buffer, std::size_t size) override;
  std::int32_t GetName(char* buffer) override;         ///< "combined"
  std::int32_t GetDescription(char* buffer) override;  ///< lists the kinds and devices
  std::int32_t GetHardwareId(char* buffer) override;   ///< none
  bool SelectDevice(const char* hardwareId) override;  ///< false, except for null and ""
  bool IsAvailable() override;                         ///< whether enough sources are available
  bool SelfTest() override;  ///< tests all sources; true if enough of them pass
  /// Cancels all sources. A waiting draw ends, even if enough other sources could be used.
  void Cancel() override;
  /// NeedsUser and MayBlock if one source has the bit; the others if all of them have it.
  std::uint32_t GetFlags() override;
  void SetSettings(IRngSettings* settings) override;
  void Release() override;

 private:
  const std::unique_ptr<CombinedState> state;
};

#pragma GCC visibility pop

/// Reads a list as `ParseSources` does, and asks the aggregator, which must be started, for the providers.
inline std::vector<CombinedSource> FindSources(const std::string& text) {
  std::vector<CombinedSource> sources = ParseSources(text);
  for (CombinedSource& source : sources) source.provider = GetRng(source.kind.c_str());
  return sources;
}

}  // namespace rng

#endif
