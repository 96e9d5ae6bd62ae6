#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "crypto/digest_names.h"
#include "crypto/hash.h"
#include "crypto/hashing.h"
#include "frame/progress_event.h"
#include "frame/progress_monitor.h"
#include "support/cpu_paths.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::vector<std::string> algorithmNames() {
  std::vector<std::string> names;
  for (const HashAlgorithm& algorithm : hashAlgorithms()) {
    if (algorithm.id != kHashHaval) names.emplace_back(algorithm.name);
  }
  for (const char* haval : {"haval128,3", "haval160,4", "haval192,5", "haval224,3", "haval256,5"})
    names.emplace_back(haval);
  return names;
}

std::string randomBytes(std::size_t size) {
  std::mt19937 random(static_cast<unsigned>(size));
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

TEST(DigestTest, PublishedValuesOnEachCpuPath) {
  const auto rows = readTable(ZANTREL_TEST_DATA "/crypto/digests.tsv");
  ASSERT_GT(rows.size(), 100U);
  onEachCpuPath([&] {
    for (const auto& row : rows) {
      std::string message;
      for (int i = std::stoi(row[2]); i > 0; --i) message += row[1];
      EXPECT_EQ(hex(digestOf(row[0], message)), row[3]) << row[0] << " of '" << row[1] << "'";
    }
  });
}

// Every length up to three blocks, so that each place of the padding occurs, from every piece size
// around a block and from odd addresses.
TEST(DigestTest, PiecesOfAnySizeGiveTheDigestOfTheWhole) {
  onEachCpuPath([] {
    for (const std::string& name : algorithmNames()) {
      for (std::size_t size = 0; size <= 390; size += size < 260 ? 1 : 13) {
        const std::string bytes = randomBytes(size);
        const std::string whole = digestOf(name, bytes);
        const std::string shifted = "x" + bytes;
        EXPECT_EQ(digestOf(name, std::string_view(shifted).substr(1)), whole);
        for (const std::size_t piece : {1U, 7U, 15U, 16U, 17U, 63U, 64U, 65U, 127U, 128U, 129U})
          EXPECT_EQ(digestInPieces(name, bytes, piece), whole)
              << name << ' ' << size << ' ' << piece;
      }
    }
  });
}

TEST(DigestTest, CpuPathsAgreeOnLongInput) {
  for (const std::string& name : algorithmNames()) {
    const std::string bytes = randomBytes(100001);
    std::string first;
    onEachCpuPath([&] {
      const std::string digest = digestOf(name, bytes);
      if (first.empty()) first = digest;
      EXPECT_EQ(digest, first) << name;
    });
  }
}

TEST(DigestTest, AFinishedContextCanBeUsedAgain) {
  for (const std::string& name : algorithmNames()) {
    DigestContext digest = digestByName(name);
    digest.update(asBytes("something"));
    EXPECT_EQ(finished(digest), digestOf(name, "something"));
    EXPECT_EQ(finished(digest), digestOf(name, "")) << name;
  }
}

TEST(DigestTest, FinalizeAppendsToABuffer) {
  DataBuffer out;
  out.append(std::string_view("before"));
  Md5 md5;
  md5.update("abc", 3);
  md5.finalize(out);
  EXPECT_EQ(hex(out.text()), hex("before") + "900150983cd24fb0d6963f7d28e17f72");
}

TEST(DigestTest, Sha2KeepsTheVariantThatItWasMadeWith) {
  Sha2 sha384(Sha2::Variant::kSha384);
  sha384.update("x", 1);
  sha384.initialize();
  EXPECT_EQ(sha384.variant(), Sha2::Variant::kSha384);
  DataBuffer out;
  sha384.finalize(out);
  EXPECT_EQ(std::string(out.text()), digestOf("sha384", ""));
}

TEST(DigestTest, HavalSizesSnapDownAndPassesAreLimited) {
  const std::vector<std::pair<int, int>> sizes = {{-5, 128},  {0, 128},   {159, 128}, {160, 160},
                                                  {200, 192}, {224, 224}, {255, 224}, {1000, 256}};
  for (const auto& [asked, legal] : sizes) EXPECT_EQ(Haval2::legalBits(asked), legal) << asked;
  EXPECT_EQ(Haval2(200, 0).digestBytes(), 24U);
  EXPECT_EQ(Haval2::legalPasses(7), 5);
  EXPECT_EQ(Haval2::legalPasses(0), 3);
  EXPECT_EQ(Haval2::legalPasses(4), 4);
}

/// A source of `total` bytes that counts what is asked of it and can fail.
class CountingSource final : public DataSource {
 public:
  CountingSource(std::size_t total, std::int64_t failAt)
      : bytes_(randomBytes(total)), failAt_(failAt) {}
  bool nextBlock(std::size_t wanted, ByteSpan& block, LogBase& log) override {
    asked.push_back(wanted);
    block = {};
    if (failAt_ >= 0 && position_ >= failAt_) {
      log.logError("The disk is on fire.");
      return false;
    }
    block = asBytes(bytes_).subspan(static_cast<std::size_t>(position_));
    block = block.first(std::min(block.size(), wanted));
    position_ += static_cast<std::int64_t>(block.size());
    return true;
  }
  std::int64_t size() const override { return static_cast<std::int64_t>(bytes_.size()); }
  const std::string& bytes() const { return bytes_; }

  std::vector<std::size_t> asked;

 private:
  std::string bytes_;
  std::int64_t failAt_;
};

class AbortAt final : public ProgressEvent {
 public:
  explicit AbortAt(std::uint32_t percent) : percent_(percent) {}
  void PercentDone(std::uint32_t percent, bool& abort) override { abort = percent >= percent_; }

 private:
  std::uint32_t percent_;
};

TEST(DigestSourceTest, ReadsBlocksOf20000BytesToTheEnd) {
  for (const std::string& name : algorithmNames()) {
    CountingSource source(50000, -1);
    RecordedLog log;
    DataBuffer out;
    ASSERT_TRUE(digestByName(name).digestSource(source, nullptr, log, out));
    EXPECT_EQ(std::string(out.text()), digestOf(name, source.bytes())) << name;
    EXPECT_EQ(source.asked, std::vector<std::size_t>(4, 20000));
    EXPECT_EQ(log.text(), "");
  }
}

TEST(DigestSourceTest, AnAbortAtAnyBlockEndsWithoutADigestAndNamesTheAlgorithm) {
  for (const HashAlgorithm& algorithm : hashAlgorithms()) {
    for (const std::uint32_t percent : {20U, 60U, 100U}) {
      CountingSource source(100000, -1);
      AbortAt sink(percent);
      ProgressMonitor monitor(&sink, source.size());
      RecordedLog log;
      DataBuffer out;
      EXPECT_FALSE(DigestContext(algorithm.id).digestSource(source, &monitor, log, out));
      EXPECT_EQ(out.getSize(), 0U);
      EXPECT_EQ(log.text(), std::string("error: Digest ") + algorithm.printedName +
                                " aborted by application\n");
      EXPECT_EQ(source.position(), percent * 1000);
    }
  }
}

TEST(DigestSourceTest, AReadFailureEndsWithoutADigest) {
  CountingSource source(100000, 40000);
  RecordedLog log;
  DataBuffer out;
  EXPECT_FALSE(Sha1().digestSource(source, nullptr, log, out));
  EXPECT_EQ(out.getSize(), 0U);
  EXPECT_EQ(log.text(), "error: The disk is on fire.\n");
}

TEST(HashingTest, TheProviderIsTheLibraryItself) {
  const std::string bytes = randomBytes(45678);
  RecordedLog log;
  for (const auto& [id, name] :
       {std::pair{Hashing::kCalgSha1, "sha1"}, {Hashing::kCalgMd2, "md2"}}) {
    MemoryDataSource source(asBytes(bytes));
    DataBuffer out;
    ASSERT_TRUE(Hashing::hashSourceWithProvider(id, source, nullptr, log, out));
    EXPECT_EQ(std::string(out.text()), digestOf(name, bytes));
  }
  MemoryDataSource source(asBytes(bytes));
  DataBuffer out;
  AbortAt sink(1);
  ProgressMonitor monitor(&sink, source.size());
  EXPECT_FALSE(Hashing::hashSourceWithProvider(Hashing::kCalgSha1, source, &monitor, log, out));
  EXPECT_EQ(log.text(), "error: Hashing aborted by application\n");
  EXPECT_FALSE(Hashing::hashSourceWithProvider(0x8003, source, nullptr, log, out));
  EXPECT_TRUE(log.has("error: Failed to create hash object."));
  EXPECT_EQ(out.getSize(), 0U);
}

TEST(HashingTest, OneShotsReplaceTheOutput) {
  DataBuffer out;
  Hashing::sha1("abc", 3, out);
  EXPECT_EQ(hex(out.text()), "a9993e364706816aba3e25717850c26c9cd0d89d");
  Hashing::md2(nullptr, 0, out);
  EXPECT_EQ(hex(out.text()), "8350e5a3e24c153df2275c9f80692773");
}

}  // namespace
}  // namespace zantrel::test
