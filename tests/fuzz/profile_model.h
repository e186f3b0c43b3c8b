#ifndef TESTS_FUZZ_PROFILE_MODEL_H
#define TESTS_FUZZ_PROFILE_MODEL_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// What reading and writing of profile files must do, on strings in memory. It shares nothing with the
/// product: whole files are taken apart first and looked at afterwards, instead of line by line.
namespace profile_model {

/// A folder: contents by name. The name of a directory ends with "/".
using Folder = std::map<std::string, std::string>;

/// An argument: nothing stands for a null pointer. No text holds a zero byte.
using Text = std::optional<std::string>;

struct ReadCall {
  Text section;
  Text key;
  Text defaultValue;
  Text buffer;  ///< all its bytes, before the call
  Text name;    ///< of the file in the folder; one with a "/" lies in a directory that is missing
};

struct ReadOutcome {
  std::uint32_t result;
  std::string buffer;  ///< all its bytes, after the call
};

ReadOutcome Read(const Folder& folder, const ReadCall& call);

struct WriteCall {
  Text section;
  Text key;
  Text value;
  Text name;
};

struct WriteOutcome {
  int result;
  Folder folder;
};

WriteOutcome Write(const Folder& folder, const WriteCall& call);

}  // namespace profile_model

#endif
