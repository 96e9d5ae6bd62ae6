#ifdef ZANTREL_HAVE_ZLIB

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

#include "compress/adler32.h"
#include "compress/inflate_state2.h"
#include "compress/zip_crc.h"
#include "support/cpu_paths.h"

namespace zantrel::test {
namespace {

// Texts of few words, runs and noise, changing all the time.
std::string sample(std::size_t size) {
  std::mt19937 random(9);
  std::string text;
  while (text.size() < size) {
    switch (random() % 4) {
      case 0:
        text.append(random() % 400, static_cast<char>(random()));
        break;
      case 1:
        for (auto i = random() % 200; i > 0; --i) text += static_cast<char>(random());
        break;
      default:
        for (auto i = random() % 60; i > 0; --i)
          text += "the of and a to in it is that was "[random() % 34];
    }
  }
  return text;
}

std::string deflated(const std::string& plain, int level, int memory, int strategy, int flush) {
  z_stream z{};
  EXPECT_EQ(deflateInit2(&z, level, Z_DEFLATED, -15, memory, strategy), Z_OK);
  std::string out(2 * plain.size() + 10000, '\0');
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  z.avail_in = static_cast<uInt>(plain.size() / 2);
  deflate(&z, flush);
  z.avail_in += static_cast<uInt>(plain.size() - plain.size() / 2);
  EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

TEST(InflateInteropTest, EveryLevelStrategyAndFlushOfZlib) {
  const std::string plain = sample(60000);
  for (const int level : {0, 1, 3, 6, 9}) {
    for (const int memory : {1, 8}) {
      for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
        for (const int flush : {Z_NO_FLUSH, Z_SYNC_FLUSH, Z_FULL_FLUSH}) {
          const std::string stream = deflated(plain, level, memory, strategy, flush);
          onEachCpuPath([&] {
            InflateState2 state;
            DataBuffer out;
            ByteSpan in = asBytes(stream);
            ASSERT_EQ(state.inflateAll(in, out, 0), InflateState2::Status::finished);
            ASSERT_TRUE(in.empty());
            ASSERT_TRUE(out.text() == plain) << level << ' ' << memory << ' ' << strategy;
          });
        }
      }
    }
  }
}

TEST(ChecksumInteropTest, AsZlibFromAnyValue) {
  const std::string bytes = sample(70000);
  std::mt19937 random(3);
  onEachCpuPath([&] {
    for (int i = 0; i < 300; ++i) {
      const ByteSpan piece = asBytes(bytes).subspan(random() % 100, 1 + random() % 60000);
      const auto count = static_cast<uInt>(piece.size());
      const auto crc = static_cast<std::uint32_t>(random());
      const auto adler = static_cast<std::uint32_t>((random() % 65521) << 16 | random() % 65521);
      ASSERT_EQ(ZipCRC::extend(crc, piece), crc32(crc, piece.data(), count));
      ASSERT_EQ(Adler32::extend(adler, piece), adler32(adler, piece.data(), count));
    }
  });
}

}  // namespace
}  // namespace zantrel::test

#endif
