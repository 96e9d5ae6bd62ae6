// What deflate writes, read by zlib and by Python's zlib module, and what that module writes.

#include <gtest/gtest.h>

#include <string>

#include "compress/zantrel_deflate.h"
#include "core/log_null.h"
#include "support/test_data.h"
#ifdef ZANTREL_HAVE_ZLIB
#include <zlib.h>
#endif

namespace zantrel::test {
namespace {

// Text, runs and noise by turns, of more than one window.
std::string sample(std::size_t size) {
  std::uint32_t state = 5;
  const auto next = [&state] { return (state = state * 1664525 + 1013904223) >> 8; };
  std::string text;
  while (text.size() < size) {
    const std::uint32_t kind = next() % 8;
    if (kind == 0) {
      text.append(next() % 500, static_cast<char>(next()));
    } else if (kind == 1) {
      for (std::uint32_t n = next() % 9000; n > 0; --n) text += static_cast<char>(next());
    } else {
      for (std::uint32_t n = next() % 900; n > 0; --n) text += "etaoin shrdlu etaoin"[next() % 20];
    }
  }
  return text.substr(0, size);
}

constexpr std::size_t kSizes[] = {0, 1, 3, 1000, 65536, 262145, 700000};

#ifdef ZANTREL_HAVE_ZLIB
TEST(DeflateInteropTest, ZlibReadsEveryLevel) {
  for (const std::size_t size : kSizes) {
    const std::string text = sample(size);
    for (int level = 0; level <= 9; ++level) {
      ZantrelDeflate engine;
      engine.setLevel(level);
      LogNull log;
      DataBuffer out;
      ASSERT_TRUE(engine.zlibCompress(asBytes(text), out, log));
      std::string back(size + 1, '\0');
      uLongf length = static_cast<uLongf>(back.size());
      uLong used = out.getSize();
      ASSERT_EQ(uncompress2(reinterpret_cast<Bytef*>(back.data()), &length, out.getData2(), &used),
                Z_OK);
      EXPECT_EQ(used, out.getSize());
      EXPECT_TRUE(back.substr(0, length) == text) << size << " at " << level;
    }
  }
}
#endif

TEST(DeflateInteropTest, PythonReadsAndWritesTheSame) {
  if (!haveProgram("python3")) GTEST_SKIP() << "python3 is not installed";
  const TempFolder folder;
  LogNull log;
  for (const std::size_t size : kSizes) {
    const std::string text = sample(size);
    writeFile(folder / "text", text);
    ZantrelDeflate engine;
    DataBuffer framed;
    ASSERT_TRUE(engine.zlibCompress(asBytes(text), framed, log));
    writeFile(folder / "ours", framed.text());
    // The decoder must be at its end, with nothing left: so the trailer is checked too.
    const auto answer = runProgram({"python3", "-c",
                                    "import sys,zlib\n"
                                    "text=open(sys.argv[1],'rb').read()\n"
                                    "d=zlib.decompressobj()\n"
                                    "back=d.decompress(open(sys.argv[2],'rb').read())\n"
                                    "open(sys.argv[3],'wb').write(zlib.compress(text,7))\n"
                                    "print(back==text and d.eof and d.unused_data==b'')",
                                    folder / "text", folder / "ours", folder / "theirs"});
    EXPECT_EQ(answer, "True\n") << size;
    DataBuffer back;
    const std::string theirs = readFile(folder / "theirs");
    EXPECT_TRUE(engine.zlibDecompress(asBytes(theirs), back, log)) << size;
    EXPECT_TRUE(back.text() == text) << size;
  }
}

}  // namespace
}  // namespace zantrel::test
