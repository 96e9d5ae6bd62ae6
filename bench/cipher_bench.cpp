// Ciphers beside OpenSSL (with its legacy provider), Botan and Crypto++, in memory, with the key
// set up beforehand.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif
#ifdef HAVE_BOTAN
#include <botan/block_cipher.h>
#include <botan/cipher_mode.h>
#include <botan/stream_cipher.h>
#endif
#ifdef HAVE_CRYPTOPP
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include <cryptopp/aes.h>
#include <cryptopp/arc4.h>
#include <cryptopp/blowfish.h>
#include <cryptopp/des.h>
#include <cryptopp/modes.h>
#include <cryptopp/rc2.h>
#include <cryptopp/twofish.h>
#endif

#include "crypto/aes.h"
#include "crypto/blowfish.h"
#include "crypto/des.h"
#include "crypto/rc2.h"
#include "crypto/rc4.h"
#include "crypto/twofish.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

/// Runs a cipher that has its key over whole blocks; empty where the peer lacks the cipher.
using Run = std::function<void(const std::uint8_t* in, std::uint8_t* out, std::size_t size)>;

enum class Operation { cbcEncrypt, cbcDecrypt, ecbEncrypt, stream };

constexpr std::uint8_t kKey[32] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 11, 22, 33, 44, 55, 66, 77,
                                   1, 3, 5, 7, 9, 2, 4, 6, 8, 21, 43, 65, 87, 98, 76, 54};
constexpr std::uint8_t kIv[16] = {1, 2, 3};

template <class Cipher, class... Settings>
Run ours(Operation operation, std::size_t keySize, Settings... settings) {
  const auto cipher = std::make_shared<Cipher>();
  cipher->setKey({kKey, keySize}, settings...);
  const auto chain = std::make_shared<std::vector<std::uint8_t>>(kIv, kIv + 16);
  return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
    const std::size_t blocks = size / Cipher::kBlockSize;
    switch (operation) {
      case Operation::cbcEncrypt:
        return cipher->cbcEncrypt(chain->data(), in, out, blocks);
      case Operation::cbcDecrypt:
        return cipher->cbcDecrypt(chain->data(), in, out, blocks);
      default:
        return cipher->ecbEncrypt(in, out, blocks);
    }
  };
}

Run oursRc4(Operation, std::size_t keySize) {
  const auto cipher = std::make_shared<Rc4>();
  cipher->setKey({kKey, keySize});
  return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
    cipher->apply(in, out, size);
  };
}

Run oursRc2(Operation operation, std::size_t keySize) {
  return ours<Rc2>(operation, keySize, 128);
}

#ifdef HAVE_OPENSSL
Run openssl(const char* name, Operation operation, std::size_t) {
  static OSSL_PROVIDER* const kProviders[] = {OSSL_PROVIDER_load(nullptr, "default"),
                                              OSSL_PROVIDER_load(nullptr, "legacy")};
  if (name == nullptr || kProviders[1] == nullptr) return {};
  std::string full = name;
  if (operation == Operation::ecbEncrypt) full += "-ecb";
  if (operation == Operation::cbcEncrypt || operation == Operation::cbcDecrypt) full += "-cbc";
  const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, full.c_str(), nullptr);
  if (cipher == nullptr) return {};
  const std::shared_ptr<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  EVP_CipherInit_ex2(context.get(), cipher, kKey, kIv, operation != Operation::cbcDecrypt, nullptr);
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
    int written = 0;
    EVP_CipherUpdate(context.get(), out, &written, in, static_cast<int>(size));
  };
}
#endif

#ifdef HAVE_BOTAN
Run botan(const char* name, Operation operation, std::size_t keySize) {
  if (name == nullptr) return {};
  if (operation == Operation::stream) {
    const std::shared_ptr<Botan::StreamCipher> cipher = Botan::StreamCipher::create(name);
    if (!cipher) return {};
    cipher->set_key(kKey, keySize);
    return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
      cipher->cipher(in, out, size);
    };
  }
  if (operation == Operation::ecbEncrypt) {
    const std::shared_ptr<Botan::BlockCipher> cipher = Botan::BlockCipher::create(name);
    if (!cipher) return {};
    cipher->set_key(kKey, keySize);
    return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
      cipher->encrypt_n(in, out, size / cipher->block_size());
    };
  }
  const auto way = operation == Operation::cbcDecrypt ? Botan::DECRYPTION : Botan::ENCRYPTION;
  const std::shared_ptr<Botan::Cipher_Mode> mode =
      Botan::Cipher_Mode::create(std::string(name) + "/CBC/NoPadding", way);
  if (!mode) return {};
  mode->set_key(kKey, keySize);
  mode->start(kIv, name[0] == 'A' || name[1] == 'w' ? 16 : 8);
  return [=](const std::uint8_t*, std::uint8_t* out, std::size_t size) {
    mode->process(out, size);  // in place only
  };
}
#endif

