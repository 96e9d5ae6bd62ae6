#include <gtest/gtest.h>

#include <string>

#include "crypto/cipher_stream.h"
#include "support/cipher_paths.h"
#include "support/cipher_vectors.h"

namespace zantrel::test {
namespace {

constexpr auto kEncrypt = CipherDirection::encrypt;
constexpr auto kDecrypt = CipherDirection::decrypt;

TEST(CryptoCipherCorpusTest, VectorsHoldInBothDirectionsWholeAndInPieces) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  const auto vectors = cipherVectors(*corpus + "/crypto/ciphers.tsv");
  onEachCipherPath([&] {
    std::size_t checked = 0;
    for (const CipherVector& v : vectors) {
      // What is published for CFB is not what runs under its name, nor padding for an empty text.
      if (v.mode == "cfb" || v.input.empty()) continue;
      SCOPED_TRACE(hex(v.key) + " " + hex(v.input));
      for (const std::size_t piece : {v.input.size() + 1, std::size_t{5}}) {
        ASSERT_EQ(hex(runCipher(v.keyed(), kEncrypt, v.input, piece)), hex(v.output));
        ASSERT_EQ(hex(runCipher(v.keyed(), kDecrypt, v.output, piece)), hex(v.input));
      }
      ++checked;
    }
    EXPECT_GE(checked, 1190u);
  });
}

TEST(CryptoCipherCorpusTest, CfbRunsCbcDeliberately) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  std::size_t checked = 0;
  for (CipherVector& v : cipherVectors(*corpus + "/crypto/ciphers.tsv")) {
    if (v.mode != "cfb") continue;
    v.settings.padding = kPaddingCounted;
    EXPECT_NE(runCipher(v.keyed(), kEncrypt, v.input).substr(0, v.output.size()), v.output);
    ++checked;
  }
  EXPECT_EQ(checked, 90u);
}

TEST(CryptoCipherCorpusTest, WrongPaddingIsTakenOffByTheLastByteDeliberately) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  const auto rows = readTable(*corpus + "/crypto/bad_padding_decrypt.tsv");
  ASSERT_GT(rows.size(), 70u);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const std::string key = unhex(rows[i].at(3)), iv = unhex(rows[i].at(4));
    CipherSettings settings;
    settings.keyLength = static_cast<int>(key.size() * 8);
    settings.key = asBytes(key);
    settings.iv = asBytes(iv);
    for (const std::size_t piece : {std::size_t{1000}, std::size_t{16}, std::size_t{1}})
      EXPECT_EQ(hex(runCipher(settings, kDecrypt, unhex(rows[i].at(5)), piece)), rows[i].at(8))
          << rows[i].at(9) << " " << piece;
  }
}

}  // namespace
}  // namespace zantrel::test
