#ifndef TESTS_COMBINE_FAKE_SOURCE_H
#define TESTS_COMBINE_FAKE_SOURCE_H

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <rngaggregator/combined_rng.h>

/// A byte of a stream that passes the checks of draws. `seed` chooses the stream.
inline unsigned char StreamByte(unsigned seed, std::size_t place) {
  std::uint64_t x = (std::uint64_t{seed} << 32) + place + 1;
  for (const std::uint64_t factor : {0xBF58476D1CE4E5B9U, 0x94D049BB133111EBU}) {
    x = (x ^ (x >> 30)) * factor;
  }
  return static_cast<unsigned char>(x >> 56);
}

/// A provider of which every draw gives the same bytes. Threads: any.
struct SteadySource : IRngProvider {
  SteadySource(std::string kind, unsigned stream) : name(std::move(kind)), seed(stream) {}

  rng::CombinedSource Named(const std::string& device = "") {
    return rng::CombinedSource(name, device, this);
  }

  std::int32_t GetName(char* buffer) override {
    if (buffer) std::memcpy(buffer, name.c_str(), name.size() + 1);
    return static_cast<std::int32_t>(name.size() + 1);
  }
  std::int32_t GetDescription(char*) override { return 0; }
  std::int32_t GetHardwareId(char*) override { return 0; }
  bool SelectDevice(const char*) override { return true; }
  bool Generate(void* buffer, std::size_t size) override {
    for (std::size_t i = 0; i < size; ++i) {
      static_cast<unsigned char*>(buffer)[i] = StreamByte(seed, i);
    }
    return true;
  }
  bool IsAvailable() override { return true; }
  bool SelfTest() override { return true; }
  void Cancel() override {}
  std::uint32_t GetFlags() override { return kRngCapabilityHardware; }
  void SetSettings(IRngSettings*) override {}
  void Release() override {}

  std::string name;
  unsigned seed;
};

/// One whose answers a case sets. Threads: one.
struct FakeSource final : SteadySource {
  explicit FakeSource(std::string kind = "unixdev", unsigned stream = 1)
      : SteadySource(std::move(kind), stream) {
    draw = [stream](unsigned char* bytes, std::size_t size) {
      return SteadySource("", stream).Generate(bytes, size);
    };
  }

  bool SelectDevice(const char* hardwareId) override {
    selected.emplace_back(hardwareId);
    return acceptsDevices;
  }
  bool Generate(void* buffer, std::size_t size) override {
    sizes.push_back(size);
    return draw(static_cast<unsigned char*>(buffer), size);
  }
  bool IsAvailable() override {
    whenAsked();
    return isAvailable;
  }
  bool SelfTest() override {
    whenAsked();
    return passes;
  }
  void Cancel() override { whenAsked(); }
  std::uint32_t GetFlags() override {
    whenAsked();
    return flags;
  }
  void SetSettings(IRngSettings*) override { ++startUpCalls; }
  void Release() override { ++startUpCalls; }

  std::function<bool(unsigned char*, std::size_t)> draw;
  std::function<void()> whenAsked = [] {};  // by one of the four operations above
  bool acceptsDevices = true;
  bool isAvailable = true;
  bool passes = true;
  std::uint32_t flags = kRngCapabilityHardware;
  std::vector<std::string> selected;
  std::vector<std::size_t> sizes;
  int startUpCalls = 0;
};

using Bytes = std::vector<unsigned char>;

/// What a combination gives; empty if the draw fails.
inline Bytes DrawOf(const std::vector<rng::CombinedSource>& sources, std::size_t size = 32) {
  rng::CombinedRng combined(sources);
  Bytes bytes(size, 0xAA);
  return combined.Generate(bytes.data(), size) ? bytes : Bytes{};
}

#endif
