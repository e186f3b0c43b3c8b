#include "tests/support/fakes.h"

#include <mutex>
#include <vector>

namespace {

struct Call {
  std::string who;
  std::string what;
};

std::mutex g_lock;
std::vector<Call> g_calls;
std::map<std::string, FakeRng> g_fakes;
FakeKnownPath g_knownPath;

}  // namespace

FakeRng& Fake(const std::string& kind) {
  const std::lock_guard guard(g_lock);
  const auto [position, isNew] = g_fakes.try_emplace(kind);
  if (isNew) position->second.name = kind;
  return position->second;
}

FakeKnownPath& KnownPath() { return g_knownPath; }

void RecordCall(const std::string& who, const std::string& what) {
  {
    const std::lock_guard guard(g_lock);
    g_calls.push_back({who, what});
  }
  const auto& hooks = Fake(who).hooks;
  if (const auto hook = hooks.find(what); hook != hooks.end()) hook->second();
}

std::string CallLog(const std::string& who) {
  const std::lock_guard guard(g_lock);
  std::string text;
  for (const Call& call : g_calls) {
    if (call.who == who) text += (text.empty() ? "" : " ") + call.what;
  }
  return text;
}

std::string CallLog() {
  const std::lock_guard guard(g_lock);
  std::string text;
  for (const Call& call : g_calls) text += (text.empty() ? "" : " ") + call.who + "." + call.what;
  return text;
}

std::size_t CountCalls(const std::string& who, const std::string& what) {
  const std::lock_guard guard(g_lock);
  std::size_t count = 0;
  for (const Call& call : g_calls) count += call.who == who && call.what == what;
  return count;
}

void ClearCallLog() {
  const std::lock_guard guard(g_lock);
  g_calls.clear();
}
