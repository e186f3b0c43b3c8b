// A program with habits that could disturb a draw. Prints "ok", or a line for each fact that does not hold.

#include "tests/openssl/watermark.h"
#include "tests/support/refused_call.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <map>
#include <openssl/err.h>
#include <openssl/rand.h>
#include <pthread.h>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int g_output = STDOUT_FILENO;
std::atomic<bool> g_isOk{true};

void Expect(bool isTrue, const std::string& fact) {
  if (isTrue) return;
  g_isOk = false;
  ::dprintf(g_output, "not: %s\n", fact.c_str());
}

bool Draws(OSSL_LIB_CTX* context = nullptr) {
  unsigned char bytes[32] = {};
  const bool isDrawn = RAND_bytes_ex(context, bytes, sizeof bytes, 0) == 1;
  ERR_print_errors_fp(stderr);
  return isDrawn && HaveWatermark(bytes, sizeof bytes);
}

void ExpectSuccess(const std::string& command) {
  Expect(std::system(command.c_str()) == 0, command);
}

void InCopy(const std::function<void()>& work) {
  const pid_t copy = ::fork();
  if (copy == 0) {
    work();
    std::_Exit(g_isOk ? 0 : 1);
  }
  int status = -1;
  Expect(::waitpid(copy, &status, 0) == copy && status == 0, "the copy exits");
}

// A thread that is to be cancelled, at the next point where that is possible. A draw is none.
void CancelThread(const std::string&) {
  Expect(Draws(), "a draw before");
  static bool isDrawn = false;
  const auto run = [](void*) -> void* {
    ::pthread_cancel(::pthread_self());
    isDrawn = Draws();
    ::pthread_testcancel();
    return nullptr;
  };
  pthread_t thread;
  void* result = nullptr;
  ::pthread_create(&thread, nullptr, run, nullptr);
  ::pthread_join(thread, &result);
  Expect(isDrawn, "the draw of the thread is finished");
  Expect(result == PTHREAD_CANCELED, "the thread is cancelled after the draw");
  Expect(Draws(), "a draw after");
}

void ForbidCancellation(const std::string&) {
  ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
  Expect(Draws(), "a draw");
  int state = PTHREAD_CANCEL_ENABLE;
  ::pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
  Expect(state == PTHREAD_CANCEL_DISABLE, "the thread still cannot be cancelled");
}

// Often enough that some arrive while the draw waits. System calls are not restarted.
void CatchSignals(const std::string&) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &action, nullptr);
  const itimerval often = {{0, 5000}, {0, 5000}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  for (int i = 0; i < 3; ++i) Expect(Draws(), "a draw among signals");
}

// From `first` on.
void CloseStandardStreams(const std::string& first) {
  const int begin = std::stoi(first);
  g_output = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 100);
  for (int descriptor = begin; descriptor <= STDERR_FILENO; ++descriptor) ::close(descriptor);
  Expect(Draws(), "a draw");
  for (int descriptor = begin; descriptor <= STDERR_FILENO; ++descriptor)
    Expect(::fcntl(descriptor, F_GETFD) == -1, "standard streams stay closed");
}

bool IsInherited(int descriptor) { return ::fcntl(descriptor, F_GETFD) == 0; }

void CountInherited(const std::string& first) {
  std::map<int, bool> before;
  for (int descriptor = 0; descriptor < 100; ++descriptor)
    before[descriptor] = IsInherited(descriptor);
  CloseStandardStreams(first);
  for (int descriptor = 3; descriptor < 100; ++descriptor) {
    Expect(before[descriptor] || !IsInherited(descriptor),
           "programs that this one starts inherit no new descriptor");
  }
}

long CountDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

void CountInCopy(const std::string&) {
  Expect(Draws(), "a draw");
  const long before = CountDescriptors();
  InCopy([before] {
    Expect(Draws(), "a draw of the copy");
    Expect(CountDescriptors() == before, "the copy keeps no socket of the original");
  });
}

void CountAfter(const std::string& command) {
  Expect(Draws(), "a draw");
  const long before = CountDescriptors();
  ExpectSuccess(command);
  Expect(Draws(), "a draw after the command");
  Expect(CountDescriptors() == before, "no descriptor is left");
}

