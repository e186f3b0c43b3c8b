#include "tests/faults/fault_sweep.h"

#include "tests/support/tree.h"

#include <array>
#include <boost/thread/exceptions.hpp>
#include <cerrno>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <new>

namespace fs = std::filesystem;

namespace {

constexpr char kX11[] = "libX11.so.6";
constexpr char kAggregator[] = "librngaggregator.so";
constexpr std::uint32_t kAnyKind = 0xF;

// --- The figures

std::map<std::string, std::size_t> g_injected;  // by exported function

class Totals : public testing::Environment {
 public:
  void TearDown() override {
    for (const auto& [function, faults] : g_injected) {
      std::cout << "in all: injected " << faults << " faults into " << function << '\n';
    }
  }
};

const auto* const g_totals = testing::AddGlobalTestEnvironment(new Totals);

// --- The world

void ReopenWorld(const Arrangement& arrangement) {
  fs::remove_all(TreePath("etc"));
  fs::remove_all(TreePath("fixed"));
  if (arrangement.profile) WriteFile(TreePath("etc/rng.ini"), *arrangement.profile);
  if (arrangement.isUnwritable) fs::create_directories(TreePath("etc/rng.ini.tmp"));
  for (const int id : {0, 2}) {
    const std::string directory = TreePath(id == 2 ? "etc" : "share");
    KnownPath().directories[id] = directory;
    Fake("known_path").hooks[std::to_string(id) + ":256:0"] = [id, directory] {
      KnownPath().directories.erase(id);
      if (!Faults().Strikes("known path")) KnownPath().directories[id] = directory;
    };
  }
  Faults() = {};
  Faults().fixedDirectory = RNG_SETTINGS_DIR;
  Faults().scratch = TreePath("fixed");
  ClearCallLog();
}

std::vector<std::string> LibraryFiles() {
  std::vector<std::string> files = {kAggregator, kX11};
  for (const Kind& kind : AllKinds()) files.push_back(kind.libraryFile);
  return files;
}

std::string MappedFiles() {
  const std::string maps = ReadFile("/proc/self/maps");
  std::string mapped;
  for (const std::string& file : LibraryFiles()) {
    if (maps.find("/" + file + "\n") != std::string::npos) mapped += file + " ";
  }
  return mapped;
}

std::string MappedFiles(const PromisedLibrary& promised) {
  std::string mapped = promised.isLoaded ? std::string(kAggregator) + " " : "";
  for (const std::string& file : LibraryFiles()) {
    const auto holders = promised.holders.find(file);
    if (holders != promised.holders.end() && holders->second > 0) mapped += file + " ";
  }
  return mapped;
}

struct Place {
  std::string promised;
  std::string real;
};

std::vector<Place> Places() {
  std::vector<Place> places;
  for (const std::string file : {"", "/rng.ini", "/rng.ini.tmp"}) {
    places.push_back({TreePath("etc") + file, TreePath("etc") + file});
    places.push_back({RNG_SETTINGS_DIR + file, TreePath("fixed") + file});
  }
  return places;
}

std::string World() {
  std::string world = "open: " + MappedFiles();
  for (const Place& place : Places()) {
    world += "\n" + place.promised + ": ";
    if (fs::is_directory(place.real)) {
      world += "folder";
    } else {
      world += fs::exists(place.real) ? "<" + ReadFile(place.real) + ">" : "absent";
    }
  }
  return world;
}

std::string World(const PromisedLibrary& promised) {
  std::string world = "open: " + MappedFiles(promised);
  for (const Place& place : Places()) {
    const auto file = promised.files.find(place.promised);
    world += "\n" + place.promised + ": ";
    if (promised.directories.count(place.promised)) {
      world += "folder";
    } else {
      world += file == promised.files.end() ? "absent" : "<" + file->second + ">";
    }
  }
  return world;
}

// Leaves the process without any of the libraries that a fault left open.
void CloseWhatIsOpen() {
  for (void* handle : Faults().unclosed) ::dlclose(handle);
  Faults().unclosed.clear();
  for (const std::string& file : LibraryFiles()) {
    const std::string path = TreePath("lib/" + file);
    for (int holder = 0; holder < 9; ++holder) {
      void* const handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
      if (!handle) break;
      ::dlclose(handle);
      ::dlclose(handle);
    }
  }
  ASSERT_EQ("", MappedFiles());
}

// --- What is compared

template <typename Host>
std::string Outcome(const std::function<std::string(Host&)>& call, Host& host) {
  try {
    return call(host);
  } catch (const boost::lock_error& error) {
    return "lock_error " + std::to_string(error.native_error()) + " " + error.what();
  } catch (const std::bad_alloc&) {
    return "out of memory";
  }
}

// What is left of the state: the list, the settings, the files, the start count, and whether a new
// start works. It stays started.
template <typename Host>
std::string Remains(Host& host) {
  std::string remains = host.IsInitialized() ? "started, " : "not started, ";
  remains += "lists " + host.Available(1) + "\n" + DefaultOf(host, kAnyKind);
  remains += host.SetDefaultRng("sobol", "7") ? " stores " : " refuses ";
  remains += DefaultOf(host, kAnyKind) + " " + host.GetDefaultSettings()->GetDsdrFilePath() + "\n";
  int calls = 0;
  for (; host.IsInitialized() && calls < 9; ++calls) host.ShutDown();
  remains += std::to_string(calls) + " stops, lists " + host.Available(1);
  if (calls > 0) host.ShutDown();  // the debt of one is paid back by the first start
  calls = 0;
  for (; !host.IsInitialized() && calls < 9; ++calls) host.Initialize(host.HostSettings());
  return remains + ", " + std::to_string(calls) + " starts, lists " + host.Available(1);
}

// By the library that it lives in: asking it would be logged.
std::string KindOf(IRngProvider* provider) {
  Dl_info info{};
  if (!provider || ::dladdr(provider, &info) == 0) return "nobody";
  for (const Kind& kind : AllKinds()) {
    if (fs::path(info.dli_fname).filename() == kind.libraryFile) return kind.name;
  }
  return "a stranger";
}

}  // namespace

