// module_calls MODULE: calls its functions in ways in which OpenSSL calls them only sometimes. Prints a line for each
// call that did not do what it should.

#include "tests/openssl/watermark.h"

#include <cstdio>
#include <dlfcn.h>
#include <openssl/core_dispatch.h>

namespace {

void Expect(bool isTrue, const char* fact) {
  if (!isTrue) std::printf("not: %s\n", fact);
}

template <typename Function>
Function* Find(const OSSL_DISPATCH* functions, int id, Function* (*cast)(const OSSL_DISPATCH*)) {
  while (functions->function_id != id) ++functions;
  return cast(functions);
}

void TryNonces(OSSL_FUNC_rand_nonce_fn* nonce, void* random) {
  unsigned char bytes[64] = {};
  Expect(nonce(random, nullptr, 256, 0, 64) == 32, "the size follows from the strength");
  Expect(nonce(random, nullptr, 128, 0, 64) == 16, "the size follows from a lower strength");
  Expect(nonce(random, nullptr, 256, 48, 64) == 48, "it is not below the least size");
  Expect(nonce(random, nullptr, 256, 0, 31) == 0, "it is not above the largest size");
  Expect(nonce(random, bytes, 256, 48, 64) == 48 && HaveWatermark(bytes, 48) && bytes[48] == 0,
         "a nonce of that size");
  Expect(nonce(random, bytes, 257, 0, 64) == 0, "no nonce of more than 256 bits");
}

}  // namespace

int main(int, char** arguments) {
  void* const module = ::dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  auto* const start =
      reinterpret_cast<int (*)(const OSSL_CORE_HANDLE*, const OSSL_DISPATCH*, const OSSL_DISPATCH**,
                               void**)>(::dlsym(module, "OSSL_provider_init"));
  const OSSL_DISPATCH none[] = {{0, nullptr}};
  const OSSL_DISPATCH* provider = nullptr;
  void* context = nullptr;
  Expect(start(nullptr, none, &provider, &context) == 1, "it needs no function of OpenSSL");
  int mayNotCache = 7;
  auto* const query =
      Find(provider, OSSL_FUNC_PROVIDER_QUERY_OPERATION, OSSL_FUNC_provider_query_operation);
  Expect(query(context, OSSL_OP_DIGEST, &mayNotCache) == nullptr, "it has nothing but generators");
  const OSSL_DISPATCH* const generator = query(context, OSSL_OP_RAND, &mayNotCache)->implementation;
  Expect(mayNotCache == 0, "the answer can be cached");
  void* const random =
      Find(generator, OSSL_FUNC_RAND_NEWCTX, OSSL_FUNC_rand_newctx)(context, nullptr, nullptr);
  Find(generator, OSSL_FUNC_RAND_INSTANTIATE, OSSL_FUNC_rand_instantiate)(random, 256, 0, nullptr,
                                                                          0, nullptr);
  TryNonces(Find(generator, OSSL_FUNC_RAND_NONCE, OSSL_FUNC_rand_nonce), random);
  Find(generator, OSSL_FUNC_RAND_FREECTX, OSSL_FUNC_rand_freectx)(random);
  Find(provider, OSSL_FUNC_PROVIDER_TEARDOWN, OSSL_FUNC_provider_teardown)(context);
  ::dlclose(module);
}
