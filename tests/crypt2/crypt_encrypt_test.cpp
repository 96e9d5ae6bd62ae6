#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "crypt2/crypt_fixture.h"
#include "support/cipher_vectors.h"

namespace zantrel::test {
namespace {

const std::string kKey = "0123456789abcdef0123456789ABCDEF";
const std::string kIv = "an IV of 16 byte";

struct Encryption : Crypt {
  explicit Encryption(std::string_view algorithm, int padding = 0) {
    component.put_CryptAlgorithm(XString(algorithm));
    component.put_SecretKey(bytes(kKey));
    component.put_IV(bytes(kIv));
    component.settings().paddingScheme = padding;
  }
  std::string encrypt(std::string_view text, bool expected = true) {
    return bytesOf(expected, &ClsCrypt::EncryptBytesX, bytes(text));
  }
  std::string decrypt(std::string_view data, bool expected = true) {
    return bytesOf(expected, &ClsCrypt::DecryptX, bytes(data));
  }
  void setChunk(bool first, bool last) {
    component.settings().firstChunk = first;
    component.settings().lastChunk = last;
  }
  void setKeyLength(int bits) { component.settings().keyLength = bits; }
  bool hasLogged(std::string_view part) { return log().find(part) != std::string::npos; }
};

const char* const kAlgorithms[] = {"aes", "twofish", "blowfish", "blowfish2", "3des", "rc2", "rc4"};

std::string pattern(std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(i * 7 + i / 256);
  return text;
}

TEST(CryptEncryptTest, RunsTheCipherThatTheSettingsChoose) {
  struct Row {
    const char* name;
    CipherId id;
    int keyLength;
    int mode;
  };
  static constexpr Row kRows[] = {
      {"aes", CipherId::aes, 128, 0},         {"a-e-s", CipherId::aes, 192, 1},
      {"rjindael", CipherId::aes, 200, 2},    {"serpent", CipherId::aes, 256, 0},
      {"des", CipherId::des, 100, 0},         {"Triple-DES", CipherId::des, 168, 1},
      {"rc2", CipherId::rc2, 64, 0},          {"rc4", CipherId::rc4, 40, 1},
      {"twofish", CipherId::twofish, 256, 2}, {"blowfish2", CipherId::blowfish, 448, 0}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    Encryption crypt(row.name);
    crypt.setKeyLength(row.keyLength);
    crypt->put_CipherMode(row.mode);
    crypt->settings().rc2EffectiveKeyLength = 63;
    CipherSettings settings;
    settings.id = row.id;
    settings.keyLength = row.keyLength;
    settings.effectiveKeyBits = 63;
    settings.ecb = row.mode == 1;
    settings.key = asBytes(kKey);
    settings.iv = asBytes(kIv);
    const std::string expected =
        runCipher(settings, CipherDirection::encrypt, "some text of more than a block");
    EXPECT_EQ(hex(crypt.encrypt("some text of more than a block")), hex(expected));
    EXPECT_EQ(crypt.decrypt(expected), "some text of more than a block");
  }
}

TEST(CryptEncryptTest, NamesAlgorithmAndKeyLength) {
  struct Row {
    const char* name;
    int keyLength;
    const char* logged;
    const char* last;
  };
  static constexpr Row kRows[] = {{"rijndael", 128, "aes", "rijndael"},
                                  {"twofish", 256, "twofish", "twofish"},
                                  {"blowfish", 128, "blowfish", "blowfish"},
                                  {"rc2", 128, "rc2", "rc2"},
                                  {"arcfour", 128, "rc4", "rc4"}};
  for (const Row& row : kRows) {
    Encryption crypt(row.name);
    crypt.setKeyLength(row.keyLength);
    crypt.encrypt("text");
    crypt.expectLogged(
        {"algorithm: " + std::string(row.logged), "keyLength: " + std::to_string(row.keyLength)});
    EXPECT_EQ(crypt.property(&ClsCrypt::get_LastAlgorithm), row.last);
  }
}

TEST(CryptEncryptTest, TheLogNamesTripleDesFrom65BitsThoughSingleDesRunsDeliberately) {
  for (const auto& [keyLength, name] :
       {std::pair{64, "algorithm: des"}, {65, "algorithm: 3des"}, {111, "algorithm: 3des"}}) {
    Encryption crypt("des"), single("des");
    crypt.setKeyLength(keyLength);
    single.setKeyLength(56);
    EXPECT_EQ(crypt.encrypt("text"), single.encrypt("text"));
    crypt.expectLogged({name});
    EXPECT_EQ(crypt.property(&ClsCrypt::get_LastAlgorithm), "des");
  }
}

TEST(CryptEncryptTest, AnEmptyKeyFailsForCiphersOnly) {
  for (const char* const name : kAlgorithms) {
    Encryption crypt(name);
    crypt->put_SecretKey(DataBuffer());
    for (const std::string_view text : {"", "text"}) {
      EXPECT_EQ(crypt.encrypt(text, false), "");
      crypt.expectLogged(
          {"No secret key has been set.  Need a secret key for symmetric encryption "
           "algorithms"});
      EXPECT_EQ(crypt.decrypt(text, false), "");
    }
    EXPECT_EQ(crypt.property(&ClsCrypt::get_LastAlgorithm), "");
  }
}

TEST(CryptEncryptTest, NothingBecomesNothingWithEveryAlgorithmAndPadding) {
  for (const char* const name : {"aes", "des", "rc4", "none", "pki", "pbes1", "pbes2"}) {
    for (const int padding : {0, 1, 2, 3, 4, 5}) {
      Encryption crypt(name, padding);
      EXPECT_EQ(crypt.encrypt(""), "") << name << padding;
      EXPECT_EQ(crypt.decrypt(""), "") << name << padding;
    }
  }
}

TEST(CryptEncryptTest, PaddingIsAddedAndTakenOffAsItsSchemeSays) {
  EXPECT_EQ(Encryption("aes", 0).encrypt(pattern(16)).size(), 32u);
  EXPECT_EQ(Encryption("aes", 3).encrypt(pattern(16)).size(), 16u);
  Encryption crypt("aes", 2);
  const std::string encrypted = crypt.encrypt(pattern(31) + '\xc8');
  crypt->settings().paddingScheme = 0;
  EXPECT_EQ(crypt.decrypt(encrypted), "") << "200 bytes of padding are all there is";
}

TEST(CryptEncryptTest, CiphertextThatIsNotWholeBlocksFails) {
  Encryption crypt("aes");
  EXPECT_EQ(crypt.decrypt(pattern(33), false), "");
  crypt.expectLogged({"The encrypted data is not a whole number of blocks.",
                      "Failed to decrypt data\r\n", "originalDataSize: 33",
                      "decryptedDataSize: 0"});
  crypt.textOf(false, &ClsCrypt::DecryptStringX, bytes(pattern(33)));
  crypt.expectLogged({"Failed to decrypt data.\r\n", "originalDataSize: 33"});
}

TEST(CryptEncryptTest, AlgorithmsWithoutASecretKey) {
  Encryption none("none");
  EXPECT_EQ(none.encrypt(pattern(100)), pattern(100));
  EXPECT_EQ(none.decrypt(pattern(100)), pattern(100));
  EXPECT_EQ(none.property(&ClsCrypt::get_LastAlgorithm), "none");

  Encryption pki("pki");
  EXPECT_EQ(pki.encrypt("text", false), "");
  pki.expectLogged({"algorithm: pki", "No encryption certificates were specified."});
  EXPECT_EQ(pki.decrypt("text", false), "");
  pki.expectLogged({"Decrypt certificate is null", "Failed to decrypt data"});
}

// In pieces

std::string inPieces(Encryption& crypt, bool encrypt, std::string_view text, std::size_t piece) {
  std::string result;
  bool first = true;
  for (; text.size() > piece; text.remove_prefix(piece), first = false) {
    crypt.setChunk(first, false);
    result += encrypt ? crypt.encrypt(text.substr(0, piece)) : crypt.decrypt(text.substr(0, piece));
  }
  crypt.setChunk(first, true);
  return result + (encrypt ? crypt.encrypt(text) : crypt.decrypt(text));
}

TEST(CryptEncryptTest, PiecesOfEverySizeConcatenateToTheWhole) {
  for (const char* const name : kAlgorithms) {
    for (const int padding : {0, 3}) {
      for (const int mode : {0, 1}) {
        SCOPED_TRACE(std::string(name) + std::to_string(padding));
        Encryption whole(name, padding), pieces(name, padding);
        whole->put_CipherMode(mode);
        pieces->put_CipherMode(mode);
        const std::string text = pattern(67), encrypted = whole.encrypt(text);
        const std::string decrypted = whole.decrypt(encrypted);
        EXPECT_EQ(decrypted.substr(0, text.size()), text);
        for (std::size_t piece = 1; piece <= 68; ++piece) {
          ASSERT_EQ(hex(inPieces(pieces, true, text, piece)), hex(encrypted)) << piece;
          ASSERT_EQ(hex(inPieces(pieces, false, encrypted, piece)), hex(decrypted)) << piece;
        }
      }
    }
  }
}

TEST(CryptEncryptTest, BytesBehindTheLastBlockWaitForTheNextPiece) {
  Encryption crypt("aes");
  crypt.setChunk(true, false);
  EXPECT_EQ(crypt.encrypt(pattern(5)).size(), 0u);
  crypt.setChunk(false, false);
  EXPECT_EQ(crypt.encrypt(pattern(30)).size(), 32u);
  crypt.setChunk(false, true);
  EXPECT_EQ(crypt.encrypt(pattern(7)).size(), 16u);
}

TEST(CryptEncryptTest, AnEmptyLastPieceEndsAStreamThatCarriedData) {
  Encryption crypt("aes");
  crypt.setChunk(true, false);
  std::string encrypted = crypt.encrypt(pattern(16));
  crypt.setChunk(false, true);
  encrypted += crypt.encrypt("");
  EXPECT_EQ(encrypted.size(), 32u);
  crypt.setChunk(true, true);
  EXPECT_EQ(crypt.decrypt(encrypted), pattern(16));
  crypt.setChunk(true, false);
  EXPECT_EQ(crypt.encrypt(""), "");
  crypt.setChunk(false, true);
  EXPECT_EQ(crypt.encrypt(""), "");
}

TEST(CryptEncryptTest, EncryptionAndDecryptionInPiecesDoNotDisturbEachOther) {
  Encryption crypt("aes"), whole("aes");
  crypt.setChunk(true, false);
  std::string encrypted = crypt.encrypt(pattern(20));
  std::string decrypted = crypt.decrypt(encrypted);
  crypt.setChunk(true, true);
  EXPECT_EQ(crypt.encrypt("a call for itself"), whole.encrypt("a call for itself"));
  crypt.setChunk(false, true);
  const std::string rest = crypt.encrypt(pattern(20));
  EXPECT_EQ(encrypted + rest, whole.encrypt(pattern(20) + pattern(20)));
  EXPECT_EQ(decrypted + crypt.decrypt(rest), pattern(20) + pattern(20));
}

TEST(CryptEncryptTest, AFurtherPieceWithoutAFirstFails) {
  for (const bool last : {false, true}) {
    Encryption crypt("aes");
    crypt.setChunk(false, last);
    crypt.encrypt("text", false);
    crypt.expectLogged({"The encryption was not begun."});
    crypt.decrypt("text", false);
  }
  Encryption crypt("aes");
  crypt.setChunk(true, false);
  crypt.encrypt("text");
  crypt->put_SecretKey(DataBuffer());
  crypt.encrypt("text", false);
  crypt.setChunk(false, true);
  crypt.encrypt("text", false);
}

TEST(CryptEncryptTest, AlgorithmsWithoutBlocksAreAlwaysWhole) {
  for (const char* const name : {"none", "pbes2"}) {
    Encryption crypt(name);
    const std::string whole = crypt.encrypt("text");
    for (const bool first : {false, true}) {
      crypt.setChunk(first, !first);
      EXPECT_EQ(crypt.encrypt("text"), whole);
      EXPECT_EQ(crypt.decrypt(whole), "text");
    }
  }
}

// Texts and encodings

TEST(CryptEncryptTest, EveryFormOfAMemberGivesTheSame) {
  Encryption crypt("aes");
  crypt->put_EncodingMode(XString("hex"));
  crypt->settings().charset.setFromUtf8("windows-1252");
  const std::string text = "Gr\u00fc\u00dfe", ansi =
                                                  "Gr\xfc\xdf"
                                                  "e";
  const std::string encrypted = crypt.encrypt(ansi),
                    encoded = crypt.textOf(true, &ClsCrypt::EncryptBytesENCX, bytes(ansi));
  EXPECT_EQ(unhex(encoded), encrypted);
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(ansi)), encrypted);
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::EncryptStringX, XString(text)), encrypted);
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::EncryptStringENCX, XString(text)), encoded);
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::EncryptEncodedX, XString(hex(ansi))), encoded);

  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::DecryptBytesENCX, XString(encoded)), ansi);
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::DecryptStringX, bytes(encrypted)), text);
  crypt.expectLogged({"InStr: " + encoded, "InNumChars: 16"});
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::DecryptToStringX, bytes(encrypted)), text);
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::DecryptStringENCX, XString(encoded)), text);
  crypt.expectLogged({"InStr: " + encoded, "InNumChars: 32"});
  EXPECT_EQ(unhex(crypt.textOf(true, &ClsCrypt::DecryptEncodedX, XString(encoded))), ansi);
}

