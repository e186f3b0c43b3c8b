#include "tools/rngctl/commands/read.h"

#include "tools/rngctl/commands/output.h"
#include "tools/rngctl/commands/provider_text.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <unistd.h>
#include <vector>

#include <rngaggregator/aggregator.h>

namespace {

using Clock = std::chrono::steady_clock;

// Multiples of three, for base64. The first is small, so that a slow source shows progress, yet large
// enough for any key, so that a user is asked once.
constexpr std::uint64_t kFirstPiece = 3UL * 256;
constexpr std::uint64_t kLargestPiece = 3UL * 16384;
constexpr auto kQuick = std::chrono::milliseconds(100);

// A bar on standard error, when that is a terminal and the work takes longer than a second.
class Progress {
 public:
  explicit Progress(std::uint64_t bytes) : total(bytes) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (isShown) std::fputs("\r\033[K", stderr);
  }

  void Show(std::uint64_t done) {
    const auto now = Clock::now();
    if (!isTerminal || now < next) return;
    next = now + std::chrono::milliseconds(100);
    isShown = true;
    const auto filled =
        static_cast<int>(static_cast<double>(done) / static_cast<double>(total) * 40);
    std::fprintf(stderr, "\r[%-40.*s] %3d %%", filled, "########################################",
                 filled * 100 / 40);
  }

 private:
  const std::uint64_t total;
  const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
  Clock::time_point next = Clock::now() + std::chrono::seconds(1);
  bool isShown = false;
};

IRngProvider& FindRng(const std::string& name) {
  if (IRngProvider* const rng = GetRng(name.c_str())) return *rng;
  throw Refusal(kNegativeAnswer, "There is no usable generator " + Quoted(name) +
                                     "; \"rngctl list\" lists the usable ones.");
}

IRngProvider& FindDefaultRng() {
  DefaultRngInfo info;
  if (!GetDefaultRng(&info, 0)) {
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

void ReadStarted(const ReadRequest& request) {
  IRngProvider& rng = request.name.empty() ? FindDefaultRng() : FindRng(request.name);
  Output output(request.file);
  if (request.encoding == Encoding::kRaw && output.IsTerminal()) {
    throw Refusal(kWrongUsage,
                  "Raw bytes are not written to a terminal: choose --hex, --base64 or a file.");
  }
  Progress progress(request.size);
  std::vector<char> buffer(kLargestPiece);
  std::uint64_t piece = kFirstPiece;
  for (std::uint64_t done = 0; done < request.size;) {
    const auto size = static_cast<std::size_t>(std::min(request.size - done, piece));
    const auto start = Clock::now();
    if (!rng.Generate(buffer.data(), size)) {
      throw Refusal(kNegativeAnswer, "The generator " +
                                         Quoted(ReadText(rng, &IRngProvider::GetName)) +
                                         " failed after " + std::to_string(done) + " bytes.");
    }
    if (Clock::now() - start < kQuick) piece = std::min(2 * piece, kLargestPiece);
    output.Write(Encode({buffer.data(), size}, request.encoding));
    done += size;
    progress.Show(done);
  }
  if (request.encoding != Encoding::kRaw) output.Write("\n");
  output.Commit();
}

}  // namespace

void RunRead(const ReadRequest& request) {
  WithStartedAggregator([&request] { ReadStarted(request); });
}
