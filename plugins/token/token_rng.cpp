#include "token_rng.h"

#include "pkcs11/text.h"
#include "plugin.h"

#include <cstring>
#include <unistd.h>

namespace {

struct Connection {
  const TokenUri uri{kUri};
  Modules modules{uri};
};

// With an empty text there is none.
std::int32_t Report(const std::string& text, char* buffer) {
  if (text.empty()) return 0;
  if (buffer) std::memcpy(buffer, text.c_str(), text.size() + 1);
  return static_cast<std::int32_t>(text.size() + 1);
}

TokenRng g_provider;

}  // namespace

// In a forked copy, the one of the original stays as it is: what it holds may be locked.
struct TokenRng::Process {
  explicit Process(const Process* original)
      : connection(original ? original->connection : std::make_shared<Connection>()),
        source(connection->modules, connection->uri, original ? &original->source : nullptr) {}

  const pid_t id = ::getpid();
  std::shared_ptr<Connection> connection;
  Source source;
};

Source& TokenRng::Here() {
  Process* process = newest;
  if (process && process->id == ::getpid()) return process->source;
  auto made = std::make_unique<Process>(process);
  if (!newest.compare_exchange_strong(process, made.get())) return process->source;
  return made.release()->source;
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
  Process* const process = newest.exchange(nullptr);
  if (!process) return;
  const std::shared_ptr<Connection> connection = std::move(process->connection);
  if (process->id == ::getpid()) const std::unique_ptr<Process> ended(process);
}

TokenRng& GetTokenRng() { return g_provider; }
