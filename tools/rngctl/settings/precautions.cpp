#include "tools/rngctl/settings/precautions.h"

#include "tools/rngctl/files/users.h"
#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/settings/storing.h"
#include "tools/rngctl/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestLine = 511;  // the library stops copying at a longer one

// The nearest directory that exists. Empty if no part of a relative path exists.
std::string NearestPlace(const std::string& file) {
  std::string place = DirectoryOf(file);
  while (!LookThrough(place).Exists() && place != DirectoryOf(place)) place = DirectoryOf(place);
  return place;
}

// What this user may not write or read, "" if permissions do not prevent it.
std::string FindDenial(const std::string& file) {
  const std::string place = NearestPlace(file);
  const bool isDirectory = LookThrough(place).IsDirectory();
  if (isDirectory && !MayAccess(place, W_OK | X_OK) && errno == EACCES) return place;
  return LookThrough(file).Exists() && !MayAccess(file, R_OK) ? file : "";
}

std::string WhatToDo(const std::string& file) {
  const std::string denial = FindDenial(file);
  if (!denial.empty()) return HowToGetAccess(denial);
  const bool isFull = !WhyNoSpace(NearestPlace(file), SpaceToStore(file)).empty();
  return isFull ? "Free some space on that disk, and try again." : "Fix that, and try again.";
}

std::string TargetOf(const std::string& link) {
  std::error_code unknown;
  return fs::read_symlink(link, unknown);
}

// Why it is not a file that an earlier process of this user left, "" if it is.
std::string WhyForeign(const std::string& path, const PathFacts& entry) {
  if (entry.IsLink()) return "is a symbolic link to " + TargetOf(path);
  if (!entry.IsRegular()) return "is " + KindOfFile(entry);
  if (entry.owner != ::geteuid()) return "belongs to " + FindUsers().NameOfUser(entry.owner);
  return entry.names == 1 ? "" : "has " + Counted(entry.names, "name") + " (hard links)";
}

// A line of the old default, which storing replaces anyway.
bool IsEntry(const std::string& line) {
  return line.starts_with("RandomNumberGeneratorType") ||
         line.starts_with("RandomNumberGeneratorHardwareID");
}

std::string DescribeLongLine(std::size_t size) {
  return "has " + std::to_string(size) + " bytes, more than the " + std::to_string(kLongestLine) +
         " that the library can copy. Storing removes it and all lines after it.";
}

// What the library does not copy of a line; "" if it copies all. It does not count carriage returns, so
// `line` has none.
std::string DescribeLoss(const std::string& line, bool isEnded) {
  if (line.size() > kLongestLine) return DescribeLongLine(line.size());
  if (!isEnded && !line.empty() && !IsEntry(line)) {
    return "is the last one and does not end with a line feed. Storing removes it.";
  }
  if (line.find('\0') == std::string::npos) return "";
  return "contains a zero byte. Storing removes the rest of the line from there.";
}

void WarnOfLostLines(const std::string& file) {
  std::ifstream content(file, std::ios::binary);
  std::string line;
  for (std::size_t number = 1; std::getline(content, line); ++number) {
    std::erase(line, '\r');
    const std::string loss = DescribeLoss(line, !content.eof());
    if (loss.empty()) continue;
    std::cerr << Printable("Warning: line " + std::to_string(number) + " of " + file + " " + loss)
              << '\n';
    if (line.size() > kLongestLine) return;
  }
}

std::string HowToRetry(int error, bool isDiskFull) {
  const std::string advice = HowToOpenMore(error);
  if (!advice.empty()) return advice;
  if (isDiskFull) return "Free some space, and try again.";
  return "Check that the file can be replaced and that no other section or key that the library "
         "reads comes first in it.";
}

std::string NameOwners(const PathFacts& file) {
  const Users users = FindUsers();
  return users.NameOfUser(file.owner) + " and " + users.NameOfGroup(file.group);
}

}  // namespace

std::string HowToGetAccess(const std::string& path) {
  const uid_t owner = LookThrough(path).owner;
  if (owner == ::geteuid()) return "Fix: chmod u+rwX " + path;
  if (owner == 0) return path + " belongs to root. Try again with sudo.";
  return path + " belongs to " + FindUsers().NameOfUser(owner) +
         ". Try again as that user or with sudo.";
}

