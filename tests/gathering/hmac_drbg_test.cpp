#include "helpers/gathering/hmac_drbg.h"

#include "helpers/gathering/hmac.h"

#include <fstream>
#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <random>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

std::string FromHexadecimal(const std::string& digits) {
  std::string bytes;
  if (digits == "-") return bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string Generate(HmacDrbg& drbg, std::size_t size, const std::string& additional = "") {
  std::string bytes(size, 'x');
  drbg.Generate(bytes.data(), size, additional);
  return bytes;
}

// The next line that is not a comment.
bool Read(std::istream& file, std::string& line) {
  while (file >> line) {
    if (line != "#") return true;
    std::getline(file, line);
  }
  return false;
}

}  // namespace

TEST(Hmac, GivesTheKnownAnswer) {  // RFC 4231, test case 2
  Hmac<Sha512> hmac("Jefe", 4);
  hmac.Add("what do ya want ", 16);
  hmac.Add("for nothing?", 12);
  std::string result(64, 'x');
  hmac.Finish(reinterpret_cast<unsigned char*>(result.data()));
  EXPECT_EQ(FromHexadecimal("164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea250554"
                            "9758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b636e070a38bce737"),
            result);
}

TEST(HmacDrbg, GivesTheKnownAnswers) {
  std::ifstream file(VECTORS);
  int vectors = 0;
  for (std::string entropy, nonce, first, second, expected; Read(file, entropy); ++vectors) {
    ASSERT_TRUE(Read(file, nonce) && Read(file, first) && Read(file, second) &&
                Read(file, expected));
    HmacDrbg drbg(FromHexadecimal(entropy), FromHexadecimal(nonce));
    Generate(drbg, expected.size() / 2, FromHexadecimal(first));
    EXPECT_EQ(FromHexadecimal(expected),
              Generate(drbg, expected.size() / 2, FromHexadecimal(second)));
  }
  EXPECT_EQ(30, vectors);
}

namespace {

constexpr char kPersonalisation[] = "test";  // the standard appends it to the nonce

// libcrypto's own generator, which takes its entropy from a parent. The parent is one for tests.
class OpenSslDrbg {
 public:
  OpenSslDrbg(std::string entropy, std::string nonce) {
    EVP_RAND* const test = EVP_RAND_fetch(nullptr, "TEST-RAND", nullptr);
    EVP_RAND* const drbg = EVP_RAND_fetch(nullptr, "HMAC-DRBG", nullptr);
    parent = EVP_RAND_CTX_new(test, nullptr);
    child = EVP_RAND_CTX_new(drbg, parent);
    EVP_RAND_free(test);
    EVP_RAND_free(drbg);
    unsigned strength = 256;
    const OSSL_PARAM source[] = {
        OSSL_PARAM_construct_uint(OSSL_RAND_PARAM_STRENGTH, &strength),
        OSSL_PARAM_construct_octet_string(OSSL_RAND_PARAM_TEST_ENTROPY, entropy.data(),
                                          entropy.size()),
        OSSL_PARAM_construct_octet_string(OSSL_RAND_PARAM_TEST_NONCE, nonce.data(), nonce.size()),
        OSSL_PARAM_construct_end()};
    std::string mac = "HMAC";
    std::string digest = "SHA256";
    const OSSL_PARAM kind[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_DRBG_PARAM_MAC, mac.data(), 0),
        OSSL_PARAM_construct_utf8_string(OSSL_DRBG_PARAM_DIGEST, digest.data(), 0),
        OSSL_PARAM_construct_end()};
    if (!EVP_RAND_instantiate(parent, strength, 0, nullptr, 0, source) ||
        !EVP_RAND_instantiate(child, strength, 0,
                              reinterpret_cast<const unsigned char*>(kPersonalisation), 4, kind)) {
      throw std::runtime_error("libcrypto has no HMAC-DRBG");
    }
  }
  OpenSslDrbg(const OpenSslDrbg&) = delete;
  OpenSslDrbg& operator=(const OpenSslDrbg&) = delete;
  ~OpenSslDrbg() {
    EVP_RAND_CTX_free(child);
    EVP_RAND_CTX_free(parent);
  }
  std::string Generate(std::size_t size, const std::string& additional) {
    std::string bytes(size, 'x');
    const auto* const more = reinterpret_cast<const unsigned char*>(additional.data());
    EXPECT_TRUE(EVP_RAND_generate(child, reinterpret_cast<unsigned char*>(bytes.data()), size, 256,
                                  0, more, additional.size()));
    return bytes;
  }

