#include "tools/rngctl/doctor/causes/cannot_open.h"

#include "tools/rngctl/files/path_facts.h"
#include "tools/rngctl/loader/configured.h"
#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/terminal/text.h"

#include <filesystem>

#include <rngaggregator/aggregator.h>

namespace fs = std::filesystem;

namespace {

constexpr char kSummary[] = "cannot be opened: ";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string FixMissing(const GeneratorReport& report, const std::string& missing) {
  const std::string fix =
      "Install the plug-in's dependency " + Quoted(missing) + " where the loader finds it";
  std::error_code unknown;
  if (!fs::exists(fs::path(report.file).parent_path() / missing, unknown)) return fix + ".";
  return fix +
         ", or ask the vendor for a plug-in with a run path: without one the loader does not "
         "search the plug-in's own directory.";
}

struct Cause {
  std::string what;  ///< "is broken"
  std::string fix;
};

// What is wrong with a library that the plug-in needs.
Cause CauseIn(const LoaderError& error, const GeneratorReport& report) {
  const std::string name = Quoted(error.file);
  const std::string notThePlugin = " The plug-in itself may be fine.";
  if (Contains(error.words, "Permission denied")) {
    return {"is not readable by this user",
            "Make the plug-in's dependency " + name + " readable for this user." + notThePlugin};
  }
  if (!error.missingFile.empty()) return {"is missing", FixMissing(report, error.missingFile)};
  if (Contains(error.words, "wrong ELF class")) {
    return {"is built for another machine",
            "Install a build of the dependency " + name + " for this system." + notThePlugin};
  }
  if (Contains(error.words, ": version `") || !error.undefinedSymbol.empty()) {
    return {"is not the version that the plug-in needs",
            "Install the version of the dependency " + name +
                " that the plug-in was built with, or the vendor's plug-in for this system."};
  }
  return {"is broken", "Reinstall the plug-in's dependency " + name + "." + notThePlugin};
}

// The loader skips some files and reports only its last failure, so its message does not say why.
void PutPassedOver(GeneratorReport& report, const LoaderError& error) {
  const FileFault fault = FindFileFault(report.file);
  const bool isForeign = fault.reason.empty();
  Put(report, DoctorVerdict::kCannotBeOpened,
      kSummary + (isForeign ? "it is built for another machine" : fault.reason) + ": " +
          error.words,
      isForeign ? "Replace " + report.file + " with a build for this machine (x86-64)."
                : fault.fix);
}

void PutFailed(GeneratorReport& report, const LoaderError& error) {
  const FileFault fault = report.file.empty() ? FileFault{} : FindFileFault(report.file);
  const std::string reason = fault.reason.empty() ? "" : fault.reason + ": ";
  if (!error.undefinedSymbol.empty()) {
    return Put(report, DoctorVerdict::kCannotBeOpened, kSummary + error.words,
               "Install the versions of its dependencies that the plug-in was built with: one of "
               "them must define the function " +
                   Quoted(error.undefinedSymbol) +
                   ". Or install the vendor's build for this system.");
  }
  Put(report, DoctorVerdict::kCannotBeOpened, kSummary + reason + error.words,
      fault.fix.empty() ? "Reinstall the plug-in, using the vendor's build for this system."
                        : fault.fix);
}

// The first of the directories that this user may not search.
std::string FirstUnsearchable(const SearchOrder& search) {
  for (const std::string& directory : search.directories) {
    const std::string closed = FindUnsearchable(directory + "/file");
    if (!closed.empty()) return closed;
  }
  return "";
}

// The Debian package of this project's plug-in for a kind; "" if the plug-in comes from a vendor.
std::string PackageOf(const std::string& kind) {
  if (kind == rngUnixDev) return "rng-plugin-unixdev";
  if (kind == rngBioKb) return "rng-plugin-biokb";
  if (kind == rngBioX11) return "rng-plugin-biox11";
  if (kind == rngBioQt) return "rng-plugin-bioqt";
  return "";
}

std::string FixNotInstalled(const GeneratorReport& report, const SearchOrder& search) {
  const std::string place = search.directories.empty() ? "the search order" : search.directories[0];
  const std::string aim = "To use this generator, ";
  const std::string package = PackageOf(report.kind);
  if (package.empty()) return aim + "install the vendor's plug-in in " + place + ".";
  return aim + "install the package " + package +
         ". If you build from source, install this plug-in, too: " + report.libraryFile +
         " belongs in " + place + ".";
}

}  // namespace

void PutNotInstalled(GeneratorReport& report, const SearchOrder& search) {
  const std::string uncached = FindAsLoaderDoes(
      report.libraryFile, {"", ListConfiguredDirectories(kLoaderConfiguration), {}});
  if (!uncached.empty()) {
    report.file = uncached;
    return Put(report, DoctorVerdict::kCannotBeOpened,
               kSummary + ("the loader's cache does not list " + uncached),
               "Run ldconfig as root: the loader finds a file in that directory only through its "
               "cache.");
  }
  if (const std::string closed = FirstUnsearchable(search); !closed.empty()) {
    return Put(report, DoctorVerdict::kNotInstalled,
               "not found: this user may not search the directory " + closed,
               "Make it searchable: chmod a+x " + closed);
  }
  Put(report, DoctorVerdict::kNotInstalled, "not installed: there is no " + report.libraryFile,
      FixNotInstalled(report, search));
}

void PutSpecialFile(GeneratorReport& report, const FileFault& fault) {
  const std::string wait = ", and every program that starts the library hangs on it";
  Put(report, fault.neverOpens ? DoctorVerdict::kNoAnswer : DoctorVerdict::kCannotBeOpened,
      kSummary + fault.reason + (fault.neverOpens ? wait : ""), fault.fix);
}

void PutCannotBeOpened(GeneratorReport& report, const std::string& words,
                       const SearchOrder& search) {
  const LoaderError error = ParseLoaderError(words);
  const bool isOwn = error.file.empty() || error.file == report.file ||
                     fs::path(error.file).filename() == report.libraryFile;
  if (!isOwn) {
    const Cause cause = CauseIn(error, report);
    Put(report, DoctorVerdict::kCannotBeOpened,
        kSummary + Quoted(error.file) + " " + cause.what + ": " + error.words, cause.fix);
  } else if (error.missingFile.empty()) {
    PutFailed(report, error);
  } else if (!report.file.empty()) {
    PutPassedOver(report, error);
  } else {
    PutNotInstalled(report, search);
  }
}
