// The service in the process already: this program exports it. A library of the service's name lies
// in the tree as well, and would answer otherwise.

#include "tests/support/aggregator_library.h"
#include "tests/support/allocation.h"
#include "tests/support/fakes.h"
#include "tests/support/tree.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <new>
#include <unistd.h>
#include <vector>

static std::int32_t g_result = 0;
static std::string g_ending;
static bool g_isEmpty = false;
static bool g_memoryEnds = false;
static std::vector<std::string> g_examined;

// Stands before the C library's, for the library under test as well.
extern "C" __attribute__((visibility("default"))) int access(const char* path, int mode) noexcept {
  g_examined.push_back(path);
  return ::faccessat(AT_FDCWD, path, mode, 0);
}

// Likewise. Files in the root directory are in the tree instead.
extern "C" __attribute__((visibility("default"))) std::FILE* fopen(const char* path,
                                                                   const char* mode) {
  const auto open = reinterpret_cast<decltype(&::fopen)>(::dlsym(RTLD_NEXT, "fopen"));
  const bool isInRoot = std::strrchr(path, '/') == path;
  return open(isInRoot ? TreePath(path + 1).c_str() : path, mode);
}

extern "C" __attribute__((visibility("default"))) std::int32_t CKP_GetPath(std::int32_t id,
                                                                           char* buffer,
                                                                           std::uint64_t* size,
                                                                           std::uint64_t fourth) {
  const bool isClear = std::all_of(buffer, buffer + 256, [](char c) { return c == '\0'; });
  RecordCall("host", std::to_string(id) + (isClear ? "" : ":dirty") + ":" + std::to_string(*size) +
                         ":" + std::to_string(fourth));
  const std::string directory = g_isEmpty ? "" : TreePath("host") + std::to_string(id) + g_ending;
  std::memcpy(buffer, directory.c_str(), directory.size() + 1);
  *size = directory.size() - 1;  // of no interest: the text's length is measured
  if (g_memoryEnds) FailAllocation(1);
  return g_result;
}

namespace {

void ExpectTheLibraryWasLeftAlone() {
  EXPECT_FALSE(IsMapped("libcrypt_known_path.so"));
  EXPECT_EQ("", CallLog("known_path"));
}

}  // namespace

TEST(HostKnownPath, WinsOverTheLibrary) {
  const AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
  EXPECT_EQ(TreePath("host0/dsdr.bin"), settings.GetDsdrFilePath());
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_TRUE(settings.SetHardwareId("A1"));
  EXPECT_STREQ("dsdr", settings.GetType());
  EXPECT_STREQ("A1", settings.GetHardwareId());
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\nRandomNumberGeneratorHardwareID=A1\n",
            ReadFile(TreePath("host2/rng.ini")));
  EXPECT_EQ("0:256:0 2:256:0 2:256:0 2:256:0 2:256:0 2:256:0", CallLog("host"));
  ExpectTheLibraryWasLeftAlone();
}

TEST(HostKnownPath, AnEmptyDirectoryIsTheRoot) {
  const AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
  g_isEmpty = true;
  EXPECT_EQ(nullptr, settings.GetType());
  EXPECT_TRUE(settings.SetType("dsdr"));
  EXPECT_EQ(std::vector<std::string>{"/rng.ini"}, g_examined);
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n", ReadFile(TreePath("rng.ini")));
  EXPECT_STREQ("dsdr", settings.GetType());
  WriteFile(TreePath("rng.ini"), "[Devices]\nRandomNumberGeneratorHardwareID=A1\n");
  EXPECT_STREQ("A1", settings.GetHardwareId());
}

TEST(HostKnownPath, RefusalIsAFailedLookup) {
  const AggregatorLibrary library;
  IRngSettings& settings = *library.GetDefaultSettings();
  WriteFile(TreePath("host2/rng.ini"), "[Devices]\nRandomNumberGeneratorType=dsdr\n");
  EXPECT_STREQ("dsdr", settings.GetType());
  for (const int refusal :
       {1, -1, 256, INT32_MIN}) {  // any but 0; what the buffer holds is ignored
    g_result = refusal;
    EXPECT_EQ(nullptr, settings.GetType()) << refusal;
    EXPECT_FALSE(settings.SetType("accord")) << refusal;
    EXPECT_FALSE(settings.SetHardwareId("A1")) << refusal;
    EXPECT_STREQ("/dsdr.bin", settings.GetDsdrFilePath()) << refusal;
  }
  EXPECT_EQ("[Devices]\nRandomNumberGeneratorType=dsdr\n", ReadFile(TreePath("host2/rng.ini")));
  ExpectTheLibraryWasLeftAlone();
}

TEST(HostKnownPath, NeedsNoLibrary) {
  InstallKnownPath("absent");
  const AggregatorLibrary library;
  EXPECT_EQ(TreePath("host0/dsdr.bin"), library.GetDefaultSettings()->GetDsdrFilePath());
}

TEST(HostKnownPath, SeparatorIsAddedToADirectoryThatEndsWithOne) {
  g_ending = "/";
  const AggregatorLibrary library;
  EXPECT_EQ(TreePath("host0//dsdr.bin"), library.GetDefaultSettings()->GetDsdrFilePath());
  g_examined.clear();
  EXPECT_TRUE(library.GetDefaultSettings()->SetType("dsdr"));
  ASSERT_FALSE(g_examined.empty());
  EXPECT_EQ(TreePath("host2//rng.ini"), g_examined.front());
}

TEST(HostKnownPath, ExhaustedMemoryReachesTheCallerAndNothingIsKept) {
  const AggregatorLibrary library;
  g_memoryEnds = true;
  EXPECT_THROW(library.GetDefaultSettings()->GetDsdrFilePath(), std::bad_alloc);
  g_memoryEnds = false;
  EXPECT_EQ(TreePath("host0/dsdr.bin"), library.GetDefaultSettings()->GetDsdrFilePath());
}
