// A program that draws through OpenSSL, and prints a character for each draw: "o" for bytes of the tests' generator, "-"
// if there were none, and "X" for bytes from elsewhere.

#include "tests/openssl/watermark.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <map>
#include <openssl/core.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/provider.h>
#include <openssl/rand.h>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

char DrawFrom(OSSL_LIB_CTX* context) {
  unsigned char bytes[32];
  std::memset(bytes, 0xAA, sizeof bytes);
  if (RAND_bytes_ex(context, bytes, sizeof bytes, 0) == 1)
    return HaveWatermark(bytes, sizeof bytes) ? 'o' : 'X';
  const bool isUntouched =
      std::all_of(std::begin(bytes), std::end(bytes), [](auto byte) { return byte == 0xAA; });
  const bool isZero =
      std::all_of(std::begin(bytes), std::end(bytes), [](auto byte) { return byte == 0; });
  ERR_print_errors_fp(stderr);
  return isUntouched || isZero ? '-' : 'X';
}

char Draw() { return DrawFrom(nullptr); }

void Print(char drawn) {
  std::putchar(drawn);
  std::fflush(stdout);
}

// Runs `work` in a forked child, and returns whether it exited with 0.
bool InChild(const std::function<void()>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    work();
    std::exit(0);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return status == 0;
}

void DrawThen(const std::function<void()>& between) {
  Print(Draw());
  between();
  Print(Draw());
}

void DrawInThreads(int threads, int draws) {
  std::map<char, std::atomic<int>> counts;
  for (const char kind : {'o', '-', 'X'}) counts[kind] = 0;
  std::vector<std::thread> running;
  for (int i = 0; i < threads; ++i) {
    running.emplace_back([&] {
      for (int done = 0; done < draws; ++done) ++counts[Draw()];
    });
  }
  for (std::thread& thread : running) thread.join();
  std::printf("o %d - %d X %d\n", counts['o'].load(), counts['-'].load(), counts['X'].load());
}

// While another thread draws, so that some of the forks happen during a draw. Not during the first one: OpenSSL then
// holds locks of its own, which would stay locked in the child.
void DrawInChildren(int children) {
  Draw();
  std::atomic<bool> isEnough = false;
  std::thread other([&] {
    while (!isEnough) Draw();
  });
  for (int i = 0; i < children; ++i) {
    if (!InChild([] { Print(Draw()); })) Print('!');
  }
  isEnough = true;
  other.join();
}

// As a daemon does. The provider must not touch the files that then get the same numbers.
void CloseAll() {
  ::close_range(3, ~0U, 0);
  std::FILE* const file = std::tmpfile();
  for (int i = 0; i < 8; ++i) {
    if (::fcntl(::fileno(file), F_DUPFD, 3) < 0) Print('!');
  }
}

void CloseStandardStreams() {
  const int kept = ::dup(STDOUT_FILENO);
  for (int descriptor = 0; descriptor < 3; ++descriptor) ::close(descriptor);
  const char drawn = Draw();
  // The lowest number is still free, so the provider's socket has not taken it.
  const bool areFree = ::open("/dev/null", O_RDWR) == 0;
  if (::write(kept, areFree ? &drawn : "!", 1) != 1) std::abort();
}

// Another library context has its own provider. Freeing it must not affect the default context's.
void UseOtherContext(const char* configuration) {
  OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
  if (!OSSL_LIB_CTX_load_config(context, configuration)) Print('!');
  Print(DrawFrom(context));
  OSSL_LIB_CTX_free(context);
}

// The child lives longer than the test waits.
void LeaveChild() {
  if (::fork() == 0) ::sleep(40);
}

char DrawWithoutDescriptors() {
  OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CONFIG, nullptr);  // opens files
  const rlimit limit = {3, 3};
  ::setrlimit(RLIMIT_NOFILE, &limit);
  return Draw();
}

void Interrupt() {
  ::setpgid(0, 0);
  std::signal(SIGINT, SIG_IGN);
  Print(Draw());
  ::kill(0, SIGINT);
  Print(Draw());
}

void DrawUnderSignals(int draws) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &action, nullptr);
  const itimerval often = {{0, 20}, {0, 20}};  // microseconds
  ::setitimer(ITIMER_REAL, &often, nullptr);
  for (int i = 0; i < draws; ++i) Print(Draw());
}

