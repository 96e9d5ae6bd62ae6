// Blocks of bytes answer like a loop over the bytes, on the vector unit and in words.

#include "core/byte_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>

namespace zantrel::test {
namespace {

template <class Block>
class ByteBlockTest : public testing::Test {};
using Blocks = testing::Types<WordBlock, ByteBlock>;
TYPED_TEST_SUITE(ByteBlockTest, Blocks);

// Neighbours of what is looked for, and the ends of the range.
constexpr char kBytes[] = {'\0', '\x1F', ' ',    '!',    '&',    '\'',
                           '<',  '=',    '\x7F', '\x80', '\xA0', '\xFF'};

template <class Block, class InSet>
std::size_t firstByLoop(const std::string& text, InSet inSet) {
  const auto end = text.begin() + Block::kSize;
  return static_cast<std::size_t>(std::find_if(text.begin(), end, inSet) - text.begin());
}

TYPED_TEST(ByteBlockTest, FindsTheFirstByteOfASet) {
  std::mt19937 random(1);
  for (int round = 0; round < 100000; ++round) {
    // Mostly one byte, so that the first of a set is anywhere.
    std::string text(TypeParam::kSize, kBytes[random() % sizeof kBytes]);
    for (unsigned i = random() % 4; i > 0; --i)
      text[random() % text.size()] = kBytes[random() % sizeof kBytes];
    const auto block = TypeParam::load(text.data());
    const auto first = [&text](auto inSet) { return firstByLoop<TypeParam>(text, inSet); };
    const char c = kBytes[random() % sizeof kBytes];
    const auto equal = [c](char one) { return one == c; };
    const auto control = [](char one) { return static_cast<unsigned char>(one) <= ' '; };
    ASSERT_EQ(block.equal(c).first(), first(equal));
    ASSERT_EQ((~block.equal(c)).first(), first(std::not_fn(equal)));
    ASSERT_EQ(block.atMost(' ').first(), first(control));
    ASSERT_EQ((block.equal(c) | block.atMost(' ')).first(),
              first([&](char one) { return equal(one) || control(one); }));
    ASSERT_EQ(block.equal(c).any(), first(equal) != TypeParam::kSize);
    std::string copy(text.size(), ' ');
    block.store(copy.data());
    ASSERT_EQ(copy, text);
  }
}

}  // namespace
}  // namespace zantrel::test
