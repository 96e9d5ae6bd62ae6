#include <zantrel/zantrel.h>

#include <gmock/gmock.h>

#include <filesystem>

#include "support/test_data.h"

namespace Zantrel {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using zantrel::test::readFile;
using zantrel::test::TempFolder;
using zantrel::test::writeFile;

Charset converter(Text from, Text to) {
  Charset charset;
  charset.put_FromCharset(from);
  charset.put_ToCharset(to);
  return charset;
}

TEST(CharsetTest, ConvertsFromEveryKindOfText) {
  Charset charset = converter("utf-8", "windows-1252");
  const Bytes expected{'g', 'r', 0xFC, 'n'};
  const std::string utf8 = "gr\xC3\xBCn";
  const std::u16string utf16 = u"gr\u00FCn";
  const std::u8string typed = u8"gr\u00FCn";
  Bytes out;
  const auto converts = [&](Text text) {
    return charset.ConvertFromUnicode(text, out) && out == expected;
  };
  EXPECT_TRUE(converts(utf8));
  EXPECT_TRUE(converts(utf8.c_str()));
  EXPECT_TRUE(converts(std::string_view(utf8)));
  EXPECT_TRUE(converts(utf16));
  EXPECT_TRUE(converts(utf16.c_str()));
  EXPECT_TRUE(converts(std::u16string_view(utf16)));
  EXPECT_TRUE(converts(typed));
  EXPECT_TRUE(converts(u8"gr\u00FCn"));
  EXPECT_TRUE(charset.ConvertFromUnicode(static_cast<const char*>(nullptr), out));
  EXPECT_TRUE(out.empty());
}

TEST(CharsetTest, AnUnknownCharsetIsNamedInTheLog) {
  Charset charset = converter("utf-8", "x-klingon");
  Bytes out{1};
  EXPECT_FALSE(charset.ConvertData(bytesOf("text"), out));
  EXPECT_TRUE(out.empty());
  EXPECT_THAT(charset.get_LastErrorText(), HasSubstr("x-klingon"));
  EXPECT_THAT(charset.get_LastErrorXml(), StartsWith("<ZantrelLog>\r\n<ConvertData>"));
  EXPECT_THAT(charset.get_LastErrorHtml(), StartsWith("ZantrelLog:<blockquote>\r\n"));
}

TEST(CharsetTest, AReusedVectorKeepsItsStorage) {
  Charset charset = converter("windows-1252", "utf-8");
  const Bytes input(1000, 0xE4);
  Bytes out;
  ASSERT_TRUE(charset.ConvertData(input, out));
  const void* const storage = out.data();
  ASSERT_TRUE(charset.ConvertData(input, out));
  EXPECT_EQ(out.data(), storage);
  EXPECT_EQ(out.size(), 2000u);
}

TEST(CharsetTest, LastMethodSuccessTellsAnEmptyResultFromAFailure) {
  Charset charset;
  EXPECT_EQ(charset.HtmlEntityDecode(""), "");
  EXPECT_TRUE(charset.get_LastMethodSuccess());
  Bytes out;
  EXPECT_FALSE(charset.ReadFile("no/such/file", out));
  EXPECT_FALSE(charset.get_LastMethodSuccess());
}

TEST(CharsetTest, SaveLastErrorWritesTheLogAndRefusesAnEmptyPath) {
  const TempFolder folder;
  Charset charset;
  charset.CharsetToCodePage("utf-8");
  const std::string log = charset.get_LastErrorText();
  EXPECT_FALSE(charset.SaveLastError(""));
  EXPECT_FALSE(charset.SaveLastError("   "));
  EXPECT_TRUE(charset.SaveLastError(folder / "log.xml"));
  EXPECT_THAT(readFile(folder / "log.xml"), StartsWith("<ZantrelLog>"));
  EXPECT_EQ(charset.get_LastErrorText(), log);
}

TEST(CharsetTest, AComponentTravelsWithItsSettingsAndItsLog) {
  Charset first = converter("utf-8", "x-klingon");
  Bytes out;
  first.ConvertData(bytesOf("text"), out);
  const std::string log = first.get_LastErrorText();
  const Charset second = std::move(first);
  EXPECT_EQ(second.get_ToCharset(), "x-klingon");
  EXPECT_EQ(second.get_LastErrorText(), log);
}

/// A conversion of several megabytes, long enough for progress.
class LongConversionTest : public testing::Test {
 protected:
  LongConversionTest() {
    writeFile(folder_ / "in.txt", std::string(8 << 20, '\xE4'));
    charset_.OnPercentDone = [this](PercentDoneEventArgs& args) {
      percents_.push_back(args.PercentDone);
      args.Abort = args.PercentDone >= abortAt_;
    };
  }
  bool convert() { return charset_.ConvertFile(folder_ / "in.txt", folder_ / "out.txt"); }

  TempFolder folder_;
  Charset charset_ = converter("windows-1252", "utf-8");
  std::vector<unsigned> percents_;
  unsigned abortAt_ = 1000;
};

TEST_F(LongConversionTest, ReportsRisingPercentagesUpToOneHundred) {
  EXPECT_TRUE(convert());
  ASSERT_GT(percents_.size(), 10u);
  EXPECT_TRUE(std::is_sorted(percents_.begin(), percents_.end()));
  EXPECT_EQ(percents_.back(), 100u);
  EXPECT_EQ(readFile(folder_ / "out.txt").size(), std::size_t{16} << 20);
}

TEST_F(LongConversionTest, AnAbortLeavesTheOldFileAlone) {
  writeFile(folder_ / "out.txt", "what was there");
  abortAt_ = 25;
  EXPECT_FALSE(convert());
  EXPECT_LT(percents_.back(), 50u);
  EXPECT_EQ(readFile(folder_ / "out.txt"), "what was there");
  EXPECT_THAT(charset_.get_LastErrorText(), HasSubstr("Failed."));
  const std::filesystem::path here(folder_.path());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(here), {}), 2);
}

TEST_F(LongConversionTest, AnExceptionFromAHandlerStaysInsideAndLeavesTheOldFileAlone) {
  writeFile(folder_ / "out.txt", "what was there");
  charset_.OnPercentDone = [](PercentDoneEventArgs&) { throw std::runtime_error("no more"); };
  EXPECT_FALSE(convert());
  EXPECT_EQ(readFile(folder_ / "out.txt"), "what was there");
  EXPECT_THAT(charset_.get_LastErrorText(), HasSubstr("exceptionLog: no more"));
  EXPECT_FALSE(charset_.get_LastMethodSuccess());
}

TEST_F(LongConversionTest, RaisesNothingWhileEventsAreDisabled) {
  charset_.put_EnableEvents(false);
  EXPECT_TRUE(convert());
  EXPECT_TRUE(percents_.empty());
}

}  // namespace
}  // namespace Zantrel
