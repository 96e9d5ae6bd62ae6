#include "crypto/password_seal.h"

#include <gtest/gtest.h>

#include <string>

#include "core/data_buffer.h"
#include "core/encode/base64.h"
#include "support/recorded_log.h"

namespace zantrel::test {
namespace {

std::string sealed(std::string_view text, std::string_view password) {
  RecordedLog log;
  DataBuffer out;
  EXPECT_TRUE(sealWithPassword(asBytes(text), asBytes(password), out, log)) << log.text();
  return std::string(out.text());
}

std::string opened(std::string_view bytes, std::string_view password) {
  RecordedLog log;
  DataBuffer out;
  if (openWithPassword(asBytes(bytes), asBytes(password), out, log)) return std::string(out.text());
  EXPECT_EQ(out.getSize(), 0U);
  return log.text();
}

constexpr char kWrong[] =
    "error: The password is wrong, or the data was not encrypted in this way.\n";

TEST(PasswordSealTest, OpensWithItsPasswordOnly) {
  for (const std::string& text : {std::string(), std::string(100, '\0')}) {
    const std::string bytes = sealed(text, "secret");
    EXPECT_EQ(opened(bytes, "secret"), text);
    EXPECT_EQ(opened(bytes, "Secret"), kWrong);
    EXPECT_EQ(opened(bytes, ""), "error: A password is needed.\n");
    EXPECT_NE(sealed(text, "secret"), bytes);
  }
  RecordedLog log;
  DataBuffer out;
  EXPECT_FALSE(sealWithPassword(asBytes("a"), {}, out, log));
}

TEST(PasswordSealTest, NoticesEveryChange) {
  const std::string bytes = sealed("some text", "p");
  // In version, salt, IV, encrypted bytes and code; not in all, since each takes its time.
  for (const std::size_t i :
       {std::size_t{0}, std::size_t{1}, std::size_t{17}, std::size_t{33}, bytes.size() - 1}) {
    std::string changed = bytes;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    EXPECT_EQ(opened(changed, "p"), kWrong) << i;
  }
  EXPECT_EQ(opened(bytes + "x", "p"), kWrong);
  EXPECT_EQ(opened(bytes.substr(0, bytes.size() - 1), "p"), kWrong);
  EXPECT_EQ(opened(bytes.substr(0, 64), "p"), kWrong);
  EXPECT_EQ(opened("", "p"), kWrong);
}

constexpr char kMadeByOthers[] =
    "AQABAgMEBQYHCAkKCwwNDg9kZWZnaGlqa2xtbm9wcXJzIhGKtA/Ie+DkbdYRn/HydZGVYsjBMSgU"
    "29Jeno52j3JP4TzTFRzh9n4Stpsu64Gr";

// Made by Python's hashlib and hmac, and by openssl enc -aes-256-cbc.
TEST(PasswordSealTest, OpensWhatOthersMadeByTheSameRule) {
  DataBuffer bytes;
  ASSERT_TRUE(base64Decode(kMadeByOthers, bytes));
  EXPECT_EQ(opened(bytes.text(), "correct horse"), "Made by others.");
}

}  // namespace
}  // namespace zantrel::test
