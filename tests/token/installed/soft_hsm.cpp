#include "tests/token/installed/soft_hsm.h"

#include "tests/support/process.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

std::string Tokens() { return TreePath("softhsm/tokens"); }
std::string TakenOut() { return TreePath("softhsm/taken_out"); }

std::string Run(const std::string& command) {
  const Result result = RunShell(command);
  if (result.status != 0) throw std::runtime_error(command + ": " + result.errors);
  return result.output.substr(0, result.output.find('\n'));
}

// The name of a token's folder ends with its serial number, with a dash in it.
void Move(const std::string& serial, const std::string& from, const std::string& to) {
  for (const auto& folder : fs::directory_iterator(from)) {
    std::string name = folder.path().filename();
    std::erase(name, '-');
    if (!name.ends_with(serial)) continue;
    fs::rename(folder.path(), to / folder.path().filename());
    return;
  }
  throw std::runtime_error("no token " + serial + " in " + from);
}

}  // namespace

SoftHsm::SoftHsm() {
  fs::create_directories(Tokens());
  fs::create_directories(TakenOut());
  const std::string file = TreePath("softhsm/softhsm2.conf");
  WriteFile(file, "directories.tokendir = " + Tokens() +
                      "\nobjectstore.backend = file\nlog.level = ERROR\n");
  ::setenv("SOFTHSM2_CONF", file.c_str(), 1);
}

std::string SoftHsm::Add(const std::string& label) const {
  Run("softhsm2-util --init-token --free --pin 1234 --so-pin 5678 --label " + label);
  return Run("softhsm2-util --show-slots | awk '/Serial number:/ {serial = $3} /Label: +" + label +
             " *$/ {print serial}'");
}

void SoftHsm::TakeOut(const std::string& serial) const { Move(serial, Tokens(), TakenOut()); }

void SoftHsm::Insert(const std::string& serial) const { Move(serial, TakenOut(), Tokens()); }
