#ifndef TOOLS_RNGCTL_SETTINGS_STORE_DEFAULT_H
#define TOOLS_RNGCTL_SETTINGS_STORE_DEFAULT_H

#include <string>

struct Default {
  std::string kind;
  std::string device;
  bool operator==(const Default&) const = default;
};

/// "Rutoken, device 1234", "none".
std::string Describe(const Default& chosen);

Default ReadConfiguredDefault();

/// Lets the library store the default, one process of rngctl at a time, and reads it back. No plug-in
/// need be loaded. Throws a `Refusal` that names the file and says what to do.
///
/// - The file and missing directories are created readable for everybody and writable for their owner
///   alone, whatever the umask. A file with a more restrictive mode keeps it.
/// - Where the library would lose settings without reporting it, nothing is changed: a full disk, a limit
///   on file sizes, a file that this user cannot read, a dangling link. The same applies to a left-over
///   rng.ini.tmp that this user did not create, because the library would write into it.
/// - If storing fails after that, or the file does not have what it should have, the old one is put back.
/// - Signals wait until the file is complete, or the old one is back.
/// - What storing removes, apart from the old default, is printed as a warning.
void StoreDefault(const Default& chosen);

#endif
