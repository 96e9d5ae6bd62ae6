// The encodings against other implementations, as far as these follow the same rules: coreutils,
// OpenSSL and Python. Texts go through files, so that any byte may occur.

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/encode/html_entities.h"
#include "core/encode/html_entity_table.h"
#include "core/encode/uu.h"
#include "encode/encode_test_support.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

// Evaluates a Python expression over the variable d for each of several texts, in one run: one line
// of hexadecimal digits a text goes in and comes out.
std::vector<std::string> python(const std::string& expression, const std::vector<std::string>& in) {
  const std::string program =
      "import sys,binascii,base64,quopri,html,urllib.parse as u\n"
      "for line in sys.stdin:\n"
      "  d=bytes.fromhex(line)\n"
      "  print((" +
      expression + ").hex())\n";
  std::string lines;
  for (const std::string& text : in) lines += hex(text) + "\n";
  std::istringstream answer(runProgram({"python3", "-c", program}, lines).value_or(""));
  std::vector<std::string> out;
  for (std::string line; std::getline(answer, line);) out.push_back(unhex(line));
  EXPECT_EQ(out.size(), in.size()) << expression;
  out.resize(in.size());
  return out;
}

std::vector<std::string> each(const std::vector<std::string>& in,
                              const std::function<std::string(const std::string&)>& codec) {
  std::vector<std::string> out;
  for (const std::string& text : in) out.push_back(codec(text));
  return out;
}

class EncodeInteropTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!haveProgram("python3")) GTEST_SKIP() << "python3 is not installed";
    std::mt19937 random(9);
    for (const std::size_t size : {0U, 1U, 2U, 3U, 53U, 54U, 55U, 1000U, 70000U})
      samples_.push_back(randomText(random, size));
  }
  std::vector<std::string> samples_;
};

TEST_F(EncodeInteropTest, Base64) {
  EXPECT_EQ(each(samples_, base64), python("base64.b64encode(d)", samples_));
  EXPECT_EQ(each(python("base64.encodebytes(d)", samples_), unbase64), samples_);
  const auto lines = each(samples_, [](const std::string& in) { return base64Lines(in, 72); });
  EXPECT_EQ(python("base64.decodebytes(d)", lines), samples_);
  const std::string& in = samples_.back();
  if (haveProgram("base64")) {
    EXPECT_EQ(runProgram({"base64", "-d"}, base64(in)), in);
    EXPECT_EQ(unbase64(runProgram({"base64"}, in).value_or("failed")), in);
  }
  if (haveProgram("openssl")) {
    EXPECT_EQ(unbase64(runProgram({"openssl", "base64", "-e"}, in).value_or("failed")), in);
    EXPECT_EQ(runProgram({"openssl", "base64", "-d"}, base64Lines(in, 72)), in);
  }
}

TEST_F(EncodeInteropTest, Base32AndHexadecimal) {
  EXPECT_EQ(each(samples_, base32), python("base64.b32encode(d)", samples_));
  EXPECT_EQ(each(python("base64.b32encode(d).lower()", samples_), unbase32), samples_);
  EXPECT_EQ(each(samples_, hexText), python("binascii.hexlify(d).upper()", samples_));
  EXPECT_EQ(each(python("binascii.hexlify(d)", samples_), unhexText), samples_);
}

TEST_F(EncodeInteropTest, QuotedPrintable) {
  std::mt19937 random(10);
  samples_.push_back(randomText(random, 5000, "abc def .F=\t\xC3\xA9"));
  samples_.push_back("From here\r\n.\r\nand there \r\n\r\nend");
  const auto encoded = each(samples_, [](const std::string& in) { return quotedText(in); });
  EXPECT_EQ(python("quopri.decodestring(d)", encoded), samples_);
  // Python keeps LF as a line end, which decodes to CRLF here: compare texts that have none.
  const auto oneLine = each(samples_, [](std::string in) {
    for (char& c : in) c = c == '\n' ? ' ' : c;
    return in;
  });
  EXPECT_EQ(each(python("quopri.encodestring(d, True)", oneLine), unquotedText), oneLine);
}

TEST_F(EncodeInteropTest, Url) {
  // Python leaves "_.-~" as they are, which the decoder must read all the same.
  EXPECT_EQ(each(python("u.quote_plus(d).encode()", samples_), urlDecoded), samples_);
  EXPECT_EQ(python("u.unquote_to_bytes(d.replace(b'+',b' '))", each(samples_, urlEncoded)),
            samples_);
}

TEST_F(EncodeInteropTest, Uu) {
  const auto encode = [](const std::string& in) {
    StringBuffer text;
    EXPECT_TRUE(Uu::encode(asBytes(in), "644", "file.dat", text));
    return std::string(text.view());
  };
  const auto decode = [](const std::string& in) {
    DataBuffer bytes;
    StringBuffer mode, name;
    EXPECT_TRUE(Uu::decode(in, bytes, mode, name));
    return std::string(bytes.text());
  };
  EXPECT_EQ(python("b''.join(binascii.a2b_uu(l) for l in d.split(b'\\r\\n')[1:-3])",
                   each(samples_, encode)),
            samples_);
  EXPECT_EQ(each(python("b'begin 644 n\\n'+b''.join(binascii.b2a_uu(d[i:i+45]) for i in "
                        "range(0,len(d),45))+b' \\nend\\n'",
                        samples_),
                 decode),
            samples_);
}

TEST_F(EncodeInteropTest, HtmlEntities) {
  std::string in = "&copy2026 &notit; &#65 &#x41; &#128; &unknown; & &amp;lt; &#x1F600; &ampx; ";
  for (std::size_t i = 0; i < kHtmlEntityCount; ++i) {
    const std::string name(htmlEntityName(kHtmlEntities[i]));
    in += "&" + name + "; &" + name + " ";
  }
  for (int number = 32; number < 127; ++number) in += "&#" + std::to_string(number) + ";";
  StringBuffer out;
  ASSERT_TRUE(htmlEntityDecode(in, out));
  EXPECT_EQ(out.view(), python("html.unescape(d.decode()).encode()", {in})[0]);
}

}  // namespace
}  // namespace zantrel::test