void RefuseToStore(const std::string& file, const std::string& why, const std::string& fix) {
  throw Refusal(kNegativeAnswer, "The default could not be stored in " + file + ": " + why +
                                     ". Nothing was changed. " + fix);
}

void RefuseAfterStoring(const std::string& file, const std::string& found, int error) {
  const std::string reason = error == 0 ? "" : std::string(" (") + std::strerror(error) + ")";
  const std::string noSpace = WhyNoSpace(NearestPlace(file), 0);
  const std::string cause = noSpace.empty() ? "" : " The reason is probably that " + noSpace + ".";
  throw Refusal(kNegativeAnswer,
                "The default could not be stored in " + file + reason + ": " + found + "." + cause,
                HowToRetry(error, !noSpace.empty()));
}

std::vector<std::string> LinesToKeep(const std::string& file) {
  std::vector<std::string> lines;
  std::ifstream content(file, std::ios::binary);
  for (std::string line; std::getline(content, line) && !content.eof();) {
    std::erase(line, '\r');
    if (line.size() > kLongestLine) break;
    line.resize(std::min(line.find('\0'), line.size()));
    if (!line.empty() && line != "[Devices]" && !IsEntry(line)) lines.push_back(line);
  }
  return lines;
}

void FinishInterruptedStore(const std::string& file) {
  const std::string temporary = file + ".tmp";
  const PathFacts entry = LookAtEntry(temporary);
  if (LookAtEntry(file).error != ENOENT || !entry.Exists() || entry.size == 0) return;
  if (!WhyForeign(temporary, entry).empty()) return;
  if (std::rename(temporary.c_str(), file.c_str()) != 0) return;
  std::cerr << Printable("Warning: " + file +
                         " was missing because an earlier store was interrupted. It "
                         "was restored from " +
                         temporary + ".")
            << '\n';
}

void CheckLinks(const std::string& file) {
  if (LookAtEntry(file).IsLink() && LookThrough(file).error == ENOENT) {
    RefuseToStore(file, "it is a symbolic link to " + TargetOf(file) + ", which does not exist",
                  "Create that file, or remove the link: rm " + file);
  }
  const std::string temporary = file + ".tmp";
  const PathFacts entry = LookAtEntry(temporary);
  if (!entry.Exists()) return;
  const std::string why = WhyForeign(temporary, entry);
  if (!why.empty()) {
    RefuseToStore(file, temporary + " " + why + ", and storing would write to it",
                  "Remove it: " + std::string(entry.IsDirectory() ? "rmdir " : "rm ") + temporary);
  }
  if (LookThrough(file).node != entry.node) return;
  RefuseToStore(file, "it leads to " + temporary + ", which storing removes",
                "Put the file in its place: mv " + temporary + " " + file);
}

void CheckStorable(const std::string& file) {
  const std::string why = WhyNotStorable(file);
  if (!why.empty()) RefuseToStore(file, why, WhatToDo(file));
  const ReadingFault fault = MayExist(file) ? FindReadingFault(file) : ReadingFault{};
  if (fault.problem.empty()) return;
  RefuseToStore(file, "it cannot be read (" + fault.problem + ")", fault.fix);
}

void WarnOfLosses(const std::string& file) {
  if (LookAtEntry(file).IsLink()) {
    std::cerr << Printable(
                     "Warning: " + file + " is a symbolic link to " + TargetOf(file) +
                     ". Storing replaces the link with a file and leaves its target unchanged.")
              << '\n';
  }
  WarnOfLostLines(file);
}

void WarnOfNewOwner(const std::string& file, const PathFacts& before) {
  const PathFacts now = LookAtEntry(file);
  const bool isSame = before.owner == now.owner && before.group == now.group;
  const bool isForEverybody = (now.mode & S_IROTH) != 0;
  if (!before.IsRegular() || isSame || isForEverybody) return;
  std::cerr << Printable("Warning: " + file + " now belongs to " + NameOwners(now) +
                         ". Before, it belonged to " + NameOwners(before) +
                         ", who may no longer be able to read it. Fix: chown " +
                         std::to_string(before.owner) + ":" + std::to_string(before.group) + " " +
                         file)
            << '\n';
}
