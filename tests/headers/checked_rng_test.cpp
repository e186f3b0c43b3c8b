#include "tests/headers/stopping_page.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/random.h>

#include <rngaggregator/checked_rng.h>

namespace {

// Draws what the case says, into the buffer as it was handed over.
class ScriptedSource : public IRngProvider {
 public:
  std::function<bool(unsigned char*, std::size_t)> draw;
  std::string calls;

  bool Generate(void* buffer, std::size_t size) override {
    calls += "Generate ";
    return draw(static_cast<unsigned char*>(buffer), size);
  }
  std::int32_t GetName(char*) override { return Note("GetName ", 5); }
  std::int32_t GetDescription(char*) override { return Note("GetDescription ", 6); }
  std::int32_t GetHardwareId(char*) override { return Note("GetHardwareId ", 7); }
  bool SelectDevice(const char* id) override {
    return Note("SelectDevice ", id == std::string("R1"));
  }
  bool IsAvailable() override { return Note("IsAvailable ", true); }
  bool SelfTest() override { return Note("SelfTest ", true); }
  void Cancel() override { Note("Cancel ", 0); }
  std::uint32_t GetFlags() override { return Note("GetFlags ", 9U); }
  void SetSettings(IRngSettings*) override { Note("SetSettings ", 0); }
  void Release() override { Note("Release ", 0); }

 private:
  template <typename Result>
  Result Note(const char* call, Result result) {
    calls += call;
    return result;
  }
};

bool DrawGood(unsigned char* buffer, std::size_t size) {
  for (std::size_t done = 0; done < size;) {
    const ssize_t count = ::getrandom(buffer + done, size - done, 0);
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return true;
}

using Bytes = std::vector<unsigned char>;

// Old bytes that look as random as any.
Bytes OldBytes(std::size_t size) {
  Bytes bytes(size);
  DrawGood(bytes.data(), size);
  return bytes;
}

void ExpectZeros(const Bytes& bytes) { EXPECT_EQ(Bytes(bytes.size(), 0), bytes); }

}  // namespace

TEST(CheckedRng, PassesGoodDrawsOfEverySize) {
  ScriptedSource source;
  source.draw = DrawGood;
  CheckedRng rng(&source);
  for (const std::size_t size : {1UL, 2UL, 15UL, 16UL, 17UL, 255UL, 256UL, 4096UL, 70000UL}) {
    Bytes bytes(size, 0);
    EXPECT_TRUE(rng.Generate(bytes.data(), size));
    EXPECT_TRUE(size < 17 || bytes != Bytes(size, 0));
  }
  EXPECT_EQ(RngHealthAlarm::kNone, rng.Alarm());
}

TEST(CheckedRng, SeesATailThatWasNotFilledWhateverTheBufferHeld) {
  for (const std::size_t size : {16UL, 32UL, 256UL, 4096UL, 70000UL}) {
    ScriptedSource source;
    source.draw = [](unsigned char* buffer, std::size_t count) {
      return DrawGood(buffer, count - 9);
    };
    CheckedRng rng(&source);
    Bytes bytes = OldBytes(size);
    EXPECT_FALSE(rng.Generate(bytes.data(), size)) << size;
    ExpectZeros(bytes);
    EXPECT_EQ(RngHealthAlarm::kRepetition, rng.Alarm());
  }
}

TEST(CheckedRng, AfterAnAlarmDrawsNothingUntilItIsReset) {
  ScriptedSource source;
  source.draw = [](unsigned char*, std::size_t) { return true; };
  CheckedRng rng(&source);
  Bytes bytes = OldBytes(32);
  EXPECT_FALSE(rng.Generate(bytes.data(), bytes.size()));
  source.draw = DrawGood;
  source.calls.clear();
  bytes = OldBytes(32);
  EXPECT_FALSE(rng.Generate(bytes.data(), bytes.size()));
  ExpectZeros(bytes);
  EXPECT_EQ("", source.calls);
  rng.Reset();
  EXPECT_TRUE(rng.Generate(bytes.data(), bytes.size()));
}

TEST(CheckedRng, SeesDefectsAcrossDraws) {
  ScriptedSource source;
  unsigned char next = 0;
  source.draw = [&next](unsigned char* buffer, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) buffer[i] = next;
    ++next;
    return true;
  };
  CheckedRng rng(&source);
  Bytes bytes(4);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(rng.Generate(bytes.data(), 4));
  next = 3;  // four more of what came last
  EXPECT_TRUE(rng.Generate(bytes.data(), 4));
  next = 3;
  EXPECT_FALSE(rng.Generate(bytes.data(), 1));

