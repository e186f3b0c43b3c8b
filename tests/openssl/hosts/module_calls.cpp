// module_calls MODULE: calls its functions in ways in which OpenSSL calls them only sometimes. Prints a line for each
// call that did not do what it should.

#include "tests/openssl/watermark.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <openssl/core_dispatch.h>
#include <sys/resource.h>
#include <utility>

namespace {

void Expect(bool isTrue, const char* fact) {
  if (!isTrue) std::printf("not: %s\n", fact);
}

using Start = int(const OSSL_CORE_HANDLE*, const OSSL_DISPATCH*, const OSSL_DISPATCH**, void**);

const OSSL_DISPATCH kNone[] = {{0, nullptr}};

template <typename Function>
Function* Find(const OSSL_DISPATCH* functions, int id, Function* (*cast)(const OSSL_DISPATCH*)) {
  while (functions->function_id != id) ++functions;
  return cast(functions);
}

#ifndef SANITIZED
void StartWithoutMemory(Start* start) {
  struct Block {
    Block* next;
    char bytes[1000];
  };
  const rlimit noMore = {0, RLIM_INFINITY};
  Expect(::setrlimit(RLIMIT_AS, &noMore) == 0, "no more memory from the kernel");
  Block* all = nullptr;
  while (void* const block = std::malloc(sizeof(Block))) all = new (block) Block{all, ""};
  const OSSL_DISPATCH* provider = nullptr;
  void* context = nullptr;
  const int result = start(nullptr, kNone, &provider, &context);
  while (all) std::free(std::exchange(all, all->next));
  const rlimit unlimited = {RLIM_INFINITY, RLIM_INFINITY};
  ::setrlimit(RLIMIT_AS, &unlimited);
  Expect(result == 0, "without memory it does not start");
}

long CountPages() {
  long pages = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  Expect(std::fscanf(file, "%ld", &pages) == 1, "the size of the process is known");
  std::fclose(file);
  return pages;
}

void StartOften(Start* start) {
  const long before = CountPages();
  for (int i = 0; i < 1000; ++i) {
    const OSSL_DISPATCH* provider = nullptr;
    void* context = nullptr;
    start(nullptr, kNone, &provider, &context);
    Find(provider, OSSL_FUNC_PROVIDER_TEARDOWN, OSSL_FUNC_provider_teardown)(context);
  }
  Expect(CountPages() - before < 100, "a start leaves no memory behind");
}
#endif

void ExpectEnd(const OSSL_DISPATCH* functions, int count) {
  for (int i = 0; i < count; ++i)
    Expect(functions[i].function_id != 0, "the table has all functions");
  Expect(functions[count].function_id == 0, "the table has an end");
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
  auto* const start = reinterpret_cast<Start*>(::dlsym(module, "OSSL_provider_init"));
#ifndef SANITIZED
  StartWithoutMemory(start);
  StartOften(start);
#endif
  const OSSL_DISPATCH* provider = nullptr;
  void* context = nullptr;
  Expect(start(nullptr, kNone, &provider, &context) == 1, "it needs no function of OpenSSL");
  ExpectEnd(provider, 5);
  int mayNotCache = 7;
  auto* const query =
      Find(provider, OSSL_FUNC_PROVIDER_QUERY_OPERATION, OSSL_FUNC_provider_query_operation);
  Expect(query(context, OSSL_OP_DIGEST, &mayNotCache) == nullptr, "it has nothing but generators");
  const OSSL_ALGORITHM* const algorithm = query(context, OSSL_OP_RAND, &mayNotCache);
  Expect(std::strcmp(algorithm->algorithm_description, "The user's generator") == 0,
         "it has a description");
  const OSSL_DISPATCH* const generator = algorithm->implementation;
  ExpectEnd(generator, 10);
  Expect(mayNotCache == 0, "the answer can be cached");
  void* const random =
      Find(generator, OSSL_FUNC_RAND_NEWCTX, OSSL_FUNC_rand_newctx)(context, nullptr, nullptr);
  Find(generator, OSSL_FUNC_RAND_INSTANTIATE, OSSL_FUNC_rand_instantiate)(random, 256, 0, nullptr,
                                                                          0, nullptr);
  unsigned char bytes[32] = {};
  auto* const generate = Find(generator, OSSL_FUNC_RAND_GENERATE, OSSL_FUNC_rand_generate);
  Expect(generate(random, bytes, sizeof bytes, 256, 0, nullptr, 0) == 1, "a draw succeeds");
  TryNonces(Find(generator, OSSL_FUNC_RAND_NONCE, OSSL_FUNC_rand_nonce), random);
  Find(generator, OSSL_FUNC_RAND_FREECTX, OSSL_FUNC_rand_freectx)(random);
  Find(provider, OSSL_FUNC_PROVIDER_TEARDOWN, OSSL_FUNC_provider_teardown)(context);
  ::dlclose(module);
}
