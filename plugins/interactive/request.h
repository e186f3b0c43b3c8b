#ifndef PLUGINS_INTERACTIVE_REQUEST_H
#define PLUGINS_INTERACTIVE_REQUEST_H

#include <cstdint>

/// What a plug-in asks its helper, over the socket that is the helper's descriptor 3. A draw is answered with
/// exactly `size` bytes, a self-test that passed with `kHelperPassed`, and everything else with the end of
/// the file. The plug-in shuts the socket down to cancel.
struct HelperRequest {
  enum Task : std::uint32_t { kDraw = 1, kSelfTest = 2 };

  std::uint32_t task;
  std::uint32_t reserved;  // zero
  std::uint64_t size;
};

constexpr int kHelperSocket = 3;
constexpr unsigned char kHelperPassed = 'p';

#endif