std::string FaultyLibrary::Available(std::uint32_t mask) const {
  std::array<IRngProvider*, 40> providers{};
  const auto found = static_cast<std::size_t>(GetAvailableRng(providers.data(), mask));
  std::string kinds;
  for (std::size_t i = 0; i < found; ++i) kinds += KindOf(providers[i]) + " ";
  EXPECT_EQ(nullptr, providers[found]);
  return kinds;
}

std::string FaultyLibrary::Find(const char* name) const {
  IRngProvider* const found = GetRng(name);
  return found ? KindOf(found) : "";
}

void PrepareTree(const Arrangement& arrangement) {
  for (const Kind& kind : AllKinds()) {
    fs::remove(TreePath("lib/" + kind.libraryFile));
    Fake(kind.name).factoryGivesNull = arrangement.givesNull.count(kind.name) > 0;
    Fake(kind.name).isAvailable = arrangement.unavailable.count(kind.name) == 0;
  }
  for (const std::string& kind : arrangement.plugins) InstallPlugin(kind);
  InstallX11(arrangement.hasDisplay ? "whole" : "refusing");
  const std::string library = TreePath("lib/") + kAggregator;
  fs::remove(library);
  fs::copy_file(FAULTY_LIBRARY, library);
}

void CountInjected(const std::string& function, const std::string& where, std::size_t faults) {
  std::cout << "injected " << faults << " faults into " << function << " (" << where << ")\n";
  g_injected[function] += faults;
  EXPECT_NE(0U, faults) << "a sweep that injects nothing shows nothing";
}

// False when anything differs from what is promised.
bool FaultSweep::Try(const FaultPlan& plan) const {
  SCOPED_TRACE(function + ", " + state + ": " + plan.function + " fails at call " +
               std::to_string(plan.number) + (plan.fromThenOn ? " and all later ones" : "") +
               (plan.lockResult ? " with " + std::to_string(plan.lockResult) : ""));
  const bool isUncounted = plan.function == "operator new" && !countsAllocations;
  ReopenWorld(arrangement);
  auto library = std::make_unique<FaultyLibrary>();
  PromisedLibrary promised(arrangement);
  prelude.real(*library);
  prelude.promised(promised);

  static_cast<FaultPlan&>(Faults()) = plan;
  Faults().isArmed = true;
  const std::string seen = Outcome(call.real, *library);
  Faults().isArmed = false;

  promised.faults = plan;
  if (isUncounted) promised.faults.function = "";
  if (isUncounted) promised.outOfMemoryAt = {CallLog().size(), CallsOutside(Faults())};
  promised.faults.isArmed = true;
  EXPECT_EQ(Outcome(call.promised, promised), seen);
  promised.faults.isArmed = false;
  promised.outOfMemoryAt.reset();

  auto calls = Faults().calls;
  // Those that an error's own text takes are nobody's affair.
  if (!countsAllocations || plan.function == "pthread_mutex_lock") {
    calls.erase("operator new");
    promised.faults.calls.erase("operator new");
  }
  EXPECT_EQ(promised.faults.calls, calls);
  EXPECT_EQ(plan.function.empty() || plan.function == "*", Faults().injected == 0);
  EXPECT_EQ(promised.log, CallLog());
  EXPECT_EQ(World(promised), World());
  EXPECT_EQ(Remains(promised), Remains(*library));
  promised.Close();
  library->Close();
  EXPECT_EQ(promised.log, CallLog());
  EXPECT_EQ(World(promised), World());
  EXPECT_EQ(0, Faults().alive) << "allocations of the library, not freed";
  if (!MappedFiles(promised).empty()) CloseWhatIsOpen();
  return !testing::Test::HasFailure();
}

void FaultSweep::SweepOver(const std::string& called, std::size_t calls) const {
  const bool isLock = called == "pthread_mutex_lock";
  const std::vector<int> results = isLock ? std::vector{EINTR, EINVAL, EDEADLK} : std::vector{0};
  std::size_t tries = 0;
  for (const int result : results) {
    for (const bool fromThenOn : {false, true}) {
      if (result == EINTR && fromThenOn) continue;  // repeated for ever
      for (std::size_t number = 1; number <= calls; ++number, ++tries) {
        FaultPlan plan;
        plan.function = called;
        plan.number = number;
        plan.fromThenOn = fromThenOn;
        plan.lockResult = result;
        if (!Try(plan)) return;
      }
    }
  }
  CountInjected(function, called + ", " + state, tries);
}

void FaultSweep::Run() const {
  PrepareTree(arrangement);
  ASSERT_TRUE(Try({})) << "not even without a fault";
  const std::map<std::string, std::size_t> calls = Faults().calls;
  std::set<std::string> called;
  for (const auto& [name, times] : calls) called.insert(name);
  ASSERT_EQ(faults, called);
  for (const auto& [name, times] : calls) {
    SweepOver(name, times);
    if (testing::Test::HasFailure()) return;
  }
}

void FaultSweep::ExpectNoCall() const {
  PrepareTree(arrangement);
  FaultPlan everything;
  everything.function = "*";
  everything.fromThenOn = true;
  everything.lockResult = EINVAL;
  ASSERT_TRUE(faults.empty());
  ASSERT_TRUE(Try(everything));
  ASSERT_TRUE(Faults().calls.empty());
  std::cout << function << " (" << state << ") makes no call that could fail\n";
}
