// Keys from passwords and PBES against the openssl command: it derives the same keys and wraps
// private keys (PKCS #8) that are opened here, and sealed again to the same bytes.

#include <gtest/gtest.h>

#include <string>

#include "core/data_buffer.h"
#include "core/log_null.h"
#include "crypto/pbes.h"
#include "crypto/pbkdf.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

/// Walks through DER as far as an EncryptedPrivateKeyInfo needs it.
class Der {
 public:
  explicit Der(std::string_view bytes) : rest_(bytes) {}

  /// The content of the next value, which must have this tag.
  std::string_view take(unsigned char tag) {
    if (rest_.size() < 2 || static_cast<unsigned char>(rest_[0]) != tag) return {};
    std::size_t size = static_cast<unsigned char>(rest_[1]), head = 2;
    if (size > 0x80) {
      const std::size_t bytes = size - 0x80;
      size = 0;
      for (; head < 2 + bytes; ++head)
        size = size << 8 | static_cast<unsigned char>(rest_.at(head));
    }
    const std::string_view content = rest_.substr(head, size);
    rest_.remove_prefix(head + content.size());
    return content;
  }
  int number() {
    int value = 0;
    for (const char c : take(2)) value = value << 8 | static_cast<unsigned char>(c);
    return value;
  }

 private:
  std::string_view rest_;
};

constexpr unsigned char kSequence = 0x30, kOctets = 4, kOid = 6;

struct Wrapping {
  std::vector<std::string> options;  ///< of openssl pkcs8
  PbesScheme scheme;
  int hashId;
  CipherId cipher;
  int keyLength;
};

const Wrapping kWrappings[] = {
    {{"-v1", "PBE-MD5-DES"}, PbesScheme::pbes1, kHashMd5, CipherId::des, 0},
    {{"-v1", "PBE-SHA1-DES"}, PbesScheme::pbes1, kHashSha1, CipherId::des, 0},
    {{"-v1", "PBE-MD5-RC2-64"}, PbesScheme::pbes1, kHashMd5, CipherId::rc2, 0},
    {{"-v1", "PBE-SHA1-RC2-64"}, PbesScheme::pbes1, kHashSha1, CipherId::rc2, 0},
    {{"-v2", "des3", "-v2prf", "hmacWithSHA1"}, PbesScheme::pbes2, kHashSha1, CipherId::des, 168},
    {{"-v2", "aes128", "-v2prf", "hmacWithSHA1"}, PbesScheme::pbes2, kHashSha1, CipherId::aes, 128},
    {{"-v2", "aes192", "-v2prf", "hmacWithSHA256"},
     PbesScheme::pbes2,
     kHashSha256,
     CipherId::aes,
     192},
    {{"-v2", "aes256", "-v2prf", "hmacWithSHA384"},
     PbesScheme::pbes2,
     kHashSha384,
     CipherId::aes,
     256},
    {{"-v2", "aes256", "-v2prf", "hmacWithSHA512"},
     PbesScheme::pbes2,
     kHashSha512,
     CipherId::aes,
     256},
};

TEST(PbesInteropTest, PrivateKeysThatOpensslWrappedOpenAndAreSealedToTheSameBytes) {
  if (!haveProgram("openssl")) GTEST_SKIP() << "openssl is not installed";
  const auto key = runProgram({"openssl", "genpkey", "-algorithm", "EC", "-pkeyopt",
                               "ec_paramgen_curve:P-256", "-outform", "PEM"});
  ASSERT_TRUE(key);
  const auto plain =
      runProgram({"openssl", "pkcs8", "-topk8", "-nocrypt", "-outform", "DER"}, *key);
  ASSERT_TRUE(plain);
  LogNull log;
  for (const Wrapping& wrapping : kWrappings) {
    SCOPED_TRACE(wrapping.options[1]);
    std::vector<std::string> command = {"openssl",     "pkcs8",     "-topk8", "-passout",
                                        "pass:geheim", "-provider", "legacy", "-provider",
                                        "default",     "-outform",  "DER"};
    command.insert(command.end(), wrapping.options.begin(), wrapping.options.end());
    const auto wrapped = runProgram(command, *key);
    ASSERT_TRUE(wrapped);

    Der info(Der(*wrapped).take(kSequence));
    Der algorithm(info.take(kSequence));
    const std::string_view encrypted = info.take(kOctets);
    algorithm.take(kOid);
    Der parameters(algorithm.take(kSequence));
    PbesSettings settings;
    settings.scheme = wrapping.scheme;
    settings.hashId = wrapping.hashId;
    settings.cipher.id = wrapping.cipher;
    settings.cipher.keyLength = wrapping.keyLength;
    settings.password = asBytes("geheim");
    if (wrapping.scheme == PbesScheme::pbes2) {
      Der derivation(parameters.take(kSequence)), cipher(parameters.take(kSequence));
      derivation.take(kOid);
      cipher.take(kOid);
      settings.cipher.iv = asBytes(cipher.take(kOctets));
      parameters = Der(derivation.take(kSequence));
    }
    settings.salt = asBytes(parameters.take(kOctets));
    settings.iterations = parameters.number();

    DataBuffer opened, sealed;
    EXPECT_TRUE(pbesDecrypt(settings, asBytes(encrypted), opened, log));
    EXPECT_EQ(hex(opened.text()), hex(*plain));
    EXPECT_TRUE(pbesEncrypt(settings, asBytes(*plain), sealed, log));
    EXPECT_EQ(hex(sealed.text()), hex(encrypted));
  }
}

TEST(PbesInteropTest, OpensslDerivesTheSameKeys) {
  if (!haveProgram("openssl")) GTEST_SKIP() << "openssl is not installed";
  LogNull log;
  for (const auto& [name, id] : {std::pair<std::string, int>{"MD5", kHashMd5},
                                 {"SHA1", kHashSha1},
                                 {"SHA256", kHashSha256},
                                 {"SHA384", kHashSha384},
                                 {"SHA512", kHashSha512}}) {
    std::string key(100, '\0');
    ASSERT_TRUE(pbkdf2(id, asBytes("some password"), asBytes("some salt"), 1000,
                       {reinterpret_cast<std::uint8_t*>(key.data()), key.size()}, log));
    EXPECT_TRUE(runProgram({"openssl", "kdf", "-binary", "-keylen", "100", "-kdfopt",
                            "digest:" + name, "-kdfopt", "pass:some password", "-kdfopt",
                            "salt:some salt", "-kdfopt", "iter:1000", "PBKDF2"}) == key)
        << name;
  }
}

}  // namespace
}  // namespace zantrel::test
