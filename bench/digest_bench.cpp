// Digests and HMAC beside OpenSSL, Botan and Crypto++: one message in memory into a raw digest.
// Each peer is used the way that is quickest for it: objects are made once and used again.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#ifdef HAVE_OPENSSL
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif
#ifdef HAVE_BOTAN
#include <botan/hash.h>
#include <botan/mac.h>
#endif
#ifdef HAVE_CRYPTOPP
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include <cryptopp/hmac.h>
#include <cryptopp/md2.h>
#include <cryptopp/md4.h>
#include <cryptopp/md5.h>
#include <cryptopp/ripemd.h>
#include <cryptopp/sha.h>
#endif

#include "crypto/haval2.h"
#include "crypto/hmac.h"
#include "crypto/md2.h"
#include "crypto/md4.h"
#include "crypto/md5.h"
#include "crypto/ripemd.h"
#include "crypto/sha1.h"
#include "crypto/sha2.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

struct Size {
  const char* name;
  std::size_t bytes;
};
constexpr Size kSizes[] = {{"64", 64}, {"1K", 1 << 10}, {"16K", 1 << 14}, {"1M", 1 << 20}};

struct Message {
  std::vector<std::uint8_t> bytes;
  std::uint8_t digest[64];
};

using Run = std::function<void(Message&)>;

struct Implementation {
  const char* name;
  Run run;
  CpuFeatures features = detectCpuFeatures();
};

void add(const std::string& operation, const std::vector<Implementation>& implementations) {
  for (const Size& size : kSizes) {
    for (const Implementation& implementation : implementations) {
      benchmark::RegisterBenchmark(
          (operation + "/" + size.name + "/" + implementation.name).c_str(),
          [=](benchmark::State& state) {
            std::mt19937 random(1);
            Message message;
            message.bytes.resize(size.bytes);
            for (auto& byte : message.bytes) byte = static_cast<std::uint8_t>(random());
            const ScopedCpuFeatures scope(implementation.features);
            for (auto _ : state) {
              implementation.run(message);
              benchmark::ClobberMemory();
            }
            state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                    static_cast<std::int64_t>(size.bytes));
          });
    }
  }
}

// Ours on each path, then the peers.
std::vector<Implementation> withPaths(const Run& ours, std::vector<Implementation> peers) {
  const CpuFeatures all = detectCpuFeatures();
  CpuFeatures avx2;
  avx2.ssse3 = all.ssse3;
  avx2.avx2 = all.avx2;
  std::vector<Implementation> list = {
      {"zantrel", ours}, {"zantrel_avx2", ours, avx2}, {"zantrel_portable", ours, CpuFeatures{}}};
  list.insert(list.end(), peers.begin(), peers.end());
  return list;
}

template <class Algorithm>
Run ours() {
  const auto algorithm = std::make_shared<Algorithm>();
  return
      [algorithm](Message& m) { algorithm->digestData(m.bytes.data(), m.bytes.size(), m.digest); };
}

std::vector<Implementation> libraries([[maybe_unused]] const char* openssl,
                                      [[maybe_unused]] const char* botan) {
  std::vector<Implementation> peers;
#ifdef HAVE_OPENSSL
  if (EVP_MD* const md = openssl != nullptr ? EVP_MD_fetch(nullptr, openssl, nullptr) : nullptr) {
    const std::shared_ptr<EVP_MD_CTX> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    peers.push_back({"openssl", [context, md](Message& m) {
                       EVP_DigestInit_ex2(context.get(), md, nullptr);
                       EVP_DigestUpdate(context.get(), m.bytes.data(), m.bytes.size());
                       EVP_DigestFinal_ex(context.get(), m.digest, nullptr);
                     }});
  }
#endif
#ifdef HAVE_BOTAN
  if (const std::shared_ptr<Botan::HashFunction> hash =
          botan != nullptr ? Botan::HashFunction::create(botan) : nullptr) {
    peers.push_back({"botan", [hash](Message& m) {
                       hash->update(m.bytes.data(), m.bytes.size());
                       hash->final(m.digest);
                     }});
  }
#endif
  return peers;
}

