#ifndef TESTS_RNGCTL_DEFAULT_SETTINGS_OF_TREE_H
#define TESTS_RNGCTL_DEFAULT_SETTINGS_OF_TREE_H

#include "tests/rngctl/installed_tool.h"
#include "tests/support/tree.h"

#include <string>
#include <sys/types.h>

/// The settings file of the tree of a case, and the file as which it is written.
inline std::string Ini() { return TreePath(kSettingsFile); }
inline std::string Temporary() { return Ini() + ".tmp"; }

/// What the file contains before "default set".
inline constexpr char kOldSettings[] =
    "[Devices]\nRandomNumberGeneratorType=sobol\n\n[Other]\nkey=value\n";

/// A user that runs no test.
inline constexpr uid_t kAnotherUser = 4711;

#endif
