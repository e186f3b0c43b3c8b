#ifndef TOOLS_RNGCTL_DOCTOR_SETTINGS_IGNORED_DEFAULT_H
#define TOOLS_RNGCTL_DOCTOR_SETTINGS_IGNORED_DEFAULT_H

#include "tools/rngctl/channel/messages.h"

#include <string>

/// Why the library ignores a line that was meant to configure a default, and what to do about it.
struct IgnoredDefault {
  std::string problem = {};  ///< "line 1 has blanks before [Devices]"; "" if there is no such line
  std::string fix = {};
};
RNGCTL_MESSAGE(IgnoredDefault, problem, fix)

/// Looks for such a line in the text of a settings file in which the library finds no value for `key`.
/// A line in a section with a very different name, or after a character other than a blank, may be
/// disabled on purpose and is not reported. `file` is named in the fix.
IgnoredDefault FindIgnoredDefault(const std::string& text, const std::string& key,
                                  const std::string& file);

#endif
