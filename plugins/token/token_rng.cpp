#include "token_rng.h"

#include "pkcs11/text.h"
#include "plugin.h"

#include <cstring>
#include <unistd.h>

namespace {

// With their terminators. A serial number has at most 16 bytes, a label 32 and a model 16.
constexpr std::size_t kLargestSerial = 17;
constexpr std::size_t kLargestDescription = 80;

// The size does not depend on the text, because another thread may draw from another token between the caller's two
// calls. An empty text is reported as none.
std::int32_t Report(const std::string& text, std::size_t size, char* buffer) {
  if (text.empty()) return 0;
  if (buffer) std::strncpy(buffer, text.c_str(), size);
  return static_cast<std::int32_t>(size);
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

// A forked copy never destroys the original's object, because its locks may be held.
Source& TokenRng::Here() {
  Process* existing = newest;
  if (existing && existing->id == ::getpid()) return existing->source;
  auto made = std::make_unique<Process>(Connect(), existing);
  return newest.compare_exchange_strong(existing, made.get()) ? made.release()->source
                                                              : existing->source;
}

std::int32_t TokenRng::GetName(char* buffer) {
  return Report(kKind, std::strlen(kKind) + 1, buffer);
}

std::int32_t TokenRng::GetDescription(char* buffer) {
  const Token token = Here().Used();
  const std::string text = token.slot.module
                               ? "Token \"" + Plain(token.label) + "\", model " + Plain(token.model)
                               : "PKCS#11 token";
  return Report(text, kLargestDescription, buffer);
}

std::int32_t TokenRng::GetHardwareId(char* buffer) {
  const std::string& selected = Here().Selected();
  const std::string serial = selected.empty() ? Here().Used().serial : selected;
  return Report(IsStorable(serial) ? serial : "", kLargestSerial, buffer);
}

bool TokenRng::SelectDevice(const char* hardwareId) {
  return Here().Select(hardwareId ? hardwareId : "");
}

bool TokenRng::Generate(void* buffer, std::size_t size) { return Here().Draw(buffer, size); }

bool TokenRng::IsAvailable() { return SelfTest(); }

bool TokenRng::SelfTest() { return Here().Test(); }

void TokenRng::Cancel() { Here().Cancel(); }

// A token may take a second for some kilobytes, and a call inside a module cannot be interrupted.
std::uint32_t TokenRng::GetFlags() { return kRngCapabilityHardware | kRngCapabilityMayBlock; }

void TokenRng::SetSettings(IRngSettings*) {}

void TokenRng::Release() {
  const std::unique_ptr<Connection> closed(connection.exchange(nullptr));
  Process* const process = newest.exchange(nullptr);
  if (process && process->id == ::getpid()) const std::unique_ptr<Process> ended(process);
}

TokenRng& GetTokenRng() { return g_provider; }