TEST(CryptEncryptTest, TextThatCharsetCannotHoldIsNotEncrypted) {
  Encryption crypt("aes");
  crypt->settings().charset.setFromUtf8("us-ascii");
  crypt.bytesOf(false, &ClsCrypt::EncryptStringX, XString("\u20ac"));
  crypt->settings().charset.setFromUtf8("klingon");
  crypt.textOf(false, &ClsCrypt::EncryptStringENCX, XString("text"));
  crypt.textOf(false, &ClsCrypt::DecryptStringX, bytes(Encryption("aes").encrypt("text")));
  crypt.expectLogged({"klingon"});
}

TEST(CryptEncryptTest, ALongInputIsShownInTheLogByItsBeginningOnly) {
  Encryption crypt("none");
  crypt.textOf(true, &ClsCrypt::DecryptStringX, bytes(std::string(1 << 20, 'x')));
  EXPECT_LT(crypt.log().size(), 3000u);
  crypt.expectLogged({"InNumChars: 1048576"});
  crypt.textOf(true, &ClsCrypt::DecryptStringENCX, XString(std::string(1 << 20, 'A')));
  EXPECT_LT(crypt.log().size(), 3000u);
}

// Settings that mean less than they seem to

TEST(CryptEncryptTest, SaysWhereASettingSilentlyWeakens) {
  struct Row {
    const char* said;
    void (*set)(Encryption&);
    bool whenDecrypting;
  };
  const Row rows[] = {
      {"CryptAlgorithm was set to an unknown name",
       [](Encryption& c) { c->put_CryptAlgorithm(XString("serpent")); }, true},
      {"The mode is ECB", [](Encryption& c) { c->put_CipherModeX(XString("ctr")); }, false},
      {"The mode CFB is computed as CBC.", [](Encryption& c) { c->put_CipherMode(2); }, true},
      {"The secret key is shorter", [](Encryption& c) { c->put_SecretKey(bytes("short")); }, true},
      {"The secret key is longer", [](Encryption& c) { c->settings().keyLength = 128; }, true},
      {"The IV is shorter", [](Encryption& c) { c->put_IV(bytes("short")); }, true},
      {"This cipher is for old data only",
       [](Encryption& c) { c->put_CryptAlgorithm(XString("rc4")); }, false},
      {"This cipher is for old data only",
       [](Encryption& c) { c->put_CryptAlgorithm(XString("rc2")); }, false},
      {"This cipher is for old data only",
       [](Encryption& c) { c->put_CryptAlgorithm(XString("des")); }, false},
  };
  for (const Row& row : rows) {
    Encryption sound("aes"), weak("aes");
    for (Encryption* crypt : {&sound, &weak}) crypt->setKeyLength(256);
    row.set(weak);
    const std::string encrypted = weak.encrypt("text");
    weak.expectLogged({row.said});
    EXPECT_GT(weak.log().find(row.said), weak.log().find("algorithm:"));
    sound.encrypt("text");
    EXPECT_FALSE(sound.hasLogged(row.said));
    weak.decrypt(encrypted);
    EXPECT_EQ(weak.hasLogged(row.said), row.whenDecrypting) << row.said;
  }
}

TEST(CryptEncryptTest, SaysThatNoIvIsSetWhereTheModeTakesOne) {
  for (const auto& [mode, said] : {std::pair{0, true}, {1, false}, {2, true}}) {
    Crypt crypt;
    crypt->put_SecretKey(bytes(kKey.substr(16)));
    crypt->put_CipherMode(mode);
    crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes("text"));
    EXPECT_EQ(crypt.log().find("No IV is set") != std::string::npos, said) << mode;
  }
}

}  // namespace
}  // namespace zantrel::test
