#include "tests/rngctl/situations/situation.h"
#include "tests/support/tree.h"

#include <cstddef>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

const std::string kDsdr = "lib/librngdsdr.so";

void MoveTo(const std::string& directory) {
  fs::create_directories(TreePath(directory));
  fs::rename(TreePath(kDsdr), TreePath(directory) + "/librngdsdr.so");
}

void InstallAt(const std::string& path, const std::string& variant) {
  fs::create_directories(fs::path(TreePath(path)).parent_path());
  fs::copy_file(FakePlugin("dsdr", variant), TreePath(path));
}

// Changes one field of the ELF header.
void Patch(std::size_t offset, char value) {
  std::fstream stream(TreePath(kDsdr), std::ios::in | std::ios::out | std::ios::binary);
  stream.seekp(static_cast<std::streamoff>(offset));
  stream.put(value);
}

void CutOff(std::uintmax_t size) {
  InstallPlugin("dsdr", "stub");
  fs::resize_file(TreePath(kDsdr), size);
}

}  // namespace

std::vector<Situation> FileSituations() {
  const std::string other = "LD_LIBRARY_PATH=" + TreePath("other");
  return {
      {"NotALibrary", [] { WriteFile(TreePath(kDsdr), "not a library"); }, "nothing", "", {"dsdr"}},
      {"Empty", [] { WriteFile(TreePath(kDsdr), ""); }, "nothing", "", {"dsdr"}},
      {"CutOffInTheHeader", [] { CutOff(10); }, "nothing", "", {"dsdr"}},
      {"CutOffAfterTheHeader", [] { CutOff(4096); }, "crashed with signal 7", "", {"dsdr"}},
      {"ForAnotherMachine",
       [] {
         InstallPlugin("dsdr", "stub");
         Patch(offsetof(Elf64_Ehdr, e_machine), static_cast<char>(EM_AARCH64));
       },
       "nothing",
       "",
       {"dsdr"}},
      {"ForAnotherMachineBeforeAGoodOne",
       [] {
         InstallPlugin("dsdr", "stub");
         Patch(offsetof(Elf64_Ehdr, e_machine), static_cast<char>(EM_AARCH64));
         InstallAt("other/librngdsdr.so", "stub");
       },
       "dsdr",
       other,
       {"dsdr"}},
      {"OfThirtyTwoBits",
       [] {
         InstallPlugin("dsdr", "stub");
         Patch(EI_CLASS, ELFCLASS32);
       },
       "nothing",
       "",
       {"dsdr"}},
      {"AProgram", [] { fs::copy_file("/bin/true", TreePath(kDsdr)); }, "nothing", "", {"dsdr"}},
      {"Directory", [] { fs::create_directory(TreePath(kDsdr)); }, "nothing", "", {"dsdr"}},
      {"LinkToNothing",
       [] { fs::create_symlink(TreePath("gone"), TreePath(kDsdr)); },
       "nothing",
       "",
       {"dsdr"}},
      {"LinkToItself",
       [] { fs::create_symlink("librngdsdr.so", TreePath(kDsdr)); },
       "nothing",
       "",
       {"dsdr"}},
      {"LinkToAGoodOne",
       [] {
         InstallAt("elsewhere/plugin.so", "stub");
         fs::create_symlink(TreePath("elsewhere/plugin.so"), TreePath(kDsdr));
       },
       "dsdr",
       "",
       {"dsdr"}},
      {"Fifo", [] { ::mkfifo(TreePath(kDsdr).c_str(), 0600); }, "did not answer", "", {"dsdr"}},
      {"LinkToDevNull",
       [] { fs::create_symlink("/dev/null", TreePath(kDsdr)); },
       "nothing",
       "",
       {"dsdr"}},
      {"OnTheLibraryPath",
       [] {
         InstallPlugin("dsdr", "stub");
         MoveTo("other");
       },
       "dsdr",
       other,
       {"dsdr"}},
      {"BesideTheLibraryComesFirst",
       [] {
         InstallPlugin("dsdr", "no_factory");
         InstallAt("other/librngdsdr.so", "stub");
       },
       "nothing",
       other,
       {"dsdr"}},
      {"ForThisProcessorComesFirst",
       [] {
         InstallPlugin("dsdr", "stub");
         InstallAt("lib/glibc-hwcaps/x86-64-v2/librngdsdr.so", "no_factory");
       },
       "nothing",
       "",
       {"dsdr"}},
      {"ForThisProcessorIsGood",
       [] {
         InstallPlugin("dsdr", "no_factory");
         InstallAt("lib/glibc-hwcaps/x86-64-v2/librngdsdr.so", "stub");
       },
       "dsdr",
       "",
       {"dsdr"}},
      {"PreloadedUnderItsSoname",
       [] {
         InstallPlugin("dsdr", "stub");
         InstallAt("other/any.so", "unavailable_soname");
       },
       "nothing",
       "LD_PRELOAD=" + TreePath("other/any.so"),
       {"dsdr"}},
      {"PreloadedAndNowhereElse",
       [] { InstallAt("other/any.so", "has_soname"); },
       "dsdr",
       "LD_PRELOAD=" + TreePath("other/any.so"),
       {"dsdr"}},
      {"PreloadedItself",
       [] { InstallPlugin("dsdr", "stub"); },
       "dsdr",
       "LD_PRELOAD=" + TreePath(kDsdr),
       {"dsdr"}},
      {"DependencyIsMissing",
       [] { InstallPlugin("biokbd", "missing_dependency"); },
       "nothing",
       "",
       {"biokbd"}},
      {"DependencyLiesBesideIt",
       [] {
         InstallPlugin("biokbd", "missing_dependency");
         fs::copy(FAKES_DIR "/missing_dependency/libabsent_device.so", TreePath("lib"));
       },
       "nothing",
       "",
       {"biokbd"}},
      {"DependencyOnTheLibraryPath",
       [] {
         InstallPlugin("biokbd", "missing_dependency");
         fs::create_directory(TreePath("other"));
         fs::copy(FAKES_DIR "/missing_dependency/libabsent_device.so", TreePath("other"));
       },
       "nothing",
       other,
       {"biokbd"}},
      {"DependencyIsBroken",
       [] {
         InstallPlugin("biokbd", "missing_dependency");
         WriteFile(TreePath("other/libabsent_device.so"), "not a library");
       },
       "nothing",
       other,
       {"biokbd"}},
      {"NameWithCapitalLetter",
       [] { InstallAt("lib/librngDsdr.so", "stub"); },
       "nothing",
       "",
       {"dsdr"}},
      {"NameWithVersion",
       [] { InstallAt("lib/librngdsdr.so.1", "stub"); },
       "nothing",
       "",
       {"dsdr"}},
      {"NameWithoutLib", [] { InstallAt("lib/rngdsdr.so", "stub"); }, "nothing", "", {"dsdr"}},
      {"FactoryIsMangled",
       [] { InstallPlugin("dsdr", "breaking/factory_is_mangled"); },
       "nothing",
       "",
       {"dsdr"}},
      {"FactoryOfAnotherKind",
       [] {
         InstallPlugin("sobol", "stub");
         fs::rename(TreePath("lib/librngsobol.so"), TreePath(kDsdr));
       },
       "nothing",
       "",
       {"dsdr"}},
      {"MissesAFunction",
       [] { InstallPlugin("unixdev", "unresolved_function"); },
       "unixdev",
       "",
       {"unixdev"}},
  };
}