void DrawOnASmallStack() {
  OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CONFIG, nullptr);
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  if (::pthread_attr_setstacksize(&attributes, 16384) != 0) std::abort();
  pthread_t thread;
  const auto draw = [](void*) -> void* {
    unsigned char bytes[32];
    Print(RAND_bytes(bytes, sizeof bytes) == 1 && HaveWatermark(bytes, sizeof bytes) ? 'o' : '-');
    return nullptr;
  };
  if (::pthread_create(&thread, &attributes, draw, nullptr) != 0) std::abort();
  ::pthread_join(thread, nullptr);
}

std::string LastGenerator() {
  char text[600] = "";
  OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string("generator", text, sizeof text),
                             OSSL_PARAM_construct_end()};
  EVP_RAND* const kind = EVP_RAND_fetch(nullptr, "RNGAGGREGATOR", nullptr);
  OSSL_PROVIDER_get_params(EVP_RAND_get0_provider(kind), parameters);
  EVP_RAND_free(kind);
  return text;
}

pid_t g_child = -1;

void ForkInHandler() {
  Draw();
  std::signal(SIGALRM, [](int) { g_child = ::fork(); });
  const itimerval once = {{0, 0}, {0, 100'000}};  // microseconds
  ::setitimer(ITIMER_REAL, &once, nullptr);
  const char drawn = Draw();
  if (g_child > 0) ::waitpid(g_child, nullptr, 0);
  Print(drawn);
  if (g_child == 0) Print(Draw());
}

// "?" if the handler gets no answer to which generator was the last, either.
void DrawInHandler() {
  Draw();
  std::signal(SIGALRM, [](int) {
    Print(Draw());
    if (LastGenerator().empty()) Print('?');
  });
  const itimerval once = {{0, 0}, {0, 100'000}};  // microseconds
  ::setitimer(ITIMER_REAL, &once, nullptr);
  Print(Draw());
}

void Run(const std::vector<std::string>& words) {
  const std::string& what = words[0];
  const int number = words.size() > 1 ? std::atoi(words[1].c_str()) : 1;
  if (what == "draw") {
    for (int i = 0; i < number; ++i) Print(Draw());
  } else if (what == "signals") {
    DrawUnderSignals(number);
  } else if (what == "small_stack") {
    DrawOnASmallStack();
  } else if (what == "fork_in_handler") {
    ForkInHandler();
  } else if (what == "draw_in_handler") {
    DrawInHandler();
  } else if (what == "threads") {
    DrawInThreads(number, std::atoi(words[2].c_str()));
  } else if (what == "forks") {
    DrawInChildren(number);
  } else if (what == "shell") {  // between two draws
    DrawThen([&] {
      std::fflush(stdout);
      if (std::system(words[1].c_str()) != 0) Print('!');
    });
  } else if (what == "shell_and_name") {
    DrawThen([&] {
      if (std::system(words[1].c_str()) != 0) Print('!');
    });
    std::printf(" %s", LastGenerator().c_str());
  } else if (what == "fork") {
    DrawThen([] {
      if (!InChild([] { DrawThen([] {}); })) Print('!');
    });
  } else if (what == "shell_and_fork") {
    DrawThen([&] {
      if (std::system(words[1].c_str()) != 0) Print('!');
      if (!InChild([] { Print(Draw()); })) Print('!');
    });
  } else if (what == "unshare") {
    if (::unshare(CLONE_NEWPID) != 0) Print('!');
    Print(Draw());
    if (!InChild([] {})) Print('!');  // it can still fork
    Print(Draw());
  } else if (what == "fork_first") {
    if (!InChild([] { DrawThen([] {}); })) Print('!');
    Print(Draw());
  } else if (what == "close_all") {
    DrawThen(CloseAll);
  } else if (what == "close_standard_streams") {
    CloseStandardStreams();
  } else if (what == "other_context") {
    DrawThen([&] { UseOtherContext(words[1].c_str()); });
  } else if (what == "context") {
    UseOtherContext(words[1].c_str());
  } else if (what == "children") {
    DrawThen([] {
      if (::waitpid(-1, nullptr, WNOHANG) != -1) Print('!');
    });
  } else if (what == "execute") {
    Print(Draw());
    ::execl("/bin/sh", "sh", "-c", words[1].c_str(), nullptr);
  } else if (what == "leave_child") {
    Print(Draw());
    LeaveChild();
  } else if (what == "leave_child_and_die") {
    Print(Draw());
    LeaveChild();
    std::raise(SIGKILL);
  } else if (what == "no_descriptor") {
    Print(DrawWithoutDescriptors());
  } else if (what == "interrupt") {
    Interrupt();
  } else {
    std::fprintf(stderr, "unknown: %s\n", what.c_str());
    std::exit(2);
  }
}

}  // namespace

int main(int count, char** arguments) { Run({arguments + 1, arguments + count}); }