ino_t Inode(int descriptor) {
  struct stat file = {};
  return ::fstat(descriptor, &file) == 0 ? file.st_ino : 0;
}

// Sockets, as the one that was there. What is sent into one of them would arrive in the other.
void ReplaceSocketsAndDraw() {
  ::close_range(3, 99, 0);
  int sockets[2];
  ::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets);
  for (int descriptor = sockets[1] + 1; descriptor < 20; ++descriptor)
    ::dup2(sockets[0], descriptor);
  std::map<int, ino_t> before;
  for (int descriptor = 3; descriptor < 20; ++descriptor) before[descriptor] = Inode(descriptor);
  Expect(Draws(), "a draw");
  for (const auto& [descriptor, inode] : before)
    Expect(Inode(descriptor) == inode, "a socket of the program stays open");
  char byte = 0;
  for (const int socket : sockets)
    Expect(::recv(socket, &byte, 1, MSG_DONTWAIT) == -1, "nothing is sent into it");
}

void ReplaceSockets(const std::string&) {
  Expect(Draws(), "a draw before");
  ReplaceSocketsAndDraw();
}

void ReplaceSocketsInCopy(const std::string&) {
  Expect(Draws(), "a draw before");
  InCopy(ReplaceSocketsAndDraw);
  Expect(Draws(), "a draw after");
}

// A copy of the process that does nothing has the socket, too.
void EndContext(const std::string& command) {
  OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
  Expect(OSSL_LIB_CTX_load_config(context, std::getenv("OPENSSL_CONF")) == 1, "a context");
  Expect(Draws(context), "a draw in it");
  const pid_t copy = ::fork();
  if (copy == 0) {
    for (;;) ::pause();
  }
  OSSL_LIB_CTX_free(context);
  ExpectSuccess(command);
  ::kill(copy, SIGKILL);
  ::waitpid(copy, nullptr, 0);
}

void EndContextInCopy(const std::string&) {
  const long before = CountDescriptors();
  OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
  Expect(OSSL_LIB_CTX_load_config(context, std::getenv("OPENSSL_CONF")) == 1, "a context");
  Expect(Draws(context), "a draw in it");
  InCopy([context, before] {
    OSSL_LIB_CTX_free(context);
    Expect(CountDescriptors() == before, "the copy keeps no socket");
  });
  Expect(Draws(context), "a draw of the original");
}

// As a kernel before 4.14 does.
void RefuseToWipeOnFork(const std::string&) {
  Expect(RefuseCall(SYS_madvise, EINVAL, 2, MADV_WIPEONFORK), "the filter");
  Expect(!Draws(), "no draw");
}

// In two pieces, of which the second one fails.
void DrawMuch(const std::string&) {
  std::string bytes(20'000, 'x');
  auto* const place = reinterpret_cast<unsigned char*>(bytes.data());
  Expect(RAND_bytes(place, static_cast<int>(bytes.size())) != 1, "the draw fails");
  Expect(bytes.find_first_not_of('\0') == std::string::npos, "the bytes are zeros");
}

const std::map<std::string, void (*)(const std::string&)> kHabits = {
    {"cancel_thread", CancelThread},
    {"forbid_cancellation", ForbidCancellation},
    {"catch_signals", CatchSignals},
    {"close_streams", CountInherited},
    {"count_in_copy", CountInCopy},
    {"count_after", CountAfter},
    {"replace_sockets", ReplaceSockets},
    {"refuse_to_wipe", RefuseToWipeOnFork},
    {"draw_much", DrawMuch},
    {"end_context", EndContext},
    {"end_context_in_copy", EndContextInCopy},
    {"replace_sockets_in_copy", ReplaceSocketsInCopy},
};

}  // namespace

int main(int count, char** arguments) {
  kHabits.at(arguments[1])(count > 2 ? arguments[2] : "");
  if (g_isOk) ::dprintf(g_output, "ok\n");
  std::exit(g_isOk ? 0 : 1);
}
