// Settings of the component.

#include "crypt2/cls_crypt.h"

#include "crypt2/crypt_fixture.h"

namespace zantrel::test {
namespace {

TEST(ClsCryptTest, NamesOfAlgorithmsReadBackNormalised) {
  Crypt crypt;
  crypt.setHash("SHA-256");
  EXPECT_EQ(crypt.property(&ClsCrypt::get_HashAlgorithm), "sha256");
  crypt.setHash("whirlpool");
  EXPECT_EQ(crypt.property(&ClsCrypt::get_HashAlgorithm), "sha1");
  crypt->put_CryptAlgorithm(XString("Triple-DES"));
  EXPECT_EQ(crypt.property(&ClsCrypt::get_CryptAlgorithm), "tripledes");
  EXPECT_EQ(crypt->get_BlockSize(), 8);
  crypt->put_CryptAlgorithm(XString("serpent"));
  EXPECT_EQ(crypt.property(&ClsCrypt::get_CryptAlgorithm), "aes");
  EXPECT_TRUE(crypt->SetAlgorithmTwofish());
  EXPECT_EQ(crypt.property(&ClsCrypt::get_CryptAlgorithm), "twofish");
  EXPECT_TRUE(crypt->SetAlgorithmRSA());
  EXPECT_EQ(crypt.property(&ClsCrypt::get_CryptAlgorithm), "pki");
}

TEST(ClsCryptTest, NumbersOutOfRangeBecomeTheNearest) {
  Crypt crypt;
  for (const auto& [given, stored] : {std::pair{7, 5}, {0, 3}, {-1, 3}, {4, 4}}) {
    crypt->put_HavalRounds(given);
    EXPECT_EQ(crypt->get_HavalRounds(), stored);
  }
  for (const auto& [given, stored] : {std::pair{-5, 0}, {1, 1}, {2, 2}, {99, 2}}) {
    crypt->put_CipherMode(given);
    EXPECT_EQ(crypt->get_CipherMode(), stored);
  }
  crypt->put_CipherModeX(XString("Cbc"));
  EXPECT_EQ(crypt->get_CipherMode(), kModeCbc);
}

TEST(ClsCryptTest, AnIvKeepsItsFirstSixteenBytesAndIsThereEvenWhenEmpty) {
  Crypt crypt;
  EXPECT_FALSE(crypt->get_HasIV());
  crypt->put_IV(bytes("0123456789abcdefgh"));
  DataBuffer iv;
  crypt->get_IV(iv);
  EXPECT_EQ(iv.text(), "0123456789abcdef");
  EXPECT_TRUE(crypt->get_HasIV());
  Crypt other;
  other->put_IV(bytes(""));
  EXPECT_TRUE(other->get_HasIV());
}

TEST(ClsCryptTest, SecretsReadBackAndAreReplacedWhole) {
  Crypt crypt;
  crypt->put_SecretKey(bytes("a long secret key"));
  crypt->put_SecretKey(bytes("short"));
  DataBuffer key;
  crypt->get_SecretKey(key);
  EXPECT_EQ(key.text(), "short");
  crypt->put_PbesPassword(XString("p\xC3\xA4ss"));
  EXPECT_EQ(crypt.property(&ClsCrypt::get_PbesPassword), "p\xC3\xA4ss");
}

TEST(SecretBufferTest, LeavesNothingOfTheOldSecretBehind) {
  SecretBuffer secret;
  ASSERT_TRUE(secret.set(asBytes(std::string_view("old secret"))));
  // A block that is larger than what comes next would be kept by a plain buffer.
  secret.buffer().reserve(100);
  secret.buffer().append(std::string_view(", and more of it"));
  const std::uint8_t* const block = secret.buffer().getData2();
  const std::size_t size = secret.buffer().getSize();
  secret.clear();
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(block), size), std::string(size, '\0'));
}

TEST(SecretBufferTest, TakesAPartOfItself) {
  SecretBuffer secret;
  ASSERT_TRUE(secret.set(asBytes(std::string_view("0123456789"))));
  ASSERT_TRUE(secret.set(secret.bytes().subspan(2, 3)));
  EXPECT_EQ(asText(secret.bytes()), "234");
}

}  // namespace
}  // namespace zantrel::test
