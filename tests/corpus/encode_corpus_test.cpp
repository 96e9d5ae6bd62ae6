#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

#include "core/encode/uu.h"
#include "encode/encode_test_support.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::string unuu(std::string_view in) {
  DataBuffer out;
  StringBuffer mode, name;
  EXPECT_TRUE(Uu::decode(in, out, mode, name));
  return std::string(out.text());
}

// The table's three sorts of rows: the published result is ours too, ours differs (decoders here
// never refuse a text), or nothing is laid down.
TEST(EncodeCorpusTest, PublishedSamplesGiveTheirResults) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  using Codec = std::function<std::string(const std::string&)>;
  const std::map<std::string, Codec> encoders = {
      {"base64", base64},
      {"base64-lines", [](const std::string& in) { return base64Lines(in, 72); }},
      {"base32", base32},
      {"hex", hexText},
      {"url", urlEncoded},
      {"quoted-printable", [](const std::string& in) { return quotedText(in); }}};
  const std::map<std::string, Codec> decoders = {{"base64", unbase64},
                                                 {"base32", unbase32},
                                                 {"hex", unhexText},
                                                 {"url", urlDecoded},
                                                 {"quoted-printable", unquotedText},
                                                 {"uu", unuu}};
  int agreed = 0;
  auto rows = readTable(*folder + "/encodings/encodings.tsv");
  rows.erase(rows.begin());  // headings
  for (auto& row : rows) {
    row.resize(7);
    const std::string& name = row[0];
    if (row[1] == "encode") {
      const std::string result = encoders.at(name)(unhex(row[2]));
      if (row[4] == "agrees") {
        std::string expected = unescape(row[3]);
        // The table leaves out the break that follows a full last line.
        if (name == "base64-lines" && !expected.empty() && row[2].size() % (2 * 54) == 0)
          expected += "\r\n";
        EXPECT_EQ(result, expected) << name << " of " << row[2];
        ++agreed;
      }
    } else {
      const std::string result = decoders.at(name)(unescape(row[2]));
      if (row[4] == "agrees") {
        EXPECT_EQ(hex(result), row[3]) << name << " from " << row[2];
        ++agreed;
      }
    }
  }
  EXPECT_GT(agreed, 90);
}

TEST(EncodeCorpusTest, EncodedFilesGiveTheirOriginals) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  const auto read = [&](const char* name) { return readFile(*folder + "/encodings/" + name); };
  const std::string photo = read("photo.jpg");
  EXPECT_TRUE(unbase64(read("photo.b64")) == photo);
  EXPECT_TRUE(unuu(read("photo.uu")) == photo);
  std::string text;
  for (const char c : read("wikipedia.txt")) text += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(unquotedText(read("wikipedia.qp")), text);
}

}  // namespace
}  // namespace zantrel::test
