// The doctor and the library agree on every fake plug-in.

#include "tests/rngctl/doctor/doctor.h"
#include "tests/support/aggregator_library.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// The plug-ins in each folder of fakes, at any depth.
std::map<fs::path, std::vector<fs::path>> FakePlugins() {
  std::map<fs::path, std::vector<fs::path>> folders;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(FAKES_DIR)) {
    if (entry.path().filename().string().starts_with("librng")) {
      folders[entry.path().parent_path()].push_back(entry.path());
    }
  }
  return folders;
}

// Those of the files that a start of the library keeps open; none when the start does not return.
std::set<std::string> FilesKept(const std::vector<fs::path>& files) {
  const Result host = RunForked([&files] {
    ::alarm(2);
    static const AggregatorLibrary aggregator;  // never closed: the copy exits without clean-up
    try {
      aggregator.Initialize(aggregator.GetDefaultSettings());
    } catch (...) {
      return 1;
    }
    for (const fs::path& file : files) {
      if (IsMapped(file.filename())) std::cout << file.filename().string() << '\n';
    }
    return 0;
  });
  std::set<std::string> names;
  if (host.status != 0) return names;
  std::istringstream kept(host.output);
  for (std::string name; std::getline(kept, name);) {
    if (name.starts_with("librng")) names.insert(name);  // and not what a plug-in prints
  }
  return names;
}

std::set<std::string> FilesKept(const json& report) {
  std::set<std::string> names;
  const json& start = report.at("start");
  if (start.at("seconds").is_null()) return names;  // it did not return
  for (const json& row : report.at("generators")) {
    if (row.at("kept")) names.insert(row.at("library_file"));
  }
  return names;
}

// A case compares one part of the fakes: all of them take long on a busy machine.
constexpr std::size_t kParts = 6;

class DoctorAndLibrary : public Doctor, public testing::WithParamInterface<std::size_t> {};

using Folders = std::map<fs::path, std::vector<fs::path>>;

Folders ComparableFakes() {
  Folders folders = FakePlugins();
  for (const char* excluded : {
           "breaking/garbles_messages",  // another case covers it
           "stops_itself",               // the host would stop, too
           "breaking/LeaveChild",        // the host would leave a process
           "leaves_process",             // the same
           "closes_output",              // what the host prints is lost
           "shared_class",               // the second one runs the code of the first
           "sticky_unavailable",         // its file stays, kept or not
       }) {
    EXPECT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / excluded)) << excluded;
  }
  return folders;
}

// The number of plug-ins that are kept.
std::size_t Compare(const fs::path& folder, const std::vector<fs::path>& files,
                    const json& report) {
  const std::set<std::string> kept = FilesKept(files);
  EXPECT_EQ(kept, FilesKept(report)) << folder << report.dump(2);
  return kept.size();
}

}  // namespace

TEST_P(DoctorAndLibrary, AgreeOnTheFakePlugins) {
  std::map<std::string, std::string> kinds;  // by library file
  for (const Kind& kind : AllKinds()) kinds[kind.libraryFile] = kind.name;
  std::size_t kept = 0;
  std::size_t number = 0;
  for (const auto& [folder, files] : ComparableFakes()) {
    if (number++ % kParts != GetParam()) continue;
    const bool isAlone = files.size() == 1;
    for (const fs::path& file : files) fs::copy(file, TreePath("lib"));
    for (const char* display : {"refusing", "whole"}) {
      if (isAlone && display == std::string("refusing")) continue;
      InstallX11(display);
      const std::string kind = isAlone ? kinds.at(files[0].filename()) : "";
      kept += Compare(folder, files, Examine(kind, "", 2));
    }
    for (const fs::path& file : files) fs::remove(fs::path(TreePath("lib")) / file.filename());
  }
  EXPECT_LT(4U * kParts, number);
  EXPECT_LT(8U, kept);
}

INSTANTIATE_TEST_SUITE_P(Part, DoctorAndLibrary, testing::Range<std::size_t>(0, kParts));
