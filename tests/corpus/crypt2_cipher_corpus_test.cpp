// The corpus' ciphers, keys and passwords through the component.

#include <gtest/gtest.h>

#include <string>

#include "crypt2/crypt_fixture.h"
#include "support/cipher_vectors.h"

namespace zantrel::test {
namespace {

/// Rows of a table of the corpus without its headings; none without a corpus.
std::vector<std::vector<std::string>> corpusTable(const std::string& name) {
  const auto corpus = corpusFolder();
  if (!corpus) return {};
  auto rows = readTable(*corpus + "/crypto/" + name);
  rows.erase(rows.begin());
  return rows;
}

void configure(ClsCrypt& component, const std::vector<std::string>& row) {
  component.put_CryptAlgorithm(XString(row.at(0)));
  component.put_CipherModeX(XString(row.at(1)));
  component.settings().paddingScheme = row.at(2) == "pkcs5" ? 0 : 2;
  component.settings().keyLength = std::stoi(row.at(3));
  if (!row.at(4).empty()) component.settings().rc2EffectiveKeyLength = std::stoi(row[4]);
  component.put_SecretKey(bytes(unhex(row.at(5))));
  if (!row.at(6).empty()) component.put_IV(bytes(unhex(row[6])));
}

TEST(Crypt2CipherCorpusTest, VectorsHoldInBothDirectionsWholeAndInPieces) {
  const auto rows = corpusTable("ciphers.tsv");
  if (rows.empty()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int checked = 0;
  for (const auto& row : rows) {
    const std::string input = unhex(row.at(7)), output = unhex(row.at(8));
    // What is published for CFB is not what runs under its name, nor padding for an empty text.
    if (row[1] == "cfb" || input.empty()) continue;
    SCOPED_TRACE(row[0] + " " + row[5] + " " + row[7]);
    Crypt crypt;
    configure(crypt.component, row);
    ASSERT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::EncryptBytesX, bytes(input))), row[8]);
    ASSERT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(output))), row[7]);
    std::string encrypted, decrypted;
    const std::size_t cut = input.size() / 3;
    crypt->settings().lastChunk = false;
    encrypted = crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(input.substr(0, cut)));
    decrypted = crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(output.substr(0, cut)));
    crypt->settings().firstChunk = false;
    crypt->settings().lastChunk = true;
    encrypted += crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(input.substr(cut)));
    decrypted += crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(output.substr(cut)));
    ASSERT_EQ(hex(encrypted), row[8]);
    ASSERT_EQ(hex(decrypted), row[7]);
    ++checked;
  }
  EXPECT_GE(checked, 1190);
}

TEST(Crypt2CipherCorpusTest, WrongPaddingIsTakenOffByTheLastByteDeliberately) {
  const auto rows = corpusTable("bad_padding_decrypt.tsv");
  if (rows.empty()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  for (const auto& row : rows) {
    Crypt crypt;
    crypt->settings().keyLength = static_cast<int>(4 * row.at(3).size());
    crypt->put_SecretKey(bytes(unhex(row.at(3))));
    crypt->put_IV(bytes(unhex(row.at(4))));
    EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(unhex(row.at(5))))), row.at(8))
        << row.at(9);
  }
}

TEST(Crypt2CipherCorpusTest, KeysFromPasswordsAreThePublishedOnes) {
  const auto rows = corpusTable("kdf.tsv");
  if (rows.empty()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  Crypt crypt;
  for (const auto& row : rows) {
    // A password is a text: it comes in a charset in which all bytes are characters.
    XString password;
    ASSERT_TRUE(password.appendFromEncoding(asBytes(unhex(row.at(2))), "koi8-r"));
    const auto derive = row.at(0) == "pbkdf1" ? &ClsCrypt::Pbkdf1X : &ClsCrypt::Pbkdf2X;
    const std::string key = crypt.textOf(
        true, derive, password, XString("koi8-r"), XString(row.at(1)), XString(row.at(3)),
        std::stoi(row.at(4)), 8 * std::stoi(row.at(5)), XString("hex"));
    EXPECT_EQ(hex(unhex(key)), row.at(6)) << row[0] << " " << row[1] << " " << row.back();
  }
}

TEST(Crypt2CipherCorpusTest, EncryptionWithPasswordsHoldsInBothDirections) {
  const auto rows = corpusTable("pbes2.tsv");
  if (rows.empty()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  for (const auto& row : rows) {
    XString password;
    ASSERT_TRUE(password.appendFromEncoding(asBytes(unhex(row.at(4))), "utf-8"));
    Crypt crypt;
    crypt->put_CryptAlgorithm(XString(row.at(0)));
    crypt.setHash(row.at(1));
    crypt->settings().pbesAlgorithm.setFromUtf8(row.at(2));
    crypt->settings().keyLength = std::stoi(row.at(3));
    crypt->put_PbesPassword(password);
    crypt->put_Salt(bytes(unhex(row.at(5))));
    crypt->settings().iterationCount = std::stoi(row.at(6));
    crypt->put_IV(bytes(unhex(row.at(7))));
    // An empty text stays empty, without the block of padding that the standard gives it.
    EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(unhex(row.at(8))))),
              row[8].empty() ? "" : row.at(9))
        << row.back();
    EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(unhex(row.at(9))))), row[8]);
  }
}

}  // namespace
}  // namespace zantrel::test
