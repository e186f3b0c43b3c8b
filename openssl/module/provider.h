#ifndef OPENSSL_MODULE_PROVIDER_H
#define OPENSSL_MODULE_PROVIDER_H

#include "openssl/module/connection.h"

#include <openssl/core.h>
#include <openssl/core_dispatch.h>

/// One for each library context that loads the module. Most programs have only one library context.
class Provider {
 public:
  /// Reads the parameters in the provider's section of OpenSSL's configuration. `functions` are those that OpenSSL
  /// offers to providers.
  Provider(const OSSL_CORE_HANDLE* handle, const OSSL_DISPATCH* functions);
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;
  ~Provider() = default;

  /// Fills `size` bytes, however many. Returns false if that fails, with zeros in the buffer and the reason in
  /// OpenSSL's error queue. Threads: any.
  bool Draw(void* buffer, std::size_t size);

  /// See `Connection`.
  DrawText LastGenerator() { return connection.LastGenerator(); }

 private:
  bool ReadParameter(const char* name, DrawText& value) const;
  void RaiseError(const char* format, ...) const __attribute__((format(printf, 2, 3)));

  const OSSL_CORE_HANDLE* const core;
  OSSL_FUNC_core_get_params_fn* getParams = nullptr;
  OSSL_FUNC_core_new_error_fn* newError = nullptr;
  OSSL_FUNC_core_vset_error_fn* setError = nullptr;
  ProviderParameters choice = {};
  bool isChoiceValid = true;
  Connection connection;
};

/// The algorithm "RNGAGGREGATOR" (a RAND in OpenSSL's terms), whose `provctx` is a `Provider`.
extern const OSSL_DISPATCH kRandomFunctions[];

/// One entry of a dispatch table.
template <typename Function>
OSSL_DISPATCH Entry(int id, Function* function) {
  return {id, reinterpret_cast<void (*)()>(function)};
}

/// The reason code of the error that a failed draw raises.
constexpr int kNoRandomBytes = 1;

#endif
