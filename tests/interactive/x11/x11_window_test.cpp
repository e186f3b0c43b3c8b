// The window of "unixx11" in a process of the test.

#include "helpers/x11/window.h"
#include "tests/interactive/shown_window.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace {

// A draw must not go on for a user who sees nothing.
void ShowInADestroyedWindow(const std::string& server) {
  ::setenv("DISPLAY", server.c_str(), 1);
  ShownWindow shown(server, "Title");
  UserWindow window("Title", {"Request", "", 0, "0%", "Ending"});
  if (!shown.Appears()) std::exit(2);
  shown.Destroy();
  window.Show({"Request", "", 50, "50%", "Ending"});
  window.Read();
  std::exit(0);
}

}  // namespace

TEST(X11UserWindow, ExitsIfItCannotBePainted) {
  const XServer server;
  EXPECT_EXIT(ShowInADestroyedWindow(server.display), testing::ExitedWithCode(1),
              testing::IsEmpty());
}