 private:
  EVP_RAND_CTX* parent = nullptr;
  EVP_RAND_CTX* child = nullptr;
};

std::string Draw(std::mt19937_64& source, std::size_t size) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(source());
  return bytes;
}

}  // namespace

TEST(HmacDrbg, AgreesWithLibcryptosOwn) {
  std::mt19937_64 source(1);
  for (int i = 0; i < 200; ++i) {
    const std::string entropy = Draw(source, 32);
    const std::string nonce = Draw(source, 16);
    HmacDrbg ours(entropy, nonce + kPersonalisation);
    OpenSslDrbg theirs(entropy, nonce);
    for (int request = 0; request < 4; ++request) {
      const std::size_t size = 1 + source() % 300;
      const std::string additional = Draw(source, source() % 3 * 20);
      ASSERT_TRUE(theirs.Generate(size, additional) == Generate(ours, size, additional));
    }
  }
}

TEST(HmacDrbg, ALargeDrawIsOneRequestForEach65536Bytes) {
  HmacDrbg whole(std::string(32, 'e'), "nonce");
  HmacDrbg pieces(std::string(32, 'e'), "nonce");
  std::string expected;
  for (const std::size_t size : {65536UL, 65536UL, 10UL}) expected += Generate(pieces, size);
  EXPECT_TRUE(expected == Generate(whole, expected.size()));

  HmacDrbg halves(std::string(32, 'e'), "nonce");
  const std::string first = Generate(halves, 32768);
  EXPECT_FALSE(expected.substr(0, 65536) == first + Generate(halves, 32768));
}

TEST(HmacDrbg, AnEmptyDrawChangesNothing) {
  HmacDrbg drbg(std::string(32, 'e'), "nonce");
  HmacDrbg other(std::string(32, 'e'), "nonce");
  drbg.Generate(nullptr, 0);
  EXPECT_EQ(Generate(other, 32), Generate(drbg, 32));
}

// It may load modules into the process, or draw from the generators that this project serves.
TEST(Hmac, DoesNotReadOpenSslsConfiguration) {
  const std::string file = testing::TempDir() + "openssl_" + std::to_string(::getpid());
  std::ofstream(file) << "# nothing\n";
  ::setenv("OPENSSL_CONF", file.c_str(), 1);
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_LE(0, ::inotify_add_watch(watch, file.c_str(), IN_OPEN));
  HmacDrbg drbg(std::string(32, 'e'), "nonce");
  Generate(drbg, 100);
  unsigned char result[Sha512::kSize];
  Hmac<Sha512>("key", 3).Finish(result);
  alignas(inotify_event) char events[4096];
  EXPECT_EQ(-1, ::read(watch, events, sizeof events));
  OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CONFIG, nullptr);
  EXPECT_LT(0, ::read(watch, events, sizeof events));  // the watch would have noticed
  ::close(watch);
  std::remove(file.c_str());
}

TEST(Hmac, RefusesKeysThatAreLongerThanABlock) {
  const std::string key(Sha512::kBlockSize + 1, 'k');
  EXPECT_NO_THROW((Hmac<Sha512>(key.data(), key.size() - 1)));
  EXPECT_THROW((Hmac<Sha512>(key.data(), key.size())), std::invalid_argument);
  EXPECT_NO_THROW((Hmac<Sha256>(key.data(), Sha256::kBlockSize)));
  EXPECT_THROW((Hmac<Sha256>(key.data(), Sha256::kBlockSize + 1)), std::invalid_argument);
}
