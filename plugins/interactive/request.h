#ifndef PLUGINS_INTERACTIVE_REQUEST_H
#define PLUGINS_INTERACTIVE_REQUEST_H

#include "plugins/interactive/start_orphan.h"

#include <cstdint>

/// What a plug-in asks of its helper, over the socket that is the helper's descriptor 3. The helper answers a draw
/// with exactly `size` bytes and a self-test that passed with `kHelperPassed`. Otherwise it closes the socket
/// without an answer. To cancel, the plug-in shuts the socket down.
struct HelperRequest {
  enum Task : std::uint32_t { kDraw = 1, kSelfTest = 2 };

  std::uint32_t task;
  std::uint32_t reserved;  // zero
  std::uint64_t size;
};

constexpr int kHelperSocket = kOrphanSocket;
constexpr unsigned char kHelperPassed = 'p';

#endif
