// Ciphers against the openssl command, in both directions.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/cipher_vectors.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

struct Row {
  const char* name;  ///< as openssl calls it
  CipherId id;
  std::size_t keySize;
  std::size_t ivSize;
  bool ecb;
};

constexpr Row kRows[] = {
    {"aes-128-cbc", CipherId::aes, 16, 16, false}, {"aes-192-cbc", CipherId::aes, 24, 16, false},
    {"aes-256-cbc", CipherId::aes, 32, 16, false}, {"aes-128-ecb", CipherId::aes, 16, 0, true},
    {"aes-256-ecb", CipherId::aes, 32, 0, true},   {"des-cbc", CipherId::des, 8, 8, false},
    {"des-ecb", CipherId::des, 8, 0, true},        {"des-ede-cbc", CipherId::des, 16, 8, false},
    {"des-ede3-cbc", CipherId::des, 24, 8, false}, {"des-ede3", CipherId::des, 24, 0, true},
    {"bf-cbc", CipherId::blowfish, 16, 8, false},  {"bf-ecb", CipherId::blowfish, 16, 0, true},
    {"rc2-cbc", CipherId::rc2, 16, 8, false},      {"rc2-ecb", CipherId::rc2, 16, 0, true},
    {"rc2-64-cbc", CipherId::rc2, 8, 8, false},    {"rc2-40-cbc", CipherId::rc2, 5, 8, false},
    {"rc4", CipherId::rc4, 16, 0, false},          {"rc4-40", CipherId::rc4, 5, 0, false},
};

std::string pattern(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 7;
  for (char& c : text) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

TEST(CipherInteropTest, OpensslReadsAndWritesTheSameBytes) {
  if (!haveProgram("openssl")) GTEST_SKIP() << "openssl is not installed";
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const std::string key = pattern(row.keySize), iv = pattern(row.ivSize + 3).substr(3);
    CipherSettings settings;
    settings.id = row.id;
    settings.keyLength = settings.effectiveKeyBits = static_cast<int>(8 * row.keySize);
    settings.ecb = row.ecb;
    settings.key = asBytes(key);
    settings.iv = asBytes(iv);
    std::vector<std::string> command = {"openssl",
                                        "enc",
                                        "-provider",
                                        "default",
                                        "-provider",
                                        "legacy",
                                        std::string("-") + row.name,
                                        "-K",
                                        hex(key)};
    if (row.ivSize > 0) command.insert(command.end(), {"-iv", hex(iv)});
    for (const std::size_t size : {1U, 8U, 16U, 1000U, 100003U}) {
      const std::string text = pattern(size);
      const std::string encrypted = runCipher(settings, CipherDirection::encrypt, text, 4099);
      EXPECT_TRUE(runProgram(command, text) == encrypted) << size;
      auto decrypt = command;
      decrypt.push_back("-d");
      EXPECT_TRUE(runProgram(decrypt, encrypted) == text) << size;
    }
  }
}

}  // namespace
}  // namespace zantrel::test
