#include "tools/rngctl/channel/last_words.h"

#include "tools/rngctl/channel/channel.h"

#include <cstring>
#include <exception>

namespace {

constexpr std::size_t kMostText = 4096;  // no reader needs more

std::terminate_handler g_handlerBefore = nullptr;

std::string DescribeUncaught() {
  const std::string message = MessageOfException();
  return "uncaught exception" + (message.empty() ? "" : ": " + message);
}

void TellAndTerminate() {
  SendLastWords(std::current_exception() ? DescribeUncaught() : "it called std::terminate");
  g_handlerBefore();
}

}  // namespace

void WatchTermination() { g_handlerBefore = std::set_terminate(TellAndTerminate); }

std::string MessageOfException() {
  try {
    throw;
  } catch (const std::exception& error) {
    const char* const what = error.what();
    return what ? std::string(what, ::strnlen(what, kMostText)) : "";
  } catch (...) {
    return "";
  }
}
