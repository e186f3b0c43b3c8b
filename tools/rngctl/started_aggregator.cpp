#include "tools/rngctl/started_aggregator.h"

#include "tools/rngctl/refusal.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <exception>
#include <optional>

#include <rngaggregator/aggregator.h>

namespace {

using Failure = std::optional<Refusal>;

Failure PluginFailed(const char* message) {
  const std::string reason =
      message && *message ? std::string(": ") + message : " without an error message.";
  return Refusal(kNegativeAnswer, "A plug-in or the system failed" + reason,
                 "Run \"rngctl doctor\" to find out which.");
}

// What `call` throws, looked at and destroyed while all plug-ins are open.
Failure Try(const std::function<void()>& call) {
  try {
    call();
    return std::nullopt;
  } catch (const Refusal& refusal) {
    return refusal;
  } catch (const std::exception& error) {
    return PluginFailed(error.what());
  } catch (...) {
    return PluginFailed(nullptr);
  }
}

// Whether the class of the exception that is being handled is in the process.
bool IsClassLoaded() {
  Dl_info place;
  return ::dladdr(abi::__cxa_current_exception_type(), &place) != 0;
}

Failure Start() {
  try {
    Initialize(GetDefaultSettings());
    return std::nullopt;
  } catch (...) {
    if (IsClassLoaded()) return Try([] { throw; });
    new std::exception_ptr(std::current_exception());  // so it is never destroyed
    return PluginFailed(nullptr);
  }
}

}  // namespace

void WithStartedAggregator(const std::function<void()>& work) {
  const Failure startFailure = Start();
  const Failure failure = startFailure ? startFailure : Try(work);
  // A start that failed also raised the count, unless it could not take the lock.
  const Failure stopFailure = IsInitialized() ? Try(ShutDown) : std::nullopt;
  if (failure) throw Refusal(*failure);
  if (stopFailure) throw Refusal(*stopFailure);
}
