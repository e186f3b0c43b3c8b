#ifndef PLUGINS_INTERACTIVE_KIND_H
#define PLUGINS_INTERACTIVE_KIND_H

#include <string>

/// What distinguishes the kinds.
struct InteractiveKind {
  const char* name;
  const char* description;
  const char* helper;        ///< the file name of the helper
  const char* package;       ///< the Debian package that contains the helper
  bool (*canAsk)();          ///< whether there is a terminal or a display; asks nobody
  std::string (*problem)();  ///< why the user cannot be asked now, and what to do; "" if possible
};

/// Each plug-in defines this once.
extern const InteractiveKind kKind;

/// The path of the helper, which is relative to this plug-in's own file, so an installation can be moved. "" if
/// the plug-in was not loaded by an absolute path: the current folder may have changed since then.
std::string FindHelper();

/// 0 if the helper can be executed, otherwise the error number that says why not.
int CheckHelper(const std::string& path);

/// Whether the host has more rights than its user, as a set-user-ID program has. It then asks nobody: the user
/// controls what the helper sees, and the helper could inherit these rights.
bool HasMoreRightsThanUser();

#endif
