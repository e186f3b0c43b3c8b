#include "helpers/session/remote_display.h"

#include <cstdlib>
#include <gtest/gtest.h>

TEST(RemoteDisplay, HasAHostInItsName) {
  for (const char* const name :
       {"localhost:10.0", "screen.example:0", "[::1]:0", "::1:0", "unix.example:0"}) {
    ::setenv("DISPLAY", name, 1);
    EXPECT_TRUE(IsDisplayRemote()) << name;
  }
}

TEST(RemoteDisplay, IsNotOneOfThisMachine) {
  for (const char* const name : {"", ":0", ":0.1", "unix:0"}) {
    ::setenv("DISPLAY", name, 1);
    EXPECT_FALSE(IsDisplayRemote()) << name;
  }
  ::unsetenv("DISPLAY");
  EXPECT_FALSE(IsDisplayRemote());
}
