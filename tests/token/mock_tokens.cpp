#include "tests/token/mock_tokens.h"

#include "tests/support/tree.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>

namespace {

std::string ScriptPath() { return TreePath("mock/tokens"); }
std::string LogPath() { return TreePath("mock/log"); }

void ReadField(MockCall& call, const std::string& word) {
  const std::size_t sign = word.find('=');
  if (sign == std::string::npos) {
    call.remark = call.function;  // "PID hangs FUNCTION"
    call.function = word;
    return;
  }
  const std::string key = word.substr(0, sign);
  const unsigned long value = std::stoul(word.substr(sign + 1), nullptr, 0);
  if (key == "slot") call.slot = value;
  if (key == "session") call.session = value;
  if (key == "size") call.size = value;
  if (key == "result") call.result = value;
}

MockCall ReadCall(const std::string& line) {
  std::istringstream words(line);
  MockCall call;
  words >> call.process >> call.function;
  for (std::string word; words >> word;) ReadField(call, word);
  return call;
}

}  // namespace

MockTokens::MockTokens() {
  ::setenv("MOCK_TOKENS", ScriptPath().c_str(), 1);
  ::setenv("MOCK_LOG", LogPath().c_str(), 1);
  Set("");
}

void MockTokens::Set(const std::string& lines) const {
  WriteFile(ScriptPath() + ".new", lines);
  std::filesystem::rename(ScriptPath() + ".new", ScriptPath());
}

void MockTokens::Set(std::initializer_list<std::string> lines) const {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  Set(text);
}

std::vector<MockCall> MockTokens::Log() const {
  std::istringstream lines(ReadFile(LogPath()));
  std::vector<MockCall> calls;
  for (std::string line; std::getline(lines, line);) calls.push_back(ReadCall(line));
  return calls;
}

void MockTokens::ClearLog() const { std::filesystem::remove(LogPath()); }

std::size_t MockTokens::Count(const std::string& function) const {
  std::size_t count = 0;
  for (const MockCall& call : Log()) count += call.remark.empty() && call.function == function;
  return count;
}

std::size_t MockTokens::CountRemarks(const std::string& remark) const {
  std::size_t count = 0;
  for (const MockCall& call : Log()) count += call.remark == remark;
  return count;
}

std::vector<unsigned long> MockTokens::OpenedSlots() const {
  std::set<unsigned long> slots;
  for (const MockCall& call : Log()) {
    if (call.remark.empty() && call.function == "C_OpenSession") slots.insert(*call.slot);
  }
  return {slots.begin(), slots.end()};
}

std::size_t MockTokens::OpenSessions() const {
  std::set<std::pair<pid_t, unsigned long>> open;
  for (const MockCall& call : Log()) {
    if (call.function == "C_OpenSession" && call.session)
      open.insert({call.process, *call.session});
    if (call.function == "C_CloseSession") open.erase({call.process, *call.session});
    if (call.function == "C_Finalize" && call.result == 0) {
      std::erase_if(open, [&](const auto& session) { return session.first == call.process; });
    }
  }
  return open.size();
}

std::vector<unsigned long> MockTokens::Pieces() const {
  std::vector<unsigned long> sizes;
  for (const MockCall& call : Log()) {
    if (call.remark.empty() && call.function == "C_GenerateRandom" && call.result == 0) {
      sizes.push_back(*call.size);
    }
  }
  return sizes;
}

bool MockTokens::Hangs(const std::string& function) const {
  for (int look = 0; look < 6000; ++look) {
    for (const MockCall& call : Log()) {
      if (call.remark == "hangs" && call.function == function) return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

std::string Encoded(const std::string& text) {
  std::string encoded;
  for (const char byte : text) {
    char code[4];
    std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(byte));
    encoded += code;
  }
  return encoded;
}
