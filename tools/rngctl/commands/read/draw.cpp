#include "tools/rngctl/commands/read/draw.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>

#include <rngaggregator/aggregator.h>

namespace {

using Clock = std::chrono::steady_clock;

// The first piece is small, so that a slow source shows progress. It is large enough for any key, so
// that a user is asked only once.
constexpr std::size_t kFirstPiece = 3UL * 256;
constexpr auto kQuick = std::chrono::milliseconds(100);

IRngProvider& FindRng(const std::string& name) {
  if (IRngProvider* const rng = GetRng(name.c_str())) return *rng;
  throw Refusal(kNegativeAnswer, "There is no usable generator " + Quoted(name) +
                                     "; \"rngctl list\" lists the usable ones.");
}

bool FindDefault(DefaultRngInfo& info) {
  const DirectoryLock lock = LockForReading();
  return GetDefaultRng(&info, 0) == 1;
}

IRngProvider& FindDefaultRng() {
  DefaultRngInfo info;
  if (!FindDefault(info)) {
    throw Refusal(
        kNegativeAnswer,
        "No usable default generator is configured. Name a generator, or store a default with "
        "\"rngctl default set\".");
  }
  IRngProvider* const rng = GetRng(info.type);
  if (!rng) {
    throw Refusal(kNegativeAnswer,
                  "The configured default generator " + Quoted(info.type) + " is not usable now.");
  }
  if (*info.hardwareId && !rng->SelectDevice(info.hardwareId)) {
    throw Refusal(kNegativeAnswer, "The default generator " + Quoted(info.type) +
                                       " has no device " + Quoted(info.hardwareId) + ".");
  }
  return *rng;
}

void DrawStarted(const std::string& name, std::uint64_t size, const TakePiece& pass) {
  IRngProvider& rng = name.empty() ? FindDefaultRng() : FindRng(name);
  const NoCore noCore;
  SecretBytes piece;
  std::size_t most = kFirstPiece;
  for (std::uint64_t done = 0; done < size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size - done, most)));
    const auto start = Clock::now();
    if (!rng.Generate(piece.data(), piece.size())) {
      throw Refusal(kNegativeAnswer, "The generator " +
                                         Quoted(ReadText(rng, &IRngProvider::GetName)) +
                                         " failed after " + std::to_string(done) + " bytes.");
    }
    if (Clock::now() - start < kQuick) most = std::min(2 * most, kLargestPiece);
    pass(piece);
  }
}

}  // namespace

void Draw(const std::string& name, std::uint64_t size, const TakePiece& pass) {
  if (name.empty()) RefuseUnreadableSettings();  // before plug-ins read them
  WithStartedAggregator([&] { DrawStarted(name, size, pass); });
}
