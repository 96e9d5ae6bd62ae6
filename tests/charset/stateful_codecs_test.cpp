#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "charset/codec_runner.h"
#include "charset/conversion.h"
#include "core/charset/code_page.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

std::vector<int> statefulPages() {
  std::vector<int> pages;
  for (const CodePage& page : allCodePages())
    if (page.makeDecoder()->clone() != nullptr) pages.push_back(page.id);
  return pages;
}

TEST(StatefulCodecsTest, PublishedVectorsHoldInBothDirectionsAndInPieces) {
  const auto rows = readTable(ZANTREL_TEST_DATA "/charset/stateful.tsv");
  ASSERT_GT(rows.size(), 20u);
  for (const auto& row : rows) {
    const int page = std::stoi(row.at(0));
    const std::string text = unescape(row.at(1));
    const std::string bytes = unescape(row.at(2));
    for (std::size_t piece = 1; piece < 8; ++piece) {
      const Streamed decoded = convertInPieces(page, 65001, bytes, piece);
      EXPECT_EQ(decoded.bytes, text) << row[0] << " " << row[2] << " by " << piece;
      EXPECT_EQ(decoded.invalid, 0u);
      if (row.at(3) != "both") continue;
      const Streamed encoded = convertInPieces(65001, page, text, piece);
      EXPECT_EQ(hex(encoded.bytes), hex(bytes)) << row[0] << " " << row[1] << " by " << piece;
      EXPECT_EQ(encoded.unmappable, 0u);
    }
  }
}

/// All characters of the basic plane that a page can write.
std::string repertoire(int page) {
  std::string all;
  for (unsigned unit = 0; unit < 0x10000; ++unit) {
    if ((unit >= 0xD800 && unit < 0xE000) || unit == 0xFEFF || unit == 0xFFFE) continue;
    const char bytes[] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    const std::string one(bytes, 2);
    if (convert(1200, page, one).ok) all += one;
  }
  return all;
}

TEST(StatefulCodecsTest, EveryCharacterThatAPageCanWriteIsReadBack) {
  for (const int page : statefulPages()) {
    if (page == 65000) continue;
    const std::string all = repertoire(page);
    EXPECT_GT(all.size(), 2u * (page >= 57002 && page <= 57011 ? 170u : 6000u)) << page;
    for (std::size_t i = 0; i < all.size(); i += 2) {
      const std::string one = all.substr(i, 2);
      const Converted back = convert(page, 1200, convert(1200, page, one).bytes);
      const auto unit =
          static_cast<unsigned char>(one[0]) + 256u * static_cast<unsigned char>(one[1]);
      if (page == 50220 && unit >= 0xFF61 && unit <= 0xFF9F) continue;  // written as full-width
      EXPECT_EQ(hex(back.bytes), hex(one)) << page;
    }
  }
}

/// A little of every control sequence that some page knows, broken ones among them.
const std::string kAnything =
    "\x1B$B$\"\x1B(I1\x1B\x1B$\x0E\x21\x22\x0F~{VPND~}~x\x1B$)C+AAAA-+2AA-+ZeVnLIqe\xEF\x43\xB3"
    "\xE8\xE8\xE9\xEA\xEA\xF0\xBF\x0E\x45\x66\n\x45\x1B$)A\x0E\x30\x21\x80\xFF\x1B"s;

TEST(StatefulCodecsTest, ReadersAndWritersMakeDoWithLittleRoom) {
  const std::string plain = "A line of ASCII that is long enough for whole words.\r\n";
  for (const int id : statefulPages()) {
    const CodePage& page = *findCodePage(id);
    const std::string bytes = plain + kAnything + plain;
    const std::u16string whole = decodeReplacing(page, bytes);
    std::u16string valid = whole;
    std::erase(valid, u'\xFFFD');
    const std::string written = encodeAll(page, valid).output;
    for (const std::size_t in : {1u, 3u, 8u, 64u})
      for (const std::size_t out : {1u, 2u, 5u, 64u}) {
        EXPECT_EQ(decodeReplacing(page, bytes, in, out), whole) << id;
        EXPECT_EQ(encodeAll(page, valid, in, out).output, written) << id;
      }
  }
}

