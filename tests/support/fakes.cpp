#include "tests/support/fakes.h"

#include "tests/support/fake_answers.h"
#include "tests/support/tree.h"

#include <cstdlib>
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

}  // namespace

FakeRng& Fake(const std::string& kind) {
  const std::lock_guard guard(g_lock);
  const auto [position, isNew] = g_fakes.try_emplace(kind);
  if (isNew) position->second.name = kind;
  return position->second;
}

FakeName NameOfFake(const char* kind) {
  const FakeRng& fake = Fake(kind);
  const std::size_t need = fake.name.size() + 1;
  const std::int32_t size = fake.nameSize.value_or(static_cast<std::int32_t>(need));
  return {.text = fake.name.c_str(),
          .written = fake.name.size() + fake.isTerminated,
          .size = size,
          .sizeAgain = fake.nameAgain.value_or(size)};
}

bool IsFakeAvailable(const char* kind) { return Fake(kind).isAvailable; }

std::uint32_t FlagsOfFake(const char* kind) { return Fake(kind).flags; }

void KeepSettings(const char* kind, IRngSettings* settings) { Fake(kind).settings = settings; }

IRngProvider* GiveProvider(const char* kind, IRngProvider* provider) {
  FakeRng& fake = Fake(kind);
  return fake.provider = fake.factoryGivesNull ? nullptr : provider;
}

FakeKnownPath& KnownPath() {
  // From the environment, so that the programs that a case runs use the same tree.
  static const std::string tree = std::getenv(kTreeVariable);
  static FakeKnownPath service{.directories = {{0, tree + "/share"}, {2, tree + "/etc"}}};
  return service;
}

const char* DirectoryOfKnownPath(int id) {
  const auto directory = KnownPath().directories.find(id);
  return directory == KnownPath().directories.end() ? nullptr : directory->second.c_str();
}

bool DoesKnownPathFillBuffers() { return KnownPath().fillsBuffer; }

void RecordCall(const std::string& who, const std::string& what) {
  {
    const std::lock_guard guard(g_lock);
    g_calls.push_back({who, what});
  }
  const auto& hooks = Fake(who).hooks;
  if (const auto hook = hooks.find(what); hook != hooks.end()) hook->second();
}

void RecordCallFromC(const char* who, const char* what) { RecordCall(who, what); }

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
