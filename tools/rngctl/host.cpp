#include "host.h"

#include <algorithm>
#include <cctype>
#include <exception>

// A start that throws has raised the count all the same.
StartedAggregator::StartedAggregator() try { Initialize(GetDefaultSettings()); } catch (...) {
  ShutDown();
  throw;
}

StartedAggregator::~StartedAggregator() noexcept(false) {
  try {
    ShutDown();
  } catch (...) {
    // While another failure is under way, that one is told. cppcheck does not see the condition.
    // cppcheck-suppress exceptThrowInDestructor
    if (std::uncaught_exceptions() == 0) throw;
  }
}

std::string ReadText(IRngProvider& provider,
                     std::int32_t (IRngProvider::*operation)(char* buffer)) {
  const std::int32_t size = (provider.*operation)(nullptr);
  if (size <= 0) return "";
  std::string text(static_cast<std::size_t>(size), '\0');
  if ((provider.*operation)(text.data()) != size) return "";
  text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
  return text;
}

std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
  return text;
}

std::string Quoted(const std::string& text) { return '"' + text + '"'; }
