#include "crypto/cipher_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/cipher_paths.h"
#include "support/cipher_vectors.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

constexpr auto kEncrypt = CipherDirection::encrypt;
constexpr auto kDecrypt = CipherDirection::decrypt;

std::string pattern(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 1;
  for (char& c : text) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

CipherSettings keyed(CipherId id, int padding = kPaddingCounted) {
  static const std::string kKey = pattern(32);
  static const std::string kIv = pattern(48).substr(32);
  CipherSettings settings;
  settings.id = id;
  settings.keyLength = 192;
  settings.padding = padding;
  settings.key = asBytes(kKey);
  settings.iv = asBytes(kIv);
  return settings;
}

constexpr CipherId kCiphers[] = {CipherId::aes, CipherId::blowfish, CipherId::twofish,
                                 CipherId::des, CipherId::rc2,      CipherId::rc4};

TEST(CipherStreamTest, PublishedVectorsHoldInBothDirectionsAndInPiecesOfEverySize) {
  const auto vectors = cipherVectors(std::string(ZANTREL_TEST_DATA) + "/crypto/cipher_vectors.tsv");
  ASSERT_GE(vectors.size(), 55u);
  onEachCipherPath([&] {
    for (const CipherVector& v : vectors) {
      SCOPED_TRACE(hex(v.key) + " " + hex(v.input));
      const CipherSettings settings = v.keyed();
      for (std::size_t piece = 1; piece <= v.input.size(); ++piece)
        ASSERT_EQ(hex(runCipher(settings, kEncrypt, v.input, piece)), hex(v.output)) << piece;
      const std::string text = v.input + std::string(v.output.size() - v.input.size(), '\0');
      for (std::size_t piece = 1; piece <= v.output.size(); ++piece)
        ASSERT_EQ(hex(runCipher(settings, kDecrypt, v.output, piece)), hex(text)) << piece;
    }
  });
}

// Sizes around every group of blocks that an implementation takes at once.
TEST(CipherStreamTest, EveryPathAndGroupingGivesTheSameBytes) {
  const std::string text = pattern(16 * 70);
  for (const CipherId id : kCiphers) {
    for (const bool ecb : {false, true}) {
      CipherSettings settings = keyed(id);
      settings.ecb = ecb;
      std::string expected;  // a block at a time on the portable path
      {
        const ScopedCpuFeatures portable{CpuFeatures{}};
        expected = runCipher(settings, kEncrypt, text, 1);
      }
      onEachCipherPath([&] {
        for (std::size_t blocks = 1; blocks <= 70; ++blocks) {
          const std::string part = text.substr(0, 16 * blocks);
          const std::string encrypted = runCipher(settings, kEncrypt, part);
          ASSERT_EQ(encrypted.substr(0, part.size()), expected.substr(0, part.size())) << blocks;
          ASSERT_EQ(runCipher(settings, kDecrypt, encrypted), part) << blocks;
        }
        for (const std::size_t piece : {1UL, 7UL, 129UL, 520UL})
          ASSERT_EQ(runCipher(settings, kEncrypt, text, piece), expected) << piece;
        for (const std::size_t piece : {1UL, 7UL, 129UL, 520UL})
          ASSERT_EQ(runCipher(settings, kDecrypt, expected, piece), text) << piece;
      });
    }
  }
}

TEST(CipherStreamTest, KeyLengthChoosesBetweenDesAndTripleDes) {
  const auto encrypt = [](int keyLength, std::string_view key) {
    CipherSettings settings = keyed(CipherId::des);
    settings.keyLength = keyLength;
    settings.key = asBytes(key);
    return runCipher(settings, kEncrypt, "some text");
  };
  EXPECT_EQ(encrypt(100, "abcdefgh"), encrypt(56, "abcdefghignored"));
  EXPECT_EQ(encrypt(112, "abcdefghabcdefgh"), encrypt(56, "abcdefgh"));
  EXPECT_EQ(encrypt(128, "abcdefgh01234567"), encrypt(168, "abcdefgh01234567abcdefgh"));
  EXPECT_NE(encrypt(128, "abcdefgh01234567"), encrypt(168, "abcdefgh01234567"));
}

TEST(CipherStreamTest, TheTwoBlowfishNumbersAreOneCipher) {
  EXPECT_EQ(runCipher(keyed(CipherId::blowfish), kEncrypt, "some text"),
            runCipher(keyed(CipherId::blowfish2), kEncrypt, "some text"));
}

TEST(CipherStreamTest, AStreamCipherIsNeverPadded) {
  for (const int scheme : {0, 1, 2, 3, 4}) {
    const CipherSettings settings = keyed(CipherId::rc4, scheme);
    const std::string encrypted = runCipher(settings, kEncrypt, "some text", 4);
    EXPECT_EQ(encrypted.size(), 9u);
    EXPECT_EQ(runCipher(settings, kDecrypt, encrypted, 5), "some text");
  }
}

TEST(CipherStreamTest, EachPaddingComesBackAsItsSchemeSays) {
  struct Row {
    int scheme;
    std::size_t length;
    std::size_t encrypted;
    std::size_t decrypted;
  };
  static constexpr Row kRows[] = {
      {0, 16, 32, 16}, {0, 15, 16, 15}, {1, 16, 32, 16}, {1, 3, 16, 3},   {2, 16, 16, 16},
      {2, 3, 16, 16},  {3, 16, 16, 16}, {3, 17, 32, 32}, {4, 17, 32, 32}, {0, 0, 0, 0},
      {1, 0, 0, 0},    {2, 0, 0, 0},    {3, 0, 0, 0},    {4, 0, 0, 0},    {9, 32, 32, 32}};
  for (const Row& row : kRows) {
    const CipherSettings settings = keyed(CipherId::aes, row.scheme);
    const std::string text = pattern(row.length);
    const std::string encrypted = runCipher(settings, kEncrypt, text);
    EXPECT_EQ(encrypted.size(), row.encrypted) << row.scheme << " " << row.length;
    const std::string decrypted = runCipher(settings, kDecrypt, encrypted);
    ASSERT_EQ(decrypted.size(), row.decrypted) << row.scheme << " " << row.length;
    EXPECT_EQ(decrypted.substr(0, row.length), text);
    if (row.scheme < 3) continue;
    const std::string left(row.decrypted - row.length, row.scheme == 4 ? ' ' : '\0');
    EXPECT_EQ(decrypted.substr(row.length), left) << row.scheme;
  }
}

TEST(CipherStreamTest, TheLastByteAloneSaysHowMuchPaddingGoesDeliberately) {
  for (const auto& [last, left] :
       {std::pair{200, 0}, {32, 0}, {31, 1}, {17, 15}, {1, 31}, {0, 32}}) {
    std::string text(31, 'x');
    text += static_cast<char>(last);
    const std::string encrypted = runCipher(keyed(CipherId::aes, kPaddingRandom), kEncrypt, text);
    for (std::size_t piece = 1; piece <= 33; ++piece)
      EXPECT_EQ(runCipher(keyed(CipherId::aes), kDecrypt, encrypted, piece),
                text.substr(0, static_cast<std::size_t>(left)))
          << last << " " << piece;
  }
  // Far more than one block, in a text longer than any padding.
  std::string text = pattern(640);
  text.back() = static_cast<char>(255);
  const std::string encrypted = runCipher(keyed(CipherId::aes, kPaddingRandom), kEncrypt, text);
  for (const std::size_t piece : {1UL, 15UL, 16UL, 255UL, 256UL, 257UL, 641UL})
    EXPECT_EQ(runCipher(keyed(CipherId::aes), kDecrypt, encrypted, piece), text.substr(0, 385));
}

TEST(CipherStreamTest, PiecesHoldBackWhatDoesNotFillABlock) {
  const std::string text = pattern(42);
  LogNull log;
  CipherStream stream;
  DataBuffer first, second, last;
  ASSERT_TRUE(stream.begin(keyed(CipherId::aes), kEncrypt, log));
  ASSERT_TRUE(stream.update(asBytes(text).subspan(0, 5), first, log));
  ASSERT_TRUE(stream.update(asBytes(text).subspan(5, 30), second, log));
  ASSERT_TRUE(stream.finish(asBytes(text).subspan(35), last, log));
  EXPECT_EQ(first.getSize(), 0u);
  EXPECT_EQ(second.getSize(), 32u);
  EXPECT_EQ(last.getSize(), 16u);
  EXPECT_FALSE(stream.started());
}

TEST(CipherStreamTest, AnEmptyLastPieceStillEndsAStreamThatCarriedData) {
  LogNull log;
  for (const int scheme : {0, 1}) {
    CipherStream stream;
    DataBuffer out;
    ASSERT_TRUE(stream.begin(keyed(CipherId::aes, scheme), kEncrypt, log));
    ASSERT_TRUE(stream.update(asBytes("0123456789abcdef"), out, log));
    ASSERT_TRUE(stream.finish({}, out, log));
    EXPECT_EQ(out.getSize(), 32u);
    EXPECT_EQ(runCipher(keyed(CipherId::aes, scheme), kDecrypt, std::string(out.text())),
              "0123456789abcdef");
    DataBuffer nothing;
    ASSERT_TRUE(stream.begin(keyed(CipherId::aes, scheme), kEncrypt, log));
    ASSERT_TRUE(stream.update({}, nothing, log));
    ASSERT_TRUE(stream.finish({}, nothing, log));
    EXPECT_EQ(nothing.getSize(), 0u);
  }
}

TEST(CipherStreamTest, BadInputFailsWithAReasonAndLeavesTheOutputAlone) {
  const auto reasonOf = [](CipherSettings settings, CipherDirection direction,
                           std::string_view text) {
    RecordedLog log;
    DataBuffer out;
    out.append(std::string_view("before"));
    const bool done = direction == kEncrypt ? encryptBytes(settings, asBytes(text), out, log)
                                            : decryptBytes(settings, asBytes(text), out, log);
    EXPECT_FALSE(done);
    EXPECT_EQ(out.text(), "before");
    return log.text();
  };
  CipherSettings unkeyed = keyed(CipherId::aes);
  unkeyed.key = {};
  EXPECT_EQ(reasonOf(unkeyed, kEncrypt, "text"),
            "error: No secret key has been set.  Need a secret key for symmetric encryption "
            "algorithms\n");
  EXPECT_EQ(reasonOf(keyed(CipherId{1}), kEncrypt, "text"),
            "error: Unrecognized encryption method\n");
  EXPECT_EQ(reasonOf(keyed(CipherId::aes), kDecrypt, "seventeen bytes!!"),
            "error: The encrypted data is not a whole number of blocks.\n");
  EXPECT_EQ(reasonOf(keyed(CipherId::aes, 9), kEncrypt, "text"),
            "error: The data is not a whole number of blocks, and the padding scheme adds "
            "nothing.\n");
  RecordedLog log;
  DataBuffer out;
  CipherStream stream;
  EXPECT_FALSE(stream.update(asBytes("text"), out, log));
  EXPECT_FALSE(stream.finish(asBytes("text"), out, log));
  EXPECT_TRUE(log.has("The encryption was not begun."));
}

TEST(CipherKeyTest, TheKeyLengthDecidesHowMuchOfTheKeyIsTaken) {
  struct Row {
    CipherId id;
    int keyLength;
    std::size_t size;
  };
  static constexpr Row kRows[] = {
      {CipherId::aes, -5, 16},      {CipherId::aes, 128, 16},     {CipherId::aes, 129, 24},
      {CipherId::aes, 192, 24},     {CipherId::aes, 193, 32},     {CipherId::aes, 200, 32},
      {CipherId::aes, 4096, 32},    {CipherId::des, 56, 8},       {CipherId::des, 100, 8},
      {CipherId::des, 112, 16},     {CipherId::des, 167, 16},     {CipherId::des, 168, 24},
      {CipherId::blowfish, 40, 5},  {CipherId::blowfish2, 47, 5}, {CipherId::blowfish, 9999, 72},
      {CipherId::twofish, 512, 32}, {CipherId::rc2, 40, 5},       {CipherId::rc2, 2048, 128},
      {CipherId::rc4, 0, 1},        {CipherId::rc4, 1 << 30, 256}};
  for (const Row& row : kRows)
    EXPECT_EQ(cipherKeySize(row.id, row.keyLength), row.size)
        << static_cast<int>(row.id) << " " << row.keyLength;
}

TEST(CipherKeyTest, ShortKeysAndIvsAreFilledWithZerosAndLongOnesCutDeliberately) {
  const std::string zeros(12, '\0');
  CipherSettings shortOne = keyed(CipherId::aes);
  CipherSettings filled = shortOne;
  const std::string filledKey = "12345" + zeros + zeros, filledIv = "abcd" + zeros;
  shortOne.key = asBytes("12345");
  shortOne.iv = asBytes("abcd");
  filled.key = asBytes(filledKey);
  filled.iv = asBytes(filledIv);
  EXPECT_EQ(runCipher(shortOne, kEncrypt, "text"), runCipher(filled, kEncrypt, "text"));
  const std::string longKey = filledKey.substr(0, 24) + "ignored", longIv = filledIv + "ignored";
  filled.key = asBytes(longKey);
  filled.iv = asBytes(longIv);
  EXPECT_EQ(runCipher(shortOne, kEncrypt, "text"), runCipher(filled, kEncrypt, "text"));
}

}  // namespace
}  // namespace zantrel::test
