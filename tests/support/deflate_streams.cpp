#include "support/deflate_streams.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace zantrel::test {

namespace {

struct Range {
  unsigned first;
  unsigned extraBits;
};

// Section 3.2.5: lengths from symbol 257 on, distances from symbol 0 on.
constexpr Range kLengths[] = {
    {3, 0},  {4, 0},  {5, 0},  {6, 0},   {7, 0},   {8, 0},   {9, 0},   {10, 0},  {11, 1}, {13, 1},
    {15, 1}, {17, 1}, {19, 2}, {23, 2},  {27, 2},  {31, 2},  {35, 3},  {43, 3},  {51, 3}, {59, 3},
    {67, 4}, {83, 4}, {99, 4}, {115, 4}, {131, 5}, {163, 5}, {195, 5}, {227, 5}, {258, 0}};
constexpr Range kDistances[] = {{1, 0},     {2, 0},     {3, 0},      {4, 0},      {5, 1},
                                {7, 1},     {9, 2},     {13, 2},     {17, 3},     {25, 3},
                                {33, 4},    {49, 4},    {65, 5},     {97, 5},     {129, 6},
                                {193, 6},   {257, 7},   {385, 7},    {513, 8},    {769, 8},
                                {1025, 9},  {1537, 9},  {2049, 10},  {3073, 10},  {4097, 11},
                                {6145, 11}, {8193, 12}, {12289, 12}, {16385, 13}, {24577, 13}};

template <std::size_t Count>
std::size_t rangeOf(const Range (&ranges)[Count], unsigned value) {
  std::size_t index = 0;
  while (index + 1 < Count && ranges[index + 1].first <= value) ++index;
  return index;
}

constexpr std::size_t kWindow = 32768;
constexpr unsigned kEndOfBlock = 256;

}  // namespace

Code::Code(std::vector<unsigned> symbolLengths)
    : lengths(std::move(symbolLengths)), codes(lengths.size()) {
  unsigned code = 0;
  for (unsigned length = 1; length <= 15; ++length) {
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
      if (lengths[symbol] == length) codes[symbol] = code++;
    }
    code <<= 1;
  }
}

Code flatCode(std::size_t symbols) {
  unsigned length = 0;
  while ((std::size_t{1} << length) < symbols) ++length;
  const std::size_t shorter = (std::size_t{1} << length) - symbols;
  std::vector<unsigned> lengths(symbols, length);
  std::fill_n(lengths.begin(), shorter, length - 1);
  return Code(lengths);
}

Code steepCode(std::size_t symbols, std::mt19937& random) {
  // Lengths 1, 2, 3, ... until the rest fits below one prefix.
  std::vector<unsigned> lengths;
  unsigned prefix = 1;
  while (((symbols - lengths.size()) << prefix) <= 0x4000) lengths.push_back(prefix++);
  for (const unsigned length : flatCode(symbols - lengths.size()).lengths)
    lengths.push_back(length + prefix - 1);
  std::shuffle(lengths.begin(), lengths.end(), random);
  return Code(lengths);
}

Code fixedLiterals() {
  std::vector<unsigned> lengths(288, 8);
  std::fill(lengths.begin() + 144, lengths.begin() + 256, 9);
  std::fill(lengths.begin() + 256, lengths.begin() + 280, 7);
  return Code(lengths);
}

Code fixedDistances() {
  return Code(std::vector<unsigned>(32, 5));
}

void DeflateWriter::bits(std::uint32_t value, unsigned count) {
  for (; count > 0; --count, value >>= 1) {
    if (used_ == 8) {
      stream_ += '\0';
      used_ = 0;
    }
    stream_.back() = static_cast<char>(stream_.back() | static_cast<int>((value & 1) << used_++));
  }
}

void DeflateWriter::symbol(const Code& code, std::size_t symbol) {
  for (unsigned bit = code.lengths[symbol]; bit > 0; --bit)
    bits(code.codes[symbol] >> (bit - 1), 1);
}

void DeflateWriter::blockHead(bool last, unsigned type) {
  bits(last ? 1 : 0, 1);
  bits(type, 2);
}

void DeflateWriter::stored(bool last, const std::string& data) {
  blockHead(last, 0);
  used_ = 8;
  const auto size = static_cast<std::uint32_t>(data.size());
  bits(size, 16);
  bits(~size, 16);
  stream_ += data;
  output_ += data;
}

void DeflateWriter::codes(const Code& literals, const Code& distances) {
  bits(static_cast<std::uint32_t>(literals.lengths.size() - 257), 5);
  bits(static_cast<std::uint32_t>(distances.lengths.size() - 1), 5);
  bits(15, 4);
  // All 19 in their order: the three repeats are not used, each other length has four bits.
  for (int index = 0; index < 19; ++index) bits(index < 3 ? 0 : 4, 3);
  const Code ofLengths(std::vector<unsigned>(16, 4));
  for (const Code* code : {&literals, &distances}) {
    for (const unsigned length : code->lengths) symbol(ofLengths, length);
  }
}

void DeflateWriter::literal(const Code& literals, char value) {
  symbol(literals, static_cast<unsigned char>(value));
  output_ += value;
}

void DeflateWriter::match(const Code& literals, const Code& distances, unsigned length,
                          unsigned distance) {
  const std::size_t lengthIndex = rangeOf(kLengths, length);
  symbol(literals, 257 + lengthIndex);
  bits(length - kLengths[lengthIndex].first, kLengths[lengthIndex].extraBits);
  const std::size_t distanceIndex = rangeOf(kDistances, distance);
  symbol(distances, distanceIndex);
  bits(distance - kDistances[distanceIndex].first, kDistances[distanceIndex].extraBits);
  if (distance > output_.size()) return;
  for (; length > 0; --length) output_ += output_[output_.size() - distance];
}

void DeflateWriter::endOfBlock(const Code& literals) {
  symbol(literals, kEndOfBlock);
}

void DeflateWriter::randomSymbols(const Code& literals, const Code& distances, std::mt19937& random,
                                  std::size_t size) {
  const std::size_t end = output_.size() + size;
  while (output_.size() < end) {
    if (output_.empty() || random() % 3 == 0) {
      literal(literals, static_cast<char>(random()));
      continue;
    }
    const auto length = static_cast<unsigned>(3 + random() % (random() % 4 == 0 ? 256 : 12));
    const auto farthest = static_cast<unsigned>(std::min(output_.size(), kWindow));
    const unsigned reach = std::min(farthest, 1U << random() % 16);
    const bool edge = random() % 8 == 0;
    match(literals, distances, length,
          edge ? farthest : 1 + static_cast<unsigned>(random() % reach));
  }
}

DeflateWriter mixedStream(std::uint32_t seed, std::size_t size) {
  std::mt19937 random(seed);
  DeflateWriter writer;
  const auto block = [&](unsigned type, const Code& literals, const Code& distances) {
    writer.blockHead(false, type);
    if (type == 2) writer.codes(literals, distances);
    writer.randomSymbols(literals, distances, random, random() % (1 + size / 4));
    writer.endOfBlock(literals);
  };
  while (writer.output().size() < size) {
    block(1, fixedLiterals(), fixedDistances());
    writer.stored(false, std::string(random() % 300, static_cast<char>(random())));
    block(2, flatCode(286), flatCode(30));
    block(2, steepCode(286, random), steepCode(30, random));
  }
  writer.stored(true, "");
  return writer;
}

}  // namespace zantrel::test
