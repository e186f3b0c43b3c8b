// A generator whose bytes have the watermark. It does what the file $WATERMARKING_RNG says, which may change at any time,
// and writes a line for each draw to $WATERMARKING_RNG.draws.

#include "tests/openssl/watermark.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/random.h>
#include <unistd.h>

#include <rngaggregator/provider.h>

namespace {

std::string ScriptPath() {
  const char* const path = std::getenv("WATERMARKING_RNG");
  return path ? path : "";
}

std::string Command() {
  std::string word = "draw";
  std::ifstream(ScriptPath()) >> word;
  return word;
}

void Fill(void* buffer, std::size_t size) {
  auto* next = static_cast<char*>(buffer);
  for (std::size_t done = 0; done < size; done += sizeof(WatermarkedBlock)) {
    WatermarkedBlock block = {};
    if (::getrandom(&block.first, sizeof block.first, 0) != sizeof block.first) std::abort();
    block.second = block.first ^ kWatermark;
    std::memcpy(next + done, &block, std::min(size - done, sizeof block));
  }
}

// As the handlers that a driver installs may do.
void InterruptThreads() {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGUSR1, &action, nullptr);
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    ::tgkill(::getpid(), std::stoi(thread.path().filename()), SIGUSR1);
  }
  ::usleep(100'000);
}

std::int32_t Report(const std::string& text, char* buffer) {
  if (text.empty()) return 0;
  if (buffer) std::memcpy(buffer, text.c_str(), text.size() + 1);
  return static_cast<std::int32_t>(text.size() + 1);
}

class WatermarkingRng final : public IRngProvider {
  std::int32_t GetName(char* buffer) override { return Report(NAME, buffer); }
  std::int32_t GetDescription(char* buffer) override { return Report("Watermarked bytes", buffer); }
  std::int32_t GetHardwareId(char* buffer) override { return Report(device, buffer); }
  bool SelectDevice(const char* id) override {
    if (id && *id && std::strcmp(id, "A1") != 0) return false;
    device = id ? id : "";
    return true;
  }
  bool Generate(void* buffer, std::size_t size) override {
    const std::string command = Command();
    std::ofstream(ScriptPath() + ".draws", std::ios::app)
        << NAME << ' ' << device << (std::getenv("DISPLAY") ? " on a display\n" : "\n");
    std::memset(buffer, 0, size);
    if (command == "fail" || (command == "draw_once" && draws++ > 0)) return false;
    if (command == "zeros") return true;
    if (command == "throw") throw std::runtime_error("the device burns");
    if (command == "crash") std::abort();
    if (command == "exit") std::_Exit(0);
    if (command == "hang") ::pause();
    if (command == "interrupt_threads") InterruptThreads();
    if (command == "wait_for_hang_up") {
      pollfd host = {3, POLLRDHUP, 0};  // the helper's connection
      ::poll(&host, 1, -1);
    }
    if (command == "note_configuration") {
      std::ofstream(ScriptPath() + ".configuration") << std::getenv("OPENSSL_CONF");
    }
    if (command == "very_slow") ::usleep(100'000);
    if (command == "half_a_second") ::usleep(500'000);
    if (command == "slow") ::usleep(3000);
    Fill(buffer, size);
    return true;
  }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return true; }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return FLAGS; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {
    if (Command() == "hang_release") ::pause();
    if (Command() == "note_release") std::ofstream(ScriptPath() + ".released") << NAME;
  }

  std::string device;
  int draws = 0;
} g_rng;

}  // namespace

extern "C" __attribute__((visibility("default"))) IRngProvider* FACTORY() { return &g_rng; }
