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

}  // namespace

TEST_F(Doctor, AgreesWithTheLibraryOnEachFakePlugin) {
  std::map<std::string, std::string> kinds;  // by library file
  for (const Kind& kind : AllKinds()) kinds[kind.libraryFile] = kind.name;
  std::size_t kept = 0;
  const auto compare = [&](const fs::path& folder, const std::vector<fs::path>& files) {
    for (const fs::path& file : files)
      fs::copy_file(file, fs::path(TreePath("lib")) / file.filename());
    const std::set<std::string> keptByLibrary = FilesKept(files);
    const json report = Examine(files.size() == 1 ? kinds.at(files[0].filename()) : "", "", 2);
    EXPECT_EQ(keptByLibrary, FilesKept(report)) << folder << report.dump(2);
    kept += keptByLibrary.size();
    for (const fs::path& file : files) fs::remove(fs::path(TreePath("lib")) / file.filename());
  };
  auto folders = FakePlugins();
  // Its row alone does not show what a start does with it; another case covers that.
  ASSERT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / "breaking/garbles_messages"));
  // Nor is there anything to compare where the host would stop, or leave a process.
  ASSERT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / "stops_itself"));
  ASSERT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / "leaves_process"));
  // Nor where what the host prints is lost, or its second plug-in runs the code of the first.
  ASSERT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / "closes_output"));
  ASSERT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / "shared_class"));
  // Nor do the files in the process tell whether this one is kept.
  ASSERT_EQ(1U, folders.erase(fs::path(FAKES_DIR) / "sticky_unavailable"));
  for (const auto& [folder, files] : folders) {
    InstallX11("whole");
    compare(folder, files);
    InstallX11("refusing");
    if (files.size() > 1) compare(folder, files);
  }
  EXPECT_LT(16U, folders.size());
  EXPECT_LT(50U, kept);
}
