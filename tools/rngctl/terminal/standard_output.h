#ifndef TOOLS_RNGCTL_TERMINAL_STANDARD_OUTPUT_H
#define TOOLS_RNGCTL_TERMINAL_STANDARD_OUTPUT_H

/// Writes the rest of the result, and throws a `Refusal` if that fails. Call it at the end, and before
/// a message on standard error.
void FinishOutput();

/// Opens /dev/null for reading on standard descriptors that are closed, so that no other file gets their
/// numbers. Writing to them still fails. Call it before anything else.
void OpenStandardDescriptors();

#endif
