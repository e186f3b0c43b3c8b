#include "combine/source.h"

#include <cxxabi.h>
#include <exception>

#include <rngaggregator/checked_rng.h>

namespace {

using rng::SourceOutcome;
using rng::SourceResult;

constexpr std::size_t kDrawSize = 64;       // as the header promises
constexpr std::int32_t kLongestName = 256;  // a larger size is not one of a name

// The result of the operation; false or 0 if it throws, because a source that throws counts as one that fails.
template <typename Operation>
auto Ask(const Operation& operation) {
  try {
    return operation();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (...) {
    return decltype(operation())();
  }
}

}  // namespace

std::size_t Source::Room() const {
  return 3 * DrawPool::kPrefixSize + source.kind.size() + source.device.size() + kDrawSize;
}

SourceOutcome Source::WithoutDraw() const {
  return {source.kind, source.device, SourceResult::kNotAsked, RngHealthAlarm::kNone, ""};
}

SourceOutcome Source::Draw(DrawPool& pool) {
  SourceOutcome outcome = WithoutDraw();
  const std::size_t before = pool.Size();
  Try(pool, outcome);
  if (outcome.result != SourceResult::kUsed) pool.TakeBack(before);
  return outcome;
}

void Source::Try(DrawPool& pool, SourceOutcome& outcome) {
  try {
    outcome.result = DrawChecked(pool, outcome);
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (const std::exception& error) {
    outcome.result = SourceResult::kThrew;
    outcome.message = error.what() ? error.what() : "";
  } catch (...) {
    outcome.result = SourceResult::kThrew;
  }
}

SourceResult Source::DrawChecked(DrawPool& pool, SourceOutcome& outcome) {
  if (!source.provider) return SourceResult::kMissing;
  outcome.alarm = alarm;
  if (outcome.alarm != RngHealthAlarm::kNone) return SourceResult::kAlarm;
  if (!ReportsItsName()) return SourceResult::kOtherName;
  // Each time: another user of the provider may have selected another one.
  const bool isSelected =
      source.device.empty() || source.provider->SelectDevice(source.device.c_str());
  if (!isSelected) return SourceResult::kDeviceRefused;
  pool.Add(source.kind);
  pool.Add(source.device);
  CheckedRng checked(source.provider);
  if (checked.Generate(pool.Add(kDrawSize), kDrawSize)) return SourceResult::kUsed;
  outcome.alarm = checked.Alarm();
  if (outcome.alarm == RngHealthAlarm::kNone) return SourceResult::kFailed;
  alarm = outcome.alarm;
  return SourceResult::kAlarm;
}

bool Source::ReportsItsName() const {
  const std::int32_t size = source.provider->GetName(nullptr);
  if (size <= 0 || size > kLongestName) return false;
  std::string name(kLongestName, '\0');  // room for any permitted name, whatever the size was
  if (source.provider->GetName(name.data()) != size) return false;
  return name.substr(0, name.find('\0')) == source.kind;
}

bool Source::IsAvailable() const {
  return IsPresent() && Ask([this] { return source.provider->IsAvailable(); });
}

bool Source::SelfTest() const {
  return IsPresent() && Ask([this] { return source.provider->SelfTest(); });
}

void Source::Cancel() const {
  if (IsPresent()) Ask([this] { source.provider->Cancel(); });
}

std::uint32_t Source::GetFlags() const {
  return IsPresent() ? Ask([this] { return source.provider->GetFlags(); }) : 0;
}

std::string Source::Label() const {
  return source.device.empty() ? source.kind : source.kind + ':' + source.device;
}
