#include "tools/rngctl/doctor/permissions/findings.h"

#include "tools/rngctl/doctor/permissions/rights.h"
#include "tools/rngctl/doctor/permissions/unusual_file.h"
#include "tools/rngctl/doctor/permissions/way.h"

#include <algorithm>
#include <cerrno>

namespace {

class Collector {
 public:
  Collector(std::vector<PermissionReport>& all, const Subject& its, const Users& known)
      : findings(all), subject(its), users(known) {}

  void JudgeWay() {
    const std::vector<Step> steps = WalkTo(subject.path);
    for (const Step& step : steps) JudgeStep(step);
    if (!steps.empty() && steps.back().ofEntry.Exists()) JudgeEnd(steps.back());
  }

 private:
  // Others can write: that concerns root's processes, too, if they use the subject.
  void Add(const std::string& path, const std::string& problem, const std::string& fix) {
    AddPermission(findings, {path, problem, fix, subject.isRoots});
  }

  void AddOwner(const std::string& path, const Rights& rights) {
    Add(path, "it belongs to " + users.NameOfUser(rights.owner) + ", who can change it",
        "Give it to root: chown -h root " + path);
  }

  void AddWriter(const std::string& path, const Rights& rights, const Writer& writer) {
    if (writer.isOwner) return AddOwner(path, rights);
    const bool addsOnly = rights.IsDirectory() && rights.IsSticky();
    Add(path,
        writer.who + " can " +
            (addsOnly               ? "add files to it"
             : rights.IsDirectory() ? "replace the files in it and add others"
                                    : "write to it"),
        "Allow only root and yourself to write to it: " + writer.fix);
  }

  // In a sticky directory others can neither replace nor remove what is not theirs, but they can create
  // what is missing.
  void JudgeStep(const Step& step) {
    const auto writers = FindWriters(step.directory, step.ofDirectory, users);
    for (const Writer& writer : writers) {
      if (!step.ofDirectory.IsSticky() || writer.isOwner) {
        AddWriter(step.directory, step.ofDirectory, writer);
      } else if (step.ofEntry.error == ENOENT) {
        Add(step.entry,
            "it does not exist, and " + writer.who + " can create it in " + step.directory,
            "Use a directory to which only root and yourself can write, or create it first.");
      } else if (step.ofEntry.Exists() && !users.IsTrusted(step.ofEntry.owner)) {
        AddOwner(step.entry, step.ofEntry);
      }
    }
  }

  void JudgeEnd(const Step& last) {
    const bool isFile = subject.sort != Subject::Sort::kDirectory;
    if (isFile ? !last.ofEntry.IsRegular() : !last.ofEntry.IsDirectory()) return;
    for (const Writer& writer : FindWriters(last.entry, last.ofEntry, users)) {
      AddWriter(last.entry, last.ofEntry, writer);
    }
  }

  std::vector<PermissionReport>& findings;
  const Subject& subject;
  const Users& users;
};

}  // namespace

void AddPermission(std::vector<PermissionReport>& findings, const PermissionReport& finding) {
  const auto same =
      std::find_if(findings.begin(), findings.end(), [&finding](const PermissionReport& other) {
        return other.path == finding.path && other.problem == finding.problem;
      });
  if (same == findings.end()) {
    findings.push_back(finding);
  } else {
    same->letsOthersChangeRoots = same->letsOthersChangeRoots || finding.letsOthersChangeRoots;
  }
}

void AddFindings(std::vector<PermissionReport>& findings, const Subject& subject,
                 const Users& users) {
  Collector(findings, subject, users).JudgeWay();
  AddUnusualFile(findings, subject);
}
