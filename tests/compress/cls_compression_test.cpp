#include "compress/cls_compression.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>

#include "frame/progress_event.h"
#include "platform/file.h"
#include "support/component_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

std::string sample(std::size_t size) {
  std::mt19937 random(11);
  std::string text;
  while (text.size() < size) text += std::to_string(random() % 1000) + " words and numbers, ";
  text.resize(size);
  return text;
}

std::string algorithmAfter(const char* name) {
  ClsCompression compression;
  compression.put_Algorithm(XString(std::string_view(name)));
  XString stored;
  compression.get_Algorithm(stored);
  return stored.getUtf8();
}

// Deliberate: parts of names decide, and what is unknown is PPMd.
TEST(ClsCompressionTest, StoresAlgorithmsUnderTheirCanonicalNames) {
  const char* const kTable[][2] = {
      {"deflate", "deflate"}, {" DEFLATE\r\n", "deflate"},
      {"deflate64", "ppmd"},  {"BZip2", "bz2"},
      {"bz", "bz2"},          {"tar.bz2", "bz2"},
      {"None", "none"},       {"nonesuch", "none"},
      {"bznone", "bz2"},      {"lzw", "lzw"},
      {"LZ77", "lzw"},        {"nonelz", "none"},
      {"zlib", "ppmd"},       {"PPMD", "ppmd"},
      {"", "ppmd"},           {"gzip", "ppmd"},
  };
  for (const auto& row : kTable) EXPECT_EQ(algorithmAfter(row[0]), row[1]) << row[0];
  ClsCompression fresh;
  XString name;
  fresh.get_Algorithm(name);
  EXPECT_STREQ(name.getUtf8(), "ppmd");
}

class EveryAlgorithm : public testing::TestWithParam<const char*> {
 protected:
  EveryAlgorithm() { compression_.put_Algorithm(XString(std::string_view(GetParam()))); }
  bool streams() const { return GetParam() != "lzw"s; }

  ClsCompression compression_;
};

INSTANTIATE_TEST_SUITE_P(ClsCompressionTest, EveryAlgorithm,
                         testing::Values("none", "deflate", "bz2", "lzw", "ppmd"),
                         [](const auto& info) { return std::string(info.param); });

TEST_P(EveryAlgorithm, GivesBackBytesTextsAndFiles) {
  const TempFolder folder;
  for (const std::string& text : {""s, "Z\xC3\xBCrich"s, sample(200000)}) {
    DataBuffer packed, back;
    XString encoded, string;
    ASSERT_TRUE(compression_.CompressBytes(bytes(text), packed, nullptr)) << logOf(compression_);
    ASSERT_TRUE(compression_.DecompressBytes(packed, back, nullptr)) << logOf(compression_);
    EXPECT_TRUE(back.text() == text);
    if (text.size() > 1000 && GetParam() != "none"s) {
      EXPECT_LT(packed.getSize(), text.size() / 2);
    }

    ASSERT_TRUE(compression_.CompressBytesENC(bytes(text), encoded, nullptr));
    back.clear();
    ASSERT_TRUE(compression_.DecompressBytesENC(encoded, back, nullptr)) << logOf(compression_);
    EXPECT_TRUE(back.text() == text);

    compression_.settings().charset.setFromUtf8("utf-16");
    packed.clear();
    ASSERT_TRUE(compression_.CompressString(XString(text), packed, nullptr));
    ASSERT_TRUE(compression_.DecompressString(packed, string, nullptr)) << logOf(compression_);
    EXPECT_TRUE(string.utf8() == text);
    encoded.clear();
    string.clear();
    ASSERT_TRUE(compression_.CompressStringENC(XString(text), encoded, nullptr));
    ASSERT_TRUE(compression_.DecompressStringENC(encoded, string, nullptr));
    EXPECT_TRUE(string.utf8() == text);

    writeFile(folder / "in", text);
    ASSERT_TRUE(
        compression_.CompressFile(XString(folder / "in"), XString(folder / "packed"), nullptr))
        << logOf(compression_);
    ASSERT_TRUE(
        compression_.DecompressFile(XString(folder / "packed"), XString(folder / "out"), nullptr))
        << logOf(compression_);
    EXPECT_TRUE(readFile(folder / "out") == text);

    const XString same(folder / "out");
    ASSERT_TRUE(compression_.CompressFile(same, same, nullptr)) << logOf(compression_);
    EXPECT_TRUE(readFile(folder / "out") == readFile(folder / "packed"));
    ASSERT_TRUE(compression_.DecompressFile(same, same, nullptr)) << logOf(compression_);
    EXPECT_TRUE(readFile(folder / "out") == text);
  }
}

