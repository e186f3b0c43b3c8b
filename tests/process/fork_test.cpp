#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <csignal>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct ChildEnd {
  std::string text;  // what the child wrote
  int status;
};

// The parent's and the child's view of one fork.
class Fork {
 public:
  Fork() {
    if (::pipe(ends) != 0) std::abort();
    child = ::fork();
    if (child < 0) std::abort();
    ::close(ends[child == 0 ? 0 : 1]);
  }

  bool IsChild() const { return child == 0; }

  void Write(const std::string& text) const {
    if (::write(ends[1], text.data(), text.size()) < 0) std::abort();
  }

  ChildEnd Wait() const {
    ChildEnd end{};
    char buffer[256];
    for (ssize_t size; (size = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
      end.text.append(buffer, static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    ::waitpid(child, &end.status, 0);
    return end;
  }

 private:
  int ends[2];
  pid_t child;
};

// Forks; the child does `work`, which tells what it sees, and ends without any clean-up.
ChildEnd RunInChild(const std::function<std::string()>& work) {
  const Fork fork;
  if (fork.IsChild()) {
    fork.Write(work());
    ::_exit(0);
  }
  return fork.Wait();
}

void ExpectText(const std::string& text, const ChildEnd& end) {
  EXPECT_EQ(text, end.text);
  EXPECT_TRUE(WIFEXITED(end.status));
  EXPECT_EQ(0, WEXITSTATUS(end.status));
}

// The child said that it calls, and a signal ended it, because the call did not return.
void ExpectDeadlock(const ChildEnd& end) {
  EXPECT_EQ("", end.text);
  ASSERT_TRUE(WIFSIGNALED(end.status));
  EXPECT_EQ(SIGALRM, WTERMSIG(end.status));
}

// Ends the process by a signal soon.
void LimitTime() {
  constexpr itimerval kSoon = {{0, 0}, {0, 300'000}};
  std::signal(SIGALRM, SIG_DFL);
  ::setitimer(ITIMER_REAL, &kSoon, nullptr);
}

std::string Names(const AggregatorLibrary& library) {
  std::string text;
  for (const std::string& name : library.LoadedNames()) text += name + ' ';
  return text + (library.IsInitialized() ? "started" : "stopped");
}

// What the queries answer: the list, one provider and its draw, the default.
std::string Query(const AggregatorLibrary& library) {
  std::string text = Names(library);
  char drawn = 0;
  IRngProvider* const rng = library.GetRng("dsdr");
  text += rng && rng->Generate(&drawn, 1) && drawn ? " draws" : " no draw";
  text += library.IsInteractiveRng("biokbd") ? " interactive" : "";
  DefaultRngInfo info;
  text += library.GetDefaultRng(&info, 0) ? std::string(" default ") + info.type : " no default";
  return text + (library.SetDefaultRng("accord", nullptr) ? " stored" : " not stored");
}

class ForkTest : public testing::Test {
 protected:
  ForkTest() { InstallPlugins({"dsdr", "accord"}); }

  FakeSettings settings;
  const AggregatorLibrary library;
};

// A second thread stands in the starting Initialize, in the factory of "accord", while the case
// runs.
class ForkWhileLocked : public ForkTest {
 protected:
  ForkWhileLocked() {
    settings.type = "dsdr";
    Fake("accord").hooks["factory"] = [this] {
      isInside.set_value();
      mayLeave.get_future().wait();
    };
    starting = std::async(std::launch::async, library.Initialize, &settings);
    isInside.get_future().wait();
  }

  void TearDown() override {
    mayLeave.set_value();
    starting.get();
    EXPECT_EQ("dsdr accord started", Names(library));  // the parent's start is not disturbed
    library.ShutDown();
    EXPECT_EQ("stopped", Names(library));
  }

 private:
  std::promise<void> isInside;
  std::promise<void> mayLeave;
  std::future<void> starting;
};

}  // namespace

// --- Before the start

TEST_F(ForkTest, BeforeTheStartGivesTwoProcessesThatStartOnTheirOwn) {
  const ChildEnd child = RunInChild([&] {
    library.Initialize(nullptr);
    std::string text = Names(library);
    library.ShutDown();
    return text + ", " + Names(library) + ": " + CallLog("dsdr");
  });
  ExpectText(
      "dsdr accord started, stopped: "
      "opened factory SetSettings IsAvailable GetFlags GetFlags GetName GetName Release closed",
      child);
  EXPECT_FALSE(library.IsInitialized());
  EXPECT_EQ("", CallLog("dsdr"));
  library.Start(nullptr, 2);
}

// --- While started

TEST_F(ForkTest, WhileStartedGivesTheChildAListThatWorks) {
  settings.type = "sobol";
  library.Start(&settings, 2);
  ExpectText("dsdr accord started draws interactive default sobol stored",
             RunInChild([&] { return Query(library); }));
  EXPECT_EQ("sobol", settings.type);  // the child stored into its own copy
  library.ShutDown();
  EXPECT_FALSE(library.IsInitialized());
}

TEST_F(ForkTest, WhileStartedGivesTheChildTheCount) {
  library.Start(nullptr, 2);
  ClearCallLog();
  ExpectText("opened: 0, stopped: Release closed, opened: 2", RunInChild([&] {
               const auto opened = [] {
                 return "opened: " + std::to_string(CountCalls("dsdr", "opened") +
                                                    CountCalls("accord", "opened"));
               };
               library.Initialize(nullptr);
               std::string text = opened();
               library.ShutDown();
               library.ShutDown();
               text += ", " + Names(library) + ": " + CallLog("dsdr");
               library.Initialize(nullptr);
               return text + ", " + opened();
             }));
  // The child released its own providers, not these.
  EXPECT_EQ("", CallLog());
  EXPECT_EQ("dsdr accord started", Names(library));
  EXPECT_TRUE(IsMapped("librngdsdr.so"));
  ClearCallLog();
  library.ShutDown();
  EXPECT_EQ("Release closed", CallLog("dsdr"));
}

TEST_F(ForkTest, WhileStartedLetsTheChildExitWithoutRelease) {
  library.Start(nullptr, 2);
  ClearCallLog();
  const Fork fork;
  if (fork.IsChild()) {
    for (const char* kind : {"dsdr", "accord"}) {
      for (const char* what : {"Release", "closed"}) {
        Fake(kind).hooks[what] = [&fork, kind, what] {
          fork.Write(std::string(kind) + '.' + what + ' ');
        };
      }
    }
    std::exit(0);
  }
  ExpectText("accord.closed dsdr.closed ", fork.Wait());
  EXPECT_EQ("dsdr accord started", Names(library));
}

// --- While another thread holds the lock

TEST_F(ForkWhileLocked, AStartInTheChildNeverReturns) {
  ExpectDeadlock(RunInChild([&] {
    LimitTime();
    library.Initialize(nullptr);
    return "returned";
  }));
}

TEST_F(ForkWhileLocked, AStopInTheChildNeverReturns) {
  ExpectDeadlock(RunInChild([&] {
    LimitTime();
    library.ShutDown();
    return "returned";
  }));
}

TEST_F(ForkWhileLocked, QueriesInTheChildSeeTheListAsItStood) {
  ExpectText("dsdr started draws interactive default dsdr stored", RunInChild([&] {
               LimitTime();
               return Query(library);
             }));
}

TEST_F(ForkWhileLocked, TheChildCanExit) {
  const Fork fork;
  if (fork.IsChild()) {
    LimitTime();
    Fake("dsdr").hooks["Release"] = [&fork] { fork.Write("Release"); };
    Fake("dsdr").hooks["closed"] = [&fork] { fork.Write("closed"); };
    std::exit(0);
  }
  ExpectText("closed", fork.Wait());
}

// --- Inside a factory

TEST_F(ForkTest, InsideAFactoryLetsBothProcessesFinishTheStart) {
  std::optional<Fork> fork;
  Fake("dsdr").hooks["factory"] = [&] { fork.emplace(); };
  library.Initialize(nullptr);
  const std::string started = Names(library);
  library.ShutDown();
  const std::string stopped = Names(library);
  if (fork->IsChild()) {
    fork->Write(started + ", " + stopped);
    ::_exit(0);
  }
  EXPECT_EQ("dsdr accord started", started);
  EXPECT_EQ("stopped", stopped);
  ExpectText("dsdr accord started, stopped", fork->Wait());
}

TEST_F(ForkTest, InsideAFactoryLeavesTheParentAloneWhenTheChildRunsAProgram) {
  std::optional<ChildEnd> child;
  Fake("dsdr").hooks["factory"] = [&] {
    const Fork fork;
    if (fork.IsChild()) {
      ::execl("/bin/true", "true", nullptr);
      ::_exit(1);
    }
    child = fork.Wait();
  };
  library.Start(nullptr, 2);
  ExpectText("", child.value());
}

TEST_F(ForkTest, InsideAFactoryGivesTheChildTheHeldLock) {
  std::optional<ChildEnd> child;
  Fake("dsdr").hooks["factory"] = [&] {
    child = RunInChild([&] {
      LimitTime();
      library.Initialize(nullptr);
      return "returned";
    });
  };
  library.Start(nullptr, 2);
  ExpectDeadlock(child.value());
}
