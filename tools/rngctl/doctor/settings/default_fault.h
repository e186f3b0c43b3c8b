#ifndef TOOLS_RNGCTL_DOCTOR_SETTINGS_DEFAULT_FAULT_H
#define TOOLS_RNGCTL_DOCTOR_SETTINGS_DEFAULT_FAULT_H

#include "tools/rngctl/doctor/report.h"

/// Why a program that uses the configured default gets no generator, or not the device. Empty if it
/// does, if no default is configured, or if that is unknown. Looks at the start and the rows.
DefaultFault FindDefaultFault(const DoctorReport& report);

#endif