TEST_P(EveryAlgorithm, StreamsPiecesOfAnySize) {
  const std::string text = sample(30000);
  DataBuffer whole;
  if (!streams()) {
    EXPECT_FALSE(compression_.BeginCompressBytes(bytes(text), whole, nullptr));
    expectLogged(compression_, "LZW begin/more/end not implemented yet.");
    EXPECT_FALSE(compression_.BeginDecompressBytes(bytes(text), whole, nullptr));
    expectLogged(compression_, "LZW begin/more/end not implemented yet.");
    return;
  }
  for (const std::size_t piece : {1u, 7u, 1000u, 100000u}) {
    std::string packed, back;
    DataBuffer out;
    const auto take = [&](bool done, std::string& to) {
      EXPECT_TRUE(done) << logOf(compression_);
      to += out.text();
      out.clear();
    };
    take(compression_.BeginCompressBytes({}, out, nullptr), packed);
    for (std::size_t at = 0; at < text.size(); at += piece) {
      take(compression_.MoreCompressBytes(bytes(text.substr(at, piece)), out, nullptr), packed);
    }
    take(compression_.EndCompressBytes(out, nullptr), packed);
    take(compression_.BeginDecompressBytes(bytes(packed.substr(0, piece)), out, nullptr), back);
    for (std::size_t at = piece; at < packed.size(); at += piece) {
      take(compression_.MoreDecompressBytes(bytes(packed.substr(at, piece)), out, nullptr), back);
    }
    take(compression_.EndDecompressBytes(out, nullptr), back);
    EXPECT_TRUE(back == text) << piece;
  }
}

TEST_P(EveryAlgorithm, StopsAtTheLargestSizeThatIsAllowed) {
  const TempFolder folder;
  DataBuffer packed, out;
  ASSERT_TRUE(compression_.CompressBytes(bytes(std::string(100000, 'a')), packed, nullptr));
  writeFile(folder / "packed", packed.text());
  ASSERT_TRUE(compression_.put_MaxDecompressedSize(99999));
  EXPECT_FALSE(compression_.DecompressBytes(packed, out, nullptr));
  EXPECT_EQ(out.getSize(), 0u);
  EXPECT_FALSE(
      compression_.DecompressFile(XString(folder / "packed"), XString(folder / "out"), nullptr));
  EXPECT_FALSE(fileExists(folder / "out"));
  expectLogged(compression_, "The decompressed data are larger than the limit that was set.");
  ASSERT_TRUE(compression_.put_MaxDecompressedSize(100000));
  EXPECT_TRUE(compression_.DecompressBytes(packed, out, nullptr)) << logOf(compression_);
}

TEST_P(EveryAlgorithm, FailsWithoutOutputOnDataThatWereCut) {
  if (GetParam() == "none"s) return;
  const TempFolder folder;
  DataBuffer packed, out;
  ASSERT_TRUE(compression_.CompressBytes(bytes(sample(100000)), packed, nullptr));
  writeFile(folder / "old", "old");
  if (GetParam() != "lzw"s) {  // its format has no end
    packed.truncate(packed.getSize() / 2);
    EXPECT_FALSE(compression_.DecompressBytes(packed, out, nullptr));
    EXPECT_EQ(out.getSize(), 0u);
    writeFile(folder / "packed", packed.text());
    EXPECT_FALSE(
        compression_.DecompressFile(XString(folder / "packed"), XString(folder / "old"), nullptr));
  }
  EXPECT_FALSE(
      compression_.CompressFile(XString(folder / "none"), XString(folder / "old"), nullptr));
  EXPECT_EQ(readFile(folder / "old"), "old");
}

struct AbortingSink final : ProgressEvent {
  explicit AbortingSink(int calls) : left(calls) {}
  int left;
  bool aborted = false;
  void PercentDone(std::uint32_t, bool& abort) override { abort = aborted = --left < 0; }
};

