// Digests and authentication codes of the component.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "crypt2/crypt_fixture.h"
#include "frame/progress_event.h"

namespace zantrel::test {
namespace {

/// Chooses an algorithm by its name in the vector tables: "sha256", "haval192,4".
void choose(Crypt& crypt, const std::string& name) {
  crypt.setHash(name.substr(0, name.starts_with("haval") ? 5 : std::string::npos));
  if (!name.starts_with("haval")) return;
  crypt->settings().keyLength = std::stoi(name.substr(5, 3));
  crypt->put_HavalRounds(std::stoi(name.substr(9)));
}

std::string inPieces(Crypt& crypt, std::string_view data, std::size_t piece) {
  EXPECT_TRUE(crypt->HashBeginBytes(bytes(data.substr(0, piece))));
  for (std::size_t at = piece; at < data.size(); at += piece)
    EXPECT_TRUE(crypt->HashMoreBytes(bytes(data.substr(at, piece))));
  return hex(crypt.bytesOf(true, &ClsCrypt::HashFinalX));
}

std::string ofFile(Crypt& crypt, std::string_view data) {
  const TempFolder folder;
  writeFile(folder / "data", data);
  DataBuffer digest;
  EXPECT_TRUE(crypt->HashFileX(XString(folder / "data"), digest, nullptr)) << crypt.log();
  return hex(digest.text());
}

TEST(CryptHashTest, PublishedValuesInOnePieceInSeveralAndFromFiles) {
  std::string last;
  for (const auto& row : readTable(ZANTREL_TEST_DATA "/crypto/digests.tsv")) {
    std::string message;
    for (int i = std::stoi(row[2]); i > 0; --i) message += row[1];
    Crypt crypt;
    choose(crypt, row[0]);
    EXPECT_EQ(crypt.hash(message), row[3]) << row[0];
    EXPECT_EQ(inPieces(crypt, message, 61), row[3]) << row[0];
    if (row[0] == last) continue;  // one file for each algorithm
    EXPECT_EQ(ofFile(crypt, message), row[3]) << row[0];
    last = row[0];
  }
}

TEST(CryptHashTest, TheKeyLengthOfTheMomentChoosesTheSizeOfHaval) {
  Crypt crypt;
  crypt.setHash("haval");
  const std::pair<int, std::size_t> cases[] = {{128, 16}, {159, 16}, {160, 20},  {191, 20},
                                               {200, 24}, {224, 28}, {1000, 32}, {-1, 16}};
  for (const auto& [keyLength, size] : cases) {
    crypt->settings().keyLength = keyLength;
    EXPECT_EQ(crypt.hash("abc").size(), 2 * size) << keyLength;
  }
  crypt->settings().keyLength = 256;
  EXPECT_TRUE(crypt->HashBeginBytes(bytes("abc")));
  crypt->settings().keyLength = 128;
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::HashFinalX).size(), 32U);
}

TEST(CryptHashTest, TextsAreHashedInTheirCharset) {
  Crypt crypt;
  crypt->put_EncodingMode(XString("hex"));
  const XString text("gr\xC3\xBCn");
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::HashStringX, text)), crypt.hash("gr\xC3\xBCn"));
  crypt->settings().charset.setFromUtf8("utf-16le");
  const std::string wide("g\0r\0\xFC\0n\0", 8);
  std::string expected = crypt.hash(wide);
  std::transform(expected.begin(), expected.end(), expected.begin(),
                 [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::HashStringENCX, text), expected);
}

TEST(CryptHashTest, FailsWithTheWordsOfTheFrameForTextThatTheCharsetLacks) {
  Crypt crypt;
  crypt->settings().charset.setFromUtf8("iso-8859-1");
  const XString text("10 \xE2\x82\xAC \xD0\x96");
  EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::HashStringX, text), "");
  crypt.expectLogged({"HashString:", "Character encoding conversion failed.", "Charset: 28591",
                      "Set the Charset property equal to an appropriate charset", "Failed."});
  crypt->settings().charset.setFromUtf8("no-such");
  EXPECT_EQ(crypt.textOf(false, &ClsCrypt::HashStringENCX, text), "");
  crypt.expectLogged({"Unknown charset.", "no-such"});
}

TEST(CryptHashTest, ResultsAreEncodedInEncodingMode) {
  Crypt crypt;
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::HashBytesENCX, bytes("abc")),
            "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
  crypt->put_EncodingMode(XString("HEX"));
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::HashBytesENCX, bytes("abc")),
            "A9993E364706816ABA3E25717850C26C9CD0D89D");
  crypt->put_EncodingMode(XString("html"));
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::HashBytesENCX, bytes("abc")), "");
  crypt.expectLogged({"The encoding html encodes nothing: the result is empty.", "Success."});
}

