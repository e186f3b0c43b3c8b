#include "tools/rngctl/doctor/examine/answers.h"

#include <algorithm>
#include <cstring>
#include <exception>
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

std::string MessageOfException() {
  try {
    throw;
  } catch (const std::exception& error) {
    const char* const what = error.what();
    return what ? std::string(what, ::strnlen(what, kMostText)) : "";
  } catch (...) {
    return "";
  }
}

std::vector<std::string> ChangesSince(ProcessState before) {
  const ProcessState after = CaptureProcessState();
  before.children = after.children;
  return Compare(before, after);
}
