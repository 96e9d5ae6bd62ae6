#include "core/encode/uu.h"

#include <algorithm>

#include "encode/encode_test_support.h"
#include "support/cpu_paths.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::string uu(std::string_view in, std::string_view mode = "644",
               std::string_view name = "file.dat") {
  StringBuffer out;
  EXPECT_TRUE(Uu::encode(asBytes(in), mode, name, out));
  return std::string(out.view());
}

struct Block {
  std::string bytes, mode, name;
  bool operator==(const Block&) const = default;
};

Block unuu(std::string_view in) {
  DataBuffer bytes;
  StringBuffer mode("old"), name("old");
  EXPECT_TRUE(Uu::decode(in, bytes, mode, name));
  return {std::string(bytes.text()), std::string(mode.view()), std::string(name.view())};
}

TEST(UuTest, WritesTheTraditionalFormat) {
  EXPECT_EQ(uu("Cat"), "begin 644 file.dat\r\n#0V%T\r\n`\r\nend\r\n");
  EXPECT_EQ(uu(""), "begin 644 file.dat\r\n`\r\nend\r\n");
  const std::string line = uu(std::string(46, '\0'), "600", "a b");
  EXPECT_EQ(line, "begin 600 a b\r\nM" + std::string(60, '`') + "\r\n!````\r\n`\r\nend\r\n");
}

TEST(UuTest, NamesCannotBreakTheHeaderLine) {
  EXPECT_EQ(uu("", "6\r\n44", "a\nend\x7F\xC3\xA9"), "begin 644 aend\xC3\xA9\r\n`\r\nend\r\n");
  EXPECT_EQ(uu("", "", "\r\n"), "begin 644 file.dat\r\n`\r\nend\r\n");
}

TEST(UuTest, ReadsBackBytesModeAndName) {
  std::mt19937 random(7);
  for (const std::size_t size : {0U, 1U, 2U, 3U, 44U, 45U, 46U, 90U, 5000U}) {
    const std::string in = randomText(random, size);
    EXPECT_EQ(unuu(uu(in, "755", "my file.bin")), (Block{in, "755", "my file.bin"}));
  }
}

// The historical algorithm, a character at a time.
std::string slowLines(std::string_view in) {
  std::string out;
  const auto put = [&out](unsigned value) {
    out += value == 0 ? '`' : static_cast<char>(value + 32);
  };
  for (; !in.empty(); in.remove_prefix(std::min<std::size_t>(in.size(), 45))) {
    std::string line(in.substr(0, 45));
    put(static_cast<unsigned>(line.size()));
    line.resize((line.size() + 2) / 3 * 3);
    unsigned bits = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
      bits = bits << 8 | static_cast<unsigned char>(line[i]);
      if (i % 3 != 2) continue;
      for (int shift = 18; shift >= 0; shift -= 6) put(bits >> shift & 63);
      bits = 0;
    }
    out += "\r\n";
  }
  return out;
}

TEST(UuTest, EveryCpuPathWritesAndReadsTheSameAtEachLength) {
  std::mt19937 random(9);
  const std::string bytes = randomText(random, 700);
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    const std::string in = bytes.substr(bytes.size() - size);
    const std::string text = "begin 644 file.dat\r\n" + slowLines(in) + "`\r\nend\r\n";
    onEachCpuPath([&] {
      ASSERT_EQ(uu(in), text) << size;
      ASSERT_EQ(unuu(text).bytes, in) << size;
    });
  }
}

TEST(UuTest, EveryCpuPathReadsAnyLineAlike) {
  std::mt19937 random(10);
  for (int round = 0; round < 300; ++round) {
    std::string text = "begin 644 x\n";
    for (int line = 0; line < 8; ++line) {
      const auto count = 1 + static_cast<unsigned>(random()) % 63;
      text += static_cast<char>(32 + count);
      // Whole, or cut short; any byte counts as a digit.
      std::string data =
          randomText(random, random() % 3 == 0 ? random() % 90 : (count + 2) / 3 * 4);
      for (char& c : data) c = c == '\n' || c == '\r' ? ' ' : c;
      text += data + "\n";
    }
    std::vector<std::string> results;
    onEachCpuPath([&] { results.push_back(unuu(text).bytes); });
    for (const std::string& result : results) ASSERT_EQ(result, results.front()) << hex(text);
  }
}

TEST(UuTest, DecodesTolerantly) {
  const Block cat{"Cat", "600", "x y"};
  EXPECT_EQ(unuu("Hello,\n\nbegin 600 x y \n#0V%T\n \nend\n"), cat)
      << "text in front, LF, blank form";
  EXPECT_EQ(unuu("begin with this\r\nbegin 600 x y\r\n#0V%T\r\n"), cat) << "prose; no end";
  EXPECT_EQ(unuu("begin 600 x y\n#0V%T\nend\nbegin 644 z\n#0V%T\n`\nend\n"), cat)
      << "first block only";
  EXPECT_EQ(unuu("begin 600 x y\nabc\n\x80\n#0V%T\n`\nend\n"), cat) << "lines that hold no data";
  EXPECT_EQ(unuu("begin 600 x y\n*\n`\n").bytes, std::string(10, '\0')) << "stripped blanks";
}

TEST(UuTest, WithoutABeginLineThereIsNothing) {
  for (const char* const text :
       {"", "begin", "begin 644", "begin 999 x\n#0V%T\n", "#0V%T\n`\nend\n"})
    EXPECT_EQ(unuu(text), (Block{"", "old", "old"})) << text;
}

TEST(UuTest, AnyTextEndsAndStaysBounded) {
  std::mt19937 random(8);
  for (int round = 0; round < 300; ++round) {
    const std::string body = randomText(random, 300, round % 2 == 0 ? "" : "M_~`# \r\n");
    EXPECT_LE(unuu("begin 644 x\n" + body).bytes.size(), 63 * body.size());
  }
}

}  // namespace
}  // namespace zantrel::test
