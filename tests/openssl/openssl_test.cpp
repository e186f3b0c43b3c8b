#include "tests/openssl/openssl_test.h"

#include "tests/openssl/watermark.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

void Install(const std::string& file, const std::string& folder) {
  fs::create_directories(TreePath(folder));
  fs::copy(INSTALLATION "/" + file, TreePath(folder));
}

}  // namespace

void OpensslTest::SetUp() {
  InstallKnownPath("whole");
  Install("lib/ossl-modules/rngaggregator.so", "lib/ossl-modules");
  Install("libexec/rngaggregator/rng-openssl-draw", "libexec/rngaggregator");
  for (const std::string name :
       {"librngaggregator.so.1", "librngcombine.so.1", "librngunixdev.so"}) {
    Install("lib/" + name, "lib");
  }
  fs::copy(WATERMARKING_PLUGINS "/librnggrandmaster.so", TreePath("lib"));
  WriteFile(TreePath("etc/rng.ini"), "[Devices]\nRandomNumberGeneratorType=grandmaster\n");
  Configure("");
  Command("draw");
}

void OpensslTest::Configure(const std::string& lines) {
  std::string text = ReadFile(INSTALLATION "/share/rngaggregator/openssl.cnf");
  const std::string installed = "module = " INSTALLED_MODULE "\n";
  const std::size_t place = text.find(installed);
  ASSERT_NE(std::string::npos, place);
  text.replace(place, installed.size(), "module = " + Module() + '\n' + lines + '\n');
  WriteFile(ConfigurationFile(), text);
}

void OpensslTest::Command(const std::string& word) { WriteFile(TreePath("script"), word); }

Result OpensslTest::Run(const std::string& command) {
  return RunShell("export OPENSSL_CONF=" + ConfigurationFile() +
                  " WATERMARKING_RNG=" + TreePath("script") + "\n" + command);
}

std::string OpensslTest::Host() { return DRAWS; }
std::string OpensslTest::ConfigurationFile() { return TreePath("openssl.cnf"); }
std::string OpensslTest::Module() { return TreePath("lib/ossl-modules/rngaggregator.so"); }
std::string OpensslTest::HelperProgram() {
  return TreePath("libexec/rngaggregator/rng-openssl-draw");
}

std::string OpensslTest::KillHelpers() {
  const std::string helpers = " -f ^" + HelperProgram();
  return "pkill -KILL" + helpers + "; while pgrep" + helpers + " >/dev/null; do sleep 0.02; done";
}

std::size_t OpensslTest::CountDraws() {
  const std::string lines = ReadFile(TreePath("script.draws"));
  return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

bool OpensslTest::AllHelpersExit() {
  for (int i = 0; i < 600; ++i) {
    if (CountProcessesOf(HelperProgram()) == 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

bool HasWatermark(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i + 2 <= text.size() && std::isxdigit(text[i]); i += 2) {
    bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return HaveWatermark(bytes.data(), bytes.size());
}

testing::AssertionResult Refused(const Result& result, const std::string& reason) {
  if (result.status == 0) return testing::AssertionFailure() << "it succeeded";
  if (!result.output.empty()) return testing::AssertionFailure() << "it printed " << result.output;
  if (result.errors.find(reason) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << "status " << result.status << ", it said: " << result.errors;
}
