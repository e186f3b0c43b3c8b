#include "tools/rngctl/argument_checks.h"

#include "tools/rngctl/terminal/text.h"

#include <charconv>
#include <cstdint>
#include <stdexcept>

#include <rngaggregator/combined_rng.h>

// CLI11 alone would read -1 as the largest number and 010 as eight.
std::string CheckDecimal(const std::string& text) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isNumber = result.ptr == text.data() + text.size();
  if (isNumber && result.ec == std::errc::result_out_of_range)
    return Quoted(text) + " is too large";
  const bool isDecimal = result.ec == std::errc() && text == std::to_string(value);
  return isDecimal ? "" : "\"" + text + "\" is not a decimal number";
}

// CLI11 alone would read 010 as eight here, too. Hexadecimal is allowed.
std::string CheckMask(const std::string& text) {
  const bool isOctal = text.size() > 1 && text[0] == '0' && text[1] != 'x';
  return isOctal ? "\"" + text + "\" is not a mask: write it in decimal, or in hexadecimal with 0x"
                 : "";
}

// An empty name usually comes from an unset variable in a script. The bytes must not go to standard
// output instead. With other programs, "-" means standard output.
std::string CheckFileName(const std::string& text) {
  if (text == "-") {
    return "\"-\" is not a file name here. Leave out -o to write to standard output, or write \"-o "
           "./-\" for a file of that name";
  }
  return text.empty() ? "the file name is empty" : "";
}

std::string CheckRecord(const std::string& text) {
  return text == "-" ? "the record cannot be written to standard output: name a file"
                     : CheckFileName(text);
}

std::string CheckSources(const std::string& text) {
  try {
    rng::ParseSources(text);
    return "";
  } catch (const std::invalid_argument& refusal) {
    return refusal.what();
  }
}

// An empty identifier would mean any device.
std::string CheckDevice(const std::string& text) {
  return text.empty() ? "the hardware identifier is empty" : "";
}

std::string CheckUser(const std::string& text) {
  return text.empty() ? "the name of the user is empty" : "";
}

std::string CheckPicture(const std::string& text) {
  return text == "-" ? "the picture cannot be written to standard output: name a file"
                     : CheckFileName(text);
}
