#include "tools/rngctl/check/transcript.h"

#include "tools/rngctl/channel/immortal.h"
#include "tools/rngctl/channel/signal_block.h"
#include "tools/rngctl/process/child.h"

#include <mutex>

namespace {

std::mutex g_recording;
Immortal<Transcript> g_transcript;

}  // namespace

void Record(const std::function<void(Transcript&)>& change) {
  const SignalBlock block;  // a handler may call Initialize, which is recorded
  const std::lock_guard guard(g_recording);
  change(g_transcript.value);
  Send(g_transcript.value);
}
