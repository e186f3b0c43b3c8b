#ifndef SETTINGS_PROFILE_FILE_H
#define SETTINGS_PROFILE_FILE_H

/// \file
/// Reading and writing one value of a profile file: lines ended by LF, section headers "[section]"
/// at the start of a line, entries "key=value". No comments, no quoting, no escaping.
///
/// Reader and writer do not parse the file alike. That is kept: files in the field depend on it.
///
///     matter          reader                              writer
///     section header  line begins with it, any case,      whole line without its CRs,
///                     more may follow                     byte for byte
///     key line        line begins with the key, any case  line begins with the key, byte for byte
///                     (so a longer key matches, too)      (so a longer key matches, too)
///     section's end   nowhere: later sections are         first empty line or end of file; a later
///                     searched as well                    header does not end it
///     value           after the last "=", trimmed         written verbatim
///     longest line    510 characters a read; more counts  511 characters without CRs;
///                     as further lines                    a longer one cuts the file there
///
/// Both are stateless and take no lock. Two writers at once use the same temporary file and spoil
/// each other's work; a reader may meet the moment in which the file is missing.

#include <cstdint>

/// Reads the value of `key` in `section` of the file `path` into `buffer`, which has `size` bytes.
/// A value that does not fit is cut. Whitespace is what `isspace` says in the process's locale.
///
/// When the file, the section, the key or its "=" is missing, copies `defaultValue` (null or empty:
/// none) with `strncpy` for `size` bytes: one as long as the buffer is left unterminated, and the
/// length returned is then `size`.
///
/// Returns the length of the text left in `buffer`. 0 means an empty value, with `buffer` emptied,
/// or nothing found and no default, with `buffer` untouched. Also 0, untouched: an argument other
/// than `defaultValue` is null, `size` is 0, or `section` has more than 509 characters in a file
/// that could be opened.
std::uint32_t ReadProfileString(const char* section, const char* key, const char* defaultValue,
                                char* buffer, std::uint32_t size, const char* path);

/// Sets `key` in `section` of the file `path` to `value` (null: empty). A missing section is added. A
/// file that cannot be opened for reading, for whatever cause, is made anew with this entry alone.
/// Any other is copied to `path` + ".tmp", which then takes its place as a new file: mode and owner
/// are not carried over, CRs are dropped, so is a last line without LF, and a line of 512 or more
/// characters and what follows it.
///
/// Returns 1, or 0 with the file untouched when `path`, `key` or `section` is null, `section` has
/// more than 509 characters, or the file or the temporary one cannot be created. Failures after
/// that are not noticed.
int WriteProfileString(const char* section, const char* key, const char* value, const char* path);

#endif
