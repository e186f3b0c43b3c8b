// The provider for OpenSSL, with the generator "unixdev", beside OpenSSL's own generator. The provider draws in another
// process, so the time that passes is measured, too, and the processor time of both processes.

#include "benchmarks/machine/folder.h"
#include "benchmarks/timing/alternation.h"
#include "benchmarks/timing/peers/peers.h"

#include <barrier>
#include <cerrno>
#include <ctime>
#include <fstream>
#include <memory>
#include <openssl/conf.h>
#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kDrawsOfAThread = 100;

constexpr const char* kConfigurationOfProvider = R"(
openssl_conf = init
[init]
random = random
providers = providers
[random]
random = RNGAGGREGATOR
[providers]
rngaggregator = rngaggregator_provider
default = default_provider
[rngaggregator_provider]
module = )" INSTALLED_PROVIDER R"(
kind = unixdev
activate = 1
[default_provider]
activate = 1
)";

constexpr const char* kConfigurationOfOpenSsl = R"(
openssl_conf = init
[init]
providers = providers
[providers]
default = default_provider
[default_provider]
activate = 1
)";

double Seconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

double PassedSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return Seconds(now);
}

// The programs that draw become children of this process; see RegisterOpenSslProvider.
void AwaitChildren() {
  while (::wait(nullptr) > 0 || errno == EINTR) continue;
}

double ProcessorSecondsOfChildren() {
  AwaitChildren();
  rusage used{};
  ::getrusage(RUSAGE_CHILDREN, &used);
  return Seconds(used.ru_utime) + Seconds(used.ru_stime);
}

// Also of children that are running.
double ProcessorSecondsWithChildren() {
  double sum = ProcessorSeconds();
  std::ifstream children("/proc/self/task/" + std::to_string(::getpid()) + "/children");
  for (pid_t child = 0; children >> child;) {
    clockid_t clock{};
    timespec used{};
    if (::clock_getcpuclockid(child, &clock) == 0 && ::clock_gettime(clock, &used) == 0)
      sum += Seconds(used);
  }
  return sum;
}

// A library context with that configuration.
class Context {
 public:
  explicit Context(const std::string& configuration) : file(folder.path / "openssl.cnf") {
    std::ofstream(file) << configuration;
    if (!::OSSL_LIB_CTX_load_config(context, file.c_str()))
      throw std::runtime_error("OpenSSL refused a configuration");
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() { ::OSSL_LIB_CTX_free(context); }

  void Draw(std::vector<unsigned char>& bytes) const {
    if (::RAND_bytes_ex(context, bytes.data(), bytes.size(), 0) != 1)
      throw std::runtime_error("RAND_bytes_ex failed");
  }
  const std::string& File() const { return file; }

 private:
  const Folder folder{"/tmp"};
  const std::string file;
  OSSL_LIB_CTX* const context = ::OSSL_LIB_CTX_new();
};

// Threads that draw at the same time, each time that they are told to.
class Crew {
 public:
  Crew(const std::string& configuration, std::size_t size) : context(configuration) {
    for (int i = 0; i < kThreads; ++i) threads.emplace_back([this, size] { Work(size); });
  }
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;
  ~Crew() {
    isOver = true;
    begin.arrive_and_wait();
    for (std::thread& thread : threads) thread.join();
  }

  void Run() {
    begin.arrive_and_wait();
    end.arrive_and_wait();
  }

 private:
  static constexpr int kThreads = 4;

  void Work(std::size_t size) {
    std::vector<unsigned char> bytes(size);
    while (true) {
      begin.arrive_and_wait();
      if (isOver) return;
      for (int i = 0; i < kDrawsOfAThread; ++i) context.Draw(bytes);
      end.arrive_and_wait();
    }
  }

  const Context context;
  bool isOver = false;
  std::barrier<> begin{kThreads + 1};
  std::barrier<> end{kThreads + 1};
  std::vector<std::thread> threads;
};

Side DrawAlone(const std::string& configuration, std::size_t size) {
  const auto context = std::make_shared<Context>(configuration);
  const auto bytes = std::make_shared<std::vector<unsigned char>>(size);
  return {nullptr, [context, bytes] { context->Draw(*bytes); }};
}

Side DrawTogether(const std::string& configuration, std::size_t size) {
  const auto crew = std::make_shared<Crew>(configuration, size);
  return {nullptr, [crew] { crew->Run(); }};
}

Side StartAndDraw(const std::string& configuration) {
  const auto context = std::make_shared<Context>(configuration);  // for its file
  return {AwaitChildren, [context] {
            std::string program = FIRST_DRAW;
            std::string variable = "OPENSSL_CONF=" + context->File();
            char* const arguments[] = {program.data(), nullptr};
            char* const environment[] = {variable.data(), nullptr};
            pid_t child = 0;
            int status = -1;
            if (::posix_spawn(&child, FIRST_DRAW, nullptr, nullptr, arguments, environment) != 0 ||
                ::waitpid(child, &status, 0) != child || status != 0)
              throw std::runtime_error("the first draw of a process failed");
          }};
}

template <typename MakeSide>
void Register(const std::string& name, const MakeSide& makeSide, const Clock& processor) {
  const auto make = [makeSide] {
    return Pair{makeSide(kConfigurationOfProvider), makeSide(kConfigurationOfOpenSsl)};
  };
  RegisterPair("provider/" + name + ", time", make, PassedSeconds);
  RegisterPair("provider/" + name + ", processor", make, processor);
}

}  // namespace

void RegisterOpenSslProvider() {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  Register("a process with one draw", StartAndDraw, ProcessorSecondsOfChildren);
  for (const std::size_t size : {32, 4096, 65536}) {
    const std::string bytes = std::to_string(size) + " bytes";
    Register(
        bytes, [size](const auto& configuration) { return DrawAlone(configuration, size); },
        ProcessorSecondsWithChildren);
    Register(
        std::to_string(kDrawsOfAThread) + " x " + bytes + " in 4 threads",
        [size](const auto& configuration) { return DrawTogether(configuration, size); },
        ProcessorSecondsWithChildren);
  }
}
