#include "combine/source.h"
#include "combine/sources.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <stdexcept>

namespace {

using rng::CombinedSource;
using rng::SourceOutcome;

constexpr std::uint32_t kMayWait = kRngCapabilityNeedsUser | kRngCapabilityMayBlock;

// What the text operations of a provider return for a text.
std::int32_t ReportText(const std::string& text, char* buffer) {
  if (buffer) std::memcpy(buffer, text.c_str(), text.size() + 1);
  return static_cast<std::int32_t>(text.size() + 1);
}

}  // namespace

struct rng::CombinedState {
  CombinedState(const std::vector<CombinedSource>& named, std::size_t needed);

  template <typename Test>
  bool Enough(const Test& test) const {
    return std::size_t(std::count_if(sources.begin(), sources.end(), test)) >= need;
  }
  bool Draw(void* buffer, std::size_t size, std::vector<SourceOutcome>& outcomes);
  bool Collect(DrawPool& pool, std::vector<SourceOutcome>& outcomes);

  const std::size_t need;
  std::deque<Source> sources;
  std::atomic<std::uint64_t> cancellations{0};
};

rng::CombinedState::CombinedState(const std::vector<CombinedSource>& named, std::size_t needed)
    : need(needed) {
  RequireDistinctSources(named);
  if (named.empty()) throw std::invalid_argument("The list of sources is empty.");
  if (need == 0) throw std::invalid_argument("At least one of the sources must be needed.");
  if (need > named.size()) {
    throw std::invalid_argument("There are " + std::to_string(named.size()) + " sources, but " +
                                std::to_string(need) + " are needed.");
  }
  for (const CombinedSource& source : named) sources.emplace_back(source);
}

// Returns whether enough sources could be used. Asks no more of them once that is impossible.
bool rng::CombinedState::Collect(DrawPool& pool, std::vector<SourceOutcome>& outcomes) {
  const std::uint64_t before = cancellations;
  std::size_t failed = 0;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    // A source that begins to wait now would miss the call that has just been made.
    if (cancellations != before && (sources[i].GetFlags() & kMayWait) != 0) return false;
    outcomes[i] = sources[i].Draw(pool);
    if (outcomes[i].result == SourceResult::kUsed) continue;
    ++failed;
    if (failed > sources.size() - need || cancellations != before) return false;
  }
  return true;
}

bool rng::CombinedState::Draw(void* buffer, std::size_t size,
                              std::vector<SourceOutcome>& outcomes) {
  std::size_t capacity = 0;
  for (const Source& source : sources) {
    outcomes.push_back(source.WithoutDraw());
    capacity += source.Room();
  }
  if (size == 0) return true;
  DrawPool pool(capacity);
  if (!Collect(pool, outcomes)) return false;
  pool.Expand(buffer, size);
  return true;
}

rng::CombinedRng::CombinedRng(const std::vector<CombinedSource>& sources)
    : CombinedRng(sources, std::max<std::size_t>(sources.size(), 1)) {}

rng::CombinedRng::CombinedRng(const std::vector<CombinedSource>& sources, std::size_t need)
    : state(new CombinedState(sources, need)) {}

rng::CombinedRng::~CombinedRng() = default;

bool rng::CombinedRng::Generate(void* buffer, std::size_t size,
                                std::vector<SourceOutcome>& outcomes) {
  if (size != 0) std::memset(buffer, 0, size);
  outcomes.clear();
  try {
    return state->Draw(buffer, size, outcomes);
  } catch (const std::exception&) {  // out of memory, before the buffer is filled
    return false;
  }
}

bool rng::CombinedRng::Generate(void* buffer, std::size_t size) {
  std::vector<SourceOutcome> outcomes;
  return Generate(buffer, size, outcomes);
}

void rng::CombinedRng::Reset() {
  for (Source& source : state->sources) source.Reset();
}

std::int32_t rng::CombinedRng::GetName(char* buffer) { return ReportText("combined", buffer); }

std::int32_t rng::CombinedRng::GetDescription(char* buffer) {
  std::string text = "Several generators combined:";
  for (const Source& source : state->sources) text += ' ' + source.Label();
  return ReportText(text, buffer);
}

std::int32_t rng::CombinedRng::GetHardwareId(char*) { return 0; }

bool rng::CombinedRng::SelectDevice(const char* hardwareId) { return !hardwareId || !*hardwareId; }

bool rng::CombinedRng::IsAvailable() {
  return state->Enough([](const Source& source) { return source.IsAvailable(); });
}

bool rng::CombinedRng::SelfTest() {
  return state->Enough([](const Source& source) { return source.SelfTest(); });
}

void rng::CombinedRng::Cancel() {
  ++state->cancellations;
  for (const Source& source : state->sources) source.Cancel();
}

std::uint32_t rng::CombinedRng::GetFlags() {
  std::uint32_t any = 0;
  std::uint32_t all = ~std::uint32_t{0};
  for (const Source& source : state->sources) {
    if (!source.IsPresent()) continue;
    const std::uint32_t flags = source.GetFlags();
    any |= flags;
    all &= flags;
  }
  return (any & kMayWait) | (any & all);
}

void rng::CombinedRng::SetSettings(IRngSettings*) {}

void rng::CombinedRng::Release() {}
