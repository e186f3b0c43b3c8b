#include "tests/rngctl/situations/seen.h"

#include "tests/rngctl/installed_tool.h"
#include "tests/support/kinds.h"
#include "tests/support/tree.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// Seconds after which a host or a plug-in counts as hanging.
constexpr int kPatience = 2;

void Add(Seen& seen, const std::string& word) { seen += (seen.empty() ? "" : " ") + word; }

// How the host ended before its last line, in the doctor's words.
std::string DescribeEnd(int status) {
  if (WIFSTOPPED(status)) return "was stopped by signal " + std::to_string(WSTOPSIG(status));
  if (WIFEXITED(status)) return "exited with status " + std::to_string(WEXITSTATUS(status));
  return "crashed with signal " + std::to_string(WTERMSIG(status));
}

pid_t StartHost(const std::string& environment, const std::string& file) {
  const std::string command = "ulimit -c 0; exec env " + environment + " " + TreePath("bin/host") +
                              " " + file + " </dev/null >/dev/null 2>" + TreePath("errors");
  const pid_t host = ::fork();
  if (host == 0) {
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    ::_exit(127);
  }
  return host;
}

// Waits until the process ends or stops, and kills it if it has not ended.
std::string WatchHost(pid_t host) {
  int status = 0;
  for (int tick = 0; tick < 100 * kPatience; ++tick) {
    if (::waitpid(host, &status, WNOHANG | WUNTRACED) == host) {
      if (WIFSTOPPED(status)) ::kill(host, SIGKILL);
      return DescribeEnd(status);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ::kill(host, SIGKILL);
  ::waitpid(host, &status, 0);
  return "did not answer";
}

bool IsPluginOfAnother(const std::string& file, const std::string& kind) {
  for (const Kind& other : AllKinds()) {
    if (other.libraryFile == file) return other.name != kind;
  }
  return false;
}

// The kinds whose object is their own, and the default.
Seen ReadLines(const std::string& lines) {
  Seen kinds;
  std::string theDefault;
  std::istringstream stream(lines);
  for (std::string word, name, file; stream >> word;) {
    if (word == "kind" && stream >> name >> file && !IsPluginOfAnother(file, name)) {
      Add(kinds, name);
    }
    if (word == "default" && stream >> name && name != "none") theDefault = "; default " + name;
  }
  return (kinds.empty() ? "nothing" : kinds) + theDefault;
}

// The doctor's words for a failed start, without what only it says.
Seen WithoutDetails(const std::string& problem) {
  // What this host says, too, if an exception is not caught.
  if (problem.find("uncaught exception") != std::string::npos) return "threw an exception";
  std::smatch end;
  const std::regex ends(
      "did not answer|crashed with signal [0-9]+|exited with status [0-9]+|threw an exception|"
      "was stopped by signal [0-9]+|deadlocks|would hang|default hang");
  const std::string words = std::regex_search(problem, end, ends) ? end.str() : problem;
  const bool isHanging = words == "deadlocks" || words.find("hang") != std::string::npos;
  return isHanging ? "did not answer" : words;
}

std::string DefaultOf(const json& report) {
  const json theDefault = report.value("default", json());
  if (theDefault.is_null()) return "";
  const bool isUsable =
      theDefault.at("found") == true && theDefault.value("problem", json()).is_null();
  return isUsable ? "; default usable" : "; default unusable";
}

Seen ReadReport(const json& report) {
  const json problem = report.at("start").at("problem");
  if (!problem.is_null()) return WithoutDetails(problem);
  const json unread = report.at("settings").at("problem");
  if (!unread.is_null() && WithoutDetails(unread) != unread) return WithoutDetails(unread);
  Seen kinds;
  for (const json& row : report.at("generators")) {
    const bool isOwn = row.at("kept") == true && row.at("name") == row.at("kind") &&
                       row.at("verdict") != "contradicted";
    if (isOwn) Add(kinds, row.at("kind"));
  }
  return (kinds.empty() ? "nothing" : kinds) + DefaultOf(report);
}

}  // namespace

Seen WhatAHostSees(const std::string& environment) {
  const std::string file = TreePath("seen");
  WriteFile(file, "");
  fs::permissions(file, fs::perms(0666));  // the host may be another user
  const std::string end = WatchHost(StartHost(environment, file));
  const std::string lines = ReadFile(file);
  if (lines.find("stopped\n") != std::string::npos && end == "exited with status 0") {
    return ReadLines(lines);
  }
  const bool hasThrown =
      ReadFile(TreePath("errors")).find("terminate called after throwing") != std::string::npos;
  return hasThrown ? "threw an exception" : end;
}

DoctorsAnswer WhatTheDoctorSays(const std::string& environment) {
  const Result result = RunShell("env " + environment + " " + Rngctl() +
                                 " doctor --json --timeout " + std::to_string(kPatience));
  const json report = json::parse(result.output, nullptr, false);
  if (report.is_discarded()) return {"no report: " + result.errors, result.status, result.output};
  return {ReadReport(report), result.status, result.output};
}

bool DoctorApproves(const std::string& kind, const std::string& environment) {
  return RunShell("env " + environment + " " + Rngctl() + " doctor " + kind + " --timeout " +
                  std::to_string(kPatience))
             .status == 0;
}
