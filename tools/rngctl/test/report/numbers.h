#ifndef TOOLS_RNGCTL_TEST_REPORT_NUMBERS_H
#define TOOLS_RNGCTL_TEST_REPORT_NUMBERS_H

#include <cstdint>
#include <string>

/// "1,000,000".
std::string Grouped(std::uint64_t number);

/// Rounded to that many digits: "0.012", "1.3e-12".
std::string Rounded(double number, int digits = 2);

/// "263 ns", "1.61 us": three digits are enough.
std::string WithUnit(double seconds);

/// "526 MB per second".
std::string BytesPerSecond(std::uint64_t bytes);

#endif
