#include "tools/rngctl/check/rules/rules.h"
#include "tools/rngctl/loader/elf_facts.h"
#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/loader/undeclared.h"

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

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// Empty if the rule's own fix applies, because something is undefined.
std::string FixForLoader(const std::string& words, const std::string& path) {
  const LoaderError error = ParseLoaderError(words);
  if (!error.missingFile.empty()) {
    return "Install " + error.missingFile +
           " where the loader finds it, or link with a run path: with -Wl,-rpath,'$ORIGIN' it also "
           "searches the plug-in's own directory.";
  }
  if (!error.undefinedSymbol.empty()) return "";
  if (ReadElfFacts(path).refusesOpening) {
    return "Link without -z nodlopen, which sets the flag NOOPEN: dlopen refuses such a library.";
  }
  if (Contains(words, "version `")) {
    return "Install the version that it was built with, or build it on the oldest system that "
           "you support.";
  }
  if (Contains(words, "static TLS"))
    return "Compile without -ftls-model=initial-exec or local-exec.";
  return "The loader's message names the cause; LD_DEBUG=all shows what led to it.";
}

Finding FailedToOpen(const std::string& words, const std::string& path) {
  return Failed("The loader says: " + words, FixForLoader(words, path));
}

// Binds everything at once. The aggregator does not: there a missing function fails only when it is
// called.
Finding CheckOpens(WatchedPlugin& plugin) {
  plugin.BeginStep(Step::kOpening);
  const std::string& path = plugin.File().path;
  void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) return FailedToOpen(::dlerror(), path);
  const Undeclared undeclared = FindUndeclared(library);
  if (undeclared.symbol.empty()) return Passed();
  if (undeclared.isOfLibrary) {
    return Failed("It uses " + undeclared.symbol +
                      " but is not linked with librngaggregator.so, which defines it: plug-ins do "
                      "not find it in a program that opens the library with dlopen.",
                  "Link it with -lrngaggregator.");
  }
  return Failed(
      "It uses " + undeclared.symbol +
      " but is not linked with a library that defines it; rngctl happens to have it, other "
      "programs may not.");
}

bool IsExported(const PluginFile& file) { return Exports(file.path, file.factory); }

// The resolver of an indirect function is code of the plug-in, and runs here.
bool IsFound(WatchedPlugin& plugin) {
  const PluginFile& file = plugin.File();
  plugin.BeginStep(Step::kFactory);
  void* const library = ::dlopen(file.path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  return library && ::dlsym(library, file.factory.c_str());
}

Finding FailedToFindFactory(const std::string& factory) {
  Finding finding =
      Failed("The file exports " + factory + ", but dlsym does not find it, or finds null.",
             "Define it as an ordinary function with default visibility: an indirect function "
             "(ifunc) must not resolve to null, and a symbol version must be the default one.");
  finding.severity = Severity::kError;  // no machine has what it lacks
  return finding;
}

Finding CheckFactory(WatchedPlugin& plugin) {
  plugin.Open();
  if (IsExported(plugin.File()) && !IsFound(plugin)) {
    return FailedToFindFactory(plugin.File().factory);
  }
  if (plugin.Make()) return Passed();
  return Failed(
      "The factory returns null: hosts do not see this generator, and there is nothing else to "
      "check.");
}

// Either answer is right: it is enough that the calls return.
Finding CheckNullSettings(WatchedPlugin& plugin) {
  plugin.StartWithNull();
  return Passed();
}

Finding CheckEmptySettings(WatchedPlugin& plugin) {
  EmptySettings settings;
  plugin.StartWithEmpty(settings);
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
  if (!plugin.Make()) return Failed("After it is opened again, its factory returns null.");
  plugin.StartMade();
  plugin.Stop();
  return Passed();
}

Finding CheckAvailable(WatchedPlugin& plugin) {
  if (plugin.StartWithBuiltIn()) return Passed();
  return Failed("IsAvailable returns false.");
}

}  // namespace

std::vector<Rule> StartRules() {
  return {
      {"opens", Severity::kError, "The loader can open it and finds everything it needs",
       "Link with every library that it uses; with -Wl,-z,defs the linker reports what is missing.",
       CheckOpens},
      {"gives-object", Severity::kNote, "The factory returns an object",
       "Connect or configure what it needs, and check again. It is better to return an object "
       "whose IsAvailable returns false.",
       CheckFactory},
      {"null-settings", Severity::kError,
       "SetSettings accepts null, and IsAvailable returns afterwards", "", CheckNullSettings},
      {"empty-settings", Severity::kError,
       "SetSettings accepts settings that hold nothing, and IsAvailable returns afterwards", "",
       CheckEmptySettings},
      {"built-in-settings", Severity::kError,
       "SetSettings accepts the library's own settings, and IsAvailable returns afterwards", "",
       CheckBuiltInSettings},
      {"reload", Severity::kError,
       "After it is closed and opened again, its factory returns an object again",
       "In Release and on unloading, undo everything that the first use did to the process.",
       CheckReload},
      {"available", Severity::kNote, "It is available on this machine",
       "Connect or configure what it needs, and check again: the library releases an unavailable "
       "generator.",
       CheckAvailable},
  };
}
