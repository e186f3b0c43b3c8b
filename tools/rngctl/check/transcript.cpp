#include "tools/rngctl/check/transcript.h"

#include "tools/rngctl/process/child.h"

#include <mutex>

namespace {

std::mutex g_recording;
Transcript g_transcript;

}  // namespace

void Record(const std::function<void(Transcript&)>& change) {
  const std::lock_guard guard(g_recording);
  change(g_transcript);
  Send(g_transcript);
}
