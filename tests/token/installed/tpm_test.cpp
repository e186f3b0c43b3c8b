// The generator of a TPM, simulated, through its PKCS#11 module.

#include "tests/support/process.h"
#include "tests/support/tree.h"
#include "tests/token/token_host.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using testing::HasSubstr;

namespace {

// Listens on a socket in the tree of the case.
class TpmSimulator {
 public:
  TpmSimulator() : process(::fork()) {
    if (process == 0) Execute();
    while (!std::filesystem::exists(TreePath("tpm.socket.ctrl"))) {
      if (::waitpid(process, nullptr, WNOHANG) == process)
        throw std::runtime_error("swtpm has ended");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  TpmSimulator(const TpmSimulator&) = delete;
  TpmSimulator& operator=(const TpmSimulator&) = delete;
  ~TpmSimulator() {
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
  }

 private:
  [[noreturn]] static void Execute() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::filesystem::create_directory(TreePath("tpm"));
    const std::string state = "dir=" + TreePath("tpm");
    const std::string server = "type=unixio,path=" + TreePath("tpm.socket");
    const std::string control = server + ".ctrl";
    ::execlp("swtpm", "swtpm", "socket", "--tpm2", "--tpmstate", state.c_str(), "--server",
             server.c_str(), "--ctrl", control.c_str(), "--flags", "not-need-init,startup-clear",
             "--log", "level=0", nullptr);
    ::_exit(127);
  }

  const pid_t process;
};

class TokenOfATpm : public TokenHost {
 protected:
  TokenOfATpm() : TokenHost(TPM_PLUGIN) {
    std::filesystem::create_directory(TreePath("store"));
    ::setenv("TPM2_PKCS11_STORE", TreePath("store").c_str(), 1);
    ::setenv("TPM2_PKCS11_TCTI", ("swtpm:path=" + TreePath("tpm.socket")).c_str(), 1);
    ::setenv("TPM2_PKCS11_LOG_LEVEL", "0", 1);
    const Result result = RunShell("pkcs11-tool --module " TPM_MODULE
                                   " --init-token --slot 1 --label mine --so-pin 5678");
    EXPECT_EQ(0, result.status) << result.errors;
  }

  const TpmSimulator simulator;
};

}  // namespace

// The flags of the token require a login, but random bytes do not need one.
TEST_F(TokenOfATpm, IsDrawnFromWithoutALogin) {
  Start({});
  EXPECT_THAT(Description(), HasSubstr("mine"));
  ASSERT_TRUE(rng->SelectDevice("0000000000000000"));
  for (const std::size_t size : {1, 256, 5000}) EXPECT_EQ("drawn", Draw(size));
  EXPECT_TRUE(rng->SelfTest());
}
