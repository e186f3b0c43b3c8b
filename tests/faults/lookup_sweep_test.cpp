// The queries: they change nothing, whatever fails, and most of them make no call that could.

#include "tests/faults/fault_sweep.h"

#include <gtest/gtest.h>

namespace {

struct State {
  std::string words;
  Arrangement arrangement;
  Steps<void> prelude;
};

const auto kNothing = [](auto&) {};
const auto kStart = [](auto& library) { library.Initialize(library.HostSettings()); };
const auto kStop = [](auto& library) { library.ShutDown(); };

const Arrangement kEmpty{};
const Arrangement kOne{.plugins = {"unixdev"}};
const Arrangement kAll{.plugins = KindNames(), .hasDisplay = true};

const std::vector<State>& States() {
  static const std::vector<State> states = {{"not started", kAll, kNothing},
                                            {"count -1", kAll, kStop},
                                            {"no plug-in", kEmpty, kStart},
                                            {"one plug-in", kOne, kStart},
                                            {"12 plug-ins", kAll, kStart},
                                            {"started twice", kAll,
                                             [](auto& library) {
                                               library.Initialize(library.HostSettings());
                                               library.Initialize(nullptr);
                                             }},
                                            {"stopped", kAll, [](auto& library) {
                                               library.Initialize(library.HostSettings());
                                               library.ShutDown();
                                             }}};
  return states;
}

void ExpectNoCallInAnyState(const std::string& function, const Steps<std::string>& call) {
  for (const State& state : States()) {
    FaultSweep{function, state.words, {}, state.arrangement, state.prelude, call}.ExpectNoCall();
  }
}

void SweepGetRng(const std::string& state, const Arrangement& arrangement, const char* name) {
  FaultSweep{"GetRng",    state,  {"operator new"},
             arrangement, kStart, [name](auto& library) {
               return "found " + library.Find(name); }}
      .Run();
}

}  // namespace

TEST(GetRngFaults, WithOnePlugin) { SweepGetRng("one plug-in", kOne, "unixdev"); }

TEST(GetRngFaults, WithTheLastOfTwelve) { SweepGetRng("12 plug-ins", kAll, "biocore"); }

TEST(GetRngFaults, WithANameThatNobodyHas) {
  SweepGetRng("12 plug-ins, unknown name", kAll, "bio");
}

TEST(GetRngFaults, WithoutProvidersThereIsNoCall) {
  const Steps<std::string> call = [](auto& library) { return library.Find("unixdev"); };
  for (const State& state : States()) {
    const bool isEmpty = state.words == "not started" || state.words == "count -1" ||
                         state.words == "no plug-in" || state.words == "stopped";
    if (!isEmpty) continue;
    FaultSweep{"GetRng", state.words, {}, state.arrangement, state.prelude, call}.ExpectNoCall();
  }
}

TEST(IsInitializedFaults, ThereIsNoCallInAnyState) {
  ExpectNoCallInAnyState("IsInitialized",
                         [](auto& library) { return std::to_string(library.IsInitialized()); });
}

TEST(GetAvailableRngFaults, ThereIsNoCallInAnyState) {
  ExpectNoCallInAnyState("GetAvailableRng", [](auto& library) {
    return library.Available(1) + "; " + library.Available(2);
  });
}

TEST(IsInteractiveRngFaults, ThereIsNoCallInAnyState) {
  ExpectNoCallInAnyState("IsInteractiveRng", [](auto& library) {
    std::string answers;
    for (const char* name : {"bio", "bioqt", "unixx11", "biokbd", "biocore", "Bio", ""}) {
      answers += std::to_string(library.IsInteractiveRng(name));
    }
    return answers;
  });
}

TEST(GetDefaultSettingsFaults, ThereIsNoCallInAnyState) {
  ExpectNoCallInAnyState("GetDefaultSettings", [](auto& library) -> std::string {
    IRngSettings* const settings = library.GetDefaultSettings();
    return settings && settings == library.GetDefaultSettings() ? "the same" : "another";
  });
}

TEST(GetDefaultRngFaults, WithoutAStartThereIsNoCall) {
  const Steps<std::string> call = [](auto& library) { return DefaultOf(library, 0xF); };
  FaultSweep{"GetDefaultRng", "not started", {}, kAll, kNothing, call}.ExpectNoCall();
  FaultSweep{"GetDefaultRng", "count -1", {}, kAll, kStop, call}.ExpectNoCall();
}

TEST(SetDefaultRngFaults, WithoutSettingsThereIsNoCall) {
  const Steps<std::string> call = [](auto& library) -> std::string {
    return library.SetDefaultRng("sobol", "7") ? "stored" : "refused";
  };
  FaultSweep{"SetDefaultRng", "not started", {}, kAll, kNothing, call}.ExpectNoCall();
  FaultSweep{"SetDefaultRng", "count -1", {}, kAll, kStop, call}.ExpectNoCall();
}
