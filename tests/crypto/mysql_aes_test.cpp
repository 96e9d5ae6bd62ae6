#include "crypto/mysql_aes.h"

#include <gtest/gtest.h>

#include <string>

#include "support/cipher_vectors.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

template <class Work>
std::string mysql(Work work, std::string_view text, std::string_view password) {
  RecordedLog log;
  DataBuffer out;
  out.append(std::string_view("before "));
  const bool done = work(asBytes(text), asBytes(password), out, log);
  EXPECT_EQ(log.text().empty(), done);
  EXPECT_TRUE(done || out.text() == "before ") << "something is left behind";
  return done ? std::string(out.text().substr(7)) : "failed";
}

TEST(MysqlAesTest, IsAesInEcbWithThePasswordFoldedInto16Bytes) {
  const std::string password = "a password of more than sixteen and more than thirty-two bytes";
  std::string key(16, '\0');
  for (std::size_t i = 0; i < password.size(); ++i)
    key[i % 16] = static_cast<char>(key[i % 16] ^ password[i]);
  CipherSettings settings;
  settings.ecb = true;
  settings.key = asBytes(key);
  for (std::size_t size = 1; size < 70; ++size) {
    const std::string text(size, 'x');
    const std::string encrypted = runCipher(settings, CipherDirection::encrypt, text);
    ASSERT_EQ(hex(mysql(mysqlAesEncrypt, text, password)), hex(encrypted)) << size;
    ASSERT_EQ(mysql(mysqlAesDecrypt, encrypted, password), text) << size;
  }
}

TEST(MysqlAesTest, AnEmptyTextBecomesABlockOfPadding) {
  const std::string encrypted = mysql(mysqlAesEncrypt, "", "pw");
  EXPECT_EQ(encrypted.size(), 16u);
  EXPECT_EQ(mysql(mysqlAesDecrypt, encrypted, "pw"), "");
}

TEST(MysqlAesTest, RefusesWrongPasswordsPaddingAndLengths) {
  EXPECT_EQ(mysql(mysqlAesDecrypt, mysql(mysqlAesEncrypt, "text", "pw"), "other"), "failed");
  for (const std::size_t size : {0u, 1u, 15u, 17u})
    EXPECT_EQ(mysql(mysqlAesDecrypt, std::string(size, 'x'), "pw"), "failed") << size;
  // The password itself as the AES key: blocks of any content can be made.
  const std::string key = "sixteen bytes ok";
  CipherSettings settings;
  settings.ecb = true;
  settings.padding = kPaddingRandom;
  settings.key = asBytes(key);
  struct Row {
    std::string block;
    bool accepted;
  };
  const Row rows[] = {{std::string(16, '\x10'), true},
                      {std::string(15, 'x') + '\x01', true},
                      {std::string(14, 'x') + "\x02\x02", true},
                      {std::string(14, 'x') + "\x03\x02", false},
                      {std::string(16, '\0'), false},
                      {std::string(16, '\x11'), false},
                      {std::string(16, '\xff'), false},
                      {"\x0f" + std::string(15, '\x10'), false}};
  for (const Row& row : rows) {
    const std::string encrypted = runCipher(settings, CipherDirection::encrypt, row.block);
    EXPECT_EQ(mysql(mysqlAesDecrypt, encrypted, key) != "failed", row.accepted) << hex(row.block);
  }
}

}  // namespace
}  // namespace zantrel::test