// Digests in pieces

TEST(CryptHashTest, FinalWithoutBeginIsEmptyAndNoError) {
  Crypt crypt;
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::HashFinalX), "");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::HashFinalENCX), "");
  EXPECT_TRUE(crypt->HashMoreBytes(bytes("lost")));
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::HashFinalX), "");
  crypt.expectLogged({"No digest of this HashAlgorithm is under way: begin one first."});
}

TEST(CryptHashTest, EachFamilyHasADigestUnderWayOfItsOwn) {
  Crypt crypt;
  for (const char* name : {"sha1", "md5", "ripemd160"}) {
    crypt.setHash(name);
    EXPECT_TRUE(crypt->HashBeginString(XString("a")));
  }
  for (const char* name : {"sha1", "md5", "ripemd160"}) {
    crypt.setHash(name);
    EXPECT_TRUE(crypt->HashMoreString(XString("bc")));
    const std::string expected = crypt.hash("abc");
    EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::HashFinalX)), expected) << name;
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::HashFinalX), "") << "ends once";
  }
}

TEST(CryptHashTest, TheVariantOfSha2ThatWasBegunDecidesTheDigest) {
  Crypt crypt;
  crypt.setHash("sha512");
  const std::string expected = crypt.hash("abc");
  EXPECT_TRUE(crypt->HashBeginBytes(bytes("a")));
  crypt.setHash("sha256");
  EXPECT_TRUE(crypt->HashMoreBytes(bytes("bc")));
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::HashFinalX)), expected);
}

TEST(CryptHashTest, BeginStartsOverAlsoWhenItsTextCannotBeConverted) {
  Crypt crypt;
  EXPECT_TRUE(crypt->HashBeginBytes(bytes("dropped")));
  EXPECT_TRUE(crypt->HashBeginBytes(bytes("abc")));
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::HashFinalX)), crypt.hash("abc"));
  EXPECT_TRUE(crypt->HashBeginBytes(bytes("dropped")));
  crypt->settings().charset.setFromUtf8("us-ascii");
  EXPECT_FALSE(crypt->HashBeginString(XString("\xC3\xA4")));
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::HashFinalX), "");
}

// Files

/// Counts the questions whether to stop, and answers yes to one of them.
class Stopper final : public ProgressEvent {
 public:
  explicit Stopper(int at) : at_(at) {}
  void PercentDone(std::uint32_t percent, bool& abort) override {
    percents.push_back(percent);
    abort = ++asked == at_;
  }
  int asked = 0;
  std::vector<std::uint32_t> percents;

 private:
  int at_;
};

TEST(CryptHashTest, AnAbortAtAnyBlockFailsWithoutADigest) {
  const std::pair<const char*, const char*> cases[] = {
      {"sha1", "Hashing aborted by application"},
      {"md2", "Hashing aborted by application"},
      {"md4", "Digest MD4 aborted by application"},
      {"md5", "Digest MD5 aborted by application"},
      {"sha256", "Digest SHA-256 aborted by application"},
      {"sha384", "Digest SHA-384 aborted by application"},
      {"sha512", "Digest SHA-512 aborted by application"},
      {"ripemd128", "Digest RIPEMD-128 aborted by application"},
      {"ripemd160", "Digest RIPEMD-160 aborted by application"},
      {"ripemd256", "Digest RIPEMD-256 aborted by application"},
      {"ripemd320", "Digest RIPEMD-320 aborted by application"},
      {"haval", "Digest HAVAL aborted by application"},
  };
  const TempFolder folder;
  writeFile(folder / "data", std::string(60001, 'x'));  // three blocks of 20,000 bytes and one more
  for (const auto& [name, sentence] : cases) {
    for (const int at : {1, 2, 3}) {
      Crypt crypt;
      crypt.setHash(name);
      Stopper stopper(at);
      DataBuffer digest;
      EXPECT_FALSE(crypt->HashFileX(XString(folder / "data"), digest, &stopper));
      EXPECT_EQ(digest.getSize(), 0U);
      EXPECT_EQ(stopper.asked, at);
      crypt.expectLogged({"HashFile:", "filename: ", sentence, "Failed."});
    }
  }
}

TEST(CryptHashTest, FilesReportTheirProgressInBlocksOf20000Bytes) {
  const TempFolder folder;
  writeFile(folder / "data", std::string(100000, 'x'));
  Crypt crypt;
  Stopper never(0);
  XString digest;
  EXPECT_TRUE(crypt->HashFileENCX(XString(folder / "data"), digest, &never));
  EXPECT_EQ(never.percents, (std::vector<std::uint32_t>{20, 40, 60, 80, 100}));
}

