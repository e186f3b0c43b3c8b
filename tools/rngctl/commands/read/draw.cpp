#include "tools/rngctl/commands/read/draw.h"

#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>

#include <rngaggregator/aggregator.h>
#include <rngaggregator/checked_rng.h>

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

void SelectDevice(IRngProvider& rng, const std::string& name, const std::string& device) {
  if (device.empty() || rng.SelectDevice(device.c_str())) return;
  throw Refusal(kNegativeAnswer, name + " has no device " + Quoted(device) + ".");
}

IRngProvider& FindNamed(const DrawRequest& request) {
  IRngProvider& rng = FindRng(request.name);
  SelectDevice(rng, "The generator " + Quoted(request.name), request.device);
  return rng;
}

bool FindDefault(DefaultRngInfo& info) {
  const DirectoryLock lock = LockForReading();
  return GetDefaultRng(&info, 0) == 1;
}

IRngProvider& FindDefaultRng(const std::string& device) {
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
  SelectDevice(*rng, "The default generator " + Quoted(info.type),
               device.empty() ? info.hardwareId : device);
  return *rng;
}

std::string Describe(RngHealthAlarm alarm) {
  switch (alarm) {
    case RngHealthAlarm::kRepetition:
      return "nine equal bytes in a row";
    case RngHealthAlarm::kProportion:
      return "one value far too often among 512 bytes";
    case RngHealthAlarm::kBlock:
      return "16 bytes that equal the 16 before them";
    case RngHealthAlarm::kNone:
      break;
  }
  return "";
}

[[noreturn]] void RefuseDraw(IRngProvider& rng, RngHealthAlarm alarm, std::uint64_t done) {
  const std::string name = Quoted(ReadText(rng, &IRngProvider::GetName));
  const std::string place = "after " + std::to_string(done) + " bytes";
  if (alarm == RngHealthAlarm::kNone) {
    throw Refusal(kNegativeAnswer, "The generator " + name + " failed " + place + ".");
  }
  throw Refusal(
      kNegativeAnswer,
      "The generator " + name + " gives bytes that are not random: " + place + ", " +
          Describe(alarm) + ".",
      "Do not use its bytes, not even those that it gave before. \"rngctl test\" examines it.");
}

void DrawStarted(const DrawRequest& request, const TakePiece& pass) {
  IRngProvider& rng = request.name.empty() ? FindDefaultRng(request.device) : FindNamed(request);
  CheckedRng checked(&rng);
  IRngProvider& source = request.isChecked ? checked : rng;
  const NoCore noCore;
  SecretBytes piece;
  std::size_t most = kFirstPiece;
  for (std::uint64_t done = 0; done < request.size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(request.size - done, most)));
    const auto start = Clock::now();
    if (!source.Generate(piece.data(), piece.size())) RefuseDraw(rng, checked.Alarm(), done);
    if (Clock::now() - start < kQuick) most = std::min(2 * most, kLargestPiece);
    pass(piece);
  }
}

}  // namespace

void Draw(const DrawRequest& request, const TakePiece& pass) {
  if (request.name.empty()) RefuseUnreadableSettings();  // before plug-ins read them
  WithStartedAggregator([&] { DrawStarted(request, pass); });
}
