// PPMd against 7-Zip: zip archives with one member of method 98, which differ from a bare stream
// only in the records around it.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "compress/ppmd_engine.h"
#include "core/log_null.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::string little(std::uint64_t value, int bytes) {
  std::string out;
  for (; bytes > 0; --bytes, value >>= 8) out += static_cast<char>(value);
  return out;
}

std::uint64_t littleAt(const std::string& data, std::size_t at, std::size_t bytes) {
  std::uint64_t value = 0;
  for (; bytes > 0; --bytes)
    value = value << 8 | static_cast<std::uint8_t>(data.at(at + bytes - 1));
  return value;
}

// CRC-32 by its definition (ISO 3309).
std::uint32_t crc32Of(const std::string& bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes) {
    crc ^= static_cast<std::uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (0xEDB88320 & (0 - (crc & 1)));
  }
  return ~crc;
}

// An archive of one file "f" (APPNOTE 4.3).
std::string zipOf(const std::string& stream, const std::string& plain) {
  const std::string common = little(63, 2) + little(0, 2) + little(98, 2) + little(0x5A21, 4) +
                             little(crc32Of(plain), 4) + little(stream.size(), 4) +
                             little(plain.size(), 4) + little(1, 2) + little(0, 2);
  const std::string local = "PK\3\4" + common + "f" + stream;
  const std::string central = "PK\1\2" + little(63, 2) + common + little(0, 14) + "f";
  return local + central + "PK\5\6" + little(0, 4) + little(1, 2) + little(1, 2) +
         little(central.size(), 4) + little(local.size(), 4) + little(0, 2);
}

std::string memberOf(const std::string& zip) {
  const std::size_t central = zip.rfind("PK\1\2");
  const std::size_t size = littleAt(zip, central + 20, 4);
  return zip.substr(30 + littleAt(zip, 26, 2) + littleAt(zip, 28, 2), size);
}

std::string compress(const std::string& text, unsigned order, unsigned memoryMb,
                     PpmdRestore restore) {
  PpmdEngine engine;
  LogNull log;
  DataBuffer out;
  engine.setModel(order, memoryMb, restore);
  EXPECT_TRUE(engine.compressBuffer(asBytes(text), out, log, nullptr));
  return std::string(out.text());
}

std::string decompress(const std::string& data) {
  PpmdEngine engine;
  LogNull log;
  DataBuffer out;
  EXPECT_TRUE(engine.decompressBuffer(asBytes(data), out, log, nullptr));
  return std::string(out.text());
}

// The peer asks for less memory when the file is small, so the texts are large enough to keep it.
std::string words(std::size_t size) {
  std::mt19937 random(3);
  std::string text;
  while (text.size() < size) {
    if (random() % 2000 == 0) text += std::to_string(random());
    text +=
        "word" + std::to_string((random() % 90) * (random() % 90)) + (random() % 9 ? " " : "\n");
  }
  return text;
}

class PpmdInteropTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"7zz", "7z"})
      if (program_.empty() && haveProgram(name)) program_ = name;
    if (program_.empty()) GTEST_SKIP() << "7-Zip is not installed";
  }
  std::string program_;
  TempFolder folder_;
};

TEST_F(PpmdInteropTest, BothWriteTheSameBytes) {
  const std::string text = words(1200000);
  writeFile(folder_ / "f", text);
  for (const PpmdRestore restore : {PpmdRestore::Restart, PpmdRestore::CutOff}) {
    for (const unsigned order : {2U, 8U, 16U}) {
      for (const unsigned memoryMb : {1U, 16U}) {
        const std::string zip =
            folder_ / ("f" + std::to_string(order) + "-" + std::to_string(memoryMb) + ".zip");
        const std::string level = restore == PpmdRestore::Restart ? "-mx=5" : "-mx=9";
        const std::string model =
            "-mm=PPMd:o=" + std::to_string(order) + ":mem=" + std::to_string(memoryMb) + "m";
        std::remove(zip.c_str());
        ASSERT_TRUE(runProgram({program_, "a", "-tzip", level, model, zip, folder_ / "f"}));
        EXPECT_TRUE(memberOf(readFile(zip)) == compress(text, order, memoryMb, restore))
            << level << " " << model;
      }
    }
  }
}

TEST_F(PpmdInteropTest, EachReadsTheOther) {
  for (const std::string& text : {std::string(), std::string("a"), words(200), words(400000)}) {
    for (const PpmdRestore restore : {PpmdRestore::Restart, PpmdRestore::CutOff}) {
      const std::string zip = folder_ / "ours.zip";
      writeFile(zip, zipOf(compress(text, 6, 1, restore), text));
      EXPECT_TRUE(runProgram({program_, "e", "-so", zip}) == text) << text.size();
    }
  }
  const std::string text = words(100000);
  writeFile(folder_ / "f", text);
  ASSERT_TRUE(runProgram({program_, "a", "-tzip", "-mm=PPMd", folder_ / "z.zip", folder_ / "f"}));
  EXPECT_TRUE(decompress(memberOf(readFile(folder_ / "z.zip"))) == text);
}

}  // namespace
}  // namespace zantrel::test
