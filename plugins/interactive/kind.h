#ifndef PLUGINS_INTERACTIVE_KIND_H
#define PLUGINS_INTERACTIVE_KIND_H

#include <string>

/// What distinguishes the kinds.
struct InteractiveKind {
  const char* name;
  const char* description;
  const char* helper;        ///< the file name of the helper
  const char* package;       ///< the Debian package that has it
  bool (*canAsk)();          ///< whether there is a terminal or a display, without asking anybody
  std::string (*problem)();  ///< why nobody can be asked now, and what to do; "" if it is possible
};

/// Each plug-in defines its own.
extern const InteractiveKind kKind;

/// Helpers are installed beside the folder of the plug-ins, wherever that is moved. "" if this plug-in was
/// not loaded by an absolute path: another folder could be the current one by now.
std::string FindHelper();

/// A program with more rights than its user asks nobody: the helper would have these rights, too.
bool HasMoreRightsThanUser();

#endif
