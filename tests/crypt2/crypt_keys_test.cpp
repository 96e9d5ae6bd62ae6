#include <gtest/gtest.h>

#include <set>
#include <string>

#include "crypt2/crypt_fixture.h"

namespace zantrel::test {
namespace {

std::string md5(std::string_view data) {
  Crypt crypt;
  crypt.setHash("md5");
  return crypt.hash(data);
}

std::string secretKey(Crypt& crypt) {
  DataBuffer key;
  crypt->get_SecretKey(key);
  return std::string(key.text());
}

TEST(CryptKeysTest, AKeyIsSetFromItsEncodedForm) {
  Crypt crypt;
  EXPECT_TRUE(crypt->SetEncodedKey(XString("30313233"), XString("hex")));
  crypt.expectLogged({"keyData: 30313233", "keyLengthInBits: 32"});  // deliberate
  EXPECT_EQ(secretKey(crypt), "0123");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::GetEncodedKeyX, XString("base64")), "MDEyMw==");
  EXPECT_EQ(crypt.log().find("MDEy"), std::string::npos);
}

TEST(CryptKeysTest, NoKeyIsSetFromNothing) {
  Crypt crypt;
  crypt->put_SecretKey(bytes("old"));
  for (const char* const text : {"", "  ", "\r\n"}) {
    EXPECT_FALSE(crypt->SetEncodedKey(XString(text), XString("base64")));
    crypt.expectLogged({"Key not set, no data provided."});
    EXPECT_EQ(secretKey(crypt), "old");
  }
}

TEST(CryptKeysTest, KeysAppearInNoLogButTheirOwnDecodings) {
  Crypt crypt;
  crypt->commonSettings().verboseLogging = true;
  EXPECT_TRUE(crypt->SetEncodedKey(XString("736563726574"), XString("hex")));
  crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes("text"));
  EXPECT_EQ(crypt.log().find("736563726574"), std::string::npos) << crypt.log();
  EXPECT_EQ(crypt.log().find("secret\r"), std::string::npos) << crypt.log();
  EXPECT_TRUE(crypt->PassPhraseToSecretKeyAnsi(XString("open sesame")));
  EXPECT_EQ(crypt.log().find("sesame"), std::string::npos) << crypt.log();
}

TEST(CryptKeysTest, AnIvKeepsItsFirst16Bytes) {
  Crypt crypt;
  EXPECT_FALSE(crypt->get_HasIV());
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::GetEncodedIVX, XString("hex")), "");
  crypt->put_IV(bytes("0123456789abcdefgh"));
  EXPECT_TRUE(crypt->get_HasIV());
  EXPECT_EQ(unhex(crypt.textOf(true, &ClsCrypt::GetEncodedIVX, XString("hex"))),
            "0123456789abcdef");
}

TEST(CryptKeysTest, SaltsHaveAnEncodedFormToo) {
  Crypt crypt;
  EXPECT_TRUE(crypt->SetEncodedSalt(XString("c2FsdA=="), XString("base64")));
  DataBuffer salt;
  crypt->get_Salt(salt);
  EXPECT_EQ(salt.text(), "salt");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::GetEncodedSaltX, XString("hex")), "73616C74");
}

TEST(CryptKeysTest, RandomKeysAndIvsHaveTheSizeOfTheCipher) {
  struct Row {
    const char* name;
    int keyLength;
    std::size_t keyBytes;
    std::size_t ivBytes;
  };
  static constexpr Row kRows[] = {{"aes", 128, 16, 16}, {"aes", 200, 32, 16}, {"des", 56, 8, 8},
                                  {"des", 168, 24, 8},  {"rc4", 40, 5, 1},    {"none", 80, 10, 0},
                                  {"pbes2", -8, 1, 0}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    std::set<std::string> keys;
    for (int i = 0; i < 4; ++i) {
      Crypt crypt;
      crypt->put_CryptAlgorithm(XString(row.name));
      crypt->settings().keyLength = row.keyLength;
      EXPECT_TRUE(crypt->RandomizeKey());
      EXPECT_TRUE(crypt->RandomizeIV());
      EXPECT_TRUE(crypt->get_HasIV());
      EXPECT_EQ(secretKey(crypt).size(), row.keyBytes);
      DataBuffer iv;
      crypt->get_IV(iv);
      EXPECT_EQ(iv.getSize(), row.ivBytes);
      keys.insert(secretKey(crypt));
    }
    EXPECT_TRUE(row.keyBytes <= 4 || keys.size() == 4);
  }
}