TEST(CryptHashTest, AFileThatCannotBeReadFailsAndIsNamed) {
  const TempFolder folder;
  for (const std::string& path : {folder / "missing", folder.path(), std::string()}) {
    Crypt crypt;
    DataBuffer digest;
    EXPECT_FALSE(crypt->HashFileX(XString(path), digest, nullptr));
    crypt.expectLogged({"HashFile:", "filename", path, "Failed."});
  }
}

// Authentication codes

TEST(CryptHashTest, HmacsArePublishedValues) {
  int checked = 0;
  for (const auto& row : readTable(ZANTREL_TEST_DATA "/crypto/hmac.tsv")) {
    if (row[0] == "sha384") continue;  // see the rule below
    Crypt crypt;
    crypt.setHash(row[0]);
    EXPECT_EQ(crypt.hmac(unhex(row[1]), unhex(row[2])), row[3]) << row[0];
    ++checked;
  }
  EXPECT_GT(checked, 20);
}

TEST(CryptHashTest, HmacSha384DeliberatelyPadsTo64Bytes) {
  Crypt crypt;
  crypt.setHash("sha384");
  // What RFC 2104 gives with SHA-384 when its block is taken for 64 bytes, step by step.
  const auto padded = [](char with) {
    std::string pad = "Jefe" + std::string(60, '\0');
    for (char& c : pad) c = static_cast<char>(c ^ with);
    return pad;
  };
  const std::string data = "what do ya want for nothing?";
  const std::string inner = unhex(crypt.hash(padded(0x36) + data));
  const std::string expected = crypt.hash(padded(0x5C) + inner);
  EXPECT_EQ(crypt.hmac("Jefe", data), expected);
  EXPECT_NE(expected.substr(0, 16), "af45d2e376484031") << "RFC 4231, test case 2";
}

TEST(CryptHashTest, HmacWithAnIdThatItDoesNotKnowDeliberatelyMeansSha1AndSaysSo) {
  Crypt crypt;
  const std::string sha1 = crypt.hmac("key", "data");
  for (const char* name : {"md4", "haval", "ripemd128", "ripemd160", "ripemd256", "ripemd320"}) {
    crypt.setHash(name);
    EXPECT_EQ(crypt.hmac("key", "data"), sha1) << name;
    crypt.expectLogged({"HMAC does not know this HashAlgorithm: it was computed with SHA-1."});
  }
  crypt.setHash("md5");
  EXPECT_NE(crypt.hmac("key", "data"), sha1);
  EXPECT_EQ(crypt.log().find("does not know"), std::string::npos);
}

TEST(CryptHashTest, KeysLongerThanTheBlockAreHashedFirst) {
  Crypt crypt;
  const std::string key(65, 'k');
  EXPECT_EQ(crypt.hmac(key, "data"), crypt.hmac(unhex(crypt.hash(key)), "data"));
  crypt.setHash("sha512");
  EXPECT_NE(crypt.hmac(key, "data"), crypt.hmac(unhex(crypt.hash(key)), "data"));
}

TEST(CryptHashTest, TheKeyComesAsBytesTextOrEncodedAndStaysUntilItIsReplaced) {
  Crypt crypt;
  crypt.setHash("sha256");
  const std::string expected = crypt.hmac("J\xC3\xA4", "data");
  EXPECT_TRUE(crypt->SetHmacKeyBytes(bytes("another")));
  EXPECT_TRUE(crypt->SetHmacKeyString(XString("J\xC3\xA4")));
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::HmacStringX, XString("data"))), expected);
  EXPECT_TRUE(crypt->SetHmacKeyEncoded(XString("4ac3a4"), XString("hex")));
  crypt->put_EncodingMode(XString("hex"));
  EXPECT_EQ(hex(unhex(crypt.textOf(true, &ClsCrypt::HmacBytesENCX, bytes("data")))), expected);
  EXPECT_EQ(hex(unhex(crypt.textOf(true, &ClsCrypt::HmacStringENCX, XString("data")))), expected);
  crypt->settings().charset.setFromUtf8("us-ascii");
  EXPECT_FALSE(crypt->SetHmacKeyString(XString("\xC3\xA4")));
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::HmacBytesX, bytes("data"))), expected);
}

TEST(CryptHashTest, FixedDigestsIgnoreHashAlgorithm) {
  Crypt crypt;
  crypt.setHash("sha512");
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::CalcSha1HashX, bytes("abc"))),
            "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::CalcDigestMD5StrX, XString("abc"))),
            "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(hex(crypt.bytesOf(true, &ClsCrypt::CalcMd2HashStrX, XString("abc"))),
            "da853b0d3f88d99b30283a69e6ded6bb");
}

}  // namespace
}  // namespace zantrel::test
