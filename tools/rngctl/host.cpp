#include "host.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <iostream>

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
  // U+0080 to U+009F steer terminals, too: C2, then the number.
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const auto next = static_cast<unsigned char>(text[i + 1]);
    if (text[i] == '\xC2' && next >= 0x80 && next <= 0x9F) text.replace(i, 2, "?");
  }
  return text;
}

std::size_t CountColumns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;  // the start of a character
  }));
}

std::string Padded(const std::string& text, std::size_t columns) {
  const std::size_t count = CountColumns(text);
  return count < columns ? text + std::string(columns - count, ' ') : text;
}

void FinishOutput() {
  if (!std::cout.flush()) throw Refusal(kNegativeAnswer, "Cannot write to standard output.");
}

std::string Quoted(const std::string& text) { return '"' + text + '"'; }