  ScriptedSource repeating;
  const Bytes block = OldBytes(16);
  repeating.draw = [&block](unsigned char* buffer, std::size_t size) {
    std::copy_n(block.begin(), size, buffer);
    return true;
  };
  CheckedRng repeated(&repeating);
  Bytes drawn(16);
  EXPECT_TRUE(repeated.Generate(drawn.data(), 16));
  EXPECT_FALSE(repeated.Generate(drawn.data(), 16));
  EXPECT_EQ(RngHealthAlarm::kBlock, repeated.Alarm());
}

// It keeps no more than the last 16 bytes. Among 512 bytes, each of these occurs 16 times.
TEST(CheckedRng, DoesNotSeeThirtyTwoBytesThatEachDrawRepeats) {
  ScriptedSource source;
  source.draw = [](unsigned char* buffer, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) buffer[i] = static_cast<unsigned char>(37 * i);
    return true;
  };
  CheckedRng rng(&source);
  Bytes bytes(32);
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(rng.Generate(bytes.data(), bytes.size()));
}

TEST(CheckedRng, AlarmsAt23OfAWindowAndNoFewer) {
  for (const std::size_t equal : {22UL, 23UL}) {
    Bytes stream = OldBytes(1024);
    for (std::size_t i = 513; i < 1024; ++i) {  // the second window
      if (stream[i] == stream[512]) ++stream[i];
    }
    for (std::size_t i = 1; i < equal; ++i) stream[512 + 20 * i] = stream[512];
    ScriptedSource source;
    source.draw = [&stream](unsigned char* buffer, std::size_t size) {
      std::copy_n(stream.begin(), size, buffer);
      return true;
    };
    CheckedRng rng(&source);
    Bytes bytes(1024);
    EXPECT_EQ(equal < 23, rng.Generate(bytes.data(), bytes.size()));
    EXPECT_EQ(equal < 23 ? RngHealthAlarm::kNone : RngHealthAlarm::kProportion, rng.Alarm());
  }
}

// Providers zero the buffer when they fail. Those zeros are not part of the stream.
TEST(CheckedRng, WhatAFailedDrawLeavesIsNotTested) {
  ScriptedSource source;
  source.draw = [](unsigned char*, std::size_t) { return false; };
  CheckedRng rng(&source);
  Bytes bytes(64);
  EXPECT_FALSE(rng.Generate(bytes.data(), bytes.size()));
  EXPECT_EQ(RngHealthAlarm::kNone, rng.Alarm());
  source.draw = DrawGood;
  EXPECT_TRUE(rng.Generate(bytes.data(), bytes.size()));
}

TEST(CheckedRng, AFailedDrawIsNoAlarmAndLeavesZeros) {
  ScriptedSource source;
  source.draw = [](unsigned char* buffer, std::size_t size) { return !DrawGood(buffer, size); };
  CheckedRng rng(&source);
  Bytes bytes = OldBytes(64);
  EXPECT_FALSE(rng.Generate(bytes.data(), bytes.size()));
  ExpectZeros(bytes);
  EXPECT_EQ(RngHealthAlarm::kNone, rng.Alarm());
}

TEST(CheckedRng, AnExceptionPassesAndLeavesZeros) {
  ScriptedSource source;
  source.draw = [](unsigned char* buffer, std::size_t size) -> bool {
    DrawGood(buffer, size);
    throw std::runtime_error("removed");
  };
  CheckedRng rng(&source);
  Bytes bytes = OldBytes(64);
  EXPECT_THROW(rng.Generate(bytes.data(), bytes.size()), std::runtime_error);
  ExpectZeros(bytes);
}

TEST(CheckedRng, AnEmptyDrawTouchesNothing) {
  ScriptedSource source;
  source.draw = [](unsigned char* buffer, std::size_t) { return buffer == nullptr; };
  CheckedRng rng(&source);
  EXPECT_TRUE(rng.Generate(nullptr, 0));
  EXPECT_EQ("Generate ", source.calls);
}

TEST(CheckedRng, AfterAnAlarmAnEmptyDrawFailsToo) {
  ScriptedSource source;
  source.draw = [](unsigned char*, std::size_t) { return true; };
  CheckedRng rng(&source);
  Bytes bytes(32);
  EXPECT_FALSE(rng.Generate(bytes.data(), bytes.size()));
  source.calls.clear();
  EXPECT_FALSE(rng.Generate(nullptr, 0));
  EXPECT_EQ("", source.calls);
  rng.Reset();
  EXPECT_TRUE(rng.Generate(nullptr, 0));
}

TEST(CheckedRng, CanBeCancelledAndResetWhileADrawWaits) {
  ScriptedSource source;
  std::promise<void> begun;
  std::promise<void> go;
  source.draw = [&](unsigned char* buffer, std::size_t size) {
    begun.set_value();
    go.get_future().wait();
    return DrawGood(buffer, size);
  };
  CheckedRng rng(&source);
  Bytes bytes(32);
  auto draw = std::async(std::launch::async, [&] { return rng.Generate(bytes.data(), 32); });
  begun.get_future().wait();
  rng.Reset();
  EXPECT_EQ(RngHealthAlarm::kNone, rng.Alarm());
  rng.Cancel();
  go.set_value();
  EXPECT_TRUE(draw.get());
}

