#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"

#include <array>
#include <cstring>
#include <gmock/gmock.h>

using testing::Each;
using testing::ElementsAreArray;

constexpr std::size_t kMargin = 64;
constexpr std::size_t kRecordSize = 36;
constexpr char kCanary = '\xA5';

namespace {

/// A record in the middle of bytes that nobody may write.
class GuardedRecord {
 public:
  GuardedRecord() { bytes.fill(kCanary); }

  DefaultRngInfo* Get() { return reinterpret_cast<DefaultRngInfo*>(bytes.data() + kMargin); }

  void ExpectOnlyTheRecordWritten(const std::string& type, const std::string& hardwareId) const {
    std::array<char, kRecordSize> expected{};
    std::memcpy(expected.data(), type.data(), type.size());
    std::memcpy(expected.data() + 18, hardwareId.data(), hardwareId.size());
    EXPECT_THAT(Slice(0, kMargin), Each(kCanary));
    EXPECT_THAT(Slice(kMargin, kRecordSize), ElementsAreArray(expected));
    EXPECT_THAT(Slice(kMargin + kRecordSize, kMargin), Each(kCanary));
  }

 private:
  std::string Slice(std::size_t begin, std::size_t size) const {
    return std::string(bytes.data() + begin, size);
  }

  std::array<char, kMargin + kRecordSize + kMargin> bytes;
};

}  // namespace

TEST(DefaultRngInfo, HasTwoFieldsOfEighteenBytes) {
  EXPECT_EQ(36U, sizeof(DefaultRngInfo));
  EXPECT_EQ(0U, offsetof(DefaultRngInfo, type));
  EXPECT_EQ(18U, offsetof(DefaultRngInfo, hardwareId));
  EXPECT_EQ(1U, alignof(DefaultRngInfo));
}

class GetDefaultRngWrites : public testing::Test {
 protected:
  GetDefaultRngWrites() { library.Initialize(&settings); }

  FakeSettings settings;
  const AggregatorLibrary library;
  GuardedRecord record;
};

TEST_F(GetDefaultRngWrites, TheLongestTextsInsideTheRecord) {
  settings.type = std::string(17, 't');
  settings.hardwareId = std::string(17, 'h');
  EXPECT_EQ(1, library.GetDefaultRng(record.Get(), 0));
  record.ExpectOnlyTheRecordWritten(*settings.type, *settings.hardwareId);
}

TEST_F(GetDefaultRngWrites, ShortTextsAndZeroesInsideTheRecord) {
  settings.type = "Rutoken";
  settings.hardwareId = "serial";
  EXPECT_EQ(1, library.GetDefaultRng(record.Get(), 0));
  record.ExpectOnlyTheRecordWritten("Rutoken", "serial");
}

TEST_F(GetDefaultRngWrites, TheFallbackInsideTheRecord) {
  EXPECT_EQ(1, library.GetDefaultRng(record.Get(), 4));
  record.ExpectOnlyTheRecordWritten("biokbd", "");
}

TEST_F(GetDefaultRngWrites, ZeroesInsideTheRecordWhenTheTypeIsTooLong) {
  settings.type = std::string(18, 't');
  settings.hardwareId = std::string(17, 'h');
  EXPECT_EQ(0, library.GetDefaultRng(record.Get(), 4));
  record.ExpectOnlyTheRecordWritten("", "");
}

TEST_F(GetDefaultRngWrites, ZeroesInsideTheRecordWhenTheHardwareIdIsTooLong) {
  settings.type = std::string(17, 't');
  settings.hardwareId = std::string(18, 'h');
  EXPECT_EQ(0, library.GetDefaultRng(record.Get(), 4));
  record.ExpectOnlyTheRecordWritten("", "");
}

TEST_F(GetDefaultRngWrites, NothingWhenStopped) {
  library.ShutDown();
  EXPECT_EQ(0, library.GetDefaultRng(record.Get(), 4));
  record.ExpectOnlyTheRecordWritten(std::string(18, kCanary), std::string(18, kCanary));
}
