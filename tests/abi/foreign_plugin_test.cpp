#include "tests/support/aggregator_library.h"
#include "tests/support/fake_settings.h"
#include "tests/support/tree.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

std::string Text(IRngProvider& rng, std::int32_t (IRngProvider::*operation)(char* buffer)) {
  std::array<char, 64> buffer{};
  (rng.*operation)(buffer.data());
  return buffer.data();
}

std::array<unsigned char, 32> Draw(IRngProvider& rng) {
  std::array<unsigned char, 32> bytes{};
  EXPECT_TRUE(rng.Generate(bytes.data(), bytes.size()));
  return bytes;
}

}  // namespace

// By compiler and standard; each plug-in reports the two itself.
class ForeignPlugin : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    fs::copy(fs::path(FOREIGN_PLUGINS) / GetParam() / "librnggrandmaster.so",
             TreePath("lib/librnggrandmaster.so"));
    settings.hardwareId = "A1B2";
    library.Start(&settings, 1);
    rng = library.GetRng("grandmaster");
    ASSERT_NE(nullptr, rng);
  }
  void TearDown() override {
    if (library.IsInitialized()) library.ShutDown();
  }

  FakeSettings settings;
  const AggregatorLibrary library;
  IRngProvider* rng = nullptr;
};

TEST_P(ForeignPlugin, IsFoundAndDrawnFrom) {
  EXPECT_EQ(GetParam(), Text(*rng, &IRngProvider::GetDescription));
  EXPECT_EQ("A1B2", Text(*rng, &IRngProvider::GetHardwareId));  // through the host's settings
  EXPECT_NE(Draw(*rng), Draw(*rng));
}

TEST_P(ForeignPlugin, IsReleasedAndClosed) {
  EXPECT_TRUE(IsMapped("librnggrandmaster.so"));
  library.ShutDown();
  EXPECT_EQ("released", settings.type);
  EXPECT_FALSE(IsMapped("librnggrandmaster.so"));
}

TEST_P(ForeignPlugin, ThrowsToItsHost) {
  try {
    rng->SelfTest();
    FAIL() << "no exception";
  } catch (const std::runtime_error& failure) {
    EXPECT_STREQ("from the self-test", failure.what());
  }
}

INSTANTIATE_TEST_SUITE_P(From, ForeignPlugin,
                         testing::Values("GNU-11", "GNU-20", "CLANG-11", "CLANG-20"),
                         [](const auto& each) {
                           std::string name = each.param;
                           name.replace(name.find('-'), 1, "_as_");
                           return name;
                         });