template <class Hash>
std::vector<Implementation> withCryptopp(std::vector<Implementation> peers) {
#ifdef HAVE_CRYPTOPP
  const auto hash = std::make_shared<Hash>();
  peers.push_back({"cryptopp", [hash](Message& m) {
                     hash->CalculateDigest(m.digest, m.bytes.data(), m.bytes.size());
                   }});
#endif
  return peers;
}

void addHmacSha256() {
  const std::string secret(32, 'k');
  std::vector<Implementation> peers;
#ifdef HAVE_OPENSSL
  EVP_MAC* const algorithm = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
  const std::shared_ptr<EVP_MAC_CTX> context(EVP_MAC_CTX_new(algorithm), EVP_MAC_CTX_free);
  char name[] = "SHA256";
  const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0),
                                   OSSL_PARAM_construct_end()};
  EVP_MAC_init(context.get(), reinterpret_cast<const unsigned char*>(secret.data()), secret.size(),
               parameters);
  peers.push_back({"openssl", [context](Message& m) {
                     std::size_t written = 0;
                     EVP_MAC_init(context.get(), nullptr, 0, nullptr);
                     EVP_MAC_update(context.get(), m.bytes.data(), m.bytes.size());
                     EVP_MAC_final(context.get(), m.digest, &written, sizeof m.digest);
                   }});
#endif
#ifdef HAVE_BOTAN
  const std::shared_ptr<Botan::MessageAuthenticationCode> mac =
      Botan::MessageAuthenticationCode::create("HMAC(SHA-256)");
  mac->set_key(reinterpret_cast<const std::uint8_t*>(secret.data()), secret.size());
  peers.push_back({"botan", [mac](Message& m) {
                     mac->update(m.bytes.data(), m.bytes.size());
                     mac->final(m.digest);
                   }});
#endif
#ifdef HAVE_CRYPTOPP
  const auto hmac = std::make_shared<CryptoPP::HMAC<CryptoPP::SHA256>>(
      reinterpret_cast<const CryptoPP::byte*>(secret.data()), secret.size());
  peers.push_back({"cryptopp", [hmac](Message& m) {
                     hmac->CalculateDigest(m.digest, m.bytes.data(), m.bytes.size());
                   }});
#endif
  const auto key = std::make_shared<HmacKey>(asBytes(secret), 7);
  add("hmac_sha256", withPaths([key](Message& m) { key->mac(m.bytes, m.digest); }, peers));
}

#ifdef HAVE_CRYPTOPP
#define PEERS(openssl, botan, cryptopp) withCryptopp<CryptoPP::cryptopp>(libraries(openssl, botan))
#else
#define PEERS(openssl, botan, cryptopp) libraries(openssl, botan)
#endif

[[maybe_unused]] const bool kRegistered = [] {
#ifdef HAVE_OPENSSL
  OSSL_PROVIDER_load(nullptr, "default");
  OSSL_PROVIDER_load(nullptr, "legacy");
#endif
  add("sha1", withPaths(ours<Sha1>(), PEERS("SHA1", "SHA-1", SHA1)));
  add("sha256", withPaths(ours<Digest<Sha256State>>(), PEERS("SHA256", "SHA-256", SHA256)));
  add("sha384", withPaths(ours<Digest<Sha384State>>(), PEERS("SHA384", "SHA-384", SHA384)));
  add("sha512", withPaths(ours<Digest<Sha512State>>(), PEERS("SHA512", "SHA-512", SHA512)));
  add("md2", withPaths(ours<Md2>(), PEERS(nullptr, nullptr, Weak::MD2)));
  add("md4", withPaths(ours<Md4>(), PEERS("MD4", "MD4", Weak::MD4)));
  add("md5", withPaths(ours<Md5>(), PEERS("MD5", "MD5", Weak::MD5)));
  add("ripemd128", withPaths(ours<Ripemd128>(), PEERS(nullptr, nullptr, RIPEMD128)));
  add("ripemd160", withPaths(ours<Ripemd160>(), PEERS("RIPEMD160", "RIPEMD-160", RIPEMD160)));
  add("ripemd256", withPaths(ours<Ripemd256>(), PEERS(nullptr, nullptr, RIPEMD256)));
  add("ripemd320", withPaths(ours<Ripemd320>(), PEERS(nullptr, nullptr, RIPEMD320)));
  add("haval", withPaths(ours<Haval2>(), {}));
  addHmacSha256();
  return true;
}();

}  // namespace
