// The kind "unixx11": a person with a mouse and a keyboard, who sees a plain window.

#include "plugins/interactive/display.h"
#include "plugins/interactive/interactive_rng.h"

namespace {

InteractiveRng g_provider;

}  // namespace

const InteractiveKind kKind = {"unixx11",        "Mouse movements and key presses in a window",
                               "rng-gather-x11", "rng-plugin-biox11",
                               HasDisplay,       FindProblemOfDisplay};

extern "C" IRngProvider* GetBioX11Rng() { return &g_provider; }
