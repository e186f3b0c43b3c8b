#include "providers/display_probe.h"
#include "providers/library_handle.h"
#include "tools/rngctl/doctor/examine/examine.h"
#include "tools/rngctl/doctor/messages.h"
#include "tools/rngctl/loader/error.h"
#include "tools/rngctl/loader/link_map.h"
#include "tools/rngctl/loader/search_order.h"
#include "tools/rngctl/process/child.h"

#include <cstdlib>
#include <dlfcn.h>

namespace {

struct Fault {
  std::string reason;
  std::string fix;
};

// The probe does not say why it fails. This checks what it needs, in the same order.
Fault FindDisplayFault() {
  const LibraryHandle x11(::dlopen("libX11.so.6", RTLD_LAZY));
  if (!x11) {
    const LoaderError error = ParseLoaderError(::dlerror());
    const bool isAbsent = error.missingFile == "libX11.so.6";
    return {
        isAbsent ? "libX11.so.6 is not installed" : "libX11.so.6 cannot be opened: " + error.words,
        "Install the X client library (on Debian, the package libx11-6)."};
  }
  for (const char* function : {"XOpenDisplay", "XCloseDisplay"}) {
    if (::dlsym(x11.get(), function)) continue;
    return {MapOf(x11.get())->l_name + std::string(" lacks ") + function,
            "Replace that file with the system's X client library."};
  }
  const char* const display = std::getenv("DISPLAY");
  if (!display || !*display) {
    return {"DISPLAY is not set",
            "Run this in a graphical session, or set DISPLAY to an X server."};
  }
  return {"the X server of DISPLAY=" + std::string(display) + " cannot be reached",
          "Start that server or correct DISPLAY, and make sure that this user may connect to it."};
}

}  // namespace

void ExamineSearch(const std::string& given) { Send(SearchAnswer{ListSystemDirectories(given)}); }

void ExamineDisplay() {
  DisplayAnswer answer;
  Send(answer);
  answer.isFound = ProbeXDisplay();
  const Fault fault = answer.isFound ? Fault{} : FindDisplayFault();
  answer.reason = fault.reason;
  answer.fix = fault.fix;
  answer.isDone = true;
  Send(answer);
}
