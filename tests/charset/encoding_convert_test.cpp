#include "core/charset/encoding_convert.h"

#include <gtest/gtest.h>

#include "charset/conversion.h"
#include "core/charset/code_page.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

TEST(EncodingConvertTest, CopiesWithoutCheckingWhenTargetIsSourceOrZero) {
  const std::string broken = "\xEF\xBB\xBF\xFFok\x80"s;
  for (const int to : {65001, 0}) {
    const Converted result = convert(65001, to, broken);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.bytes, broken);
  }
  EXPECT_EQ(convert(1252, 1252, "\x81\xE9"s).bytes, "\x81\xE9"s);
}

TEST(EncodingConvertTest, NoInputSucceedsEvenBetweenUnknownPages) {
  DataBuffer out;
  EXPECT_TRUE(EncodingConvert().EncConvert(65001, 1200, nullptr, 5, out));
  EXPECT_TRUE(EncodingConvert().EncConvert(4711, 4712, "x", 0, out));
  EXPECT_EQ(out.getSize(), 0u);
}

TEST(EncodingConvertTest, SkipsALeadingMarkOfEitherByteOrder) {
  struct Case {
    int from;
    std::string in;
  };
  for (const Case& c :
       {Case{65001, "\xEF\xBB\xBF"s}, Case{1200, "\xFF\xFE"s}, Case{1200, "\xFE\xFF"s},
        Case{1201, "\xFE\xFF"s}, Case{1201, "\xFF\xFE"s}}) {
    for (const int to : {1252, 65006, 1201, 65001, 1200}) {
      if (to == c.from) continue;
      const Converted alone = convert(c.from, to, c.in);
      EXPECT_TRUE(alone.ok) << c.from << " to " << to;
      EXPECT_EQ(alone.bytes, "");
      const std::string letter = c.from == 65001 ? "A"s : c.from == 1200 ? "A\0"s : "\0A"s;
      EXPECT_EQ(convert(c.from, to, c.in + letter).bytes, convert(c.from, to, letter).bytes);
      for (std::size_t piece = 1; piece < 5; ++piece)
        EXPECT_EQ(convertInPieces(c.from, to, c.in + letter, piece).bytes,
                  convert(c.from, to, letter).bytes);
    }
  }
}

TEST(EncodingConvertTest, KeepsTheMarkOfUtf32AndASecondMark) {
  EXPECT_EQ(convert(65006, 65001, "\0\0\xFE\xFF"s).bytes, "\xEF\xBB\xBF");
  EXPECT_EQ(convert(65001, 1201, "\xEF\xBB\xBF\xEF\xBB\xBF"s).bytes, "\xFE\xFF");
}

TEST(EncodingConvertTest, AnUnfinishedMarkIsOrdinaryInput) {
  EXPECT_FALSE(convert(65001, 1200, "\xEF\xBB"s).ok);
  EXPECT_EQ(convert(65001, 1201, "\xEF\xBB"s).bytes, "\xFF\xFD");
  EXPECT_EQ(convertInPieces(65001, 1201, "\xEF\xBB"s, 1).bytes, "\xFF\xFD");
  EXPECT_EQ(convert(1252, 1201, "\xEF\xBB\xBF"s).bytes, "\0\xEF\0\xBB\0\xBF"s);
}

TEST(EncodingConvertTest, AsciiTo1201GivesZeroAndTheCharacter) {
  EXPECT_EQ(convert(20127, 1201, "Az").bytes, "\0A\0z"s);
}

TEST(EncodingConvertTest, ATargetOf1201SucceedsWhateverTheInput) {
  const Converted result = convert(65001, 1201, "a\xFF"s);
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.bytes, "\0a\xFF\xFD"s);
  EXPECT_NE(result.error, "");
  EXPECT_FALSE(convert(4711, 1201, "a").ok);
}

TEST(EncodingConvertTest, Utf16SwapIsNotValidatedAndKeepsAnOddByte) {
  const std::string in = "a\0\0\xD8z"s;
  for (std::size_t piece = 1; piece < 6; ++piece) {
    const Streamed result = convertInPieces(1200, 1201, in, piece);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.bytes, "\0a\xD8\0z"s);
  }
}

TEST(EncodingConvertTest, FailsWithNothingAppendedForAnUnknownPageOrName) {
  DataBuffer out;
  out.append(std::string_view("kept"));
  EncodingConvert converter;
  EXPECT_FALSE(converter.EncConvert(4711, 65001, "a", 1, out));
  EXPECT_NE(converter.errorText().view().find("4711"), std::string_view::npos);
  EXPECT_FALSE(converter.EncConvert("utf-8", "klingon", "a", 1, out));
  EXPECT_NE(converter.errorText().view().find("klingon"), std::string_view::npos);
  EXPECT_EQ(out.text(), "kept");
  EXPECT_TRUE(converter.EncConvert("utf-8", "windows-1252", "\xC3\xA9", 2, out));
  EXPECT_TRUE(converter.errorText().empty());
  EXPECT_EQ(out.text(), "kept\xE9");
}

TEST(EncodingConvertTest, NothingOfOneConversionReachesTheNext) {
  for (const ErrorAction action : {ErrorAction::Substitute, ErrorAction::Fail}) {
    EncodingConvert converter({action, {}, 0});
    DataBuffer out;
    EXPECT_FALSE(converter.EncConvert(50220, 1252, "\x1B$B4", 4, out));
    EXPECT_FALSE(converter.errorText().empty());
    out.clear();
    EXPECT_TRUE(converter.EncConvert(50220, 1252, "ab", 2, out));
    EXPECT_EQ(out.text(), "ab");
    EXPECT_TRUE(converter.errorText().empty());
  }
}

