#include "borrowed.h"
#include "checks.h"

#include <dlfcn.h>

namespace {

// Nothing is configured, not even the path that the built-in object always has.
class EmptySettings final : public IRngSettings {
 public:
  const char* GetType() override { return nullptr; }
  bool SetType(const char*) override { return false; }
  const char* GetHardwareId() override { return nullptr; }
  bool SetHardwareId(const char*) override { return false; }
  const char* GetDsdrFilePath() override { return nullptr; }
};

// A library that is missing; "" when it is something else that the loader says.
std::string FindMissing(const std::string& words) {
  const auto end = words.find(": cannot open shared object file: ");
  return end == std::string::npos ? "" : words.substr(0, end);
}

Finding FailedToOpen(const std::string& words) {
  const std::string missing = FindMissing(words);
  return Failed("The loader says: " + words,
                missing.empty() ? ""
                                : "Install " + missing +
                                      " where the loader looks, or link with a run path: "
                                      "-Wl,-rpath,'$ORIGIN' finds what lies beside the plug-in.");
}

}  // namespace

// Binds all at once: the aggregator does not, so a missing function would show at its first call.
Finding CheckOpens(WatchedPlugin& plugin) {
  plugin.Step(kOpening);
  const std::string& path = plugin.Subject().path;
  void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) return FailedToOpen(::dlerror());
  const std::string borrowed = FindBorrowed(library);
  if (borrowed.empty()) return Passed();
  return Failed("It is not linked with what has " + borrowed +
                "; this program happens to have that, others need not.");
}

Finding CheckFactory(WatchedPlugin& plugin) {
  plugin.Open();
  if (plugin.Make()) return Passed();
  return Failed(
      "The factory gives null: there is no such generator for hosts, and nothing to check.");
}

// Either answer is right: it is enough that they come back.
Finding CheckNullSettings(WatchedPlugin& plugin) {
  plugin.StartWith(nullptr, " without settings");
  return Passed();
}

Finding CheckEmptySettings(WatchedPlugin& plugin) {
  EmptySettings settings;
  plugin.StartWith(&settings, " with empty settings");
  return Passed();
}

Finding CheckBuiltInSettings(WatchedPlugin& plugin) {
  plugin.StartWithBuiltIn();
  return Passed();
}

Finding CheckReload(WatchedPlugin& plugin) {
  plugin.StartWithBuiltIn();
  plugin.Stop();
  plugin.Open();
  if (!plugin.Make()) return Failed("Opened again, its factory gives null.");
  plugin.StartMade();
  plugin.Stop();
  return Passed();
}

Finding CheckAvailable(WatchedPlugin& plugin) {
  if (plugin.StartWithBuiltIn()) return Passed();
  return Failed("IsAvailable answers false.");
}
