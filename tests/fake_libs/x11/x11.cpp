// An X library with at most one fault: a function that is missing, no display to open, or an XOpenDisplay
// that crashes, exits, hangs or is slow.

#include "tests/support/fake_answers.h"

#include <cstdlib>
#include <unistd.h>

namespace {

struct Presence {
  Presence() { RecordCallFromC("x11", "opened"); }
  ~Presence() { RecordCallFromC("x11", "closed"); }
} g_presence;

char g_display;

}  // namespace

#if HAS_OPEN
extern "C" __attribute__((visibility("default"))) void* XOpenDisplay(const char* name) {
  RecordCallFromC("x11", name ? "XOpenDisplay(named)" : "XOpenDisplay");
#ifdef CRASHES
  std::abort();
#endif
#ifdef SLOW
  ::usleep(60000);  // for each of the twelve rows
#endif
#ifdef EXITS
  std::_Exit(4);
#endif
#ifdef HANGS
  ::pause();
#endif
  return HAS_DISPLAY ? &g_display : nullptr;
}
#endif

#if HAS_CLOSE
extern "C" __attribute__((visibility("default"))) int XCloseDisplay(void* display) {
  RecordCallFromC("x11", display == &g_display ? "XCloseDisplay" : "XCloseDisplay(other)");
  return 1;
}
#endif
