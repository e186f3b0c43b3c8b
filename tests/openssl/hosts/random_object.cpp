// Calls the provider's generator directly, as an EVP_RAND. Prints a line for each call that does not do what it should.

#include "tests/openssl/watermark.h"

#include <cstdio>
#include <cstring>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/provider.h>
#include <openssl/rand.h>
#include <string>

namespace {

void Expect(bool isTrue, const char* fact) {
  if (!isTrue) std::printf("not: %s\n", fact);
}

std::string LastGenerator(EVP_RAND* kind) {
  char text[600] = "";
  OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string("generator", text, sizeof text),
                             OSSL_PARAM_construct_end()};
  Expect(OSSL_PROVIDER_get_params(EVP_RAND_get0_provider(kind), parameters) == 1,
         "the provider reports the generator");
  return text;
}

void TryParameters(EVP_RAND_CTX* random) {
  unsigned small = 0;
  std::size_t large = 0;
  std::uint16_t tiny = 0;
  OSSL_PARAM parameters[] = {OSSL_PARAM_construct_uint(OSSL_RAND_PARAM_STRENGTH, &small),
                             OSSL_PARAM_construct_size_t(OSSL_RAND_PARAM_MAX_REQUEST, &large),
                             OSSL_PARAM_construct_end()};
  Expect(EVP_RAND_CTX_get_params(random, parameters) == 1 && small == 256 && large >= 65536,
         "strength and largest request");
  OSSL_PARAM none[] = {
      {OSSL_RAND_PARAM_STRENGTH, OSSL_PARAM_UNSIGNED_INTEGER, &tiny, sizeof tiny, 0},
      OSSL_PARAM_construct_end()};
  Expect(EVP_RAND_CTX_get_params(random, none) == 0,
         "a number that is too small for the value is refused");
}

int GetParameter(EVP_RAND* kind, OSSL_PARAM parameter) {
  parameter.return_size = 0;
  OSSL_PARAM parameters[] = {parameter, OSSL_PARAM_construct_end()};
  const int result = OSSL_PROVIDER_get_params(EVP_RAND_get0_provider(kind), parameters);
  return result == 1 ? static_cast<int>(parameters[0].return_size) : -1;
}

// After a draw, so that the generator's name is known.
void TryProviderParameters(EVP_RAND* kind, const std::string& generator) {
  char text[64] = "";
  const auto size = static_cast<int>(generator.size());
  const auto textOf = [&text](const char* name, int room) {
    return OSSL_PARAM_construct_utf8_string(name, text, static_cast<std::size_t>(room));
  };
  int status = 0;
  Expect(GetParameter(kind, OSSL_PARAM_construct_int("status", &status)) > 0 && status == 1,
         "the provider is active");
  Expect(GetParameter(kind, textOf("generator", size + 1)) == size, "a text that just fits");
  Expect(GetParameter(kind, textOf("generator", size)) == -1, "no text without its terminator");
  Expect(GetParameter(kind, {"generator", OSSL_PARAM_UTF8_STRING, nullptr, 0, 0}) == size,
         "the size of a text");
  Expect(GetParameter(kind, {"generator", OSSL_PARAM_OCTET_STRING, text, sizeof text, 0}) == -1,
         "no text where bytes are asked for");
  Expect(GetParameter(kind, textOf("name", sizeof text)) == -1, "no copy of a constant");
}

void TryDescriptions(EVP_RAND* kind, EVP_RAND_CTX* random) {
  const OSSL_PARAM* const ofProvider = OSSL_PROVIDER_gettable_params(EVP_RAND_get0_provider(kind));
  for (const char* const name : {"name", "version", "status", "generator"})
    Expect(OSSL_PARAM_locate_const(ofProvider, name) != nullptr, name);
  const OSSL_PARAM* const ofRandom = EVP_RAND_CTX_gettable_params(random);
  for (const char* const name : {"state", "strength", "max_request"})
    Expect(OSSL_PARAM_locate_const(ofRandom, name) != nullptr, name);
}

void TryDraws(EVP_RAND_CTX* random) {
  unsigned char bytes[64] = {};
  Expect(EVP_RAND_generate(random, bytes, sizeof bytes, 0, 0, nullptr, 0) == 0,
         "no draw before it is instantiated");
  Expect(EVP_RAND_instantiate(random, 512, 0, nullptr, 0, nullptr) == 0, "no more than 256 bits");
  Expect(EVP_RAND_instantiate(random, 256, 0, nullptr, 0, nullptr) == 1, "it is instantiated");
  Expect(EVP_RAND_get_state(random) == EVP_RAND_STATE_READY, "it is ready");
  Expect(EVP_RAND_generate(random, bytes, sizeof bytes, 257, 0, nullptr, 0) == 0,
         "no draw of more than 256 bits");
  Expect(EVP_RAND_generate(random, bytes, sizeof bytes, 256, 1, bytes, 16) == 1 &&
             HaveWatermark(bytes, sizeof bytes),
         "a draw");
  Expect(EVP_RAND_reseed(random, 1, nullptr, 0, bytes, 16) == 1, "it is reseeded");
  std::memset(bytes, 0, sizeof bytes);
  Expect(EVP_RAND_nonce(random, bytes, 32) != 0 && HaveWatermark(bytes, 32), "a nonce");
  std::string large(100'000, '\0');
  Expect(EVP_RAND_generate(random, reinterpret_cast<unsigned char*>(large.data()), large.size(), 0,
                           0, nullptr, 0) == 1 &&
             HaveWatermark(large.data(), large.size()),
         "a large draw");
}

}  // namespace

int main(int, char** arguments) {
  EVP_RAND* const kind = EVP_RAND_fetch(nullptr, "RNGAGGREGATOR", "provider=rngaggregator");
  EVP_RAND_CTX* const random = EVP_RAND_CTX_new(kind, nullptr);
  Expect(LastGenerator(kind).empty(), "no generator before the first draw");
  TryDescriptions(kind, random);
  TryParameters(random);
  TryDraws(random);
  Expect(LastGenerator(kind) == arguments[1], "the generator of the last draw");
  TryProviderParameters(kind, arguments[1]);
  Expect(EVP_RAND_enable_locking(random) == 1, "it can be shared by threads");
  Expect(EVP_RAND_uninstantiate(random) == 1 &&
             EVP_RAND_get_state(random) == EVP_RAND_STATE_UNINITIALISED,
         "it is uninstantiated");
  EVP_RAND_CTX_free(random);
  EVP_RAND_free(kind);
}
