#include "core/string_buffer.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

#include "core/data_buffer.h"
#include "core/storage.h"

namespace zantrel {
namespace {

std::string text(const StringBuffer& buffer) {
  return std::string(buffer.view());
}

TEST(StringBufferTest, GrowsInStepsOfAboutHalfItsSize) {
  StringBuffer buffer;
  std::vector<int> capacities{buffer.capacity()};
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(buffer.appendChar('x'));
    if (buffer.capacity() != capacities.back()) capacities.push_back(buffer.capacity());
  }
  EXPECT_EQ(capacities, (std::vector<int>{202, 405, 608, 913, 1370}));
  EXPECT_EQ(text(buffer), std::string(1000, 'x'));
}

TEST(StringBufferTest, NeverGrowsByMoreThanHalfAMillionBytesBeyondTheNeed) {
  StringBuffer buffer;
  const std::string block(7'000'000, 'a');
  buffer.append(block);
  EXPECT_EQ(buffer.capacity(), 202 + 7'000'000 + 1);
  buffer.append(block);
  EXPECT_EQ(buffer.capacity(), 500'000 + 14'000'000 + 1);
  EXPECT_EQ(buffer.getString()[14'000'000], '\0');
}

TEST(StringBufferTest, ReserveAndExactConstructionTakeNoMoreThanAsked) {
  StringBuffer exact = StringBuffer::withCapacity(1000);
  EXPECT_EQ(exact.capacity(), 1001);
  exact.append(std::string(1000, 'b'));
  EXPECT_EQ(exact.capacity(), 1001);
  StringBuffer reserved;
  ASSERT_TRUE(reserved.reserve(5000));
  EXPECT_EQ(reserved.capacity(), 5001);
}

TEST(StringBufferTest, AppendsFromItsOwnStorageWhileItGrows) {
  StringBuffer buffer("0123456789");
  std::string expected = "0123456789";
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(buffer.append(buffer.getString() + 3, buffer.getSize() - 3));
    expected += expected.substr(3);
  }
  EXPECT_EQ(text(buffer), expected);
  EXPECT_TRUE(buffer.setString(buffer.getString() + 5));
  EXPECT_EQ(text(buffer), expected.substr(5));
}

TEST(StringBufferTest, FallsBackToASharedEmptyTextWhenStorageCannotBeHad) {
  const storage::ScopedAllocationFault fault(0);
  StringBuffer buffer;
  EXPECT_EQ(buffer.capacity(), 0);
  EXPECT_STREQ(buffer.getString(), "");
  EXPECT_FALSE(buffer.append("x"));
  EXPECT_FALSE(buffer.appendChar('x'));
  buffer.clear();
  buffer.secureClear();
  buffer.trim2();
  buffer.commit(0);
  EXPECT_EQ(buffer.getSize(), 0U);
}

TEST(StringBufferTest, KeepsItsContentWhenGrowingFails) {
  StringBuffer buffer("content");
  const storage::ScopedAllocationFault fault(0);
  EXPECT_FALSE(buffer.append(std::string(1000, 'x')));
  EXPECT_EQ(text(buffer), "content");
  EXPECT_EQ(buffer.replaceAllOccurances("n", std::string(500, 'N')), 0U);
  EXPECT_EQ(text(buffer), "content");
}

TEST(StringBufferTest, TreatsSizesBeyondItsLimitAsStorageThatCannotBeHad) {
  StringBuffer buffer("x");
  const volatile std::size_t tooMany = 0x7FFFFFFF;  // unknown to the compiler, which else warns
  EXPECT_FALSE(buffer.append("y", tooMany));
  EXPECT_FALSE(buffer.reserve(std::size_t{0x7FFFFFFE}));
  EXPECT_EQ(buffer.prepare(std::size_t{0xFFFFFFF0}), nullptr);
  EXPECT_EQ(text(buffer), "x");
}

TEST(StringBufferTest, SecureClearOverwritesWithBlanks) {
  StringBuffer buffer("secret");
  buffer.secureClear();
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(std::string(buffer.getString() + 1, 5), "     ");
}

TEST(StringBufferTest, MinimizeMemoryLeavesRoomForTheTextOnly) {
  StringBuffer buffer("abc");
  buffer.minimizeMemory();
  EXPECT_EQ(buffer.capacity(), 4);
  buffer.append("de");
  EXPECT_EQ(text(buffer), "abcde");
}

TEST(StringBufferTest, CharAtAnswersZeroOutOfRange) {
  const StringBuffer buffer("ab");
  EXPECT_EQ(buffer.charAt(-1), '\0');
  EXPECT_EQ(buffer.charAt(2), '\0');
  EXPECT_EQ(buffer.charAt(1), 'b');
  EXPECT_EQ(buffer.lastChar(), 'b');
}

TEST(StringBufferTest, LowersLatin1BytesAndTheTwoThatAreNoLetters) {
  StringBuffer buffer("AZaz\xC9\xD7\xDF\xE9\xFF@[");
  buffer.toLowerCase();
  EXPECT_EQ(text(buffer), "azaz\xE9\xF7\xFF\xE9\xFF@[");
  buffer.toUpperCase();
  EXPECT_EQ(text(buffer), "AZAZ\xE9\xF7\xFF\xE9\xFF@[");
}

TEST(StringBufferTest, EditsInPlace) {
  struct Case {
    const char* before;
    void (*edit)(StringBuffer&);
    const char* after;
  };
  const Case cases[] = {
      {" \t\r\n a b \n", [](StringBuffer& b) { b.trim2(); }, "a b"},
      {" \r\n", [](StringBuffer& b) { b.trim2(); }, ""},
      {"a\nb\r\nc\rd", [](StringBuffer& b) { b.toCRLF(); }, "a\r\nb\r\ncd"},
      {"a\r\nb\rc\n", [](StringBuffer& b) { b.toLF(); }, "a\nb\rc\n"},
      {"aaa", [](StringBuffer& b) { b.replaceAllOccurances("a", "aa"); }, "aaaaaa"},
      {"aaaa", [](StringBuffer& b) { b.replaceAllOccurances("aa", "a"); }, "aa"},
      {"abcabc", [](StringBuffer& b) { b.replaceFirstOccurance("bc", ""); }, "aabc"},
      {"abc", [](StringBuffer& b) { b.replaceAllOccurances("", "x"); }, "abc"},
      {"aaaa", [](StringBuffer& b) { b.replaceAllOccurances("a", ""); }, ""},
      {"abc", [](StringBuffer& b) { b.replaceFirstOccurance("abc", ""); }, ""},
      {"aa", [](StringBuffer& b) { b.replaceAllOccurances("a", ""), b.append("b"); }, "b"},
      {"a.b.c", [](StringBuffer& b) { b.replaceChar('.', '/'); }, "a/b/c"},
      {"a.b.c", [](StringBuffer& b) { b.removeCharOccurances('.'); }, "abc"},
      {"abc", [](StringBuffer& b) { b.shorten(5); }, ""},
      {"abc", [](StringBuffer& b) { b.truncate(2); }, "ab"},
      {"n=", [](StringBuffer& b) { b.appendInt(-9223372036854775807 - 1); },
       "n=-9223372036854775808"},
  };
  for (const Case& c : cases) {
    StringBuffer buffer(c.before);
    c.edit(buffer);
    EXPECT_EQ(text(buffer), c.after) << c.before;
  }
}

TEST(StringBufferTest, FindsLongNeedlesInRepetitiveText) {
  const std::string needle = std::string(40, 'a') + "b";
  StringBuffer buffer(std::string(1000, 'a') + "B" + std::string(1000, 'a') + "b!");
  EXPECT_TRUE(buffer.containsSubstring(needle));
  EXPECT_TRUE(buffer.containsSubstringNoCase(needle));
  EXPECT_EQ(buffer.replaceAllOccurances(needle, "x"), 1U);
  EXPECT_EQ(buffer.getSize(), 1000U + 1 + 960 + 1 + 1);
  EXPECT_TRUE(buffer.equalsIgnoreCase(text(buffer)));
  EXPECT_TRUE(buffer.beginsWithIgnoreCase("AAA"));
  EXPECT_FALSE(buffer.beginsWith("AAA"));
}

TEST(StringBufferTest, ReadsHexadecimalPairsWithoutValidatingThem) {
  const std::pair<const char*, std::string> cases[] = {
      {"0aFf", "\x0A\xFF"}, {"414", "A"}, {"4", ""}, {"", ""}, {"41 42", "\x41\x04"},
  };
  for (const auto& [hex, bytes] : cases) {
    DataBuffer out;
    EXPECT_TRUE(StringBuffer(hex).hexStringToBinary(out));
    EXPECT_EQ(out.text(), bytes) << hex;
  }
}

TEST(StringBufferTest, TakesOverTheBlockOfAByteBuffer) {
  for (const std::size_t size : {0U, 3U, 20'000U, 30'000U}) {  // the third fills its block
    DataBuffer bytes;
    bytes.append(std::string(size, 'x'));
    StringBuffer buffer("old");
    ASSERT_TRUE(buffer.takeBytes(bytes));
    EXPECT_EQ(text(buffer), std::string(size, 'x'));
    EXPECT_EQ(buffer.getString()[size], '\0');
    EXPECT_LE(buffer.capacity(), static_cast<int>(size + size / 4 + 203));
    EXPECT_EQ(bytes.capacity(), 0U);
    EXPECT_TRUE(buffer.append("y"));
  }
  char lent[] = "lent";
  DataBuffer borrowed;
  borrowed.borrowData(lent, 4);
  StringBuffer buffer("old");
  EXPECT_FALSE(buffer.takeBytes(borrowed));
  EXPECT_EQ(text(buffer), "old");
}

TEST(StringBufferTest, LeavesAUsableEmptyBufferBehindWhenMovedFrom) {
  StringBuffer from("text");
  const StringBuffer to(std::move(from));
  EXPECT_EQ(text(to), "text");
  EXPECT_EQ(from.getSize(), 0U);  // NOLINT: use after move is the point
  EXPECT_TRUE(from.append("new"));
  EXPECT_EQ(text(from), "new");
}

TEST(StringBufferDeathTest, UseAfterDestructionStopsTheProcess) {
  alignas(StringBuffer) unsigned char place[sizeof(StringBuffer)];
  auto* buffer = new (place) StringBuffer("gone");
  buffer->~StringBuffer();
  EXPECT_DEATH_IF_SUPPORTED(buffer->append("x"), "");
  EXPECT_DEATH_IF_SUPPORTED(buffer->getSize(), "");
  EXPECT_DEATH_IF_SUPPORTED(buffer->charAt(0), "");
}

TEST(StringBufferDeathTest, CommitBeyondThePreparedRoomStopsTheProcess) {
  StringBuffer buffer;
  ASSERT_NE(buffer.prepare(300), nullptr);
  EXPECT_DEATH_IF_SUPPORTED(buffer.commit(1000), "");
}

}  // namespace
}  // namespace zantrel