TEST(CryptKeysTest, RandomBytesComeInTheEncodingMode) {
  Crypt crypt;
  crypt->put_EncodingMode(XString("hex"));
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::GenRandomBytesENCX, 20).size(), 40u);
  EXPECT_NE(crypt.textOf(true, &ClsCrypt::GenRandomBytesENCX, 20),
            crypt.textOf(true, &ClsCrypt::GenRandomBytesENCX, 20));
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::GenRandomBytesENCX, 0), "");
  crypt.textOf(false, &ClsCrypt::GenRandomBytesENCX, -1);
  crypt.expectLogged({"The number of bytes is negative.", "numBytes: -1"});
  crypt->put_EncodingMode(XString("base64"));
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::GenRandomBytesENCX, 3).size(), 4u);
}

TEST(CryptKeysTest, AKeyOfAPassPhraseIsMd5OfItsBytesAndOfTheirBase64) {
  const std::string all = md5("p\u00e4ss") + md5("cMOkc3M=");
  Crypt crypt;
  for (const auto& [keyLength, digits] :
       {std::pair{128, 32}, {256, 64}, {300, 64}, {40, 10}, {12, 2}, {0, 0}, {-80, 0}}) {
    crypt->settings().keyLength = keyLength;
    const std::string expected = all.substr(0, static_cast<std::size_t>(digits));
    EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::GenerateSecretKeyX, XString("p\u00e4ss"))),
              expected);
    EXPECT_EQ(hex(unhex(crypt.textOf(true, &ClsCrypt::GenEncodedSecretKeyX, XString("p\u00e4ss"),
                                     XString("hex")))),
              expected);
  }
  EXPECT_EQ(secretKey(crypt), "") << "nothing is set by generating";
  crypt->settings().charset.setFromUtf8("windows-1252");
  crypt->settings().keyLength = 128;
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::GenerateSecretKeyX, XString("p\u00e4ss"))),
            md5("p\xe4ss"));
}

TEST(CryptKeysTest, PassPhraseToSecretKeyAnsiSetsAll32Bytes) {
  Crypt crypt;
  crypt->settings().keyLength = 40;
  EXPECT_TRUE(crypt->PassPhraseToSecretKeyAnsi(XString("p\u00e4ss")));
  EXPECT_EQ(hex(secretKey(crypt)), md5("p\xe4ss") + md5("cORzcw=="));
}

// Passwords

struct Password {
  const char* hash = "sha1";
  int iterations = 1;
  int keyBits = 160;
};

template <class Member>
std::string derived(Crypt& crypt, Member member, const Password& p, bool expected = true) {
  return crypt.textOf(expected, member, XString("password"), XString("utf-8"), XString(p.hash),
                      XString("73616c74"), p.iterations, p.keyBits, XString("hex"));
}

TEST(CryptPasswordsTest, DerivesKeysWithEncodedSaltAndResult) {
  Crypt crypt;
  EXPECT_EQ(hex(unhex(derived(crypt, &ClsCrypt::Pbkdf2X, {"sha1", 2}))),  // RFC 6070
            "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957");
  crypt.setHash("sha1");
  EXPECT_EQ(hex(unhex(derived(crypt, &ClsCrypt::Pbkdf1X, {"SHA-1", 1}))),
            crypt.hash("passwordsalt"));
}