#ifdef HAVE_CRYPTOPP
template <class Cipher>
Run cryptopp(Operation operation, std::size_t keySize) {
  using namespace CryptoPP;
  std::shared_ptr<SymmetricCipher> cipher;
  if (operation == Operation::cbcEncrypt)
    cipher = std::make_shared<typename CBC_Mode<Cipher>::Encryption>();
  else if (operation == Operation::cbcDecrypt)
    cipher = std::make_shared<typename CBC_Mode<Cipher>::Decryption>();
  else
    cipher = std::make_shared<typename ECB_Mode<Cipher>::Encryption>();
  if (operation == Operation::ecbEncrypt)
    cipher->SetKey(kKey, keySize);
  else
    cipher->SetKeyWithIV(kKey, keySize, kIv, Cipher::BLOCKSIZE);
  return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
    cipher->ProcessData(out, in, size);
  };
}

Run cryptoppRc4(Operation, std::size_t keySize) {
  const auto cipher = std::make_shared<CryptoPP::Weak::ARC4>(kKey, keySize);
  return [=](const std::uint8_t* in, std::uint8_t* out, std::size_t size) {
    cipher->ProcessData(out, in, size);
  };
}
#define ZT_CRYPTOPP(cipher) cryptopp<CryptoPP::cipher>
#define ZT_CRYPTOPP_RC4 cryptoppRc4
#else
#define ZT_CRYPTOPP(cipher) nullptr
#define ZT_CRYPTOPP_RC4 nullptr
#endif

using Maker = Run (*)(Operation operation, std::size_t keySize);

struct Row {
  const char* name;
  std::size_t keySize;
  Maker ours;
  const char* openssl;
  const char* botan;
  Maker cryptopp;
};

constexpr Row kBlockCiphers[] = {
    {"aes-128", 16, ours<Aes>, "aes-128", "AES-128", ZT_CRYPTOPP(AES)},
    {"aes-256", 32, ours<Aes>, "aes-256", "AES-256", ZT_CRYPTOPP(AES)},
    {"blowfish", 16, ours<Blowfish>, "bf", "Blowfish", ZT_CRYPTOPP(Blowfish)},
    {"twofish", 16, ours<Twofish>, nullptr, "Twofish", ZT_CRYPTOPP(Twofish)},
    {"3des", 24, ours<TripleDes>, "des-ede3", "TripleDES", ZT_CRYPTOPP(DES_EDE3)},
    {"rc2", 16, oursRc2, "rc2", nullptr, ZT_CRYPTOPP(RC2)},
};
constexpr Row kRc4 = {"rc4", 16, oursRc4, "rc4", "RC4", ZT_CRYPTOPP_RC4};

void measure(benchmark::State& state, const Run& run, std::size_t size) {
  std::vector<std::uint8_t> in(size, 0x5A), out(size);
  for (auto _ : state) {
    run(in.data(), out.data(), size);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

void add(const std::string& name, const Run& run, std::size_t size) {
  if (!run) return;
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) { measure(s, run, size); });
}

void addRow(const Row& row, Operation operation, const char* operationName) {
  for (const auto& [sizeName, size] : {std::pair{"64", std::size_t{64}},
                                       {"16K", std::size_t{16384}},
                                       {"1M", std::size_t{1} << 20}}) {
    const std::string stem = std::string(operationName) + "/" + row.name + "/" + sizeName + "/";
    add(stem + "zantrel", row.ours(operation, row.keySize), size);
    if (row.ours == ours<Aes>) {
      CpuFeatures features = detectCpuFeatures();
      features.vaes = false;
      {
        const ScopedCpuFeatures scope(features);
        add(stem + "zantrel_aesni", row.ours(operation, row.keySize), size);
      }
      const ScopedCpuFeatures scope{CpuFeatures{}};
      add(stem + "zantrel_portable", row.ours(operation, row.keySize), size);
    }
#ifdef HAVE_OPENSSL
    add(stem + "openssl", openssl(row.openssl, operation, row.keySize), size);
#endif
#ifdef HAVE_BOTAN
    add(stem + "botan", botan(row.botan, operation, row.keySize), size);
#endif
    if (row.cryptopp != nullptr) add(stem + "cryptopp", row.cryptopp(operation, row.keySize), size);
  }
}

const bool kRegistered = [] {
  for (const Row& row : kBlockCiphers) {
    addRow(row, Operation::cbcEncrypt, "cbc_encrypt");
    addRow(row, Operation::cbcDecrypt, "cbc_decrypt");
    addRow(row, Operation::ecbEncrypt, "ecb_encrypt");
  }
  addRow(kRc4, Operation::stream, "stream");
  // A peer's ciphers must go before its allocator, which is younger than the list of benchmarks.
  std::atexit(benchmark::ClearRegisteredBenchmarks);
  return true;
}();

}  // namespace
