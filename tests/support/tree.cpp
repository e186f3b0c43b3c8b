#include "tests/support/tree.h"

#include "tests/support/kinds.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

void Install(const fs::path& file, const std::string& name) {
  const fs::path target = TreePath("lib/" + name);
  fs::remove(target);  // never overwritten in place: it may be mapped
  fs::copy_file(file, target);
}

void InstallLibrary(const std::string& folder, const std::string& variant,
                    const std::string& name) {
  if (variant != "absent") return Install(fs::path(FAKES_DIR) / folder / variant / name, name);
  fs::remove(TreePath("lib/" + name));
  WriteFile(TreePath("lib/" + name), "not a library\n");
}

}  // namespace

std::string TreePath(const std::string& relative) {
  return std::string(std::getenv(kTreeVariable)) + "/" + relative;
}

void LayOutTree() {
  Install(AGGREGATOR_LIBRARY, "librngaggregator.so");
  InstallX11("refusing");
  InstallKnownPath("whole");
}

const std::string& LibraryFileOf(const std::string& kind) { return KindOfName(kind).libraryFile; }

std::string FakePlugin(const std::string& kind, const std::string& variant) {
  return FAKES_DIR "/fake_plugins/" + variant + "/" + LibraryFileOf(kind);
}

void InstallPlugin(const std::string& kind, const std::string& variant) {
  if (std::getenv("RNG_TEST_WITHOUT_PLUGINS")) return;  // a suite that passes even so tests nothing
  Install(FakePlugin(kind, variant), LibraryFileOf(kind));
}

void InstallPlugins(std::initializer_list<std::string> kinds) {
  for (const std::string& kind : kinds) InstallPlugin(kind);
}

void InstallAllPlugins(const std::string& variant) {
  for (const Kind& kind : AllKinds()) InstallPlugin(kind.name, variant);
}

void InstallX11(const std::string& variant) {
  InstallLibrary("fake_libs/x11", variant, "libX11.so.6");
}

void InstallKnownPath(const std::string& variant) {
  InstallLibrary("fake_libs/known_path", variant, "libcrypt_known_path.so");
}

std::string ReadFile(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

void WriteFile(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}
