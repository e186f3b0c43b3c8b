#ifndef TESTS_RNGCTL_SITUATIONS_SEEN_H
#define TESTS_RNGCTL_SITUATIONS_SEEN_H

#include <string>

/// The result of a start in one line. "dsdr unixdev; default usable" lists the kinds for which a host
/// gets the object of that kind's plug-in, and the configured default, if there is one. If the start or
/// the stop fails, the line says how it ended: "crashed with signal 6".
using Seen = std::string;

/// Runs a host in the tree.
Seen WhatAHostSees(const std::string& environment);

/// Runs `rngctl doctor` in the tree.
struct DoctorsAnswer {
  Seen seen;
  int status;
  std::string report;  ///< JSON
};
DoctorsAnswer WhatTheDoctorSays(const std::string& environment);

/// Whether `rngctl doctor KIND` says that a host gets that kind.
bool DoctorApproves(const std::string& kind, const std::string& environment);

#endif
