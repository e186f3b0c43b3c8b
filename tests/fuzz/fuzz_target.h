#ifndef TESTS_FUZZ_FUZZ_TARGET_H
#define TESTS_FUZZ_FUZZ_TARGET_H

#include <string_view>

/// Gives one input to the product and to the model. Throws std::runtime_error with both outcomes when
/// they differ. Every target has one of its own.
void CheckInput(std::string_view input);

#endif
