#include "compress/cls_gzip.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include "compress/gzip_members.h"
#include "compress/tar_archives.h"
#include "core/encode/cls_encode.h"
#include "frame/progress_event.h"
#include "platform/file_tree.h"
#include "platform/local_time.h"
#include "support/component_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

std::string compressed(ClsGzip& gzip, std::string_view text) {
  DataBuffer out;
  EXPECT_TRUE(gzip.CompressMemory(bytes(text), out, nullptr)) << logOf(gzip);
  return std::string(out.text());
}

std::string expanded(ClsGzip& gzip, std::string_view data) {
  DataBuffer out;
  EXPECT_TRUE(gzip.UncompressMemory(bytes(data), out, nullptr)) << logOf(gzip);
  return std::string(out.text());
}

/// Text that compresses to about a third.
std::string sample(std::size_t size) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < size) text += std::to_string(random() % 1000) + " words and numbers, ";
  text.resize(size);
  return text;
}

class FixedClock final : public Clock {
 public:
  std::uint32_t tickCountMs() const override { return 0; }
  SystemTime utcTime() const override { return {2001, 9, 0, 9, 1, 46, 40, 0}; }
  SystemTime localTime() const override { return utcTime(); }
  int utcOffsetMinutes() const override { return 0; }
};

TEST(ClsGzipTest, WritesTheHeaderThatTheSettingsAskFor) {
  ClsGzip gzip;
  EXPECT_EQ(compressed(gzip, "x").substr(0, 10), "\x1F\x8B\x08\0\0\0\0\0\0\x0B"s);
  expectLogged(gzip, "Not including file last-mod time in Gzip");
  gzip.settings().filename.setFromUtf8("n\xC3\xA4me");
  gzip.settings().comment.setFromUtf8("comment");
  gzip.settings().extraData.append("ex"s);
  const FixedClock fixed;
  const ScopedClock clock(fixed);
  gzip.settings().useCurrentDate = true;
  const std::string out = compressed(gzip, "x");
  const std::string header =
      "\x1F\x8B\x08\x08"s + littleEndian(1000000000, 4) + "\0\x0B\2\0exn\xC3\xA4me\0comment\0"s;
  EXPECT_EQ(out.substr(0, header.size()), header);
  EXPECT_EQ(out.substr(out.size() - 8), gzipTrailer("x"));
  EXPECT_EQ(expanded(gzip, out), "x");
}

// Deliberate: the flags of the comment and of extra data are never set.
TEST(ClsGzipTest, SetsNoFlagForACommentButReadsItBack) {
  ClsGzip gzip;
  gzip.settings().comment.setFromUtf8("what this is");
  for (const std::string& text : {""s, "x"s, sample(500000)}) {
    const std::string out = compressed(gzip, text);
    EXPECT_EQ(out[3], '\0');
    ClsGzip other;
    EXPECT_TRUE(expanded(other, out) == text);
    ASSERT_TRUE(other.ExamineMemory(bytes(out), nullptr)) << logOf(other);
    EXPECT_STREQ(other.settings().comment.getUtf8(), "what this is");
  }
}

TEST(ClsGzipTest, TakesTheTimeOfTheFileUnlessAnotherIsSet) {
  const TempFolder folder;
  writeFile(folder / "in", "content");
  ASSERT_EQ(setFileTime(folder / "in", 1234567890), 0u);
  ClsGzip gzip;
  DataBuffer out;
  const auto time = [&] {
    out.clear();
    EXPECT_TRUE(gzip.CompressFileToMem(XString(folder / "in"), out, nullptr));
    return std::string(out.text().substr(4, 4));
  };
  EXPECT_EQ(time(), littleEndian(1234567890, 4));
  const SystemTime local = localFromSeconds(1000000000);
  EXPECT_TRUE(gzip.put_LocalLastMod(local));
  EXPECT_EQ(time(), littleEndian(1000000000, 4));
  EXPECT_FALSE(gzip.put_LocalLastMod({2023, 2, 0, 29, 0, 0, 0, 0}));
  EXPECT_EQ(time(), littleEndian(1000000000, 4));
  ClsGzip reader;
  ASSERT_TRUE(reader.ExamineMemory(out, nullptr));
  SystemTime read;
  reader.get_LocalLastMod(read);
  EXPECT_EQ(secondsFromLocal(read), 1000000000);
  EXPECT_TRUE(gzip.put_LocalLastMod({}));
  EXPECT_EQ(time(), littleEndian(1234567890, 4));
#if !defined(_WIN32)  // where files have no times before 1970 by the standard library
  ASSERT_EQ(setFileTime(folder / "in", -5), 0u);
  EXPECT_EQ(time(), "\0\0\0\0"s);
#endif
}

