#include <gtest/gtest.h>

#include <string>

#include "core/data_buffer.h"
#include "core/log_null.h"
#include "crypto/pbes.h"
#include "crypto/pbkdf.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

int hashId(const std::string& name) {
  return findHashAlgorithm(std::string_view(name))->id;
}

TEST(CryptoKdfCorpusTest, KeysFromPasswordsAreThePublishedOnes) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  LogNull log;
  auto rows = readTable(*corpus + "/crypto/kdf.tsv");
  rows.erase(rows.begin());  // headings
  ASSERT_GE(rows.size(), 140u);
  for (const auto& row : rows) {
    const std::string password = unhex(row.at(2)), salt = unhex(row.at(3));
    std::string key(std::stoul(row.at(5)), '\0');
    const auto derive = row.at(0) == "pbkdf1" ? pbkdf1 : pbkdf2;
    EXPECT_TRUE(derive(hashId(row.at(1)), asBytes(password), asBytes(salt), std::stoi(row.at(4)),
                       {reinterpret_cast<std::uint8_t*>(key.data()), key.size()}, log));
    EXPECT_EQ(hex(key), row.at(6)) << row.at(0) << " " << row.at(1) << " " << row.back();
  }
}

TEST(CryptoKdfCorpusTest, EncryptionWithPasswordsHoldsInBothDirections) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  LogNull log;
  auto rows = readTable(*corpus + "/crypto/pbes2.tsv");
  rows.erase(rows.begin());
  ASSERT_GE(rows.size(), 370u);
  for (const auto& row : rows) {
    const std::string password = unhex(row.at(4)), salt = unhex(row.at(5)), iv = unhex(row.at(7));
    const std::string text = unhex(row.at(8)), expected = unhex(row.at(9));
    PbesSettings settings;
    settings.hashId = hashId(row.at(1));
    settings.cipher.keyLength = std::stoi(row.at(3));
    settings.cipher.iv = asBytes(iv);
    settings.password = asBytes(password);
    settings.salt = asBytes(salt);
    settings.iterations = std::stoi(row.at(6));
    DataBuffer encrypted, decrypted;
    EXPECT_TRUE(pbesEncrypt(settings, asBytes(text), encrypted, log));
    // An empty text stays empty, without the block of padding that the standard gives it.
    EXPECT_EQ(hex(encrypted.text()), text.empty() ? "" : row.at(9)) << row.back();
    EXPECT_TRUE(pbesDecrypt(settings, asBytes(expected), decrypted, log));
    EXPECT_EQ(hex(decrypted.text()), row.at(8)) << row.back();
  }
}

}  // namespace
}  // namespace zantrel::test
