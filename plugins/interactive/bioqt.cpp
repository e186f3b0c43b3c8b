// The kind "bioqt": a person with a mouse and a keyboard, who sees a dialog in the style of the desktop.

#include "plugins/interactive/display.h"
#include "plugins/interactive/interactive_rng.h"

namespace {

InteractiveRng g_provider;

}  // namespace

const InteractiveKind kKind = {"bioqt",         "Mouse movements and key presses in a dialog",
                               "rng-gather-qt", "rng-plugin-bioqt",
                               HasDisplay,      FindProblemOfDisplay};

extern "C" IRngProvider* GetBioQtRng() { return &g_provider; }
