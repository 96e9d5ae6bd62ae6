// PBKDF2 beside OpenSSL and Botan: 10,000 iterations for a key of one digest.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#endif
#ifdef HAVE_BOTAN
#include <botan/pwdhash.h>
#endif

#include "core/log_null.h"
#include "crypto/hash.h"
#include "crypto/pbkdf.h"

namespace {

using namespace zantrel;

constexpr int kIterations = 10000;
const std::string kPassword = "a password";
const std::string kSalt = "0123456789abcdef";

struct Algorithm {
  const char* name;
  int id;
  std::size_t keyBytes;
  const char* peerName;
};

constexpr Algorithm kAlgorithms[] = {{"sha1", kHashSha1, 20, "SHA-1"},
                                     {"sha256", kHashSha256, 32, "SHA-256"},
                                     {"sha512", kHashSha512, 64, "SHA-512"}};

void ours(benchmark::State& state, const Algorithm& algorithm) {
  std::uint8_t key[64];
  LogNull log;
  for (auto _ : state) {
    pbkdf2(algorithm.id, asBytes(kPassword), asBytes(kSalt), kIterations, {key, algorithm.keyBytes},
           log);
    benchmark::DoNotOptimize(key[0]);
  }
}

#ifdef HAVE_OPENSSL
void openssl(benchmark::State& state, const Algorithm& algorithm) {
  std::uint8_t key[64];
  const EVP_MD* const digest = EVP_get_digestbyname(algorithm.name);
  for (auto _ : state) {
    PKCS5_PBKDF2_HMAC(kPassword.data(), static_cast<int>(kPassword.size()),
                      reinterpret_cast<const unsigned char*>(kSalt.data()),
                      static_cast<int>(kSalt.size()), kIterations, digest,
                      static_cast<int>(algorithm.keyBytes), key);
    benchmark::DoNotOptimize(key[0]);
  }
}
#endif

#ifdef HAVE_BOTAN
void botan(benchmark::State& state, const Algorithm& algorithm) {
  std::uint8_t key[64];
  const auto hash =
      Botan::PasswordHashFamily::create_or_throw("PBKDF2(" + std::string(algorithm.peerName) + ")")
          ->from_params(kIterations);
  for (auto _ : state) {
    hash->derive_key(key, algorithm.keyBytes, kPassword.data(), kPassword.size(),
                     reinterpret_cast<const std::uint8_t*>(kSalt.data()), kSalt.size());
    benchmark::DoNotOptimize(key[0]);
  }
}
#endif

const bool kRegistered = [] {
  for (const Algorithm& algorithm : kAlgorithms) {
    const auto add = [&](const char* implementation,
                         void (*run)(benchmark::State&, const Algorithm&)) {
      const std::string name = std::string("pbkdf2/") + algorithm.name + "/10000/" + implementation;
      benchmark::RegisterBenchmark(name.c_str(), run, algorithm);
    };
    add("zantrel", ours);
#ifdef HAVE_OPENSSL
    add("openssl", openssl);
#endif
#ifdef HAVE_BOTAN
    add("botan", botan);
#endif
  }
  return true;
}();

}  // namespace
