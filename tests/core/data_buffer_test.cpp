#include "core/data_buffer.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

#include "core/storage.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

DataBuffer bufferOf(std::string_view bytes) {
  DataBuffer buffer;
  buffer.append(bytes);
  return buffer;
}

TEST(DataBufferTest, GrowsByTwentyThousandBytesOrByTheNeed) {
  DataBuffer buffer;
  EXPECT_EQ(buffer.getData2(), nullptr);
  buffer.append("abc", 3);
  EXPECT_EQ(buffer.capacity(), 20'000U);
  buffer.append(std::string(25'000, 'x'));
  EXPECT_EQ(buffer.capacity(), 25'003U);
  buffer.append("y", 1);
  EXPECT_EQ(buffer.capacity(), 45'003U);
}

TEST(DataBufferTest, GrowsByTenThousandBytesForASingleByte) {
  DataBuffer buffer;
  std::vector<unsigned> capacities;
  for (int i = 0; i < 25'000; ++i) {
    ASSERT_TRUE(buffer.appendChar(static_cast<std::uint8_t>(i)));
    if (capacities.empty() || capacities.back() != buffer.capacity()) {
      capacities.push_back(buffer.capacity());
    }
  }
  EXPECT_EQ(capacities, (std::vector<unsigned>{10'000, 20'000, 30'000}));
  EXPECT_EQ(*buffer.getDataAt2(24'999), static_cast<std::uint8_t>(24'999));
  EXPECT_EQ(buffer.getDataAt2(25'000), nullptr);
}

TEST(DataBufferTest, ReserveAndConstructionTakeExactlyWhatIsAsked) {
  DataBuffer buffer(17);
  EXPECT_EQ(buffer.capacity(), 17U);
  ASSERT_TRUE(buffer.reserve(100));
  EXPECT_EQ(buffer.capacity(), 100U);
  std::uint8_t* const to = buffer.prepare(40);
  ASSERT_NE(to, nullptr);
  std::fill_n(to, 30, std::uint8_t{7});
  buffer.commit(30);
  EXPECT_EQ(buffer.getSize(), 30U);
  EXPECT_EQ(buffer.capacity(), 100U);
}

TEST(DataBufferTest, AppendsFromItsOwnStorageWhileItGrows) {
  DataBuffer buffer = bufferOf("0123456789");
  std::string expected = "0123456789";
  while (expected.size() < 60'000) {
    ASSERT_TRUE(buffer.append(buffer.getData2() + 4, buffer.getSize() - 4));
    expected += expected.substr(4);
  }
  EXPECT_EQ(buffer.text(), expected);
}

TEST(DataBufferTest, NothingToAppendSucceeds) {
  DataBuffer buffer;
  EXPECT_TRUE(buffer.append(nullptr, 5));
  EXPECT_TRUE(buffer.append("x", 0));
  EXPECT_TRUE(buffer.append(DataBuffer()));
  EXPECT_EQ(buffer.getSize(), 0U);
}

TEST(DataBufferTest, DropsItsContentDeliberatelyWhenGrowingFails) {
  DataBuffer buffer = bufferOf("content");
  {
    const storage::ScopedAllocationFault fault(0);
    EXPECT_FALSE(buffer.append(std::string(30'000, 'x')));
  }
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.capacity(), 0U);
  EXPECT_EQ(buffer.getData2(), nullptr);
  EXPECT_TRUE(buffer.append("new", 3));
  EXPECT_EQ(buffer.text(), "new");
}

TEST(DataBufferTest, KeepsItsContentWhenReserveFails) {
  DataBuffer buffer = bufferOf("content");
  const storage::ScopedAllocationFault fault(0);
  EXPECT_FALSE(buffer.reserve(30'000));
  EXPECT_EQ(buffer.prepare(30'000), nullptr);
  EXPECT_EQ(buffer.text(), "content");
}

TEST(DataBufferTest, TreatsSizesBeyondItsLimitAsStorageThatCannotBeHad) {
  DataBuffer buffer = bufferOf("x");
  EXPECT_FALSE(buffer.reserve(0xFFFFFFFFU));
  EXPECT_EQ(buffer.text(), "x");
  const volatile std::size_t tooMany = 0xFFFFFFFFU;  // unknown to the compiler, which else warns
  EXPECT_FALSE(buffer.append("y", tooMany));
  EXPECT_EQ(buffer.getSize(), 0U);
}

TEST(DataBufferTest, BorrowsABlockUntilItGrows) {
  char lent[] = "lent";
  DataBuffer buffer = bufferOf("own");
  buffer.borrowData(lent, 4);
  EXPECT_TRUE(buffer.isBorrowed());
  EXPECT_EQ(static_cast<void*>(buffer.getData2()), lent);
  EXPECT_EQ(buffer.capacity(), 4U);
  buffer.append("+", 1);
  EXPECT_FALSE(buffer.isBorrowed());
  EXPECT_EQ(buffer.text(), "lent+");
  EXPECT_STREQ(lent, "lent");

  buffer.borrowData(lent, 4);
  const DataBuffer copy(buffer);
  EXPECT_FALSE(copy.isBorrowed());
  buffer = bufferOf("else");
  EXPECT_STREQ(lent, "lent");
}

TEST(DataBufferTest, ShortensAndDropsFromTheFront) {
  DataBuffer buffer = bufferOf("abcdef");
  buffer.removeFront(2);
  EXPECT_EQ(buffer.text(), "cdef");
  buffer.shorten(1);
  EXPECT_EQ(buffer.text(), "cde");
  buffer.truncate(2);
  EXPECT_EQ(buffer.text(), "cd");
  buffer.shorten(10);
  EXPECT_EQ(buffer.getSize(), 0U);
  buffer.removeFront(1);
  EXPECT_EQ(buffer.getSize(), 0U);
}

TEST(DataBufferTest, SecureClearOverwritesWithZeros) {
  DataBuffer buffer = bufferOf("secret");
  buffer.secureClear();
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer.getData2()), 6), std::string(6, '\0'));
}

TEST(DataBufferTest, SwapsGroupsOfFourAndTheRest) {
  const std::pair<std::string, std::string> cases[] = {
      {"\1\2\3\4\5\6", "\4\3\2\1\6\5"}, {"\1\2\3", "\3\2\1"}, {"\1", "\1"}, {"", ""},
      {"\1\2\3\4\5", "\4\3\2\1\5"},
  };
  for (const auto& [before, after] : cases) {
    DataBuffer buffer = bufferOf(before);
    buffer.byteSwap4321();
    EXPECT_EQ(buffer.text(), after);
  }
}

TEST(DataBufferTest, WritesHexadecimalDigitsInUpperCase) {
  StringBuffer out("x");
  bufferOf("\x0A\xFF").toHexString(out);
  DataBuffer().toHexString(out);
  EXPECT_EQ(out.view(), "x0AFF");
}

TEST(DataBufferTest, FindsTheCharsetOfAnXmlDeclaration) {
  const std::pair<std::string, std::string> cases[] = {
      {R"(<?xml version="1.0" encoding="ISO-8859-1"?>)", "ISO-8859-1"},
      {"<?xml version='1.0' Encoding \n=\r\t 'utf-8'?>", "utf-8"},
      {R"(<?xml encoding="'x'"?>)", "x"},
      {R"(<!-- encoding = "first" --><?xml encoding="second"?>)", "first"},
      {R"(<?xml encoding="open)", ""},
      {R"(<?xml encoding="")", ""},
      {R"(<?xml encoding)", ""},
      {R"(<?xml version="1.0"?>)", ""},
      {std::string("a\0encoding=\"late\"", 17), ""},
      {"", ""},
  };
  for (const auto& [document, charset] : cases) {
    StringBuffer out("old");
    EXPECT_EQ(bufferOf(document).getXmlCharset(out), !charset.empty()) << document;
    EXPECT_EQ(out.view(), charset) << document;
  }
}

TEST(DataBufferDeathTest, UseAfterDestructionStopsTheProcess) {
  alignas(DataBuffer) unsigned char place[sizeof(DataBuffer)];
  auto* buffer = new (place) DataBuffer();
  buffer->append("gone", 4);
  buffer->~DataBuffer();
  EXPECT_DEATH_IF_SUPPORTED(buffer->append("x", 1), "");
  EXPECT_DEATH_IF_SUPPORTED(buffer->appendChar(1), "");
  EXPECT_DEATH_IF_SUPPORTED(buffer->clear(), "");
}

TEST(DataBufferDeathTest, CommitBeyondThePreparedRoomStopsTheProcess) {
  DataBuffer buffer;
  ASSERT_NE(buffer.prepare(3), nullptr);
  EXPECT_DEATH_IF_SUPPORTED(buffer.commit(4), "");
}

}  // namespace
}  // namespace zantrel
