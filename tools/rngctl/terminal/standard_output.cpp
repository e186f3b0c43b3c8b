#include "tools/rngctl/terminal/standard_output.h"

#include "tools/rngctl/refusal.h"

#include <cerrno>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

void FinishOutput() {
  if (!std::cout.flush()) throw Refusal(kNegativeAnswer, "Cannot write to standard output.");
}

// open() returns the lowest free number, and the lower ones are open already.
void OpenStandardDescriptors() {
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(number, F_GETFD) >= 0 || errno != EBADF) continue;
    if (::open("/dev/null", O_RDONLY) != number) {
      throw Refusal(kNegativeAnswer,
                    "A standard descriptor is closed, and /dev/null cannot be opened.");
    }
  }
}
