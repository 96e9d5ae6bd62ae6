#include "crypto/pbes.h"

#include <gtest/gtest.h>

#include <string>

#include "crypto/digest_names.h"
#include "support/cipher_vectors.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

PbesSettings settingsOf(PbesScheme scheme, CipherId id) {
  PbesSettings settings;
  settings.scheme = scheme;
  settings.cipher.id = id;
  settings.cipher.ecb = true;  // neither this nor that may count
  settings.cipher.padding = kPaddingZeros;
  settings.password = asBytes("password");
  settings.salt = asBytes("saltsalt");
  settings.iterations = 3;
  return settings;
}

template <class Work>
std::string run(Work work, const PbesSettings& settings, std::string_view text) {
  RecordedLog log;
  DataBuffer out;
  return work(settings, asBytes(text), out, log) ? std::string(out.text()) : "failed";
}

TEST(PbesTest, Pbes1TakesKeyAndIvFromOneDigest) {
  for (const CipherId id : {CipherId::des, CipherId::rc2}) {
    const PbesSettings settings = settingsOf(PbesScheme::pbes1, id);
    const std::string derived =
        digestOf("sha1", digestOf("sha1", digestOf("sha1", "passwordsaltsalt")));
    CipherSettings cipher;
    cipher.id = id;
    cipher.keyLength = cipher.effectiveKeyBits = 64;
    cipher.key = asBytes(std::string_view(derived).substr(0, 8));
    cipher.iv = asBytes(std::string_view(derived).substr(8, 8));
    const std::string expected = runCipher(cipher, CipherDirection::encrypt, "some text");
    EXPECT_EQ(hex(run(pbesEncrypt, settings, "some text")), hex(expected));
    EXPECT_EQ(run(pbesDecrypt, settings, expected), "some text");
  }
}

TEST(PbesTest, Pbes1RefusesCiphersThatItDoesNotDefine) {
  for (const CipherId id : {CipherId::aes, CipherId::rc4, CipherId::blowfish})
    EXPECT_EQ(run(pbesEncrypt, settingsOf(PbesScheme::pbes1, id), "text"), "failed");
}

TEST(PbesTest, Pbes2GoesWithEveryCipherAndEachKeyLength) {
  for (const CipherId id : {CipherId::aes, CipherId::twofish, CipherId::blowfish, CipherId::des,
                            CipherId::rc2, CipherId::rc4}) {
    std::string before;
    for (const int keyLength : {64, 128, 192, 256}) {
      PbesSettings settings = settingsOf(PbesScheme::pbes2, id);
      settings.cipher.keyLength = keyLength;
      settings.cipher.iv = asBytes("0123456789abcdef");
      const std::string encrypted = run(pbesEncrypt, settings, "some text");
      EXPECT_EQ(run(pbesDecrypt, settings, encrypted), "some text");
      EXPECT_TRUE(encrypted != before || id == CipherId::aes || id == CipherId::des) << keyLength;
      before = encrypted;
      settings.cipher.iv = asBytes("123456789abcdef0");
      EXPECT_EQ(run(pbesEncrypt, settings, "some text") != encrypted, id != CipherId::rc4);
    }
  }
}

TEST(PbesTest, AnEmptyTextAndNoIterationAreAnsweredInEachScheme) {
  for (const PbesScheme scheme : {PbesScheme::pbes1, PbesScheme::pbes2}) {
    PbesSettings settings = settingsOf(scheme, CipherId::des);
    EXPECT_EQ(run(pbesEncrypt, settings, ""), "");
    EXPECT_EQ(run(pbesDecrypt, settings, ""), "");
    settings.iterations = 0;
    EXPECT_EQ(run(pbesEncrypt, settings, "text"), "failed");
  }
}

}  // namespace
}  // namespace zantrel::test
