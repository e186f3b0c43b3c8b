#include "tools/rngctl/test/report/numbers.h"

#include <cstdio>

namespace {

struct Unit {
  double size;
  const char* name;
};

// The units begin with the largest.
template <std::size_t Count>
std::string Scaled(double number, const Unit (&units)[Count]) {
  const Unit* unit = units;
  // From 999.5 on, a number is rounded to the next unit.
  while (unit != units + Count - 1 && number < 0.9995 * unit->size) ++unit;
  return Rounded(number / unit->size, 3) + " " + unit->name;
}

}  // namespace

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t place = text.size(); place > 3; place -= 3) text.insert(place - 3, ",");
  return text;
}

std::string Rounded(double number, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*g", digits, number);
  return text;
}

std::string WithUnit(double seconds) {
  return Scaled(seconds, {{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}, {1e-9, "ns"}});
}

std::string BytesPerSecond(std::uint64_t bytes) {
  return Scaled(static_cast<double>(bytes), {{1e9, "GB"}, {1e6, "MB"}, {1e3, "kB"}, {1, "bytes"}}) +
         " per second";
}
