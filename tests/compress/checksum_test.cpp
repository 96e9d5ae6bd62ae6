#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

#include "compress/adler32.h"
#include "compress/zip_crc.h"
#include "core/log_null.h"
#include "frame/progress_event.h"
#include "frame/progress_monitor.h"
#include "support/cpu_paths.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

// Those of cpu_paths.h, and the carry-less multiplication of one register.
template <class Body>
void onEachPath(const Body& body) {
  onEachCpuPath(body);
  SCOPED_TRACE("pclmul");
  CpuFeatures features = detectCpuFeatures();
  features.vpclmul = false;
  const ScopedCpuFeatures scope(features);
  body();
}

std::string randomBytes(std::size_t size) {
  std::mt19937 random(static_cast<unsigned>(size) + 1);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// The definitions, a bit and a byte at a time.

std::uint32_t slowCrc(std::uint32_t crc, ByteSpan bytes) {
  crc = ~crc;
  for (const std::uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
  }
  return ~crc;
}

std::uint32_t slowAdler(std::uint32_t adler, ByteSpan bytes) {
  std::uint32_t a = adler & 0xFFFF;
  std::uint32_t b = adler >> 16;
  for (const std::uint8_t byte : bytes) {
    a = (a + byte) % 65521;
    b = (b + a) % 65521;
  }
  return b << 16 | a;
}

struct Published {
  std::string text;
  std::uint32_t crc;
  std::uint32_t adler;
};

// The check value of the catalogue of parametrised CRC algorithms, and what zlib computes.
const Published kPublished[] = {
    {"", 0, 1},
    {"123456789", 0xCBF43926, 0x091E01DE},
    {"a", 0xE8B7BE43, 0x00620062},
    {"Wikipedia", 0xADAAC02E, 0x11E60398},
    {"The quick brown fox jumps over the lazy dog", 0x414FA339, 0x5BDC0FDA},
};

TEST(ChecksumTest, PublishedValuesOnEachCpuPath) {
  onEachPath([] {
    for (const Published& row : kPublished) {
      EXPECT_EQ(ZipCRC::getCRC(asBytes(row.text)), row.crc) << row.text;
      EXPECT_EQ(Adler32::getAdler(asBytes(row.text)), row.adler) << row.text;
    }
  });
}

// Every length around the steps of each path, from aligned and odd addresses, and from any value.
TEST(ChecksumTest, EveryLengthAndAddressGivesTheSumByDefinition) {
  const std::string bytes = randomBytes(1400);
  onEachPath([&] {
    for (std::size_t offset = 0; offset < 3; ++offset) {
      for (std::size_t size = 0; size <= 1300; size += size < 600 ? 1 : 37) {
        const ByteSpan piece = asBytes(bytes).subspan(offset, size);
        const std::uint32_t crc = static_cast<std::uint32_t>(2654435761U * (size + 1));
        const std::uint32_t adler = (crc % 65521) << 16 | static_cast<std::uint32_t>(size % 65521);
        ASSERT_EQ(ZipCRC::extend(crc, piece), slowCrc(crc, piece)) << size;
        ASSERT_EQ(Adler32::extend(adler, piece), slowAdler(adler, piece)) << size;
      }
    }
  });
}

TEST(ChecksumTest, LongRunsOfTheGreatestByteDoNotOverflow) {
  const std::string bytes(200003, '\xFF');
  const std::uint32_t greatest = 0xFFFFFFFF;  // no checksum, but it may come from outside
  onEachPath([&] {
    for (const std::size_t size : {5503U, 5504U, 5505U, 5552U, 11008U, 65536U, 200003U}) {
      const ByteSpan piece = asBytes(bytes).first(size);
      EXPECT_EQ(Adler32::extend(greatest, piece), slowAdler(greatest, piece)) << size;
      EXPECT_EQ(ZipCRC::getCRC(piece), slowCrc(0, piece)) << size;
    }
  });
}

TEST(ChecksumTest, PiecesOfAnySizeGiveTheSumOfTheWhole) {
  const std::string bytes = randomBytes(3000);
  onEachPath([&] {
    for (const std::size_t step : {1U, 15U, 16U, 63U, 64U, 65U, 257U, 2999U}) {
      ZipCRC crc;
      Adler32 adler;
      crc.beginStream();
      for (std::size_t at = 0; at < bytes.size(); at += step) {
        const ByteSpan piece = asBytes(bytes).subspan(at, std::min(step, bytes.size() - at));
        crc.moreData(piece);
        adler.moreData(piece);
      }
      EXPECT_EQ(crc.endStream(), ZipCRC::getCRC(asBytes(bytes))) << step;
      EXPECT_EQ(adler.endStream(), Adler32::getAdler(asBytes(bytes))) << step;
      crc.beginStream();
      EXPECT_EQ(crc.endStream(), 0U) << "a stream begun anew is empty";
    }
  });
}

class StopAt final : public ProgressEvent {
 public:
  explicit StopAt(std::uint32_t percent) : percent_(percent) {}
  void PercentDone(std::uint32_t percent, bool& abort) override { abort = percent >= percent_; }

 private:
  std::uint32_t percent_;
};

TEST(ChecksumTest, AFileIsSummedInBlocksThatProgressCounts) {
  const TempFolder folder;
  const std::string bytes = randomBytes(300000);
  writeFile(folder / "data", bytes);
  std::uint32_t crc = 0;
  LogNull log;
  ProgressMonitor counting(nullptr, static_cast<std::int64_t>(bytes.size()));
  ASSERT_TRUE(ZipCRC::fileCRC((folder / "data").c_str(), crc, log, &counting));
  EXPECT_EQ(crc, slowCrc(0, asBytes(bytes)));
  EXPECT_EQ(counting.consumed(), 300000);

  RecordedLog aborted;
  StopAt sink(50);
  ProgressMonitor stopping(&sink, static_cast<std::int64_t>(bytes.size()));
  EXPECT_FALSE(ZipCRC::fileCRC((folder / "data").c_str(), crc, aborted, &stopping));
  EXPECT_EQ(aborted.text(), "error: Aborted by the application.\n");
  EXPECT_LT(stopping.consumed(), 300000);

  RecordedLog missing;
  EXPECT_FALSE(ZipCRC::fileCRC((folder / "nothing").c_str(), crc, missing, nullptr));
  EXPECT_TRUE(missing.has("error: ")) << missing.text();
}

}  // namespace
}  // namespace zantrel::test
