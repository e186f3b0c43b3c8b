#ifndef SETTINGS_KNOWN_PATH_H
#define SETTINGS_KNOWN_PATH_H

#include <optional>
#include <string>

/// Return the settings directory and the data directory, or nothing when the lookup fails. Each
/// call looks the directory up afresh.
///
/// The known-path service is the function `CKP_GetPath`: the one already bound in the process, else
/// the one in `libcrypt_known_path.so`. If there is neither, because the library is absent or
/// cannot be opened, the result is the directory fixed at build time. If the service returns an
/// error, or the library lacks the function, the lookup fails; there is no fallback.
///
/// The library stays in the process (`RTLD_NODELETE`), since the service may keep state. Nothing is
/// cached here. Directories are byte strings as the service returns them, at most 256 bytes.
std::optional<std::string> FindSettingsDirectory();
std::optional<std::string> FindDataDirectory();

#endif
