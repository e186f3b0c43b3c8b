#include "tools/rngctl/check/plugin/watched_plugin.h"

#include "tools/rngctl/process/resources.h"

#include <dlfcn.h>

#include <rngaggregator/aggregator.h>

namespace {

[[noreturn]] void EndByThrow(Step step, const std::string& what) {
  Record([&](Transcript& transcript) { transcript.exceptions.emplace(step, what); });
  throw EarlyEnd(Outcome::kNotExamined, InWords(step) + " threw an exception");
}

}  // namespace

template <typename Call>
auto WatchedPlugin::Watch(Step step, Call call) {
  BeginStep(step);
  try {
    return call();
  } catch (const std::exception& error) {
    EndByThrow(step, error.what() ? error.what() : "");
  } catch (...) {
    EndByThrow(step, "");
  }
}

void WatchedPlugin::RecordStep(Step step, bool isOwn) {
  if (isInLongStep) return;
  if (!IsGood(step)) {
    Record([step](Transcript& transcript) { transcript.avoided = step; });
    throw EarlyEnd(Outcome::kNotExamined, "");
  }
  Record([step, isOwn](Transcript& transcript) {
    transcript.step = step;
    transcript.isOwnStep = isOwn;
    transcript.steps.insert(step);
  });
}

void WatchedPlugin::BeginLongStep(Step step) {
  BeginOwnStep(step);
  isInLongStep = true;
}

void WatchedPlugin::RequireTime() const {
  if (std::chrono::steady_clock::now() - begin < Limit()) return;
  throw EarlyEnd(Outcome::kNotExamined, "it takes too long; allow more time with --timeout");
}

void WatchedPlugin::Open() {
  if (threadsBefore.empty()) threadsBefore = ThreadsOfThisProcess();
  const char* const path = File().path.c_str();
  handle = Watch(Step::kOpening, [&] { return ::dlopen(path, RTLD_LAZY | RTLD_GLOBAL); });
  if (!handle) throw EarlyEnd(Outcome::kNotExamined, "the library cannot be opened");
}

bool WatchedPlugin::Make() {
  const std::string& name = File().factory;
  if (name.empty()) {
    throw EarlyEnd(Outcome::kNotExamined, "the factory is unknown; name it with --factory");
  }
  BeginStep(Step::kFactory);  // the resolver of an indirect function is code of the plug-in
  auto* const factory = reinterpret_cast<RngFactory>(::dlsym(handle, name.c_str()));
  if (!factory) {
    Record([](Transcript& transcript) { transcript.steps.erase(Step::kFactory); });
    throw EarlyEnd(Outcome::kNotExamined, "there is no factory " + name);
  }
  provider = Watch(Step::kFactory, factory);
  return provider != nullptr;
}

// Once is enough: what it leaves running, it leaves each time.
void WatchedPlugin::LookForThreads() {
  if (hasLookedForThreads) return;
  hasLookedForThreads = true;
  if (AreOnlyLeft(threadsBefore)) return;
  Record([](Transcript& transcript) { transcript.threadsAreLeft = true; });
}

void WatchedPlugin::Close() {
  LookForThreads();
  Watch(Step::kClosing, [&] { return ::dlclose(handle); });
}

bool WatchedPlugin::StartWith(IRngSettings* settings, Step toSet, Step toAsk) {
  settingsStep = toSet;
  availableStep = toAsk;
  Open();
  if (!Make()) throw EarlyEnd(Outcome::kNotExamined, "the factory returns no object");
  SetSettings(settings);
  return IsAvailable();
}

bool WatchedPlugin::StartWithNull() {
  return StartWith(nullptr, Step::kSetNullSettings, Step::kIsAvailableWithNullSettings);
}

bool WatchedPlugin::StartWithEmpty(IRngSettings& settings) {
  return StartWith(&settings, Step::kSetEmptySettings, Step::kIsAvailableWithEmptySettings);
}

bool WatchedPlugin::StartWithBuiltIn() {
  return StartWith(GetDefaultSettings(), Step::kSetSettings, Step::kIsAvailable);
}

bool WatchedPlugin::StartMade() {
  SetSettings(GetDefaultSettings());
  return IsAvailable();
}

void WatchedPlugin::StartAvailable() {
  if (StartWithBuiltIn()) return;
  throw EarlyEnd(Outcome::kNotExamined, "it is not available here, so hosts never see it");
}

void WatchedPlugin::Stop() {
  Release();
  Close();
}

std::int32_t WatchedPlugin::GetName(char* buffer) {
  return Watch(Step::kGetName, [&] { return provider->GetName(buffer); });
}

std::int32_t WatchedPlugin::GetDescription(char* buffer) {
  return Watch(Step::kGetDescription, [&] { return provider->GetDescription(buffer); });
}

std::int32_t WatchedPlugin::GetHardwareId(char* buffer) {
  return Watch(Step::kGetHardwareId, [&] { return provider->GetHardwareId(buffer); });
}

bool WatchedPlugin::SelectDevice(const char* hardwareId) {
  return Watch(Step::kSelectDevice, [&] { return provider->SelectDevice(hardwareId); });
}

void WatchedPlugin::Count(const std::function<void(SourceCalls&)>& call) {
  const std::lock_guard guard(counting);
  call(sourceCalls);
}

void WatchedPlugin::FailUnlessRunOut(const std::string& fault, bool repeatsSelfTests) {
  Count([repeatsSelfTests](SourceCalls& calls) {
    if (!repeatsSelfTests) calls.selfTests = 0;
    Record([&calls](Transcript& transcript) { transcript.inDoubt = calls; });
  });
  throw EarlyEnd(Outcome::kFailed, fault);
}

// A draw of 0 bytes is a step of its own: it returns even if other draws wait for a user.
bool WatchedPlugin::Generate(void* buffer, std::size_t size) {
  if (size != 0) Count([size](SourceCalls& calls) { ++calls.draws[size]; });
  return Watch(size == 0 ? Step::kGenerateNothing : Step::kGenerate,
               [&] { return provider->Generate(buffer, size); });
}

bool WatchedPlugin::IsAvailable() {
  return Watch(availableStep, [&] { return provider->IsAvailable(); });
}

bool WatchedPlugin::IsAvailableInUse() {
  return Watch(Step::kIsAvailableInUse, [&] { return provider->IsAvailable(); });
}

bool WatchedPlugin::SelfTest() {
  Count([](SourceCalls& calls) { ++calls.selfTests; });
  return Watch(Step::kSelfTest, [&] { return provider->SelfTest(); });
}

void WatchedPlugin::Cancel() {
  Watch(Step::kCancel, [&] { provider->Cancel(); });
}

std::uint32_t WatchedPlugin::GetFlags() {
  return Watch(Step::kGetFlags, [&] { return provider->GetFlags(); });
}

void WatchedPlugin::SetSettings(IRngSettings* settings) {
  Watch(settingsStep, [&] { provider->SetSettings(settings); });
}

void WatchedPlugin::Release() {
  Watch(Step::kRelease, [&] { provider->Release(); });
}

std::int32_t WatchedPlugin::GetReport(char* buffer) {
  using Report = std::int32_t (*)(char* buffer);
  const auto report = reinterpret_cast<Report>(::dlsym(handle, "GetRngReport"));
  return report ? Watch(Step::kGetReport, [&] { return report(buffer); }) : 0;
}
