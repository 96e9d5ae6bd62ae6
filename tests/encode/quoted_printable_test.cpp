#include "core/encode/quoted_printable.h"

#include "encode/encode_test_support.h"
#include "encode/slow_reference.h"
#include "support/cpu_paths.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

const std::string k71(71, 'x');

TEST(QuotedPrintableTest, EncodesByItsRules) {
  const struct {
    const char* about;
    std::string in;
    std::string out;
  } cases[] = {
      {"a dot begins no line", ".x\r\n.y.", "=2Ex\r\n=2Ey."},
      {"nor does From with a blank", "From me\r\nFromage", "=46rom me\r\nFromage"},
      {"a last blank is escaped", "a ", "a=20"},
      {"a last tab too", "tab\tend\t", "tab\tend=09"},
      {"of two last blanks only the last is", "a  \r\nb", "a =20\r\nb"},
      {"a blank alone on its line", " \r\n", "=20\r\n"},
      {"CRLF stays a line break", "a\r\nb", "a\r\nb"},
      {"CR alone and LF alone are escaped", "a\rb\nc\n\r", "a=0Db=0Ac=0A=0D"},
      {"controls, equals sign, DEL and bytes beyond ASCII", "\x01=\x7F\x80\xFF", "=01=3D=7F=80=FF"},
      {"a blank before a lone LF stays", "a \nb", "a =0Ab"},
      {"100 letters", std::string(100, 'x'), k71 + "x=\r\n" + std::string(28, 'x')},
      {"a full last line is followed by its break", k71 + "x", k71 + "x=\r\n"},
      {"no soft break in front of a hard one", k71 + "x\r\ny", k71 + "x\r\ny"},
      {"an escape may pass the limit", k71 + "=", k71 + "=3D=\r\n"},
      {"a blank before the soft break is protected by it", k71 + " y", k71 + " =\r\ny"},
      {"a blank at the limit before CRLF", k71 + " \r\n", k71 + "=20\r\n"},
      {"the line behind a soft break begins well too", k71 + "x.", k71 + "x=\r\n=2E"},
      {"nothing", "", ""},
  };
  onEachCpuPath([&] {
    for (const auto& c : cases) EXPECT_EQ(quotedText(c.in), c.out) << c.about;
  });
}

TEST(QuotedPrintableTest, DecodesByItsRules) {
  const struct {
    const char* about;
    std::string_view in;
    std::string_view out;
  } cases[] = {
      {"the example of RFC 2045",
       "Now's the time =\nfor all folk to come=\n to the aid of their country.",
       "Now's the time for all folk to come to the aid of their country."},
      {"either case", "=4a=4A=C3=a9", "JJ\xC3\xA9"},
      {"hard line ends become CRLF", "a\nb\r\nc", "a\r\nb\r\nc"},
      {"and none is added behind the last line", "a\n", "a\r\n"},
      {"blanks at line ends go", "a \t \r\nb \t", "a\r\nb"},
      {"blanks behind a soft break go", "a= \t\r\nb", "ab"},
      {"a soft break at the end of the text", "ab=", "ab"},
      {"an equals sign without digits is copied", "a=xb=4=", "a=xb=4"},
      {"digits are not sought on the next line", "a=4\n1", "a=4\r\n1"},
      {"of two equals signs at the line end the first is copied", "a==\nb", "a=b"},
      {"the text ends at a zero byte", std::string_view("a=00b\0c", 7),
       std::string_view("a\0b", 3)},
      {"empty lines stay", "\n\n", "\r\n\r\n"},
      {"nothing", "", ""},
  };
  onEachCpuPath([&] {
    for (const auto& c : cases) EXPECT_EQ(unquotedText(c.in), c.out) << c.about;
  });
}

TEST(QuotedPrintableTest, EveryPathFollowsTheRulesOnAnyInput) {
  std::mt19937 random(5);
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEF  ";
  const std::string mixtures[] = {letters,
                                  letters + letters + letters + ".\t\r\n=\xE9",
                                  "From \r\n.",
                                  "=0123456789abcdefABCDEFxX \t\r\n",
                                  letters + "\n",
                                  letters + letters + letters + letters + "===\n",
                                  ""};
  const int limits[] = {72, 72, 76, 1, 2, 3, 5, 64, 1000, kNoSoftBreaks};
  for (int round = 0; round < 700; ++round) {
    std::string in = randomText(random, random() % 500,
                                mixtures[static_cast<std::size_t>(round) % std::size(mixtures)]);
    for (std::size_t at = random() % 90; at + 1 < in.size(); at += random() % 90 + 1) {
      in[at] = '\r';  // line ends are rare in random text
      in[at + 1] = '\n';
    }
    const int limit = limits[random() % std::size(limits)];
    const std::string encoded = slowQuotedPrintableEncode(in, static_cast<std::size_t>(limit));
    const std::string decoded = slowQuotedPrintableDecode(in);
    onEachCpuPath([&] {
      ASSERT_EQ(quotedText(in, limit), encoded) << limit << " " << hex(in);
      ASSERT_EQ(unquotedText(in), decoded) << hex(in);
      ASSERT_EQ(unquotedText(encoded), in);
    });
  }
}

TEST(QuotedPrintableTest, LimitsBelowOneCountAsOne) {
  EXPECT_EQ(quotedText("ab", 0), quotedText("ab", 1));
  EXPECT_EQ(quotedText("ab", -5), "a=\r\nb=\r\n");
}

TEST(QuotedPrintableTest, OneLineFormHasNoLineBreaks) {
  StringBuffer out("v:");
  ASSERT_TRUE(quotedPrintableEncodeOneLine(asBytes(".a\r\nb=" + std::string(200, 'x') + " "), out));
  EXPECT_EQ(out.view(), "v:=2Ea=0D=0Ab=3D" + std::string(200, 'x') + "=20");
  ASSERT_TRUE(quotedPrintableEncodeOneLine({}, out));
}

TEST(QuotedPrintableTest, BufferFormsAppend) {
  StringBuffer text("x");
  ASSERT_TRUE(quotedPrintableEncode(asBytes(".\xE9"), 72, text));
  EXPECT_EQ(text.view(), "x=2E=E9");
  DataBuffer bytes;
  ASSERT_TRUE(quotedPrintableDecode("a=\n", bytes));
  ASSERT_TRUE(quotedPrintableDecode("", bytes));
  ASSERT_TRUE(quotedPrintableDecode("=62", bytes));
  EXPECT_EQ(bytes.text(), "ab");
}

}  // namespace
}  // namespace zantrel::test
