#include "helpers/session/remote_display.h"

#include <cstdlib>
#include <string>

bool IsDisplayRemote() {
  const char* const display = std::getenv("DISPLAY");
  const std::string text = display ? display : "";
  const std::string host = text.substr(0, text.rfind(':'));
  return !host.empty() && host != "unix";
}
