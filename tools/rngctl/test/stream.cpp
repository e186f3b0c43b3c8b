#include "tools/rngctl/test/stream.h"

#include "tools/rngctl/drawing/progress.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/test/timed_draws.h"

#include <algorithm>
#include <cmath>

namespace {

using Clock = std::chrono::steady_clock;

std::chrono::seconds GetLimitOfDraw(std::uint32_t flags) {
  constexpr std::uint32_t kMayTakeLong = kRngCapabilityNeedsUser | kRngCapabilityMayBlock;
  return std::chrono::seconds((flags & kMayTakeLong) != 0 ? 600 : 10);
}

// What progress is shown of: a thousandth.
constexpr std::uint64_t kWhole = 1000;

class Times {
 public:
  void Add(const TimedDraw& draw) {
    const std::chrono::duration<double> time = draw.time;
    (draw.size == kSmallDraw ? smallTime : largeTime) += time.count();
    if (draw.size == kSmallDraw) {
      small.push_back(time.count());
    } else {
      largeBytes += draw.size;
    }
  }

  Speed Judge() {
    Speed speed;
    speed.smallDraws = small.size();
    const std::uint64_t bytes = largeBytes > 0 ? largeBytes : small.size() * kSmallDraw;
    const double time = largeBytes > 0 ? largeTime : smallTime;
    if (time > 0)
      speed.bytesPerSecond = static_cast<std::uint64_t>(static_cast<double>(bytes) / time);
    if (small.empty()) return speed;
    std::sort(small.begin(), small.end());
    speed.median = GetQuantile(0.5);
    speed.percentile99 = GetQuantile(0.99);
    return speed;
  }

 private:
  // The smallest of the times that this part of them does not exceed.
  double GetQuantile(double part) const {
    return small[static_cast<std::size_t>(std::ceil(part * static_cast<double>(small.size()))) - 1];
  }

  std::vector<double> small;
  double smallTime = 0;
  double largeTime = 0;
  std::uint64_t largeBytes = 0;
};

// Takes the pieces of the process that draws.
class Taker {
 public:
  Taker(const TestRequest& testRequest, Picture* drawnPicture)
      : request(testRequest), picture(drawnPicture), progress(kWhole, true) {}

  void Take(const SecretBytes& piece) {
    if (!facts) {
      facts = ReadFacts(piece);
      tests.emplace(GetMostBytes(request.size, facts->flags));
      return;
    }
    const TimedDraw draw = ReadDraw(piece);
    times.Add(draw);
    tests->Feed(draw.bytes, draw.size);
    if (picture) picture->Feed(draw.bytes, draw.size);
    progress.Show(std::min(kWhole - 1, static_cast<std::uint64_t>(GetPart() * kWhole)));
  }

  std::chrono::seconds GetLimit() const {
    return facts ? GetLimitOfDraw(facts->flags) : kTimeToStart;
  }

  DrawnStream Finish() {
    const std::uint64_t size = tests ? tests->bytes.Size() : 0;
    if (size == 0 || (request.size && size != *request.size)) {
      throw Refusal(kNothingUsable, "A plug-in interfered with the draw: " + std::to_string(size) +
                                        " bytes arrived.");
    }
    return {*facts, *tests, times.Judge()};
  }

 private:
  double GetPart() const {
    const double part = static_cast<double>(tests->bytes.Size()) /
                        static_cast<double>(GetMostBytes(request.size, facts->flags));
    if (request.size) return part;
    return std::max(part, std::chrono::duration<double>(Clock::now() - start) / kTimeToDraw);
  }

  const TestRequest& request;
  Picture* const picture;
  Progress progress;
  const Clock::time_point start = Clock::now();
  std::optional<SourceFacts> facts;
  std::optional<StreamTests> tests;
  Times times;
};

}  // namespace

DrawnStream DrawStream(const TestRequest& request, Picture* picture,
                       const std::function<void()>& leave) {
  ForkedProcess process(kPlugins, [&](const TakePiece& pass) {
    leave();
    DrawAndTime(request.source, request.size, pass);
  });
  const InterruptionWatch interruption;
  Taker taker(request, picture);
  process.ForEachPiece([&taker](const SecretBytes& piece) { taker.Take(piece); },
                       [&taker] { return taker.GetLimit(); });
  return taker.Finish();
}

std::chrono::seconds GetLimitOfStart(std::uint32_t flags) {
  return std::max(kTimeToStart, GetLimitOfDraw(flags));
}