TEST(EncodingConvertTest, ConvertsABufferOntoItself) {
  DataBuffer buffer;
  buffer.append(std::string_view("\xC3\xA9t\xC3\xA9"));
  EXPECT_TRUE(
      EncodingConvert().EncConvert(65001, 1252, buffer.getData2(), buffer.getSize(), buffer));
  EXPECT_EQ(buffer.text(), "\xC3\xA9t\xC3\xA9\xE9t\xE9");
}

TEST(EncodingConvertTest, EachErrorActionTreatsUnmappableAndInvalidText) {
  struct Case {
    ErrorAction action;
    std::string unmappable;  // of "a" U+0416 U+1F600 "b" in 1252
    std::string invalid;     // of "a" FF "b" in 1252
  };
  const std::string in =
      "a\xD0\x96\xF0\x9F\x98\x80"
      "b";
  const Case cases[] = {
      {ErrorAction::Substitute, "a??b", "a?b"},
      {ErrorAction::Drop, "ab", "ab"},
      {ErrorAction::DefaultBytes, "a<><>b", "a<>b"},
      {ErrorAction::HexEntity, "a&#x416;&#x1F600;b", "a?b"},
      {ErrorAction::DecEntity, "a&#1046;&#128512;b", "a?b"},
      {ErrorAction::AltCharset, "a\xC6?b", "a?b"},
      {ErrorAction::Fail, "a", "a"},
  };
  for (const Case& c : cases) {
    const ConvertOptions options{c.action, asBytes("<>"), 1251};
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{99}}) {
      const Streamed unmappable = convertInPieces(65001, 1252, in, piece, options);
      EXPECT_EQ(unmappable.bytes, c.unmappable) << static_cast<int>(c.action);
      EXPECT_EQ(unmappable.unmappable, c.action == ErrorAction::Fail ? 1u : 2u);
      EXPECT_EQ(unmappable.firstError, 1u);
      EXPECT_EQ(unmappable.ok, c.action != ErrorAction::Fail);
      const Streamed invalid = convertInPieces(65001, 1252,
                                               "a\xFF"
                                               "b",
                                               piece, options);
      EXPECT_EQ(invalid.bytes, c.invalid) << static_cast<int>(c.action);
      EXPECT_EQ(invalid.invalid, 1u);
    }
    EXPECT_FALSE(convert(65001, 1252, in, options).ok);
    EXPECT_EQ(convert(65001, 1252, in, options).bytes, c.unmappable);
    EXPECT_EQ(convert(65001, 1252,
                      "a\xFF"
                      "b",
                      options)
                  .bytes,
              c.invalid);
  }
}

TEST(EncodingConvertTest, DefaultBytesOfUtf16BeAreGivenInUtf16Le) {
  const ConvertOptions options{ErrorAction::DefaultBytes, asBytes(std::string_view("!\0", 2)), 0};
  EXPECT_EQ(convert(65001, 1201, "\xFF", options).bytes, "\0!"s);
  EXPECT_EQ(convert(65001, 1200, "\xFF", options).bytes, "!\0"s);
}

TEST(EncodingConvertTest, FindsTheFirstErrorAnywhereInALongText) {
  std::string in(9999, 'a');
  in += "\xD0\x96";
  in.append(9999, 'b');
  EXPECT_EQ(convertInPieces(65001, 1252, in, 1 << 20).firstError, 9999u);
  EXPECT_EQ(convertInPieces(65001, 1252, in, 777).firstError, 9999u);
  std::string wide;
  for (const char c : in.substr(0, 9999)) wide += {c, '\0'};
  EXPECT_EQ(convertInPieces(1200, 1252, wide + "\x16\x04"s, 1 << 20).firstError, 19998u);
  EXPECT_EQ(convertInPieces(1200, 1252, wide + "\0\xDC"s, 1 << 20).firstError, 19998u);
}

TEST(EncodingConvertTest, PiecesOfAnySizeGiveTheSameAsOnePiece) {
  const std::string text =
      "\xEF\xBB\xBFPlain text, \xC3\xA9t\xC3\xA9, \xE6\x97\xA5\xE6\x9C\xAC, \xF0\x9F\x98\x80 "
      "\xF0\x9F\xFF"
      " \xED\xA0\x80 \xE2\x82";
  for (const int from : {65001, 1200, 1201, 65005, 65006, 1252}) {
    for (const int to : {65001, 1200, 1201, 65005, 65006, 1252}) {
      const Streamed whole = convertInPieces(from, to, text, text.size());
      for (std::size_t piece = 1; piece < 20; ++piece) {
        const Streamed pieces = convertInPieces(from, to, text, piece);
        EXPECT_EQ(hex(pieces.bytes), hex(whole.bytes)) << from << " to " << to << " by " << piece;
        EXPECT_EQ(pieces.invalid, whole.invalid);
        EXPECT_EQ(pieces.unmappable, whole.unmappable);
        EXPECT_EQ(pieces.firstError, whole.firstError);
      }
      EXPECT_EQ(hex(convert(from, to, text).bytes), hex(whole.bytes));
    }
  }
}

}  // namespace
}  // namespace zantrel::test
