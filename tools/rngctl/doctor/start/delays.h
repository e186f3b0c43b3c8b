#ifndef TOOLS_RNGCTL_DOCTOR_START_DELAYS_H
#define TOOLS_RNGCTL_DOCTOR_START_DELAYS_H

#include "tools/rngctl/doctor/start/messages.h"

#include <string>

/// A sentence about a start that takes long, with what it spends the time on. "" if it is fast, or did
/// not return.
std::string DescribeSlowness(const StartAnswer& answer);

#endif
