#include "providers/catalogue.h"
#include "tools/rngctl/channel/immortal.h"
#include "tools/rngctl/channel/last_words.h"
#include "tools/rngctl/doctor/examine/answers.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/examine/started_generators.h"
#include "tools/rngctl/doctor/start/messages.h"
#include "tools/rngctl/loader/loader_calls.h"
#include "tools/rngctl/loader/search_order.h"
#include "tools/rngctl/process/child.h"
#include "tools/rngctl/process/lifecycle_calls.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <cxxabi.h>
#include <filesystem>
#include <unistd.h>

#include <rngaggregator/aggregator.h>

namespace {

using Clock = std::chrono::steady_clock;

// Global, because plug-ins may call the watched functions from anywhere.
Immortal<StartAnswer> g_immortalAnswer;
StartAnswer& g_answer = g_immortalAnswer.value;
Clock::time_point g_partBegan;
std::vector<std::string> g_unopened;  // the kinds whose plug-ins are not to be opened

void Begin(StartStep step, const std::string& subject = "") {
  g_answer.step = step;
  g_answer.subject = subject;
  Send(g_answer);
}

double SecondsSince(Clock::time_point time) {
  return std::chrono::duration<double>(Clock::now() - time).count();
}

// --- What the library is doing during the start and the stop

void EndPart() {
  const bool isPart = g_answer.step == StartStep::kDisplay || g_answer.step == StartStep::kTreat;
  const double seconds = SecondsSince(g_partBegan);
  g_partBegan = Clock::now();
  if (!isPart) return;
  auto& parts = g_answer.parts;
  const auto known = std::find_if(parts.begin(), parts.end(), [](const StartPart& part) {
    return part.kind == g_answer.subject;
  });
  if (known != parts.end()) {
    known->seconds += seconds;
  } else {
    parts.push_back({g_answer.subject, seconds});
  }
}

std::string KindOf(const std::string& libraryFile) {
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) {
    if (row.libraryFile == libraryFile) return row.name;
  }
  return "";
}

bool IsStarting() { return !g_answer.seconds; }

// The library opens the X library before each plug-in, and each plug-in by its bare name.
bool NoteOpening(const char* file, LoaderCaller caller) {
  const bool isDisplay = std::strcmp(file, "libX11.so.6") == 0;
  const std::string kind = KindOf(file);
  if (IsStarting() && caller.IsLibrary() && (isDisplay || !kind.empty())) {
    EndPart();
    Begin(isDisplay ? StartStep::kDisplay : StartStep::kTreat, kind);
  }
  return std::find(g_unopened.begin(), g_unopened.end(), kind) == g_unopened.end();
}

void NoteClosing(const std::string& file, LoaderCaller caller) {
  if (caller.IsLibrary()) {
    if (g_answer.step == StartStep::kStop) Begin(StartStep::kStop, file);
    return;
  }
  const std::filesystem::path closer = caller.File();
  const bool isForeign = !KindOf(std::filesystem::path(file).filename()).empty() &&
                         !KindOf(closer.filename()).empty() && closer != file;
  if (isForeign) g_answer.closes.push_back({WithoutDotDot(closer), WithoutDotDot(file)});
}

constexpr LoaderObserver kObserver = {NoteOpening, NoteClosing};

// In a host the call deadlocks during a start or a stop, which hold the lock throughout. Between the
// two, a nested start changes nothing that is examined here, and a stop ends everything.
void NoteLifecycleCall(LifecycleFunction function) {
  const StartStep step = g_answer.step;
  const bool isLocked = IsStarting() || step == StartStep::kStop;
  if (!g_answer.called) {
    g_answer.called = function;
    g_answer.calledIn = step;
    Send(g_answer);
  }
  if (isLocked || (function == LifecycleFunction::kShutDown && step != StartStep::kEnd)) ::_exit(0);
}

// --- The questions of a host

// While the library is started: the class of an exception may be defined in a plug-in.
template <typename Question>
bool Catches(Question ask) {
  try {
    ask();
    return false;
  } catch (const abi::__forced_unwind&) {
    throw;  // pthread_exit, which must reach the end of the thread
  } catch (...) {
    if (!g_answer.threwIn) g_answer.threwIn = g_answer.step;
    return true;
  }
}

void Remember(IRngProvider* provider) {
  const StartedGenerator found = Locate(provider);
  const auto& known = g_answer.generators;
  const bool isKnown =
      std::any_of(known.begin(), known.end(),
                  [&found](const StartedGenerator& other) { return other.object == found.object; });
  if (!isKnown) g_answer.generators.push_back(found);
}

