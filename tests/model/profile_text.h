#ifndef TESTS_MODEL_PROFILE_TEXT_H
#define TESTS_MODEL_PROFILE_TEXT_H

#include <optional>
#include <string>

/// The profile file as a whole text, for lines short enough to be read and copied at once: what is
/// read as the value of a key in the section "Devices", and what the file is after a key was set.
std::string ValueIn(const std::string& file, const std::string& key);
std::string FileWith(const std::optional<std::string>& file, const std::string& key,
                     const std::string& value);

#endif
