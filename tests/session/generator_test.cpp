#include "tests/session/own_provider.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <gmock/gmock.h>
#include <pthread.h>
#include <span>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <unwind.h>

using rng::ErrorCode;
using testing::ElementsAre;
using testing::Pair;

namespace {

static_assert(!rng::detail::kCanBeFilled<bool> && !rng::detail::kCanBeFilled<const char> &&
              !rng::detail::kCanBeFilled<float> && !rng::detail::kCanBeFilled<std::string> &&
              !rng::detail::kCanBeFilled<ErrorCode> && !rng::detail::kCanBeFilled<char*>);
static_assert(rng::detail::kCanBeFilled<char> && rng::detail::kCanBeFilled<std::byte> &&
              rng::detail::kCanBeFilled<std::uint64_t>);
static_assert(std::is_copy_constructible_v<rng::Generator>);

bool FailAfterFilling(unsigned char* buffer, std::size_t size) {
  return !OwnProvider::DrawWell(buffer, size);
}

// Below a frame so large that the handling of an exception does not reach the bytes.
__attribute__((noinline)) void DrawFarBelow(const rng::Generator& generator) {
  volatile char room[32768];
  room[0] = 1;
  generator.Bytes<64>();
  room[1] = room[0];
}

bool Repeat(unsigned char*, std::size_t) { return true; }

// Larger than what a good draw leaves zero by chance.
template <typename Range>
bool HasZeros(const Range& range) {
  return std::count(std::begin(range), std::end(range), 0) > 8;
}

}  // namespace

TEST(Generator, FillsEveryKindOfRange) {
  OwnProvider provider;
  const rng::Generator generator = GeneratorOf(provider);
  unsigned char bytes[64] = {};
  std::array<std::uint32_t, 16> numbers = {};
  std::vector<char> characters(64);
  std::string text(64, '\0');
  std::uint64_t words[16] = {};
  generator.Fill(bytes);
  generator.Fill(numbers);
  generator.Fill(characters);
  generator.Fill(text);
  generator.Fill(std::span(words, 8));
  generator.Fill(reinterpret_cast<unsigned char*>(words + 8), 32);
  EXPECT_THAT(provider.sizes, ElementsAre(64, 64, 64, 64, 64, 32));
  EXPECT_FALSE(HasZeros(bytes) || HasZeros(numbers) || HasZeros(characters) || HasZeros(text));
  EXPECT_EQ(4, std::count(std::begin(words), std::end(words), 0U));
  EXPECT_EQ(words + 12, std::find(std::begin(words), std::end(words), 0U));
}

TEST(Generator, ReturnsAsManyBytesAsAreAskedFor) {
  OwnProvider provider;
  const auto bytes = GeneratorOf(provider).Bytes<48>();
  EXPECT_EQ(48U, bytes.size());
  EXPECT_FALSE(HasZeros(bytes));
  EXPECT_THAT(provider.sizes, ElementsAre(48));
}

TEST(Generator, PassesADrawOfZeroBytesToThePlugin) {
  OwnProvider provider;
  std::vector<unsigned char> none;
  GeneratorOf(provider).Fill(none);
  GeneratorOf(provider).Fill(static_cast<char*>(nullptr), 0);
  EXPECT_EQ(0U, GeneratorOf(provider).Bytes<0>().size());
  EXPECT_THAT(provider.sizes, ElementsAre(0, 0, 0));
}

TEST(Generator, ThrowsAndLeavesZerosIfADrawFails) {
  OwnProvider provider;
  provider.draw = FailAfterFilling;
  std::vector<unsigned char> bytes(64, 7);
  EXPECT_THAT(
      ErrorOf([&] { GeneratorOf(provider).Fill(bytes); }),
      Pair(ErrorCode::kDrawFailed,
           "A draw from the generator \"own\" failed or was cancelled. Run \"rngctl doctor own\" "
           "to find out why."));
  EXPECT_EQ(std::vector<unsigned char>(64, 0), bytes);
}

TEST(Generator, ThrowsAnErrorWithTheTextOfAPluginsException) {
  OwnProvider provider;
  provider.draw = [](unsigned char* buffer, std::size_t size) -> bool {
    OwnProvider::DrawWell(buffer, size);
    throw std::logic_error("un\x1b[1mplugged\xff");
  };
  std::vector<unsigned char> bytes(64, 7);
  EXPECT_THAT(ErrorOf([&] { GeneratorOf(provider).Fill(bytes); }),
              Pair(ErrorCode::kDrawFailed,
                   "The generator \"own\" failed: un?[1mplugged?. Run \"rngctl doctor own\" to "
                   "find out why."));
  EXPECT_EQ(std::vector<unsigned char>(64, 0), bytes);
  provider.draw = [](unsigned char*, std::size_t) -> bool { throw 1; };
  EXPECT_EQ("The generator \"own\" failed. Run \"rngctl doctor own\" to find out why.",
            ErrorOf([&] { GeneratorOf(provider).Fill(bytes); }).second);
}

TEST(Generator, TruncatesTextsOfPlugins) {
  OwnProvider provider;
  provider.draw = [](unsigned char*, std::size_t) -> bool {
    throw std::runtime_error(std::string(1'000'000, 'x'));
  };
  const auto draw = [&] { GeneratorOf(provider, std::string(5000, 'n')).Bytes<8>(); };
  const std::string name(200, 'n');
  EXPECT_EQ("The generator \"" + name + "\" failed: " + std::string(200, 'x') +
                ". Run \"rngctl doctor " + name + "\" to find out why.",
            ErrorOf(draw).second);
}

