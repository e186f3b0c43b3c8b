#ifndef TOOLS_RNGCTL_ARGUMENT_CHECKS_H
#define TOOLS_RNGCTL_ARGUMENT_CHECKS_H

#include <string>

/// Why an argument cannot be used, or "". The parser prints it after the name of the option.
std::string CheckDecimal(const std::string& text);
std::string CheckMask(const std::string& text);
std::string CheckFileName(const std::string& text);
std::string CheckRecord(const std::string& text);
std::string CheckPicture(const std::string& text);
std::string CheckSources(const std::string& text);
std::string CheckDevice(const std::string& text);
std::string CheckUser(const std::string& text);

#endif
