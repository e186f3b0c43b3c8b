#ifndef TESTS_MODEL_STEPS_H
#define TESTS_MODEL_STEPS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a sequence does, one step after the other: arrangements (what a plug-in, the X library, the
/// known-path service or a host's settings do from now on) and calls of the library. Every step makes
/// sense in every state, so that a sequence stays one when steps are dropped from it.
///
/// A step is a list of words. A text in it is a colon and the text with its odd bytes as "%20", or
/// the word "null":
///
///     plug KIND scripted|missing|garbage|no_factory   the plug-in's file
///     null KIND 0|1                                   the factory gives null
///     available KIND 0|1
///     flags KIND MASK
///     name KIND TEXT SIZE AGAIN                       GetName's answers; "same": what the text needs
///     throw WHO OPERATION 0|1                         WHO is a kind or a host's settings, A or B
///     host A|B type|id TEXT
///     refuse A|B type|id 0|1                          storing gives false
///     x11 VARIANT
///     service here|deep|blocked|none                  where the settings directory is
///     data here|none                                  and the data directory
///     file TEXT                                       rng.ini in the directory "here"
///     variable NAME TEXT
///
///     initialize null|A|B|builtin   shutdown   initialized   count MASK   list MASK   rng TEXT
///     interactive TEXT   default MASK   default_null MASK   set TEXT TEXT   builtin   reload
///     get_type   set_type TEXT   get_id   set_id TEXT   dsdr_path    (of the built-in settings)
using Step = std::vector<std::string>;
using Steps = std::vector<Step>;

bool IsCall(const Step& step);

std::string ToText(const Steps& steps);     ///< "plug dsdr scripted; initialize A; ..."
Steps ParseSteps(const std::string& text);  ///< throws std::invalid_argument for an unknown step
Steps RandomSteps(std::uint64_t seed, std::uint64_t number);

std::string EncodeText(const char* text);  ///< a word
std::string EncodeText(const std::optional<std::string>& text);
std::optional<std::string> DecodeText(const std::string& word);
std::uint32_t DecodeMask(const std::string& word);

#endif
