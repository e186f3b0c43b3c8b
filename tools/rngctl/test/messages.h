#ifndef TOOLS_RNGCTL_TEST_MESSAGES_H
#define TOOLS_RNGCTL_TEST_MESSAGES_H

#include "quality/restarts.h"
#include "tools/rngctl/channel/messages.h"

#include <string>

/// The generator that is tested, in its own words.
struct SourceFacts {
  std::string name;
  std::string description;
  std::string device;  ///< the one in use, "" for none
  std::uint32_t flags = 0;
};
RNGCTL_MESSAGE(SourceFacts, name, description, device, flags)

struct RestartOrder {
  std::string name;
  std::string device;
};
RNGCTL_MESSAGE(RestartOrder, name, device)

struct RestartAnswer {
  std::optional<FirstDraw> draw = {};
  std::string refusal = {};  ///< why there is none
  std::string advice = {};
};
RNGCTL_MESSAGE(RestartAnswer, draw, refusal, advice)

#endif
