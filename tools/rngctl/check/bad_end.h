#ifndef TOOLS_RNGCTL_CHECK_BAD_END_H
#define TOOLS_RNGCTL_CHECK_BAD_END_H

#include "tools/rngctl/check/transcript.h"
#include "tools/rngctl/process/child.h"

/// The finding about a child that did not finish its check and ended as `how` says.
Finding JudgeBadEnd(const Transcript& transcript, const ChildResult& result,
                    const std::string& how);

#endif
