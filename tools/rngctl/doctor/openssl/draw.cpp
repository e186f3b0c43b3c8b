#define OPENSSL_SUPPRESS_DEPRECATED  // for RAND_get_rand_method: engines still work in programs
#include "tools/rngctl/doctor/openssl/draw.h"

#include "tools/rngctl/process/forked/secret_bytes.h"

#include <cstdlib>
#include <cstring>
#include <openssl/conf.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#include <openssl/rand.h>

namespace {

// These identify our provider, whose section may have any name.
constexpr char kReason[] = "no random bytes";
constexpr char kGenerator[] = "generator";

std::string OrEmpty(const char* text) { return text ? text : ""; }

// An error has a reason, and often data. Our provider puts a sentence into the data.
void TakeErrors(OpensslDraw& answer) {
  const char* data = nullptr;
  int flags = 0;
  while (const unsigned long error = ERR_get_error_all(nullptr, nullptr, nullptr, &data, &flags)) {
    const std::string details = (flags & ERR_TXT_STRING) != 0 ? OrEmpty(data) : "";
    const std::string text = OrEmpty(ERR_reason_error_string(error));
    if (text == kReason) answer.reason = details;
    if (!answer.error.empty()) continue;
    answer.error = text;
    if (!details.empty()) answer.error += " (" + details + ")";
  }
}

std::string AskForGenerator(const OSSL_PROVIDER* provider) {
  char text[1024] = "";
  OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(kGenerator, text, sizeof text),
                             OSSL_PARAM_construct_end()};
  return OSSL_PROVIDER_get_params(provider, parameters) == 1 ? text : "";
}

void Identify(OpensslDraw& answer, EVP_RAND_CTX* context) {
  if (!context) return;
  const EVP_RAND* const random = EVP_RAND_CTX_get0_rand(context);
  const OSSL_PROVIDER* const provider = EVP_RAND_get0_provider(random);
  answer.algorithm = OrEmpty(EVP_RAND_get0_name(random));
  answer.provider = OrEmpty(OSSL_PROVIDER_get0_name(provider));
  answer.generator = AskForGenerator(provider);
}

}  // namespace

void FindOpensslSettings(OpensslDraw& answer) {
  for (const char* name :
       {"OPENSSL_CONF", "OPENSSL_CONF_INCLUDE", "OPENSSL_MODULES", "OPENSSL_ENGINES"}) {
    if (const char* const value = std::getenv(name)) {
      answer.environment.push_back(std::string(name) + '=' + value);
    }
  }
  char* const file = CONF_get1_default_config_file();
  answer.file = OrEmpty(file);
  OPENSSL_free(file);
}

void DrawWithOpenssl(OpensslDraw& answer) {
  const NoCore noCore;
  SecretBytes bytes(32);
  auto* const place = reinterpret_cast<unsigned char*>(bytes.data());
  const auto size = static_cast<int>(bytes.size());
  OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CONFIG, nullptr);
  // Public bytes and those of keys come from two instances of the same algorithm.
  answer.isDrawn = RAND_bytes(place, size) == 1 && RAND_priv_bytes(place, size) == 1;
  if (!answer.isDrawn) TakeErrors(answer);
  answer.isReplaced = RAND_get_rand_method() != RAND_OpenSSL();
  Identify(answer, RAND_get0_public(nullptr));
}
