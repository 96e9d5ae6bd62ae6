// Encryption by the component beside the openssl command, in both directions, files included.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "crypt2/crypt_fixture.h"

namespace zantrel::test {
namespace {

struct Row {
  const char* peerName;
  const char* algorithm;
  int keyLength;
  std::size_t ivSize;
  const char* mode;
};

constexpr Row kRows[] = {
    {"aes-128-cbc", "aes", 128, 16, "cbc"}, {"aes-192-cbc", "aes", 192, 16, "cbc"},
    {"aes-256-cbc", "aes", 256, 16, "cbc"}, {"aes-128-ecb", "aes", 128, 0, "ecb"},
    {"aes-192-ecb", "aes", 192, 0, "ecb"},  {"aes-256-ecb", "aes", 256, 0, "ecb"},
    {"des-cbc", "des", 64, 8, "cbc"},       {"des-ecb", "des", 64, 0, "ecb"},
    {"des-ede-cbc", "3des", 128, 8, "cbc"}, {"des-ede3-cbc", "3des", 192, 8, "cbc"},
    {"des-ede3", "3des", 192, 0, "ecb"},    {"bf-cbc", "blowfish", 128, 8, "cbc"},
    {"bf-ecb", "blowfish2", 128, 0, "ecb"}, {"rc2-cbc", "rc2", 128, 8, "cbc"},
    {"rc2-ecb", "rc2", 128, 0, "ecb"},      {"rc2-64-cbc", "rc2", 64, 8, "cbc"},
    {"rc2-40-cbc", "rc2", 40, 8, "cbc"},    {"rc4", "rc4", 128, 0, "cbc"},
    {"rc4-40", "rc4", 40, 0, "cbc"},
};

std::string pattern(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 9;
  for (char& c : text) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

class Pair {
 public:
  explicit Pair(const Row& row)
      : command_{"openssl",
                 "enc",
                 "-provider",
                 "default",
                 "-provider",
                 "legacy",
                 "-" + std::string(row.peerName)} {
    const std::string key = pattern(static_cast<std::size_t>(row.keyLength) / 8);
    const std::string iv = pattern(row.ivSize + 5).substr(5);
    command_.insert(command_.end(), {"-K", hex(key)});
    if (row.ivSize > 0) command_.insert(command_.end(), {"-iv", hex(iv)});
    crypt->put_CryptAlgorithm(XString(row.algorithm));
    crypt->put_CipherModeX(XString(row.mode));
    crypt->settings().keyLength = crypt->settings().rc2EffectiveKeyLength = row.keyLength;
    crypt->put_SecretKey(bytes(key));
    if (row.ivSize > 0) crypt->put_IV(bytes(iv));
  }
  std::string path(const char* name) const { return folder / name; }
  bool openssl(bool encrypt, const char* from, const char* to) {
    auto command = command_;
    command.insert(command.end(), {encrypt ? "-e" : "-d", "-in", path(from), "-out", path(to)});
    return runProgram(command).has_value();
  }

  Crypt crypt;
  TempFolder folder;

 private:
  std::vector<std::string> command_;
};

TEST(Crypt2InteropTest, OpensslReadsAndWritesTheSameFiles) {
  if (!haveProgram("openssl")) GTEST_SKIP() << "openssl is not installed";
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.peerName);
    Pair pair(row);
    for (const std::size_t size : {1U, 16U, 1700003U}) {
      SCOPED_TRACE(size);
      const std::string text = pattern(size);
      writeFile(pair.path("plain"), text);
      ASSERT_TRUE(pair.openssl(true, "plain", "theirs"));
      const XString plain(pair.path("plain")), ours(pair.path("ours")), theirs(pair.path("theirs")),
          back(pair.path("back"));
      ASSERT_TRUE(pair.crypt->ZT_EncryptFile(plain, ours, nullptr)) << pair.crypt.log();
      EXPECT_TRUE(readFile(pair.path("ours")) == readFile(pair.path("theirs")));
      ASSERT_TRUE(pair.crypt->ZT_DecryptFile(theirs, back, nullptr)) << pair.crypt.log();
      EXPECT_TRUE(readFile(pair.path("back")) == text);
      ASSERT_TRUE(pair.openssl(false, "ours", "back"));
      EXPECT_TRUE(readFile(pair.path("back")) == text);
      if (size > 16) continue;
      const std::string encrypted = readFile(pair.path("theirs"));
      EXPECT_EQ(hex(pair.crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(text))), hex(encrypted));
      EXPECT_TRUE(pair.crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(encrypted)) == text);
    }
  }
}

// AES_ENCRYPT() folds the password and is then AES in ECB.
TEST(Crypt2InteropTest, MySqlPasswordsShorterThanTheKeyAreFilledWithZeros) {
  if (!haveProgram("openssl")) GTEST_SKIP() << "openssl is not installed";
  Crypt crypt;
  crypt->put_EncodingMode(XString("hex"));
  for (const std::string_view password : {"pw", "sixteen bytes ok"}) {
    std::string key(password);
    key.resize(16, '\0');
    const auto expected = runProgram({"openssl", "enc", "-aes-128-ecb", "-K", hex(key)}, "a text");
    ASSERT_TRUE(expected);
    EXPECT_EQ(hex(unhex(crypt.textOf(true, &ClsCrypt::MySqlAesEncryptX, XString("a text"),
                                     XString(password)))),
              hex(*expected));
  }
}

}  // namespace
}  // namespace zantrel::test
