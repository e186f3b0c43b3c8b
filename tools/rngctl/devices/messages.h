#ifndef TOOLS_RNGCTL_DEVICES_MESSAGES_H
#define TOOLS_RNGCTL_DEVICES_MESSAGES_H

#include "tools/rngctl/channel/messages.h"

#include <string>

struct DevicesQuestion {
  std::string file;
  std::string factory;
};
RNGCTL_MESSAGE(DevicesQuestion, file, factory)

enum class DevicesStep { kStart, kReport, kEnd };
constexpr DevicesStep LastOf(DevicesStep) { return DevicesStep::kEnd; }

struct DevicesAnswer {
  DevicesStep step = DevicesStep::kStart;
  bool hasThrown = false;  ///< an exception ended this step; nothing follows
  int size = 0;            ///< what the first call returned
  int sizeAgain = 0;       ///< what the second call returned
  std::string text = {};
};
RNGCTL_MESSAGE(DevicesAnswer, step, hasThrown, size, sizeAgain, text)

#endif