TEST(CheckedRng, PassesOnEveryOtherOperationButThoseOfTheAggregator) {
  ScriptedSource source;
  CheckedRng rng(&source);
  EXPECT_EQ(5, rng.GetName(nullptr));
  EXPECT_EQ(6, rng.GetDescription(nullptr));
  EXPECT_EQ(7, rng.GetHardwareId(nullptr));
  EXPECT_TRUE(rng.SelectDevice("R1"));
  EXPECT_FALSE(rng.SelectDevice("R2"));
  EXPECT_TRUE(rng.IsAvailable());
  EXPECT_TRUE(rng.SelfTest());
  rng.Cancel();
  EXPECT_EQ(9U, rng.GetFlags());
  rng.SetSettings(nullptr);
  rng.Release();
  EXPECT_EQ(
      "GetName GetDescription GetHardwareId SelectDevice SelectDevice IsAvailable SelfTest Cancel "
      "GetFlags ",
      source.calls);
}

// --- The check alone, as plug-ins use it

TEST(RngDrawCheck, TestsAndZeroesWhatTheFunctionDraws) {
  RngDrawCheck check;
  Bytes bytes = OldBytes(64);
  EXPECT_TRUE(check.Run(bytes.data(), 64, [&] { return DrawGood(bytes.data(), 64); }));
  EXPECT_FALSE(check.Run(bytes.data(), 64, [&] { return DrawGood(bytes.data(), 32); }));
  ExpectZeros(bytes);
  EXPECT_EQ(RngHealthAlarm::kRepetition, check.Alarm());
  check.Reset();
  EXPECT_TRUE(check.Run(bytes.data(), 64, [&] { return DrawGood(bytes.data(), 64); }));
}

// As in a copy that was forked while another thread's bytes were being tested.
// The other thread stops in the middle of its test.
TEST(RngDrawCheck, BytesThatEndDuringATestAreTestedAlone) {
  for (const bool isGood : {true, false}) {
    RngDrawCheck check;
    StoppingPage page;
    auto other = std::async(std::launch::async, [&] {
      return check.Run(page.Bytes(), page.kSize, [&] {
        const bool isFilled = DrawGood(page.Bytes(), page.kSize);
        page.Close();
        return isFilled;
      });
    });
    page.WaitForReader();
    Bytes bytes(4096);
    const auto draw = [&] { return isGood ? DrawGood(bytes.data(), 4096) : true; };
    EXPECT_EQ(isGood, check.Run(bytes.data(), bytes.size(), draw));
    page.Open();
    EXPECT_EQ(isGood, other.get());  // the alarm ends this draw, too
  }
}

// The alarm is taken back at any moment, also while a draw is judged by it.
TEST(RngDrawCheck, ResetLetsNoBadBytesPass) {
  RngDrawCheck check;
  std::atomic<bool> isOver = false;
  auto reset = std::async(std::launch::async, [&] {
    while (!isOver) check.Reset();
  });
  Bytes bytes(16);
  int passed = 0;
  for (int drawn = 0; drawn < 50'000;) {  // draws before a reset are not made
    passed += check.Run(bytes.data(), bytes.size(), [&drawn] { return ++drawn > 0; }) ? 1 : 0;
  }
  isOver = true;
  reset.get();
  EXPECT_EQ(0, passed);
}

// They may be part of a key.
TEST(RngDrawCheck, ResetErasesTheLastBytes) {
  RngDrawCheck check;
  Bytes bytes(48);
  ASSERT_TRUE(check.Run(bytes.data(), bytes.size(), [&] { return DrawGood(bytes.data(), 48); }));
  const auto isKept = [&] {
    return ::memmem(&check, sizeof check, bytes.data() + 32, 16) != nullptr;
  };
  EXPECT_TRUE(isKept());
  check.Reset();
  EXPECT_FALSE(isKept());
}

TEST(RngDrawCheck, DescribesItsAlarms) {
  EXPECT_STREQ("", RngDrawCheck::Describe(RngHealthAlarm::kNone));
  EXPECT_STREQ("nine equal bytes in a row", RngDrawCheck::Describe(RngHealthAlarm::kRepetition));
  EXPECT_STREQ("one value far too often in 512 bytes",
               RngDrawCheck::Describe(RngHealthAlarm::kProportion));
  EXPECT_STREQ("16 bytes equal to the 16 before them",
               RngDrawCheck::Describe(RngHealthAlarm::kBlock));
}
