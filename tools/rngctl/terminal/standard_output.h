#ifndef TOOLS_RNGCTL_TERMINAL_STANDARD_OUTPUT_H
#define TOOLS_RNGCTL_TERMINAL_STANDARD_OUTPUT_H

/// Writes the rest of the result, and throws a `Refusal` if that fails. Call it at the end, and before
/// a message on standard error.
void FinishOutput();

/// Opens /dev/null for reading on standard descriptors that are closed, so that no other file gets their
/// numbers. Writing to them still fails. Call it before anything else.
void OpenStandardDescriptors();

/// While it lives, standard output is standard error for all of the process, also for what plug-ins have
/// in the buffer of `stdout`.
class OutputToErrors {
 public:
  OutputToErrors();
  OutputToErrors(const OutputToErrors&) = delete;
  OutputToErrors& operator=(const OutputToErrors&) = delete;
  ~OutputToErrors();

 private:
  const int output;
};

#endif