TEST(StatefulCodecsTest, ReadersNeitherLoopNorDependOnThePieces) {
  const std::string& bytes = kAnything;
  for (const int page : statefulPages()) {
    const Streamed whole = convertInPieces(page, 65001, bytes, bytes.size());
    EXPECT_TRUE(whole.ok);
    for (std::size_t piece = 1; piece < 12; ++piece) {
      const Streamed pieces = convertInPieces(page, 65001, bytes, piece);
      EXPECT_EQ(pieces.bytes, whole.bytes) << page << " by " << piece;
      EXPECT_EQ(pieces.invalid, whole.invalid) << page;
      EXPECT_EQ(pieces.firstError, whole.firstError) << page;
    }
    for (std::size_t end = 0; end < bytes.size(); ++end) convert(page, 65001, bytes.substr(0, end));
  }
}

TEST(Iso2022JpTest, TheThreePagesDifferInHowHalfWidthKanaAreWritten) {
  const std::string kana = "a\xEF\xBD\xB6\xEF\xBE\x9E\xEF\xBE\x8A\xEF\xBE\x9F\xEF\xBD\xB1z";
  EXPECT_EQ(convert(65001, 50220, kana).bytes, "a\x1B$B%,%Q%\"\x1B(Bz");
  EXPECT_EQ(convert(65001, 50221, kana).bytes, "a\x1B(I6^J_1\x1B(Bz");
  EXPECT_EQ(convert(65001, 50222, kana).bytes,
            "a\x0E"
            "6^J_1\x0Fz");
  for (std::size_t piece = 1; piece < 9; ++piece)
    EXPECT_EQ(convertInPieces(65001, 50220, kana, piece).bytes, "a\x1B$B%,%Q%\"\x1B(Bz");
}

TEST(Iso2022JpTest, AllThreePagesReadEveryFormOfKana) {
  const std::string kana = "\xEF\xBD\xB6";
  for (const int page : {50220, 50221, 50222})
    for (const std::string& form : {"\x1B(I6"s,
                                    "\x0E"
                                    "6\x0F"s,
                                    "\xB6"s})
      EXPECT_EQ(convert(page, 65001, form).bytes, kana) << page;
}

TEST(Iso2022JpTest, WritesIbmExtensionsInTheNecRows) {
  // FA5C in 932 is U+7E8A, whose NEC double is ED40, row 89.
  EXPECT_EQ(convert(65001, 50220, "\xE7\xBA\x8A").bytes, "\x1B$By!\x1B(B");
  EXPECT_EQ(convert(50220, 65001, "\x1B$By!\x1B(B").bytes, "\xE7\xBA\x8A");
  EXPECT_EQ(convert(932, 50220, "\xFA\x5C").bytes, "\x1B$By!\x1B(B");
}

/// A code of 932 and where ISO-2022-JP has it, by their common number: both fill 94 rows of 94.
struct NumberedCode {
  explicit NumberedCode(unsigned number)
      : shiftJis{static_cast<char>(number / 188 + (number / 188 < 31 ? 0x81 : 0xC1)),
                 static_cast<char>(number % 188 + (number % 188 < 63 ? 0x40 : 0x41))},
        escaped("\x1B$B" +
                std::string{static_cast<char>(number / 94 + 0x21),
                            static_cast<char>(number % 94 + 0x21)} +
                "\x1B(B") {}
  std::string shiftJis;
  std::string escaped;
};

TEST(Iso2022JpTest, EveryCodeOf932KeepsItsPlaceEvenWhereItsCharacterHasSeveral) {
  unsigned count = 0;
  for (unsigned number = 0; number < 94 * 94; ++number) {
    const NumberedCode code(number);
    const bool isDefined = convert(932, 1200, code.shiftJis).ok;
    count += isDefined;
    for (const int page : {50220, 50221, 50222}) {
      const Converted there = convert(932, page, code.shiftJis);
      const Converted back = convert(page, 932, code.escaped);
      EXPECT_EQ(there.ok, isDefined) << hex(code.shiftJis);
      EXPECT_EQ(back.ok, isDefined) << hex(code.shiftJis);
      if (!isDefined) continue;
      EXPECT_EQ(hex(there.bytes), hex(code.escaped)) << page;
      EXPECT_EQ(hex(back.bytes), hex(code.shiftJis)) << page;
      EXPECT_EQ(convert(page, page == 50222 ? 50221 : 50222, code.escaped).bytes, code.escaped);
    }
  }
  EXPECT_EQ(count, 6879u + 83u + 374u);  // JIS X 0208, row 13, rows 89 to 92
}

