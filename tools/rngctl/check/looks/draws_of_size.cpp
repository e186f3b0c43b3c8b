#include "tools/rngctl/check/looks/draws_of_size.h"

#include "tools/rngctl/terminal/text.h"

std::string InWords(const Range& range) {
  if (range.end - range.begin == 1) return "byte " + std::to_string(range.end);
  return "bytes " + std::to_string(range.begin + 1) + " to " + std::to_string(range.end);
}

std::string DrawInWords(std::size_t number, std::size_t size) {
  constexpr const char* kOrdinals[kDrawsOfSize] = {"first", "second", "third",  "fourth",
                                                   "fifth", "sixth",  "seventh"};
  return std::string("the ") + kOrdinals[number] + " draw of " + Counted(size, "byte");
}
