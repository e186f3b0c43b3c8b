#include "tools/rngctl/process/child.h"

#include "tools/rngctl/devices/ask.h"
#include "tools/rngctl/devices/messages.h"
#include "tools/rngctl/process/lifecycle_calls.h"

#include <algorithm>
#include <cxxabi.h>
#include <dlfcn.h>
#include <memory>
#include <unistd.h>

#include <rngaggregator/aggregator.h>
#include <rngaggregator/provider.h>

namespace {

void ReadReport(void* library, DevicesAnswer& answer) {
  using Report = std::int32_t (*)(char* buffer);
  const auto report = reinterpret_cast<Report>(::dlsym(library, kReportFunction));
  if (!report) return;
  answer.size = report(nullptr);
  if (answer.size <= 0 || answer.size > kLargestReport) return;
  const auto size = static_cast<std::size_t>(answer.size);
  const auto buffer = std::make_unique<char[]>(size);
  answer.sizeAgain = report(buffer.get());
  answer.text.assign(buffer.get(), std::find(buffer.get(), buffer.get() + size, '\0'));
}

void Begin(DevicesStep step, DevicesAnswer& answer) {
  answer.step = step;
  Send(answer);
}

// A plug-in whose factory returns null may still say why.
void Ask(void* library, const std::string& factory, DevicesAnswer& answer) {
  const auto make = reinterpret_cast<RngFactory>(::dlsym(library, factory.c_str()));
  IRngProvider* const provider = make ? make() : nullptr;
  if (provider) provider->SetSettings(GetDefaultSettings());
  if (provider) provider->IsAvailable();
  Begin(DevicesStep::kReport, answer);
  ReadReport(library, answer);
  Begin(DevicesStep::kEnd, answer);
  if (provider) provider->Release();
}

}  // namespace

void RunDevicesChild(int channel) {
  const auto question = BecomeChild<DevicesQuestion>(channel);
  DevicesAnswer answer;
  Begin(DevicesStep::kStart, answer);
  WatchLifecycleCalls([](LifecycleFunction) {});  // other examinations report them
  void* const library = ::dlopen(question.file.c_str(), RTLD_LAZY | RTLD_GLOBAL);
  try {
    if (library) Ask(library, question.factory, answer);
  } catch (const abi::__forced_unwind&) {
    throw;  // pthread_exit, which must reach the end of the thread
  } catch (...) {
    answer.hasThrown = true;
    Send(answer);
  }
  ::_exit(0);  // other examinations cover closing, too
}
