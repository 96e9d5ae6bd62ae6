#include "crypt2/crypt_names.h"

#include <gtest/gtest.h>

#include "crypto/hash.h"

namespace zantrel {
namespace {

struct CryptNameCase {
  const char* given;
  int id;
  const char* stored;
  int blockSize;
  bool known = true;
};
const CryptNameCase kCryptNames[] = {
    {"AES", kCryptAes, "aes", 16},
    {" a-e-s\t", kCryptAes, "aes", 16},
    {"Rijndael", kCryptAes, "rijndael", 16},
    {"Triple-DES", kCryptDes, "tripledes", 8},
    {"3DES", kCryptDes, "3des", 8},
    {"tdes", kCryptDes, "tdes", 8},
    {"des", kCryptDes, "des", 8},
    {"Blowfish", kCryptBlowfish, "blowfish", 8},
    {"blowfish-2", kCryptBlowfish2, "blowfish2", 8},
    {"TwoFish", kCryptTwofish, "twofish", 16},
    {"RC2", kCryptRc2, "rc2", 8},
    {"rc-4", kCryptRc4, "rc4", 1},
    {"the ARCFOUR cipher", kCryptRc4, "the arcfour cipher", 1},
    {"PKI", kCryptPki, "pki", 0},
    {"none", kCryptNone, "none", 0},
    {"pbes1", kCryptPbes1, "pbes1", 0},
    {"PBES-2", kCryptPbes2, "pbes2", 0},
    {"serpent", kCryptAes, "aes", 16, false},
    {"", kCryptAes, "aes", 16, false},
    {"a es", kCryptAes, "aes", 16, false},
    {"rc5", kCryptAes, "aes", 16, false},
};

TEST(CryptNamesTest, EncryptionAlgorithmsReadBackNormalisedAndUnknownNamesAreAes) {
  for (const CryptNameCase& row : kCryptNames) {
    SCOPED_TRACE(row.given);
    const CryptAlgorithm algorithm = CryptAlgorithm::of(row.given);
    EXPECT_EQ(algorithm.id, row.id);
    EXPECT_EQ(algorithm.name, row.stored);
    EXPECT_EQ(algorithm.blockSize(), row.blockSize);
    EXPECT_EQ(algorithm.known, row.known);
  }
}

TEST(CryptNamesTest, AMisspellingOfRijndaelIsDeliberatelyAccepted) {
  EXPECT_TRUE(CryptAlgorithm::of("Rjindael").known);
  EXPECT_EQ(CryptAlgorithm::of("Rjindael").name, "rjindael");
}

TEST(CryptNamesTest, ModesThatAreNeitherCbcNorCfbAreDeliberatelyEcb) {
  const std::pair<const char*, int> cases[] = {
      {"CBC-mode", kModeCbc}, {" c b", kModeCbc}, {"cbx", kModeCbc},
      {"C-F-B", kModeCfb},    {"cfb8", kModeEcb}, {"ofb", kModeEcb},
      {"ctr", kModeEcb},      {"", kModeEcb},     {"ecb", kModeEcb},
  };
  for (const auto& [name, mode] : cases) EXPECT_EQ(cipherModeOf(name), mode) << name;
}

TEST(CryptNamesTest, DigestsAreFoundWhateverCaseHyphensAndBlanksAround) {
  const std::pair<const char*, int> cases[] = {
      {"SHA-256", kHashSha256},       {"sha-256", kHashSha256}, {"Sha256 ", kHashSha256},
      {"RIPEMD-160", kHashRipemd160}, {"-m-d-2-", kHashMd2},    {"HAVAL", kHashHaval},
      {"sha-224", kHashSha1},         {"whirlpool", kHashSha1}, {"sha 256", kHashSha1},
      {"sha256digest", kHashSha1},    {"", kHashSha1},
  };
  for (const auto& [name, id] : cases) EXPECT_EQ(hashIdOf(name), id) << name;
}

}  // namespace
}  // namespace zantrel