TEST(ClsGzipTest, GoesFromEachOfMemoryFileAndStringToEach) {
  const TempFolder folder;
  const std::string text = "Z\xC3\xBCrich " + sample(100000);
  ClsGzip gzip;
  const XString in(folder / "in"), packed(folder / "packed"), out(folder / "out");
  writeFile(folder / "in", text);
  DataBuffer memory, back;
  XString string;

  ASSERT_TRUE(gzip.CompressFile(in, packed, nullptr)) << logOf(gzip);
  ASSERT_TRUE(gzip.UncompressFile(packed, out, nullptr)) << logOf(gzip);
  EXPECT_TRUE(readFile(folder / "out") == text);
  ASSERT_TRUE(gzip.UncompressFileToMem(packed, back, nullptr));
  EXPECT_TRUE(back.text() == text);
  ASSERT_TRUE(gzip.UncompressFileToString(packed, XString("utf-8"), string, nullptr));
  EXPECT_TRUE(string.utf8() == text);

  ASSERT_TRUE(gzip.CompressFile2(in, XString("inner"), packed, nullptr));
  ASSERT_TRUE(gzip.ExamineFile(packed, nullptr));
  EXPECT_STREQ(gzip.settings().filename.getUtf8(), "inner");

  ASSERT_TRUE(gzip.CompressFile(out, out, nullptr)) << logOf(gzip);
  ASSERT_TRUE(gzip.UncompressFile(out, out, nullptr)) << logOf(gzip);
  EXPECT_TRUE(readFile(folder / "out") == text);

  ASSERT_TRUE(gzip.CompressFileToMem(in, memory, nullptr));
  ASSERT_TRUE(gzip.UncompressMemToFile(memory, out, nullptr));
  EXPECT_TRUE(readFile(folder / "out") == text);

  memory.clear();
  string.clear();
  ASSERT_TRUE(gzip.CompressString(XString(text), XString("windows-1252"), memory, nullptr));
  EXPECT_EQ(expanded(gzip, memory.text()).substr(0, 6), "Z\xFCrich");
  ASSERT_TRUE(gzip.UncompressString(memory, XString("windows-1252"), string, nullptr));
  EXPECT_TRUE(string.utf8() == text);
  ASSERT_TRUE(gzip.CompressStringToFile(XString(text), XString(), packed, nullptr));
  string.clear();
  ASSERT_TRUE(gzip.UncompressFileToString(packed, XString(), string, nullptr));
  EXPECT_TRUE(string.utf8() == text);
}

TEST(ClsGzipTest, CompressesAtEveryLevelAndRefusesOthers) {
  const std::string text = sample(200000);
  ClsGzip gzip;
  std::size_t stored = 0;
  for (int level = 0; level <= 9; ++level) {
    ASSERT_TRUE(gzip.put_DeflateLevel(level));
    const std::string out = compressed(gzip, text);
    EXPECT_TRUE(expanded(gzip, out) == text) << level;
    if (level == 0) stored = out.size();
    EXPECT_EQ(out.size() < stored, level > 0);
  }
  EXPECT_FALSE(gzip.put_DeflateLevel(10));
  EXPECT_FALSE(gzip.put_DeflateLevel(-1));
  EXPECT_EQ(gzip.settings().deflateLevel, 9);
}

