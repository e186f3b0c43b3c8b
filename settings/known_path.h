#ifndef SETTINGS_KNOWN_PATH_H
#define SETTINGS_KNOWN_PATH_H

#include <optional>
#include <string>

/// The settings directory and the data directory, looked up afresh at each call. Nothing when the lookup
/// fails.
///
/// The service that is asked is `CKP_GetPath`: the one already bound in the process, else the one
/// in `libcrypt_known_path.so`. Where neither is there (the library is absent or cannot be opened),
/// the directories fixed at build time answer. A service that refuses, or a library of that name
/// without the function, is a failed lookup: there is no falling back from it.
///
/// The library is left in the process (`RTLD_NODELETE`), since the service may keep state; this
/// side keeps none. Directories are byte strings as the service gives them, at most 256 bytes.
std::optional<std::string> FindSettingsDirectory();
std::optional<std::string> FindDataDirectory();

#endif
