#ifndef TOOLS_RNGCTL_DOCTOR_START_DELAYS_H
#define TOOLS_RNGCTL_DOCTOR_START_DELAYS_H

#include "tools/rngctl/doctor/start/messages.h"

#include <string>

/// A sentence about a slow start and what it spends its time on. "" if the start is fast or did not
/// return.
std::string DescribeSlowness(const StartAnswer& answer);

#endif
