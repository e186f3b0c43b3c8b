#ifndef TESTS_FUZZ_FUZZ_INPUT_H
#define TESTS_FUZZ_FUZZ_INPUT_H

#include "tests/fuzz/profile_model.h"

#include <cstdint>
#include <string_view>

/// One input, a line of fields that end with "|", the last with the input. Missing fields are empty.
/// Bytes stand for themselves, but for these, which make the interesting texts short to write and
/// likely to be met by chance:
///
///     %h %H   the header of the section; the same with upper and lower case exchanged
///     %k %K   the key; the same with upper and lower case exchanged
///     %n %r %c %0   LF, CR, CR LF, a zero byte
///     %pD     "x" until the line has 505 + D characters, where D is a digit
///     %PD     the same, with CRs not counted
///     %xD     505 + D times "x"
///     %d      the text so far once more
///     %%      "%", and likewise for any other character
///
/// An argument that is "%-" is null. One that would hold a zero byte ends there.
class FuzzInput {
 public:
  explicit FuzzInput(std::string_view text) : rest(text) {}

  profile_model::Text Section();  ///< remembered for "%h"
  profile_model::Text Key();      ///< remembered for "%k"
  profile_model::Text Argument();
  std::uint32_t Number(std::uint32_t limit);  ///< below the limit
  std::string_view Letters();

  bool HasMore() const { return !rest.empty(); }
  std::string Content();  ///< of a file: all that is left

 private:
  std::string Expand(std::string_view text) const;

  std::string_view rest;
  std::string section;
  std::string key;
};

#endif
