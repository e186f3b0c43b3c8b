#include "token_rng.h"

#include "pkcs11/text.h"
#include "plugin.h"

#include <cstring>
#include <unistd.h>

namespace {

// With an empty text there is none.
std::int32_t Report(const std::string& text, char* buffer) {
  if (text.empty()) return 0;
  if (buffer) std::memcpy(buffer, text.c_str(), text.size() + 1);
  return static_cast<std::int32_t>(text.size() + 1);
}

TokenRng g_provider;

}  // namespace

struct TokenRng::Connection {
  const TokenUri uri{kUri};
  Modules modules{uri};
};

// What draws in one process.
struct TokenRng::Process {
  Process(Connection& connection, const Process* original)
      : source(connection.modules, connection.uri, original ? &original->source : nullptr) {}

  const pid_t id = ::getpid();
  Source source;
};

TokenRng::Connection& TokenRng::Connect() {
  Connection* existing = connection;
  if (existing) return *existing;
  auto made = std::make_unique<Connection>();
  return connection.compare_exchange_strong(existing, made.get()) ? *made.release() : *existing;
}

// In a forked copy, the original's stays as it is: what it holds may be locked.
Source& TokenRng::Here() {
  Process* existing = newest;
  if (existing && existing->id == ::getpid()) return existing->source;
  auto made = std::make_unique<Process>(Connect(), existing);
  return newest.compare_exchange_strong(existing, made.get()) ? made.release()->source
                                                              : existing->source;
}

std::int32_t TokenRng::GetName(char* buffer) { return Report(kKind, buffer); }

std::int32_t TokenRng::GetDescription(char* buffer) {
  const Token token = Here().Used();
  if (!token.place.module) return Report("PKCS#11 token", buffer);
  return Report("Token \"" + Plain(token.label) + "\", model " + Plain(token.model), buffer);
}

std::int32_t TokenRng::GetHardwareId(char* buffer) {
  const std::string& selected = Here().Selected();
  if (!selected.empty()) return Report(selected, buffer);
  const std::string used = Here().Used().serial;
  return Report(IsStorable(used) ? used : "", buffer);
}

bool TokenRng::SelectDevice(const char* hardwareId) {
  return Here().Select(hardwareId ? hardwareId : "");
}

bool TokenRng::Generate(void* buffer, std::size_t size) { return Here().Draw(buffer, size); }

bool TokenRng::IsAvailable() { return SelfTest(); }

bool TokenRng::SelfTest() { return Here().Test(); }

void TokenRng::Cancel() { Here().Cancel(); }

// A token may take a second for some kilobytes, and a call inside a module cannot be ended.
std::uint32_t TokenRng::GetFlags() { return kRngCapabilityHardware | kRngCapabilityMayBlock; }

void TokenRng::SetSettings(IRngSettings*) {}

void TokenRng::Release() {
  const std::unique_ptr<Connection> closed(connection.exchange(nullptr));
  Process* const process = newest.exchange(nullptr);
  if (process && process->id == ::getpid()) const std::unique_ptr<Process> ended(process);
}

TokenRng& GetTokenRng() { return g_provider; }