KindLookup LookUp(const std::string& kind) {
  try {
    IRngProvider* const provider = GetRng(kind.c_str());
    if (!provider) return {kind};
    Remember(provider);
    return {kind, LookupEnd::kFound, reinterpret_cast<std::uintptr_t>(provider)};
  } catch (const abi::__forced_unwind&) {
    throw;
  } catch (...) {
    return {kind, LookupEnd::kThrew, 0, MessageOfException()};
  }
}

void LookUpOnce(const std::string& kind) {
  for (const KindLookup& lookup : g_answer.lookups) {
    if (lookup.kind == kind) return;
  }
  Begin(StartStep::kLookUp, kind);
  const KindLookup lookup = LookUp(kind);
  g_answer.lookups.push_back(lookup);
}

bool FindsDefault() {
  DefaultRngInfo info;
  return GetDefaultRng(&info, 0) == 1 && GetRng(info.type) != nullptr;
}

void SearchDefault(const DoctorQuestion& question) {
  if (!question.asksForDefault || g_answer.findsDefault) return;
  Begin(StartStep::kDefault);
  bool isFound = false;
  Catches([&isFound] { isFound = FindsDefault(); });
  g_answer.findsDefault = isFound;
}

// Last of all, because it may take long.
void SelectDevice() {
  DefaultRngInfo info = {};
  if (!g_answer.findsDefault.value_or(false) || GetDefaultRng(&info, 0) != 1 || !*info.hardwareId) {
    return;
  }
  Begin(StartStep::kDevice, info.type);
  Catches([&info] {
    IRngProvider* const provider = GetRng(info.type);
    g_answer.acceptsDevice = provider && provider->SelectDevice(info.hardwareId);
  });
}

void ListAll() {
  Begin(StartStep::kList);
  constexpr std::uint32_t kEveryFlag = 0xFFFFFFFF;
  const auto count = static_cast<std::size_t>(std::max(0, GetAvailableRng(nullptr, kEveryFlag)));
  // A plug-in may report flags only the second time.
  std::vector<IRngProvider*> providers(std::max<std::size_t>(count, 64));
  GetAvailableRng(providers.data(), kEveryFlag);
  for (IRngProvider* const provider : providers) {
    if (provider) Remember(provider);
  }
  g_answer.isListed = true;
}

void AskNames() {
  for (StartedGenerator& generator : g_answer.generators) {
    const std::string& file = generator.codeFile.empty() ? generator.tableFile : generator.codeFile;
    Begin(StartStep::kName, file);
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    auto* const provider = reinterpret_cast<IRngProvider*>(generator.object);
    Catches([&generator, provider] { generator.name = AskForName(*provider); });
  }
}

void Ask(const DoctorQuestion& question) {
  g_answer.taken = ListTakenFiles(g_answer.parts);
  if (question.looksUpFirst) {
    if (!question.kind.empty()) LookUpOnce(question.kind);
    SearchDefault(question);
  }
  Catches(ListAll);
  AskNames();
  for (const ProviderCatalogueEntry& row : BuildProviderCatalogue()) LookUpOnce(row.name);
  SearchDefault(question);
  SelectDevice();
}

void StartAskAndStop(const DoctorQuestion& question, const ProcessSnapshot& before) {
  const Clock::time_point began = Clock::now();
  g_partBegan = began;
  Begin(StartStep::kBegin);
  StartLibrary(GetDefaultSettings());
  EndPart();
  g_answer.seconds = SecondsSince(began);
  AddChanges(g_answer.changes, before);  // in a host they last until the stop
  Ask(question);
  Begin(StartStep::kStop);
  StopLibrary();
}

}  // namespace

void ExamineStart(const DoctorQuestion& question) {
  WatchLifecycleCalls(NoteLifecycleCall, LibraryState::kReal);
  WatchLoaderCalls(&kObserver);
  g_unopened = question.unopened;
  const ProcessSnapshot before = CaptureProcessState();
  try {
    StartAskAndStop(question, before);
  } catch (const abi::__forced_unwind&) {
    throw;
  } catch (...) {
    // The type of the exception may be defined in a plug-in that is already closed: do not touch or
    // destroy it.
    g_answer.threwIn = g_answer.step;
    Send(g_answer);
    ::_exit(0);
  }
  AddChanges(g_answer.changes, before);
  Begin(StartStep::kEnd);
}
