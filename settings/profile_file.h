#ifndef SETTINGS_PROFILE_FILE_H
#define SETTINGS_PROFILE_FILE_H

/// \file
/// Reading and writing one value of a profile file: lines ended by LF, section headers "[section]"
/// at the start of a line, entries "key=value". No comments, no quoting, no escaping.
///
/// Reader and writer parse the file differently. Both sets of rules are part of the file format, so
/// that an existing file keeps its meaning.
///
///     matter          reader                              writer
///     section header  line begins with it, any case,      whole line without its CRs,
///                     more text may follow                byte for byte
///     key line        line begins with the key, any case  line begins with the key, byte for byte
///                     (so a longer key matches, too)      (so a longer key matches, too)
///     section's end   none: later sections are            first empty line or end of file; a later
///                     searched as well                    header does not end it
///     value           after the last "=", trimmed         written verbatim
///     longest line    510 characters per read; the rest   511 characters without CRs;
///                     is treated as further lines         a longer one ends the copy there
///
/// Both are stateless and take no lock. Two concurrent writers use the same temporary file and
/// corrupt each other's result. A reader may find the file missing while it is being replaced.

#include <cstdint>

/// Reads the value of `key` in `section` of the file `path` into `buffer`, which has `size` bytes.
/// A value that does not fit is truncated. `isspace` defines white space, in the process's locale.
///
/// When the file, the section, the key or its "=" is missing, copies `defaultValue` (null or empty:
/// none) with `strncpy` for `size` bytes. A default at least as long as the buffer is therefore
/// left unterminated, and the returned length is then `size`.
/// A section of 509 characters is written but never found: its header does not fit one read.
///
/// Returns the length of the text in `buffer`. 0 means an empty value, with `buffer` emptied, or
/// nothing found and no default, with `buffer` untouched. Also returns 0, with `buffer` untouched,
/// when an argument other than `defaultValue` is null, `size` is 0, or `section` has more than 509
/// characters and the file could be opened.
std::uint32_t ReadProfileString(const char* section, const char* key, const char* defaultValue,
                                char* buffer, std::uint32_t size, const char* path);

/// Sets `key` in `section` of the file `path` to `value` (null: empty). A missing section is added.
/// If the file cannot be opened for reading, for whatever reason, a new one is written with only
/// this entry. Any other file is copied to `path` + ".tmp", which then replaces it as a new file.
/// The copy does not keep mode and owner, and drops CRs, the rest of a line after a NUL, a last line
/// without LF, and a line of 512 or more characters with everything after it.
///
/// Returns 1. Returns 0, with the file untouched, when `path`, `key` or `section` is null,
/// `section` has more than 509 characters, or the file or the temporary one cannot be created.
/// Failures after that are not detected.
int WriteProfileString(const char* section, const char* key, const char* value, const char* path);

#endif
