// Sorting gathers bytes with the same context, moving to front turns them into small numbers with
// many zeros, runs of zeros are written as numbers, and each group of 50 symbols takes the best of
// up to six prefix codes. Groups choose tables and tables are fitted to the groups that chose them,
// a few times in turn, from two different starts: neither leads to the better end for all kinds of
// data.

#include "compress/bzip2_block_writer.h"

#include <algorithm>

#include "compress/bzip2_huffman.h"
#include "compress/bzip2_move_to_front.h"

namespace zantrel {

namespace {

using namespace bzip2;

constexpr unsigned kLongestCode = 17;  // some decoders take no longer ones, and none would help
constexpr int kFirstRounds = 2;        // that show which start is the better one
constexpr int kFurtherRounds = 3;

// The costs of a symbol in all tables lie side by side in one word, so that a group's costs are
// sums of words.
constexpr unsigned kCostBits = 10;
constexpr std::uint64_t kCostMask = (1U << kCostBits) - 1;
static_assert(kGroup * kLongestCode <= kCostMask && kMaxTables * kCostBits <= 64);

// Fewer symbols do not pay for as many tables.
std::size_t tablesFor(std::size_t symbols) noexcept {
  constexpr std::size_t kBelow[] = {200, 600, 1200, 2400};
  return kMinTables +
         static_cast<std::size_t>(std::upper_bound(std::begin(kBelow), std::end(kBelow), symbols) -
                                  std::begin(kBelow));
}

}  // namespace

Bzip2BlockWriter::Bzip2BlockWriter()
    : column_(std::make_unique_for_overwrite<std::uint8_t[]>(kMaxBlock)),
      symbols_(std::make_unique_for_overwrite<std::uint16_t[]>(kMaxBlock + 1)) {}

void Bzip2BlockWriter::write(ByteSpan block, Bzip2BitOutput& out) {
  const std::size_t origin = sort_.run(block, column_.get());
  makeSymbols({column_.get(), block.size()});
  chooseTables();

  constexpr std::size_t kHeaderBits = 25 + 17 * 16 + 18;
  constexpr std::size_t kLengthBits = 5 + kMaxAlphabet * (2 * kMaxCodeLength + 1);
  out.reserve(kHeaderBits + groupCount() * tableCount_ + tableCount_ * kLengthBits +
              symbolCount_ * kLongestCode);
  out.put(origin, 25);  // the first bit would say that the block is disturbed
  putUsedBytes(out);
  out.put(tableCount_, 3);
  out.put(groupCount(), 15);
  putSelectors(out);
  for (std::size_t t = 0; t < tableCount_; ++t) putCodeLengths(choice_.lengths[t], out);
  putSymbols(out);
}

std::size_t Bzip2BlockWriter::groupCount() const noexcept {
  return (symbolCount_ + kGroup - 1) / kGroup;
}

std::size_t Bzip2BlockWriter::groupEnd(std::size_t group) const noexcept {
  return std::min((group + 1) * kGroup, symbolCount_);
}

void Bzip2BlockWriter::makeSymbols(ByteSpan column) noexcept {
  used_.fill(false);
  for (const std::uint8_t byte : column) used_[byte] = true;
  Bzip2MoveToFront list;
  alphabetSize_ = 2;
  for (unsigned byte = 0; byte < used_.size(); ++byte) {
    if (!used_[byte]) continue;
    list.append(static_cast<std::uint8_t>(byte));
    ++alphabetSize_;
  }
  frequencies_.fill(0);
  symbolCount_ = 0;
  std::size_t run = 0;
  for (const std::uint8_t byte : column) {
    if (byte == list.front()) {
      ++run;
      continue;
    }
    addRun(run);
    run = 0;
    addSymbol(list.find(byte) + 1);
  }
  addRun(run);
  addSymbol(alphabetSize_ - 1);
}

void Bzip2BlockWriter::addSymbol(unsigned symbol) noexcept {
  symbols_[symbolCount_++] = static_cast<std::uint16_t>(symbol);
  ++frequencies_[symbol];
}

// The size in the bijective base 2, the lowest digit first.
void Bzip2BlockWriter::addRun(std::size_t size) noexcept {
  for (; size > 0; size = (size - 1) / 2) addSymbol(size % 2 == 1 ? kRunA : kRunB);
}

void Bzip2BlockWriter::chooseTables() {
  tableCount_ = tablesFor(symbolCount_);
  std::uint64_t least = ~std::uint64_t{0};
  for (const auto start : {&Bzip2BlockWriter::startByAlphabet, &Bzip2BlockWriter::startByLevel}) {
    (this->*start)();
    improveChoice(kFirstRounds);
    const std::uint64_t bits = choiceBits();
    if (bits >= least) continue;
    least = bits;
    best_ = choice_;
  }
  choice_ = best_;
  improveChoice(kFurtherRounds);
}

void Bzip2BlockWriter::improveChoice(int rounds) {
  for (; rounds > 0; --rounds) {
    selectTables();
    fitTables();
  }
}

void Bzip2BlockWriter::fitTables() {
  for (std::size_t t = 0; t < tableCount_; ++t)
    bzip2CodeLengths({tableFrequencies_[t].data(), alphabetSize_}, kLongestCode,
                     choice_.lengths[t].data());
}

// One part of the alphabet for each table, all occurring about equally often; codes outside a
// table's part are long. Every other part gives up its last symbol: tables whose parts are not
// quite equal end up in a better place.
void Bzip2BlockWriter::startByAlphabet() {
  std::size_t left = symbolCount_;
  unsigned begin = 0;
  for (std::size_t t = 0; t < tableCount_; ++t) {
    const std::size_t wanted = left / (tableCount_ - t);
    const bool isLast = t + 1 == tableCount_;
    std::size_t part = 0;
    unsigned end = begin;
    while (end < alphabetSize_ && (part < wanted || isLast)) part += frequencies_[end++];
    if (t % 2 == 1 && !isLast && end > begin + 1) part -= frequencies_[--end];
    for (unsigned symbol = 0; symbol < alphabetSize_; ++symbol)
      choice_.lengths[t][symbol] = symbol >= begin && symbol < end ? 0 : 15;
    begin = end;
    left -= part;
  }
}

// As many groups for each table, by how many bits they would need in a code for the whole block.
void Bzip2BlockWriter::startByLevel() {
  CodeLengths whole;
  bzip2CodeLengths({frequencies_.data(), alphabetSize_}, kLongestCode, whole.data());
  const auto level = [&](std::size_t group) {
    std::size_t bits = 0;
    for (std::size_t i = group * kGroup; i < groupEnd(group); ++i) bits += whole[symbols_[i]];
    return bits;
  };
  std::array<std::uint32_t, kGroup * kLongestCode + 2> below{};  // groups of a lower level
  for (std::size_t group = 0; group < groupCount(); ++group) ++below[level(group) + 1];
  for (std::size_t i = 1; i < below.size(); ++i) below[i] += below[i - 1];
  for (auto& frequencies : tableFrequencies_) frequencies.fill(0);
  for (std::size_t group = 0; group < groupCount(); ++group) {
    const std::size_t bits = level(group);
    const std::size_t middle = below[bits] + below[bits + 1];
    countGroup(group, std::min(middle * tableCount_ / (2 * groupCount()), tableCount_ - 1));
  }
  fitTables();
}

void Bzip2BlockWriter::countGroup(std::size_t group, std::size_t table) noexcept {
  auto& frequencies = tableFrequencies_[table];
  for (std::size_t i = group * kGroup; i < groupEnd(group); ++i) ++frequencies[symbols_[i]];
}

void Bzip2BlockWriter::selectTables() noexcept {
  std::array<std::uint64_t, kMaxAlphabet> costs{};
  for (std::size_t t = 0; t < tableCount_; ++t) {
    tableFrequencies_[t].fill(0);
    for (unsigned symbol = 0; symbol < alphabetSize_; ++symbol)
      costs[symbol] |= std::uint64_t{choice_.lengths[t][symbol]} << (kCostBits * t);
  }
  for (std::size_t group = 0; group < groupCount(); ++group) {
    std::uint64_t sum = 0;
    for (std::size_t i = group * kGroup; i < groupEnd(group); ++i) sum += costs[symbols_[i]];
    std::size_t best = 0;
    std::uint64_t least = kCostMask + 1;
    for (std::size_t t = 0; t < tableCount_; ++t, sum >>= kCostBits) {
      if ((sum & kCostMask) >= least) continue;
      least = sum & kCostMask;
      best = t;
    }
    choice_.selectors[group] = static_cast<std::uint8_t>(best);
    countGroup(group, best);
  }
}

// The size of everything that the choice decides.
std::uint64_t Bzip2BlockWriter::choiceBits() const noexcept {
  std::uint64_t bits = 0;
  for (std::size_t t = 0; t < tableCount_; ++t) {
    unsigned last = choice_.lengths[t][0];
    for (unsigned symbol = 0; symbol < alphabetSize_; ++symbol) {
      const unsigned length = choice_.lengths[t][symbol];
      bits += std::uint64_t{tableFrequencies_[t][symbol]} * length;
      bits += 2 * (std::max(length, last) - std::min(length, last));
      last = length;
    }
  }
  Bzip2MoveToFront order = tablesInOrder();
  for (std::size_t group = 0; group < groupCount(); ++group)
    bits += order.find(choice_.selectors[group]);
  return bits;
}

Bzip2MoveToFront Bzip2BlockWriter::tablesInOrder() const noexcept {
  Bzip2MoveToFront order;
  for (std::size_t t = 0; t < tableCount_; ++t) order.append(static_cast<std::uint8_t>(t));
  return order;
}

void Bzip2BlockWriter::putUsedBytes(Bzip2BitOutput& out) const noexcept {
  std::uint64_t ranges = 0;
  std::array<std::uint64_t, 16> bytes{};
  for (std::size_t byte = 0; byte < used_.size(); ++byte)
    bytes[byte / 16] = bytes[byte / 16] << 1 | (used_[byte] ? 1 : 0);
  for (const std::uint64_t range : bytes) ranges = ranges << 1 | (range != 0 ? 1 : 0);
  out.put(ranges, 16);
  for (const std::uint64_t range : bytes)
    if (range != 0) out.put(range, 16);
}

// Tables move to the front too; their positions are written in base 1.
void Bzip2BlockWriter::putSelectors(Bzip2BitOutput& out) const noexcept {
  Bzip2MoveToFront order = tablesInOrder();
  for (std::size_t group = 0; group < groupCount(); ++group) {
    const unsigned ones = order.find(choice_.selectors[group]);
    out.put((1U << (ones + 1)) - 2, ones + 1);
  }
}

void Bzip2BlockWriter::putCodeLengths(const CodeLengths& lengths,
                                      Bzip2BitOutput& out) const noexcept {
  unsigned current = lengths[0];
  out.put(current, 5);
  for (unsigned symbol = 0; symbol < alphabetSize_; ++symbol) {
    for (; current < lengths[symbol]; ++current) out.put(2, 2);
    for (; current > lengths[symbol]; --current) out.put(3, 2);
    out.put(0, 1);
  }
}

void Bzip2BlockWriter::putSymbols(Bzip2BitOutput& out) const noexcept {
  std::array<std::array<std::uint32_t, kMaxAlphabet>, kMaxTables> codes;
  for (std::size_t t = 0; t < tableCount_; ++t)
    bzip2Codes({choice_.lengths[t].data(), alphabetSize_}, codes[t].data());
  for (std::size_t group = 0; group < groupCount(); ++group) {
    const auto& code = codes[choice_.selectors[group]];
    const auto& length = choice_.lengths[choice_.selectors[group]];
    std::size_t i = group * kGroup;
    const std::size_t end = groupEnd(group);
    for (; i + 2 <= end; i += 2) {
      const std::size_t a = symbols_[i], b = symbols_[i + 1];
      out.put(std::uint64_t{code[a]} << length[b] | code[b], unsigned{length[a]} + length[b]);
    }
    if (i < end) out.put(code[symbols_[i]], length[symbols_[i]]);
  }
}

}  // namespace zantrel
