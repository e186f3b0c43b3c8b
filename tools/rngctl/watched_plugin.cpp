#include "watched_plugin.h"

#include "child.h"
#include "host.h"

#include <dlfcn.h>

namespace {

[[noreturn]] void EndByThrow(const std::string& step, const std::string& what) {
  SendReport({{"threw", what}, {"in", step}});
  throw EarlyEnd(Outcome::kNotExamined, step + " threw an exception");
}

}  // namespace

template <typename Call>
auto WatchedPlugin::Watch(const std::string& step, Call call) {
  Step(step);
  try {
    return call();
  } catch (const std::exception& error) {
    EndByThrow(step, error.what());
  } catch (...) {
    EndByThrow(step, "");
  }
}

void WatchedPlugin::Step(const std::string& name) { ReportStep(name, false); }
void WatchedPlugin::OwnStep(const std::string& name) { ReportStep(name, true); }

void WatchedPlugin::ReportStep(const std::string& name, bool isOwn) {
  if (isInLongStep) return;
  if (!IsGood(name)) {
    SendReport({{"avoided", name}});
    throw EarlyEnd(Outcome::kNotExamined, "");
  }
  nlohmann::json report = {{"step", name}};
  if (isOwn) report["isOwn"] = true;
  SendReport(report);
}

void WatchedPlugin::BeginLongStep(const std::string& name) {
  OwnStep(name);
  isInLongStep = true;
}

void WatchedPlugin::RequireTime() const {
  if (std::chrono::steady_clock::now() - begin < subject.limit) return;
  throw EarlyEnd(Outcome::kNotExamined, "it takes too long; give more time with --timeout");
}

void WatchedPlugin::Open() {
  const char* const path = subject.path.c_str();
  handle = Watch(kOpening, [&] { return ::dlopen(path, RTLD_LAZY | RTLD_GLOBAL); });
  if (!handle) throw EarlyEnd(Outcome::kNotExamined, "the library cannot be opened");
}

bool WatchedPlugin::Make() {
  if (subject.factory.empty()) {
    throw EarlyEnd(Outcome::kNotExamined,
                   "which factory to call is unknown; name it with --factory");
  }
  auto* const factory = reinterpret_cast<RngFactory>(::dlsym(handle, subject.factory.c_str()));
  if (!factory) throw EarlyEnd(Outcome::kNotExamined, "there is no factory " + subject.factory);
  provider = Watch(kFactory, factory);
  return provider != nullptr;
}

void WatchedPlugin::Close() {
  Watch(kClosing, [&] { return ::dlclose(handle); });
}

bool WatchedPlugin::StartWith(IRngSettings* settings, const std::string& note) {
  settingsNote = note;
  Open();
  if (!Make()) throw EarlyEnd(Outcome::kNotExamined, "the factory gives no object");
  SetSettings(settings);
  return IsAvailable();
}

bool WatchedPlugin::StartMade() {
  SetSettings(GetDefaultSettings());
  return IsAvailable();
}

bool WatchedPlugin::StartWithBuiltIn() { return StartWith(GetDefaultSettings(), ""); }

void WatchedPlugin::StartAvailable() {
  if (StartWithBuiltIn()) return;
  throw EarlyEnd(Outcome::kNotExamined, "it is not available here, so hosts never see it");
}

void WatchedPlugin::Stop() {
  Release();
  Close();
}

std::int32_t WatchedPlugin::GetName(char* buffer) {
  return Watch("GetName", [&] { return provider->GetName(buffer); });
}

std::int32_t WatchedPlugin::GetDescription(char* buffer) {
  return Watch("GetDescription", [&] { return provider->GetDescription(buffer); });
}

std::int32_t WatchedPlugin::GetHardwareId(char* buffer) {
  return Watch("GetHardwareId", [&] { return provider->GetHardwareId(buffer); });
}

bool WatchedPlugin::SelectDevice(const char* hardwareId) {
  return Watch("SelectDevice", [&] { return provider->SelectDevice(hardwareId); });
}

// A draw of nothing is a step of its own: it ends also where others wait for a user.
bool WatchedPlugin::Generate(void* buffer, std::size_t size) {
  return Watch(size == 0 ? "Generate of 0 bytes" : "Generate",
               [&] { return provider->Generate(buffer, size); });
}

bool WatchedPlugin::IsAvailable() {
  return Watch("IsAvailable" + settingsNote, [&] { return provider->IsAvailable(); });
}

bool WatchedPlugin::AskAgain() {
  return Watch("IsAvailable while in use", [&] { return provider->IsAvailable(); });
}

bool WatchedPlugin::SelfTest() {
  return Watch("SelfTest", [&] { return provider->SelfTest(); });
}

void WatchedPlugin::Cancel() {
  Watch("Cancel", [&] { provider->Cancel(); });
}

std::uint32_t WatchedPlugin::GetFlags() {
  return Watch("GetFlags", [&] { return provider->GetFlags(); });
}

void WatchedPlugin::SetSettings(IRngSettings* settings) {
  Watch("SetSettings" + settingsNote, [&] { provider->SetSettings(settings); });
}

void WatchedPlugin::Release() {
  Watch("Release", [&] { provider->Release(); });
}
