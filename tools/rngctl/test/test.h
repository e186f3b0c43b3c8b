#ifndef TOOLS_RNGCTL_TEST_TEST_H
#define TOOLS_RNGCTL_TEST_TEST_H

#include "tools/rngctl/drawing/chosen_generator.h"

#include <cstdint>
#include <optional>
#include <string>

struct TestRequest {
  GeneratorChoice source;
  std::optional<std::uint64_t> size;  ///< what to draw; nothing: what comes in about five seconds
  std::optional<std::uint64_t> restarts;  ///< nothing: 200, and none if each would ask the user
  bool asJson = false;
  std::string picture;  ///< the file to write it to; empty: none
};

/// Draws from a generator, tests the bytes, and prints what was found. Throws a `Refusal` with the status
/// 1 if the bytes are not random, and with the status 3 if they could not be tested.
void RunTest(const TestRequest& request);

/// The hidden command of the child that starts the library once more.
inline constexpr char kTestChildCommand[] = "test-child";
void RunTestChild(int channel);

#endif