TEST(Iso2022JpTest, IbmExtensionsBehindRow94MoveToAnotherCodeOfTheirCharacter) {
  unsigned count = 0;
  for (unsigned code = 0xFA40; code <= 0xFC4B; ++code) {
    const std::string bytes{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
    const Converted character = convert(932, 1200, bytes);
    if (!character.ok) continue;
    ++count;
    const Converted there = convert(932, 50221, bytes);
    EXPECT_TRUE(there.ok) << hex(bytes);
    EXPECT_EQ(convert(50221, 1200, there.bytes).bytes, character.bytes) << hex(bytes);
    EXPECT_EQ(convert(1200, 50221, character.bytes).bytes, there.bytes) << hex(bytes);
  }
  EXPECT_EQ(count, 388u);
}

TEST(Iso2022JpTest, TroubleAmongPagesThatKeepCodesApartIsTreatedAsElsewhere) {
  // Row 13 and row 2, a user-defined character, an empty cell.
  const std::string in = "\x87\x90\x81\xE0\xF0\x40\x85\x40";
  struct Case {
    ConvertOptions options;
    const char* bytes;
  };
  const Case cases[] = {
      {{ErrorAction::Substitute, {}, 0}, "\x1B$B-p\"b\x1B(B??@"},
      {{ErrorAction::Drop, {}, 0}, "\x1B$B-p\"b\x1B(B@"},
      {{ErrorAction::DefaultBytes, asBytes("\x87\x90"), 0}, "\x1B$B-p\"b-p-p\x1B(B@"},
      {{ErrorAction::HexEntity, {}, 0}, "\x1B$B-p\"b\x1B(B&#xE000;?@"},
      {{ErrorAction::AltCharset, {}, 65001}, "\x1B$B-p\"b\x1B(B\xEE\x80\x80?@"},
      {{ErrorAction::Fail, {}, 0}, "\x1B$B-p\"b\x1B(B"},
  };
  for (const Case& c : cases)
    for (std::size_t piece = 1; piece < 9; ++piece) {
      const Streamed result = convertInPieces(932, 50220, in, piece, c.options);
      EXPECT_EQ(result.bytes, c.bytes) << static_cast<int>(c.options.action);
      EXPECT_EQ(result.firstError, 4u);
    }
  // Surrogates without partner are no such codes when they come from outside.
  EXPECT_EQ(convert(1200, 50220, "\0\xD8"s).bytes, "?");
  EXPECT_EQ(convert(50220, 932, "\x1B$(D0!\x1B(B").bytes, "?");  // JIS X 0212, which 932 lacks
}

TEST(Iso2022KrTest, EveryCodeOf949InItsSetKeepsItsPlace) {
  for (unsigned row = 0x21; row <= 0x7E; ++row)
    for (unsigned column = 0x21; column <= 0x7E; ++column) {
      const std::string bytes{static_cast<char>(row | 0x80), static_cast<char>(column | 0x80)};
      const std::string escaped =
          "\x1B$)C\x0E" + std::string{static_cast<char>(row), static_cast<char>(column)} + "\x0F";
      const bool isDefined = convert(949, 1200, bytes).ok;
      EXPECT_EQ(convert(949, 50225, bytes).ok, isDefined);
      if (!isDefined) continue;
      EXPECT_EQ(hex(convert(949, 50225, bytes).bytes), hex(escaped));
      EXPECT_EQ(hex(convert(50225, 949, escaped).bytes), hex(bytes));
    }
}

TEST(Iso2022JpTest, RomanIsReadAsAsciiDeliberately) {
  EXPECT_EQ(convert(50220, 65001, "\x1B(J\\~\x1B(B").bytes, "\\~");
}

TEST(Iso2022Test, ControlsThatReadersObeyCannotBeWrittenAsCharacters) {
  for (const int page : {50220, 50221, 50222, 50225, 50227})
    for (const char control : {'\x0E', '\x0F', '\x1B'}) {
      const Converted result = convert(65001, page, std::string(1, control));
      EXPECT_FALSE(result.ok);
      EXPECT_EQ(result.bytes.find(control, page == 50225 ? 4 : 0), std::string::npos);
    }
}

TEST(Iso2022Test, ReplacementsStandInTheInitialState) {
  const std::string text = "\xE6\xBC\xA2\xF0\x9F\x98\x80\xE6\xBC\xA2";  // kanji, emoji, kanji
  EXPECT_EQ(convert(65001, 50220, text).bytes, "\x1B$B4A\x1B(B?\x1B$B4A\x1B(B");
  EXPECT_EQ(convert(65001, 50220, text, {ErrorAction::DecEntity, {}, 0}).bytes,
            "\x1B$B4A\x1B(B&#128512;\x1B$B4A\x1B(B");
  EXPECT_EQ(convert(65001, 50220, text, {ErrorAction::DefaultBytes, asBytes("\x82\xA0"), 0}).bytes,
            "\x1B$B4A$\"4A\x1B(B");
  EXPECT_EQ(convert(65001, 50220, text, {ErrorAction::Fail, {}, 0}).bytes, "\x1B$B4A\x1B(B");
  const std::string simplified = "\xE6\xB1\x89\xF0\x9F\x98\x80\xE6\xB1\x89";
  EXPECT_EQ(convert(65001, 52936, simplified, {ErrorAction::AltCharset, {}, 65001}).bytes,
            "~{::~}\xF0\x9F\x98\x80~{::~}");
}

TEST(Utf7Test, IllFormedStretchesLoseNothingAroundThem) {
  struct Case {
    const char* bytes;
    const char* text;  // "?" for U+FFFD
  };
  const Case cases[] = {
      {"a+!b", "a?!b"},
      {"+AG", "?"},
      {"+AGE", "a"},
      {"+AGF-x", "a?x"},
      {"+2AA-x", "?x"},
      {"+2AA", "?"},
      {"+3AA-x", "?x"},
      {"+2AAAYQ-x", "?ax"},
      {"x\xE9y", "x?y"},
      {"+AGE\xE9y", "a?y"},
      {"+", "?"},
      {"+-", "+"},
      {"+2D3eAA-", "\xF0\x9F\x98\x80"},
  };
  for (const Case& c : cases) {
    for (std::size_t piece = 1; piece < 9; ++piece) {
      std::string expected;
      for (const char ch : std::string(c.text))
        expected += ch == '?' ? "\xEF\xBF\xBD"s : std::string(1, ch);
      EXPECT_EQ(convertInPieces(65000, 65001, c.bytes, piece).bytes, expected) << c.bytes;
    }
  }
}

TEST(IsciiTest, OtherScriptsAreNamedUpToTheEndOfTheLine) {
  const std::string text = "\xE0\xA4\x95\xE0\xA6\x95\n\xE0\xA4\x95";  // Devanagari, Bengali, LF
  EXPECT_EQ(convert(65001, 57002, text).bytes, "\xB3\xEF\x43\xB3\n\xB3");
  EXPECT_EQ(convert(57002, 65001, "\xB3\xEF\x43\xB3\n\xB3").bytes, text);
  EXPECT_EQ(convert(65001, 57003, text).bytes, "\xEF\x42\xB3\xEF\x43\xB3\n\xEF\x42\xB3");
}

TEST(IsciiTest, AssameseHasItsOwnRaAndVa) {
  EXPECT_EQ(convert(57006, 65001, "\xCF\xD4").bytes, "\xE0\xA7\xB0\xE0\xA7\xB1");
  EXPECT_EQ(convert(65001, 57006, "\xE0\xA6\xB0").bytes, "\xEF\x43\xCF");
}

}  // namespace
}  // namespace zantrel::test
