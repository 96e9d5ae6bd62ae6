#include "crypto/pbkdf.h"

#include <gtest/gtest.h>

#include <string>

#include "core/log_null.h"
#include "crypto/digest_names.h"
#include "crypto/hmac.h"
#include "crypto/pass_phrase_key.h"
#include "support/cpu_paths.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using Derivation = bool (*)(int, ByteSpan, ByteSpan, int, std::span<std::uint8_t>, LogBase&);

std::string derived(Derivation derive, int hashId, std::string_view password, std::string_view salt,
                    int iterations, std::size_t bytes) {
  LogNull log;
  std::string key(bytes, '\0');
  const std::span<std::uint8_t> room(reinterpret_cast<std::uint8_t*>(key.data()), bytes);
  return derive(hashId, asBytes(password), asBytes(salt), iterations, room, log) ? key : "failed";
}

int hashId(const std::string& name) {
  return findHashAlgorithm(std::string_view(name))->id;
}

TEST(PbkdfTest, Pbkdf2GivesThePublishedKeysOnEachCpuPath) {
  const auto rows = readTable(std::string(ZANTREL_TEST_DATA) + "/crypto/pbkdf2.tsv");
  ASSERT_GE(rows.size(), 12u);
  onEachCpuPath([&] {
    for (const auto& row : rows)
      EXPECT_EQ(hex(derived(pbkdf2, hashId(row.at(0)), unescape(row.at(1)), unescape(row.at(2)),
                            std::stoi(row.at(3)), row.at(4).size() / 2)),
                row.at(4));
  });
}

// Step by step as the standard writes it, over digests of every length.
TEST(PbkdfTest, Pbkdf2IsTheChainOfTheStandardForEveryHash) {
  const std::string password(200, 'p');  // longer than every block
  for (const char* const name : {"md2", "md5", "sha1", "sha256", "sha384", "sha512"}) {
    const HmacKey key = HmacKey::standard(asBytes(password), hashId(name));
    const auto mac = [&key](std::string_view text) {
      std::string code(key.macBytes(), '\0');
      key.mac(asBytes(text), reinterpret_cast<std::uint8_t*>(code.data()));
      return code;
    };
    std::string expected;
    for (char block = 1; block <= 3; ++block) {
      std::string code = mac("salt" + std::string(3, '\0') + block), sum = code;
      for (int i = 1; i < 5; ++i) {
        code = mac(code);
        for (std::size_t k = 0; k < sum.size(); ++k) sum[k] = static_cast<char>(sum[k] ^ code[k]);
      }
      expected += sum;
    }
    for (std::size_t size = 0; size <= expected.size(); ++size)
      ASSERT_EQ(derived(pbkdf2, hashId(name), password, "salt", 5, size), expected.substr(0, size));
  }
}

TEST(PbkdfTest, Pbkdf1HashesPasswordAndSaltAgainAndAgain) {
  for (const char* const name : {"md2", "md5", "sha1", "sha256"}) {
    std::string digest = digestOf(name, "passwordsalt");
    for (int iterations = 1; iterations < 5; ++iterations) {
      EXPECT_EQ(derived(pbkdf1, hashId(name), "password", "salt", iterations, digest.size()),
                digest);
      EXPECT_EQ(derived(pbkdf1, hashId(name), "password", "salt", iterations, 5),
                digest.substr(0, 5));
      digest = digestOf(name, digest);
    }
  }
}

TEST(PbkdfTest, AHashThatTheDispatcherLacksMeansSha1Deliberately) {
  for (const Derivation derive : {pbkdf1, pbkdf2})
    for (const int id : {0, 6, 8, 10, 99})
      EXPECT_EQ(derived(derive, id, "p", "s", 3, 20), derived(derive, kHashSha1, "p", "s", 3, 20));
}

TEST(PbkdfTest, RefusesWhatTheStandardDoesNotDefine) {
  std::uint8_t key[64];
  for (const int iterations : {0, -1}) {
    RecordedLog log;
    EXPECT_FALSE(pbkdf1(kHashSha1, {}, {}, iterations, key, log));
    EXPECT_FALSE(pbkdf2(kHashSha1, {}, {}, iterations, key, log));
    EXPECT_TRUE(log.has("error: The iteration count must be at least 1.")) << log.text();
  }
  RecordedLog log;
  EXPECT_FALSE(pbkdf1(kHashSha1, {}, {}, 1, std::span(key).first(21), log));
  EXPECT_TRUE(log.has("digestBytes: 20")) << log.text();
}

TEST(PassPhraseKeyTest, IsMd5OfTheBytesAndOfTheirBase64WithoutLineBreaks) {
  PassPhraseKey key;
  ASSERT_TRUE(passPhraseKey(asBytes("secret"), key));
  EXPECT_EQ(hex(asText(key.span())), hex(digestOf("md5", "secret") + digestOf("md5", "c2VjcmV0")));
  std::string base64;
  for (int i = 0; i < 40; ++i) base64 += "YWFh";
  ASSERT_TRUE(passPhraseKey(asBytes(std::string(120, 'a')), key));
  EXPECT_EQ(hex(asText(key.span().last(16))), hex(digestOf("md5", base64)));
}

}  // namespace
}  // namespace zantrel::test
