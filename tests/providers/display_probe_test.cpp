#include "providers/display_probe.h"

#include "tests/support/aggregator_library.h"
#include "tests/support/fakes.h"
#include "tests/support/open_files.h"
#include "tests/support/tree.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <ostream>

namespace {

struct Probe {
  const char* library;
  bool hasDisplay;
  const char* log;
};

void PrintTo(const Probe& probe, std::ostream* out) { *out << probe.library; }

std::string NameOf(const testing::TestParamInfo<Probe>& instance) { return instance.param.library; }

}  // namespace

// --- With an X library of each fault

class DisplayProbe : public testing::TestWithParam<Probe> {
 protected:
  DisplayProbe() { InstallX11(GetParam().library); }
};

TEST_P(DisplayProbe, CallsWhatItMustAndClosesTheLibrary) {
  EXPECT_EQ(GetParam().hasDisplay, ProbeXDisplay());
  EXPECT_EQ(GetParam().log, CallLog());
  EXPECT_FALSE(IsMapped("libX11.so.6"));
}

TEST_P(DisplayProbe, DoesTheSameAgainAtEachCall) {
  for (int call = 0; call < 3; ++call) {
    ClearCallLog();
    EXPECT_EQ(GetParam().hasDisplay, ProbeXDisplay());
    EXPECT_EQ(GetParam().log, CallLog());
  }
}

TEST_P(DisplayProbe, IsNotMovedByAnEarlierErrorOfTheLoader) {
  ASSERT_EQ(nullptr, ::dlopen(TreePath("lib/librngabsent.so").c_str(), RTLD_LAZY));
  EXPECT_EQ(GetParam().hasDisplay, ProbeXDisplay());
  ASSERT_EQ(nullptr, ::dlsym(RTLD_DEFAULT, "NoSuchFunction"));
  EXPECT_EQ(GetParam().hasDisplay, ProbeXDisplay());
}

TEST_P(DisplayProbe, KeepsNothingBetweenTwoCalls) {
  ProbeXDisplay();
  InstallX11(GetParam().hasDisplay ? "refusing" : "whole");
  EXPECT_NE(GetParam().hasDisplay, ProbeXDisplay());
}

INSTANTIATE_TEST_SUITE_P(
    Library, DisplayProbe,
    testing::Values(Probe{"whole", true,
                          "x11.opened x11.XOpenDisplay x11.XCloseDisplay x11.closed"},
                    Probe{"unresolved_function", true,
                          "x11.opened x11.XOpenDisplay x11.XCloseDisplay x11.closed"},
                    Probe{"refusing", false, "x11.opened x11.XOpenDisplay x11.closed"},
                    Probe{"no_open", false, "x11.opened x11.closed"},
                    // the connection is left open
                    Probe{"no_close", false, "x11.opened x11.XOpenDisplay x11.closed"},
                    Probe{"absent", false, ""}),
    NameOf);

TEST(DisplayProbe, DoesNotPublishTheSymbolsOfTheXLibrary) {
  InstallX11("whole");
  Fake("x11").hooks["XOpenDisplay"] = [] {
    EXPECT_EQ(nullptr, ::dlsym(RTLD_DEFAULT, "XOpenDisplay"));
  };
  EXPECT_TRUE(ProbeXDisplay());
}

TEST(DisplayProbe, LeavesTheXLibraryToItsOtherHolder) {
  InstallX11("whole");
  void* const holder = ::dlopen("libX11.so.6", RTLD_LAZY);
  ASSERT_NE(nullptr, holder);
  EXPECT_TRUE(ProbeXDisplay());
  EXPECT_EQ("opened XOpenDisplay XCloseDisplay", CallLog("x11"));
  ::dlclose(holder);
  EXPECT_FALSE(IsMapped("libX11.so.6"));
}

// --- With the system's X library and a server

namespace {

class SystemXLibrary : public testing::Test {
 protected:
  SystemXLibrary() {
    std::filesystem::remove(TreePath("lib/libX11.so.6"));
    void* const library = ::dlopen("libX11.so.6", RTLD_LAZY);
    EXPECT_NE(nullptr, library) << ::dlerror();  // else every answer below is false
    if (library) ::dlclose(library);
  }

  static void SetDisplay(const std::string& display) { ::setenv("DISPLAY", display.c_str(), 1); }
};

}  // namespace

TEST_F(SystemXLibrary, FindsTheServerOfTheDefaultDisplay) {
  const XServer server;
  SetDisplay(server.display);
  EXPECT_TRUE(ProbeXDisplay());
}

TEST_F(SystemXLibrary, ClosesEachConnection) {
  const XServer server;
  SetDisplay(server.display);
  const std::ptrdiff_t openBefore = CountOpenFiles();
  for (int call = 0; call < 3; ++call) EXPECT_TRUE(ProbeXDisplay());
  EXPECT_EQ(openBefore, CountOpenFiles());
}

TEST_F(SystemXLibrary, FindsNothingOnADisplayThatNobodyServes) {
  XServer server;
  SetDisplay(server.display);
  ASSERT_TRUE(ProbeXDisplay());
  server.Stop();
  EXPECT_FALSE(ProbeXDisplay());
}

TEST_F(SystemXLibrary, FindsNothingWithoutADisplaySetting) {
  const XServer server;
  ::unsetenv("DISPLAY");
  EXPECT_FALSE(ProbeXDisplay());
  for (const char* display : {"", ":", "no display", ":99999999"}) {
    SetDisplay(display);
    EXPECT_FALSE(ProbeXDisplay()) << display;
  }
}