TEST_P(EveryAlgorithm, LeavesNoPartialFileWhereverItIsAborted) {
  const TempFolder folder;
  writeFile(folder / "plain", sample(1000000));
  const XString plain(folder / "plain"), packed(folder / "packed"), out(folder / "out");
  ASSERT_TRUE(compression_.CompressFile(plain, packed, nullptr)) << logOf(compression_);
  int aborts = 0;
  for (const bool compress : {true, false}) {
    for (int calls = 0;; calls += 3) {
      AbortingSink sink(calls);
      const bool done = compress ? compression_.CompressFile(plain, out, &sink)
                                 : compression_.DecompressFile(packed, out, &sink);
      EXPECT_EQ(fileExists(folder / "out"), done);
      if (!sink.aborted) break;
      ++aborts;
      removeFile(folder / "out");
    }
    removeFile(folder / "out");
  }
  EXPECT_GT(aborts, 5);
}

TEST(ClsCompressionTest, MoreAndEndWithoutBeginFail) {
  for (const char* name : {"deflate", "bz2", "lzw", "ppmd"}) {
    ClsCompression compression;
    compression.put_Algorithm(XString(std::string_view(name)));
    DataBuffer out;
    XString text;
    EXPECT_FALSE(compression.MoreCompressBytes(bytes("x"), out, nullptr)) << name;
    EXPECT_FALSE(compression.EndCompressBytes(out, nullptr)) << name;
    EXPECT_FALSE(compression.MoreDecompressBytes(bytes("x"), out, nullptr)) << name;
    EXPECT_FALSE(compression.EndDecompressBytes(out, nullptr)) << name;
    EXPECT_FALSE(compression.EndDecompressString(text, nullptr)) << name;
  }
}

std::string oneEncoded(ClsCompression& compression, const std::string& text) {
  XString out;
  EXPECT_TRUE(compression.CompressBytesENC(bytes(text), out, nullptr));
  return out.getUtf8();
}

TEST(ClsCompressionTest, EncodedPiecesMakeOneTextThatMayBeCutAnywhere) {
  const std::string text = "\r\n \t=%41. " + sample(400) + "\xFF\r\n";
  ClsCompression compression;
  compression.put_Algorithm(XString("none"));  // pieces of every kind of byte
  for (const char* encoding : {"base64", "base32", "hex", "url", "qp", "uu", "ansi"}) {
    compression.put_EncodingMode(XString(std::string_view(encoding)));
    for (const std::size_t piece : {1u, 2u, 3u, 7u, 1000u}) {
      SCOPED_TRACE(encoding + std::to_string(piece));
      XString out;
      std::string encoded;
      EXPECT_TRUE(compression.BeginCompressBytesENC({}, out, nullptr));
      encoded += out.utf8();
      for (std::size_t at = 0; at < text.size(); at += piece) {
        out.clear();
        EXPECT_TRUE(compression.MoreCompressBytesENC(bytes(text.substr(at, piece)), out, nullptr));
        encoded += out.utf8();
      }
      out.clear();
      EXPECT_TRUE(compression.EndCompressBytesENC(out, nullptr));
      encoded += out.utf8();
      EXPECT_EQ(encoded, oneEncoded(compression, text));
      if (encoding == "ansi"s) continue;  // its characters may not be cut

      std::string back;
      DataBuffer decoded;
      EXPECT_TRUE(compression.BeginDecompressBytesENC(XString(), decoded, nullptr));
      for (std::size_t at = 0; at < encoded.size(); at += piece) {
        EXPECT_TRUE(compression.MoreDecompressBytesENC(XString(encoded.substr(at, piece)), decoded,
                                                       nullptr));
        back += decoded.text();
        decoded.clear();
      }
      EXPECT_TRUE(compression.EndDecompressBytesENC(decoded, nullptr));
      back += decoded.text();
      EXPECT_EQ(back, text);
    }
  }
}

TEST(ClsCompressionTest, TakesEncodedPiecesThatEachHaveTheirPadding) {
  ClsCompression compression;
  compression.put_Algorithm(XString("none"));
  DataBuffer out;
  EXPECT_TRUE(compression.BeginDecompressBytesENC(XString("YQ==\r\n"), out, nullptr));
  EXPECT_TRUE(compression.MoreDecompressBytesENC(XString("YmM=\r\nZ"), out, nullptr));
  EXPECT_TRUE(compression.MoreDecompressBytesENC(XString("A"), out, nullptr));
  EXPECT_TRUE(compression.EndDecompressBytesENC(out, nullptr));
  EXPECT_EQ(out.text(), "abcd");
}