TEST(CryptPasswordsTest, RefusesWhatCannotBeDerived) {
  struct Row {
    Password password;
    const char* said;
  };
  static constexpr Row kRows[] = {
      {{"sha-3"}, "Keys are derived with"},
      {{"md4"}, "Keys are derived with"},
      {{""}, "Keys are derived with"},
      {{"sha1", 0}, "The iteration count must be at least 1."},
      {{"sha1", 1, 0}, "The length of a key must be a positive multiple of 8 bits."},
      {{"sha1", 1, 12}, "The length of a key must be a positive multiple of 8 bits."},
      {{"sha1", 1, -128}, "The length of a key must be a positive multiple of 8 bits."}};
  for (const Row& row : kRows) {
    for (const auto member : {&ClsCrypt::Pbkdf1X, &ClsCrypt::Pbkdf2X}) {
      Crypt crypt;
      EXPECT_EQ(derived(crypt, member, row.password, false), "");
      crypt.expectLogged({row.said});
    }
  }
  Crypt crypt;
  derived(crypt, &ClsCrypt::Pbkdf1X, {"sha1", 1, 168}, false);
  crypt.expectLogged({"PBKDF1 cannot derive more bytes than the digest has."});
  crypt.textOf(false, &ClsCrypt::Pbkdf2X, XString("p"), XString("klingon"), XString("sha1"),
               XString(""), 1, 8, XString("hex"));
}

TEST(CryptPasswordsTest, PbesTakesItsSettingsFromTheProperties) {
  struct Row {
    const char* scheme;
    const char* cipher;
    bool works;
  };
  static constexpr Row kRows[] = {{"pbes2", "aes", true},   {"pbes2", "twofish", true},
                                  {"pbes2", "3des", true},  {"pbes2", "rc4", true},
                                  {"pbes1", "des", true},   {"pbes1", "rc2", true},
                                  {"pbes1", "aes", false},  {"pbes2", "pki", false},
                                  {"pbes2", "none", false}, {"pbes1", "pbes1", false}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.scheme) + row.cipher);
    Crypt crypt;
    crypt->put_CryptAlgorithm(XString(row.scheme));
    crypt->settings().pbesAlgorithm.setFromUtf8(row.cipher);
    crypt->put_PbesPassword(XString("open sesame"));
    crypt->put_Salt(bytes("salt"));
    crypt->put_IV(bytes("0123456789abcdef"));
    const std::string encrypted = crypt.bytesOf(row.works, &ClsCrypt::EncryptX, bytes("text"));
    crypt.expectLogged({"algorithm: " + std::string(row.scheme), "pbesAlgorithm: "});
    EXPECT_EQ(crypt.log().find("sesame"), std::string::npos);
    if (!row.works) continue;
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(encrypted)), "text");
    const auto differs = [&] {
      return crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes("text")) != encrypted;
    };
    crypt->put_PbesPassword(XString("other"));
    EXPECT_TRUE(differs());
    crypt->put_PbesPassword(XString("open sesame"));
    crypt->settings().iterationCount = 1023;
    EXPECT_TRUE(differs());
    crypt->settings().iterationCount = 1024;
    crypt->put_Salt(bytes("pepper"));
    EXPECT_TRUE(differs());
    crypt->put_Salt(bytes("salt"));
    crypt.setHash("md5");
    EXPECT_TRUE(differs());
    crypt.setHash("sha1");
    EXPECT_FALSE(differs());
  }
}

TEST(CryptPasswordsTest, MySqlTextsGoThroughCharsetAndEncodingMode) {
  Crypt crypt;
  crypt->put_EncodingMode(XString("hex"));
  crypt->settings().charset.setFromUtf8("windows-1252");
  const std::string encrypted =
      crypt.textOf(true, &ClsCrypt::MySqlAesEncryptX, XString("Gr\u00fc\u00dfe"), XString("pw"));
  EXPECT_EQ(encrypted.size(), 32u);
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::MySqlAesDecryptX, XString(encrypted), XString("pw")),
            "Gr\u00fc\u00dfe");
  crypt.textOf(false, &ClsCrypt::MySqlAesDecryptX, XString(encrypted), XString("other"));
  crypt.expectLogged({"The password is wrong, or the data was not encrypted in this way."});
  // The same settings for a cipher: the folded password is the key.
  crypt->put_SecretKey(bytes("pw"));
  crypt->put_CipherMode(1);
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::EncryptStringENCX, XString("Gr\u00fc\u00dfe")),
            encrypted);
}

}  // namespace
}  // namespace zantrel::test
