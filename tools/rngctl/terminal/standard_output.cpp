#include "tools/rngctl/terminal/standard_output.h"

#include "tools/rngctl/refusal.h"

#include <iostream>

void FinishOutput() {
  if (!std::cout.flush()) throw Refusal(kNegativeAnswer, "Cannot write to standard output.");
}
