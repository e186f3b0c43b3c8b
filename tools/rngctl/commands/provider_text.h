#ifndef TOOLS_RNGCTL_COMMANDS_PROVIDER_TEXT_H
#define TOOLS_RNGCTL_COMMANDS_PROVIDER_TEXT_H

#include <string>

#include <rngaggregator/provider.h>

/// A provider's text, "" when it has none: `ReadText(rng, &IRngProvider::GetName)`.
std::string ReadText(IRngProvider& provider, std::int32_t (IRngProvider::*operation)(char* buffer));

#endif
