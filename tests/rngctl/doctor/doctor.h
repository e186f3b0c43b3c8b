#ifndef TESTS_RNGCTL_DOCTOR_DOCTOR_H
#define TESTS_RNGCTL_DOCTOR_DOCTOR_H

#include "tests/rngctl/installed_tool.h"
#include "tests/support/permissions.h"
#include "tests/support/tree.h"

#include <filesystem>
#include <nlohmann/json.hpp>

using nlohmann::json;

/// The doctor in an installation. The plug-in that comes with the library is moved away; a case that
/// needs it calls InstallUnixDev.
class Doctor : public InstalledTool {
 protected:
  void SetUp() override {
    InstalledTool::SetUp();
    std::filesystem::rename(UnixDev(), UnixDev() + ".away");
  }

  static void InstallUnixDev() { std::filesystem::rename(UnixDev() + ".away", UnixDev()); }

  /// Installs a plug-in for every verdict that can occur beside the others.
  static void InstallOneOfEach() {
    InstallPlugin("bioqt");
    WriteFile(TreePath("lib/librngbiox11.so"), "not a library");
    InstallPlugin("dsdr", "throwing_start");
    InstallPlugin("accord", "exiting");
    InstallPlugin("sobol", "hanging");
    InstallPlugin("JacartaGost", "null_factory");
    InstallPlugin("Rutoken", "unavailable");
    InstallPlugin("EsmartGost", "nameless");
    InstallPlugin("biokbd", "missing_dependency");
    InstallPlugin("unixdev");
    InstallPlugin("grandmaster", "crashing");
  }

  /// Runs the doctor with an environment, such as "DISPLAY=:7", and a limit in seconds for each
  /// plug-in.
  static json Examine(const std::string& arguments, const std::string& environment = "",
                      int timeout = 5) {
    const Result result = RunShell(environment + " " + Rngctl() + " doctor --json --timeout " +
                                   std::to_string(timeout) + " " + arguments);
    return json::parse(result.output, nullptr, false);
  }

  static json ExamineKind(const std::string& kind, const std::string& environment = "",
                          int timeout = 5) {
    return Examine(kind, environment, timeout).at("generators").at(0);
  }

  /// The same for a user to whom permission bits apply, even if the tests run as root.
  static json ExamineAsUser(const std::string& arguments, const std::string& environment = "") {
    const std::string command = environment + " exec " + Rngctl() + " doctor --json " + arguments;
    const Result result = RunForked([&command] {
      const Unprivileged user;
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      return 127;
    });
    return json::parse(result.output, nullptr, false);
  }

  static json ExamineKindAsUser(const std::string& kind, const std::string& environment = "") {
    return ExamineAsUser(kind, environment).at("generators").at(0);
  }

 private:
  static std::string UnixDev() { return TreePath("lib/librngunixdev.so"); }
};

inline json RowOf(const json& report, const std::string& kind) {
  for (const json& row : report.at("generators")) {
    if (row.at("kind") == kind) return row;
  }
  ADD_FAILURE() << "no row of " << kind;
  return {};
}

inline std::string Text(const json& value) {
  return value.is_string() ? value.get<std::string>() : "";
}

#endif
