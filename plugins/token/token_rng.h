#ifndef RNG_TOKEN_TOKEN_RNG_H
#define RNG_TOKEN_TOKEN_RNG_H

#include "source.h"

#include <cstdint>
#include <memory>

#include <rngaggregator/provider.h>

/// The provider of a token plug-in.
///
/// The modules are loaded at the first use and released in `Release`, never by a destructor: when the process exits,
/// their own destructors may have run already.
class TokenRng final : public IRngProvider {
 public:
  std::int32_t GetName(char* buffer) override;
  std::int32_t GetDescription(char* buffer) override;
  std::int32_t GetHardwareId(char* buffer) override;
  bool SelectDevice(const char* hardwareId) override;
  bool Generate(void* buffer, std::size_t size) override;
  bool IsAvailable() override;
  bool SelfTest() override;
  void Cancel() override;
  std::uint32_t GetFlags() override;
  void SetSettings(IRngSettings* settings) override;
  void Release() override;

  /// What draws in this process.
  Source& Here();

 private:
  struct Connection;
  struct Process;

  Connection& Connect();

  std::atomic<Connection*> connection{nullptr};
  std::atomic<Process*> newest{nullptr};
};

/// The one object of the plug-in.
TokenRng& GetTokenRng();

#endif
