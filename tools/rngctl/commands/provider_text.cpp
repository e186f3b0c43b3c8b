#include "tools/rngctl/commands/provider_text.h"

std::string ReadText(IRngProvider& provider,
                     std::int32_t (IRngProvider::*operation)(char* buffer)) {
  const std::int32_t size = (provider.*operation)(nullptr);
  if (size <= 0) return "";
  std::string text(static_cast<std::size_t>(size), '\0');
  if ((provider.*operation)(text.data()) != size) return "";
  text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
  return text;
}
