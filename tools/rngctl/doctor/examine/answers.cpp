#include "tools/rngctl/doctor/examine/answers.h"

#include <algorithm>
#include <cstring>
#include <memory>

ReportedName AskForName(IRngProvider& provider) {
  ReportedName name;
  name.size = provider.GetName(nullptr);
  if (name.size <= 0) return name;
  const auto length = static_cast<std::size_t>(name.size);
  const auto buffer = std::make_unique<char[]>(length);
  name.sizeAgain = provider.GetName(buffer.get());
  name.text.assign(buffer.get(), ::strnlen(buffer.get(), std::min(length, kMostText)));
  return name;
}

void AddChanges(std::vector<std::string>& changes, ProcessSnapshot before) {
  const ProcessSnapshot after = CaptureProcessState();
  before.children = after.children;
  for (const std::string& change : Compare(before, after)) {
    const bool isKnown = std::find(changes.begin(), changes.end(), change) != changes.end();
    if (!isKnown) changes.push_back(change);
  }
}