TEST(ClsCompressionTest, StreamsOfTextKeepCharactersWholeAndBeginWithOneMark) {
  const std::string text = "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80 Z\xC3\xBCrich";
  ClsCompression compression;
  compression.put_Algorithm(XString("deflate"));
  compression.settings().charset.setFromUtf8("bom:utf-16");
  DataBuffer packed;
  EXPECT_TRUE(compression.BeginCompressString(XString(text), packed, nullptr));
  EXPECT_TRUE(compression.MoreCompressString(XString(text), packed, nullptr));
  EXPECT_TRUE(compression.EndCompressString(packed, nullptr));
  DataBuffer plain;
  ASSERT_TRUE(compression.DecompressBytes(packed, plain, nullptr));
  EXPECT_EQ(plain.text().substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(plain.text().find("\xFF\xFE", 2), std::string::npos);

  XString back;
  const std::string data(packed.text());
  EXPECT_TRUE(compression.BeginDecompressString(bytes(data.substr(0, 1)), back, nullptr));
  for (std::size_t at = 1; at < data.size(); ++at) {
    EXPECT_TRUE(compression.MoreDecompressString(bytes(data.substr(at, 1)), back, nullptr));
  }
  EXPECT_TRUE(compression.EndDecompressString(back, nullptr));
  EXPECT_EQ(back.utf8(), text + text);

  XString encoded, again;
  EXPECT_TRUE(compression.BeginCompressStringENC(XString(text), encoded, nullptr));
  XString rest;
  EXPECT_TRUE(compression.EndCompressStringENC(rest, nullptr));
  encoded.append(rest);
  EXPECT_TRUE(compression.BeginDecompressStringENC(encoded, again, nullptr));
  XString last;
  EXPECT_TRUE(compression.EndDecompressStringENC(last, nullptr));
  EXPECT_EQ(std::string(again.utf8()) + std::string(last.utf8()), text);
}

TEST(ClsCompressionTest, SaysWhatACharsetCannotHold) {
  ClsCompression compression;
  compression.put_Algorithm(XString("none"));
  compression.settings().charset.setFromUtf8("us-ascii");
  DataBuffer out;
  XString text;
  EXPECT_FALSE(compression.CompressString(XString("\xC3\xA9"), out, nullptr));
  expectLogged(compression, "Character encoding conversion failed.");
  EXPECT_EQ(out.getSize(), 0u);
  compression.settings().charset.setFromUtf8("utf-8");
  EXPECT_TRUE(compression.DecompressString(bytes("a\xFF"), text, nullptr));
  EXPECT_STREQ(text.getUtf8(), "a\xEF\xBF\xBD");
  expectLogged(compression, "Some of the expanded bytes are not valid in the charset.");
  compression.settings().charset.setFromUtf8("martian");
  text.clear();
  EXPECT_FALSE(compression.DecompressString(bytes("a"), text, nullptr));
  expectLogged(compression, "Unknown charset.");
}

TEST(ClsCompressionTest, RefusesLevelsAndSizesThatDoNotExist) {
  ClsCompression compression;
  EXPECT_FALSE(compression.put_DeflateLevel(10));
  EXPECT_FALSE(compression.put_DeflateLevel(-1));
  EXPECT_FALSE(compression.put_MaxDecompressedSize(-1));
  EXPECT_EQ(compression.settings().deflateLevel, 6);
  compression.put_Algorithm(XString("deflate"));
  DataBuffer fast, small;
  ASSERT_TRUE(compression.put_DeflateLevel(0));
  ASSERT_TRUE(compression.CompressBytes(bytes(sample(50000)), fast, nullptr));
  ASSERT_TRUE(compression.put_DeflateLevel(9));
  ASSERT_TRUE(compression.CompressBytes(bytes(sample(50000)), small, nullptr));
  EXPECT_GT(fast.getSize(), 50000u);
  EXPECT_LT(small.getSize(), 25000u);
}

TEST(ClsCompressionTest, ServesSeveralThreadsAtOnce) {
  ClsCompression compression;
  compression.put_Algorithm(XString("deflate"));
  const std::string text = sample(20000);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 10; ++round) {
        DataBuffer packed, back;
        EXPECT_TRUE(compression.CompressBytes(bytes(text), packed, nullptr));
        EXPECT_TRUE(compression.DecompressBytes(packed, back, nullptr));
        EXPECT_TRUE(back.text() == text);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace zantrel::test