TEST(ClsGzipTest, GivesNothingAndNoFileAfterAFailure) {
  const TempFolder folder;
  std::string damaged = gzipMember(sample(300000));
  damaged[damaged.size() - 8] ^= 1;
  writeFile(folder / "in", damaged);
  writeFile(folder / "old", "old");
  ClsGzip gzip;
  DataBuffer out;
  XString text;
  const XString in(folder / "in");
  EXPECT_FALSE(gzip.UncompressMemory(bytes(damaged), out, nullptr));
  EXPECT_EQ(out.getSize(), 0u);
  EXPECT_FALSE(gzip.UncompressFileToMem(in, out, nullptr));
  EXPECT_EQ(out.getSize(), 0u);
  EXPECT_FALSE(gzip.UncompressFileToString(in, XString(), text, nullptr));
  EXPECT_TRUE(text.isEmpty());
  EXPECT_FALSE(gzip.UncompressFile(in, XString(folder / "new"), nullptr));
  EXPECT_FALSE(gzip.UncompressFile(in, XString(folder / "old"), nullptr));
  EXPECT_FALSE(gzip.CompressFile(XString(folder / "none"), XString(folder / "new"), nullptr));
  EXPECT_FALSE(gzip.CompressString(XString("\xE2\x82\xAC"), XString("us-ascii"), out, nullptr));
  EXPECT_FALSE(gzip.CompressString(XString("x"), XString("martian"), out, nullptr));
  EXPECT_EQ(out.getSize(), 0u);
  EXPECT_FALSE(fileExists(folder / "new"));
  EXPECT_EQ(readFile(folder / "old"), "old");
}

TEST(ClsGzipTest, StopsAtTheLargestSizeThatIsAllowed) {
  const TempFolder folder;
  ClsGzip gzip;
  const std::string bomb = compressed(gzip, std::string(10000000, '\0'));
  EXPECT_FALSE(gzip.put_MaxDecompressedSize(-1));
  ASSERT_TRUE(gzip.put_MaxDecompressedSize(9999999));
  DataBuffer out;
  EXPECT_FALSE(gzip.UncompressMemory(bytes(bomb), out, nullptr));
  EXPECT_LT(out.capacity(), 100000000u);
  EXPECT_FALSE(gzip.UncompressMemToFile(bytes(bomb), XString(folder / "out"), nullptr));
  expectLogged(gzip, "The decompressed data are larger than the limit that was set.");
  EXPECT_FALSE(fileExists(folder / "out"));
  ASSERT_TRUE(gzip.put_MaxDecompressedSize(10000000));
  EXPECT_EQ(expanded(gzip, bomb).size(), 10000000u);
}

/// Aborts at its n-th question.
struct AbortingSink final : ProgressEvent {
  explicit AbortingSink(int calls) : left(calls) {}
  int left;
  bool aborted = false;
  std::int64_t uncompressedSize = -1;
  void PercentDone(std::uint32_t, bool& abort) override { abort = aborted = --left < 0; }
  void ProgressInfo(const char* name, const char* value) override {
    if (name == "uncompressedSize"s) uncompressedSize = std::stoll(value);
  }
};

TEST(ClsGzipTest, LeavesNoPartialFileWhereverItIsAborted) {
  const TempFolder folder;
  const std::string text = sample(1000000);
  writeFile(folder / "plain", text);
  ClsGzip gzip;
  ASSERT_TRUE(gzip.CompressFile(XString(folder / "plain"), XString(folder / "packed"), nullptr));
  const XString out(folder / "out");
  int aborts = 0;
  for (const bool compress : {true, false}) {
    for (int calls = 0;; ++calls) {
      AbortingSink sink(calls);
      const bool done = compress ? gzip.CompressFile(XString(folder / "plain"), out, &sink)
                                 : gzip.UncompressFile(XString(folder / "packed"), out, &sink);
      // A file that is complete when the last question is answered stays.
      if (!sink.aborted) {
        EXPECT_TRUE(done);
        break;
      }
      ++aborts;
      EXPECT_EQ(fileExists(folder / "out"), done);
      removeFile(folder / "out");
    }
    removeFile(folder / "out");
  }
  EXPECT_GT(aborts, 30);
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    ++files;
  }
  EXPECT_EQ(files, 2u);
}

TEST(ClsGzipTest, ExaminationTellsHeadersSizesAndMembers) {
  ClsGzip gzip;
  AbortingSink sink(1000);
  EXPECT_TRUE(gzip.ExamineMemory(bytes(gzipMember("hello", 31) + gzipMember("you")), &sink));
  EXPECT_EQ(sink.uncompressedSize, 8);
  EXPECT_STREQ(gzip.settings().filename.getUtf8(), "name.txt");
  EXPECT_STREQ(gzip.settings().comment.getUtf8(), "a comment");
  EXPECT_EQ(gzip.settings().extraData.text(), "extra");
  for (const char* part : {"gzipHeader:", "filename: name.txt", "comment: a comment",
                           "extraDataSize: 5", "uncompressedSize: 3", "numMembers: 2"}) {
    expectLogged(gzip, part);
  }
  std::string latin = gzipFixedHeader(8) + "caf\xE9\0"s + storedDeflate("") + gzipTrailer("");
  EXPECT_TRUE(gzip.ExamineMemory(bytes(latin), nullptr));
  EXPECT_STREQ(gzip.settings().filename.getUtf8(), "caf\xC3\xA9");
  EXPECT_FALSE(gzip.ExamineMemory(bytes("no gzip data"), nullptr));
}

