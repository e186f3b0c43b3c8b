#ifndef TESTS_RNGCTL_OPENSSL_OPENSSL_DOCTOR_H
#define TESTS_RNGCTL_OPENSSL_OPENSSL_DOCTOR_H

#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <stdexcept>
#include <string>

inline constexpr char kElsewhere[] =
    "rngctl: Programs that use OpenSSL do not draw from rngaggregator: ";
inline constexpr char kNoBytes[] = "rngctl: Programs that use OpenSSL get no random bytes: ";

inline std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t place = text.find(from);
  if (place == std::string::npos) throw std::runtime_error("there is no " + from);
  return text.replace(place, from.size(), to);
}

/// Installs the provider's module in the test's directory, with a correct configuration and a fake helper.
class OpensslDoctor : public InstalledTool {
 protected:
  void SetUp() override {
    InstalledTool::SetUp();
    std::filesystem::create_directories(TreePath("lib/ossl-modules"));
    std::filesystem::create_directories(TreePath("libexec/rngaggregator"));
    std::filesystem::copy_file(PROVIDER "/lib/ossl-modules/rngaggregator.so", Module());
    std::filesystem::copy_file(FAKE_DRAW, Program());
    good =
        Replaced(ReadFile(PROVIDER "/share/rngaggregator/openssl.cnf"), INSTALLED_MODULE, Module());
    WriteFile(File(), good);
  }

  static std::string File() { return TreePath("openssl.cnf"); }
  static std::string Module() { return TreePath("lib/ossl-modules/rngaggregator.so"); }
  static std::string Program() { return TreePath("libexec/rngaggregator/rng-openssl-draw"); }

  // Installs the real helper in place of the fake one.
  static void InstallHelper() {
    for (const std::string file :
         {"libexec/rngaggregator/rng-openssl-draw", "lib/librngcombine.so.1"}) {
      std::filesystem::copy_file(PROVIDER "/" + file, TreePath(file),
                                 std::filesystem::copy_options::overwrite_existing);
    }
  }

  void Change(const std::string& from, const std::string& to) const {
    WriteFile(File(), Replaced(good, from, to));
  }

  static Result Examine(const std::string& arguments = "", const std::string& environment = "") {
    return RunShell("OPENSSL_CONF=" + File() + ' ' + environment + " exec " + Rngctl() +
                    " doctor --openssl " + arguments);
  }

  // The tool as a user to whom permission bits apply.
  static Result ExamineAsUser(const std::string& arguments = "") {
    return RunForked([&arguments] {
      const Unprivileged user;
      const std::string command =
          "OPENSSL_CONF=" + File() + " exec " + Rngctl() + " doctor --openssl " + arguments;
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      return 127;
    });
  }

  static void ExpectFault(const Result& result, const std::string& sentence,
                          const std::string& fix) {
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, testing::HasSubstr(sentence + ".\n"));
    EXPECT_THAT(result.output, testing::HasSubstr("\nFix: " + fix + '\n'));
  }

  // With another configuration: OpenSSL's own generator draws, for this reason.
  static void ExpectElsewhere(const std::string& problem, const std::string& fix) {
    const Result result = Examine();
    ExpectFault(result, kElsewhere + problem, fix);
    EXPECT_THAT(result.output,
                testing::HasSubstr("\nDraw             from CTR-DRBG of the provider default: "));
  }

  static void ExpectNoBytes(const std::string& problem, const std::string& fix,
                            const std::string& environment = "") {
    const Result result = Examine("", environment);
    ExpectFault(result, kNoBytes + problem, fix);
    EXPECT_THAT(result.output, testing::HasSubstr("\nDraw             failed: "));
  }

  std::string good;
};

#endif
