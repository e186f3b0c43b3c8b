#ifndef TOOLS_RNGCTL_TERMINAL_STANDARD_OUTPUT_H
#define TOOLS_RNGCTL_TERMINAL_STANDARD_OUTPUT_H

/// Call it before a sentence on standard error, and at the end: the whole result is written, or a
/// `Refusal` says that it cannot be.
void FinishOutput();

#endif
