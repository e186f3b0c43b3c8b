#include "tools/rngctl/process/descendants.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A child that waits under that name, or ends at once if it is null.
class Child {
 public:
  explicit Child(const char* name) : known(ListChildren()) {
    int ends[2];
    EXPECT_EQ(0, ::pipe(ends));
    process = ::fork();
    if (process == 0) {
      if (!name) ::_exit(0);
      ::prctl(PR_SET_NAME, name);
      ::close(ends[1]);
      ::pause();
    }
    ::close(ends[1]);
    char unused;
    EXPECT_EQ(0, ::read(ends[0], &unused, 1));  // it has its name
    ::close(ends[0]);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (::waitpid(process, nullptr, WNOHANG) != 0) return;
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
  }

  const std::set<pid_t> known;
  pid_t process = -1;
};

}  // namespace

TEST(Descendants, MayHaveAnyName) {
  const Child child("a) S 1 (b c");
  EXPECT_TRUE(ListChildren().contains(child.process));
  EXPECT_THAT(NameNewChildren(child.known),
              ElementsAre("a) S 1 (b c (process " + std::to_string(child.process) + ")"));
  EXPECT_THAT(NameNewChildren(ListChildren()), IsEmpty());
}

TEST(Descendants, AreNotNamedWhenTheyHaveEnded) {
  const Child child(nullptr);
  siginfo_t unused = {};
  ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(child.process), &unused, WEXITED | WNOWAIT));
  EXPECT_THAT(NameNewChildren(child.known), IsEmpty());
}