TEST(ClsGzipTest, DeflatesTextsToEncodedText) {
  ClsGzip gzip;
  const XString original("Gr\xC3\xBC\xC3\x9F Gott, gr\xC3\xBC\xC3\x9F Gott");
  for (const char* encoding : {"base64", "hex", "url", "base32", "uu"}) {
    for (const char* charset : {"", "utf-16", "iso-8859-1"}) {
      XString text, back;
      ASSERT_TRUE(gzip.DeflateStringENC(original, XString(charset), XString(encoding), text));
      ASSERT_TRUE(gzip.InflateStringENC(text, XString(charset), XString(encoding), back))
          << encoding << logOf(gzip);
      EXPECT_EQ(back.utf8(), original.utf8()) << encoding;
    }
  }
  // A stored block, made by hand.
  XString back;
  ASSERT_TRUE(gzip.InflateStringENC(XString("010200FDFF6869"), XString(), XString("hex"), back));
  EXPECT_STREQ(back.getUtf8(), "hi");
  EXPECT_FALSE(gzip.InflateStringENC(XString("0102"), XString(), XString("hex"), back));
  expectLogged(gzip, "Deflated data ended prematurely.");
}

TEST(ClsGzipTest, UnpacksArchivesAndPrefixesItsSentences) {
  const TempFolder folder;
  ClsGzip gzip;
  writeFile(folder / "good.tgz",
            compressed(gzip, tarMember({"a/b.txt", '0', "content"}) + kTarEnd));
  writeFile(folder / "bad.tgz", compressed(gzip, tarMember({"../b.txt", '0', "content"})));
  writeFile(folder / "none.tgz", "");
  const XString out(folder / "deep/out");
  ASSERT_TRUE(gzip.UnTarGz(XString(folder / "good.tgz"), out, nullptr)) << logOf(gzip);
  EXPECT_EQ(readFile(folder / "deep/out/a/b.txt"), "content");
  expectLogged(gzip, "(unTarGz) GZip header OK.");
  EXPECT_FALSE(gzip.UnTarGz(XString(folder / "bad.tgz"), out, nullptr));
  expectLogged(gzip, "(unTarGz) An entry whose name leads elsewhere is refused.");
  EXPECT_FALSE(gzip.UnTarGz(XString(folder / "none.tgz"), out, nullptr));
  expectLogged(gzip, "(unTarGz) Failed to get gzip signature");
}

TEST(ClsGzipTest, ExpandsXfdlForms) {
  ClsGzip gzip;
  XString xml, base64;
  const std::string form = "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\xE9</a>";
  const std::string head = "application/vnd.xfdl; content-encoding=\"base64-gzip\"\r\n";
  ClsEncode().Encode(bytes(gzipMember(form)), XString("base64"), base64, false);
  ASSERT_TRUE(gzip.XfdlToXml(XString(head + base64.getUtf8()), xml)) << logOf(gzip);
  EXPECT_EQ(xml.utf8(), "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a>\xC3\xA9</a>");
  ASSERT_TRUE(gzip.XfdlToXml(XString("\xEF\xBB\xBF <XFDL/>"), xml));
  xml.clear();
  for (const std::string& bad :
       {""s, "text"s, head, head + "AAAA", "text/plain\n"s + base64.getUtf8()}) {
    EXPECT_FALSE(gzip.XfdlToXml(XString(bad), xml)) << bad;
    EXPECT_TRUE(xml.isEmpty());
  }
}

TEST(ClsGzipTest, ServesSeveralThreadsAtOnce) {
  ClsGzip gzip;
  const std::string text = sample(20000);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 10; ++round) {
        DataBuffer packed, back;
        EXPECT_TRUE(gzip.CompressMemory(bytes(text), packed, nullptr));
        EXPECT_TRUE(gzip.UncompressMemory(packed, back, nullptr));
        EXPECT_TRUE(back.text() == text);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace zantrel::test
