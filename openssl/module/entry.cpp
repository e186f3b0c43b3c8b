// The functions that OpenSSL calls on the module itself.

#include "openssl/module/parameters.h"
#include "openssl/module/provider.h"

#include <cstdlib>
#include <new>
#include <openssl/core_names.h>

namespace {

// OpenSSL tears down its providers in no defined order, and some programs draw until they exit. OpenSSL calls this
// after the last draw from this provider.
void Teardown(void* provider) {
  static_cast<Provider*>(provider)->~Provider();
  std::free(provider);
}

constexpr const char* kGenerator = "generator";  // of the last draw; rngctl doctor asks for it

const OSSL_PARAM* DescribeParameters(void* /*provider*/) {
  static const OSSL_PARAM kDescription[] = {
      {OSSL_PROV_PARAM_NAME, OSSL_PARAM_UTF8_PTR, nullptr, 0, OSSL_PARAM_UNMODIFIED},
      {OSSL_PROV_PARAM_VERSION, OSSL_PARAM_UTF8_PTR, nullptr, 0, OSSL_PARAM_UNMODIFIED},
      {OSSL_PROV_PARAM_STATUS, OSSL_PARAM_INTEGER, nullptr, sizeof(int), OSSL_PARAM_UNMODIFIED},
      {kGenerator, OSSL_PARAM_UTF8_STRING, nullptr, 0, OSSL_PARAM_UNMODIFIED},
      {nullptr, 0, nullptr, 0, 0}};
  return kDescription;
}

int GetParameters(void* provider, OSSL_PARAM parameters[]) {
  OSSL_PARAM* const generator = FindParameter(parameters, kGenerator);
  return SetConstant(FindParameter(parameters, OSSL_PROV_PARAM_NAME), "rngaggregator") &&
         SetConstant(FindParameter(parameters, OSSL_PROV_PARAM_VERSION), RNG_VERSION) &&
         SetNumber(FindParameter(parameters, OSSL_PROV_PARAM_STATUS), 1) &&
         (!generator || SetText(generator, static_cast<Provider*>(provider)->LastGenerator().text));
}

const OSSL_ALGORITHM* QueryOperation(void* /*provider*/, int operation, int* mayNotCache) {
  static const OSSL_ALGORITHM kGenerators[] = {
      {"RNGAGGREGATOR", "provider=rngaggregator", kRandomFunctions, "The user's generator"},
      {nullptr, nullptr, nullptr, nullptr}};
  *mayNotCache = 0;
  return operation == OSSL_OP_RAND ? kGenerators : nullptr;
}

const OSSL_ITEM* GetReasons(void* /*provider*/) {
  static char reason[] = "no random bytes";
  static const OSSL_ITEM kReasons[] = {{kNoRandomBytes, reason}, {0, nullptr}};
  return kReasons;
}

const OSSL_DISPATCH kProviderFunctions[] = {
    Entry(OSSL_FUNC_PROVIDER_TEARDOWN, Teardown),
    Entry(OSSL_FUNC_PROVIDER_GETTABLE_PARAMS, DescribeParameters),
    Entry(OSSL_FUNC_PROVIDER_GET_PARAMS, GetParameters),
    Entry(OSSL_FUNC_PROVIDER_QUERY_OPERATION, QueryOperation),
    Entry(OSSL_FUNC_PROVIDER_GET_REASON_STRINGS, GetReasons),
    {0, nullptr}};

}  // namespace

// Succeeds even where every draw will fail: if a provider cannot be loaded, OpenSSL skips the rest of its
// configuration, and may then use its own generator.
extern "C" __attribute__((visibility("default"))) int OSSL_provider_init(
    const OSSL_CORE_HANDLE* handle, const OSSL_DISPATCH* in, const OSSL_DISPATCH** out,
    void** context) {
  void* const memory = std::malloc(sizeof(Provider));
  if (!memory) return 0;
  *context = new (memory) Provider(handle, in);
  *out = kProviderFunctions;
  return 1;
}