TEST(Generator, FailsInEveryCopyAfterAnAlarm) {
  OwnProvider provider;
  provider.draw = Repeat;
  const rng::Generator generator = GeneratorOf(provider);
  const rng::Generator copy = generator;
  EXPECT_THAT(
      ErrorOf([&] { generator.Bytes<32>(); }),
      Pair(ErrorCode::kAlarm,
           "The generator \"own\" returned bytes that are evidently not random. Stop using it, and "
           "replace everything that was made from its bytes."));
  provider.draw = OwnProvider::DrawWell;
  EXPECT_EQ(ErrorCode::kAlarm, ErrorOf([&] { copy.Bytes<32>(); }).first);
  EXPECT_EQ(1U, provider.sizes.size());
  copy.Provider().Reset();
  EXPECT_FALSE(HasZeros(generator.Bytes<32>()));
}

// Looks at the place of the bytes before anything else uses that part of the stack.
TEST(Generator, WipesBytesThatItDoesNotReturn) {
  OwnProvider provider;
  const volatile unsigned char* place = nullptr;
  provider.draw = [&](unsigned char* buffer, std::size_t size) {
    place = buffer;
    return FailAfterFilling(buffer, size);
  };
  std::array<unsigned char, 64> left;
  try {
    DrawFarBelow(GeneratorOf(provider));
    FAIL() << "no error";
  } catch (const rng::Error&) {
    for (std::size_t i = 0; i < left.size(); ++i) left[i] = place[i];
  }
  EXPECT_EQ(decltype(left)(), left);
}

TEST(Generator, CancelsADrawOfAnotherThread) {
  OwnProvider provider;
  std::atomic<bool> isWaiting = false;
  std::atomic<bool> isCancelled = false;
  provider.draw = [&](unsigned char*, std::size_t) {
    isWaiting = true;
    while (!isCancelled) ::usleep(1000);
    return false;
  };
  provider.cancel = [&] { isCancelled = true; };
  const rng::Generator generator = GeneratorOf(provider);
  ErrorCode code = {};
  std::thread other([&] { code = ErrorOf([&] { generator.Bytes<8>(); }).first; });
  while (!isWaiting) ::usleep(1000);
  generator.Cancel();
  other.join();
  EXPECT_EQ(ErrorCode::kDrawFailed, code);
}

// The thread ends, its draw is wiped, and no terminate handler is called.
TEST(Generator, LetsTheCancellationOfAThreadPass) {
  static OwnProvider provider;
  static std::array<unsigned char, 64> bytes;
  static std::atomic<bool> isWaiting = false;
  provider.draw = [](unsigned char* buffer, std::size_t size) {
    OwnProvider::DrawWell(buffer, size);
    isWaiting = true;
    while (true) ::usleep(1000);
    return true;
  };
  pthread_t other;
  const auto work = [](void*) -> void* {
    GeneratorOf(provider).Fill(bytes);
    return nullptr;
  };
  ASSERT_EQ(0, ::pthread_create(&other, nullptr, work, nullptr));
  while (!isWaiting) ::usleep(1000);
  ::pthread_cancel(other);
  void* result = nullptr;
  ::pthread_join(other, &result);
  EXPECT_EQ(PTHREAD_CANCELED, result);
  EXPECT_TRUE(bytes == decltype(bytes)());
}

// As from a plug-in in another language: there is no C++ object in it.
TEST(Generator, ThrowsAnErrorForAnExceptionOfAnotherLanguage) {
  static _Unwind_Exception foreign = {};
  OwnProvider provider;
  provider.draw = [](unsigned char*, std::size_t) -> bool {
    ::_Unwind_RaiseException(&foreign);
    std::abort();
  };
  EXPECT_THAT(ErrorOf([&] { GeneratorOf(provider).Bytes<32>(); }),
              Pair(ErrorCode::kDrawFailed,
                   "The generator \"own\" failed. Run \"rngctl doctor own\" to find out why."));
}

TEST(Generator, IsUsableAfterAMove) {
  OwnProvider provider;
  rng::Generator generator = GeneratorOf(provider);
  const rng::Generator moved(std::move(generator));
  rng::Generator assigned = moved;
  assigned = std::move(generator);
  generator.Bytes<8>();
  moved.Bytes<8>();
  assigned.Bytes<8>();
  EXPECT_EQ(3U, provider.sizes.size());
  EXPECT_EQ("own", generator.Name());
}

TEST(Generator, HasNoDeviceIfItReportsANegativeSize) {
  struct : OwnProvider {
    std::int32_t GetHardwareId(char*) override { return -1; }
  } provider;
  EXPECT_EQ("", GeneratorOf(provider).Device());
}

TEST(Generator, ReportsItsNameItsDeviceAndWhetherItNeedsTheUser) {
  OwnProvider provider;
  const rng::Generator generator = GeneratorOf(provider);
  EXPECT_EQ("own", generator.Name());
  EXPECT_EQ("", generator.Device());
  generator.Provider().SelectDevice("A1");
  EXPECT_EQ("A1", generator.Device());
  EXPECT_FALSE(generator.NeedsUser());
  provider.flags = kRngCapabilityNeedsUser;
  EXPECT_TRUE(generator.NeedsUser());
}
