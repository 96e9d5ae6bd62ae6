#include "compress/inflate_tables.h"

#include <algorithm>
#include <bit>

namespace zantrel::inflate {

namespace {

// Taken and code bits both grow by a code's length.
constexpr Entry kPerCodeBit = 1U | 1U << 8;
constexpr Entry kInvalid = kSpecial | kPerCodeBit;
constexpr Entry kOneLiteral = 1U << 30;
constexpr unsigned kLiteralShift = 14;
constexpr unsigned kLengthShift = 22;
constexpr unsigned kValueShift = 16;

// What a symbol's entry holds besides the length of its code (RFC 1951, section 3.2.5).

constexpr std::array<Entry, kLiteralSymbols> makeLiteralSymbols() {
  std::array<Entry, kLiteralSymbols> symbols{};
  for (Entry literal = 0; literal < 256; ++literal)
    symbols[literal] = kOneLiteral | literal << kLiteralShift | literal << kLengthShift;
  symbols[256] = kEndOfBlock;
  Entry length = 0;  // less 3
  for (unsigned symbol = 257; symbol < 285; ++symbol) {
    const unsigned extra = symbol < 265 ? 0 : (symbol - 261) / 4;
    symbols[symbol] = kMatch | length << kLengthShift | extra;
    length += 1U << extra;
  }
  symbols[285] = kMatch | 255U << kLengthShift;
  symbols[286] = symbols[287] = kSpecial;
  return symbols;
}

constexpr std::array<Entry, kDistanceSymbols> makeDistanceSymbols() {
  std::array<Entry, kDistanceSymbols> symbols{};
  Entry distance = 1;
  for (unsigned symbol = 0; symbol < 30; ++symbol) {
    const unsigned extra = symbol < 4 ? 0 : symbol / 2 - 1;
    symbols[symbol] = distance << kValueShift | extra;
    distance += 1U << extra;
  }
  symbols[30] = symbols[31] = kSpecial;
  return symbols;
}

constexpr std::array<Entry, kCodeLengthSymbols> makeCodeLengthSymbols() {
  std::array<Entry, kCodeLengthSymbols> symbols{};
  for (Entry length = 0; length < kCodeLengthSymbols; ++length) {
    const Entry extra = length == 16 ? 2 : length == 17 ? 3 : length == 18 ? 7 : 0;
    symbols[length] = length << kValueShift | extra;
  }
  return symbols;
}

constexpr auto kLiterals = makeLiteralSymbols();
constexpr auto kDistances = makeDistanceSymbols();
constexpr auto kCodeLengths = makeCodeLengthSymbols();

constexpr std::size_t sizeOf(unsigned bits) {
  return std::size_t{1} << bits;
}

// The symbols that have a code, in the order of their codes.
struct SortedCode {
  std::array<std::uint16_t, kMaxCodeLength + 1> count{};
  std::array<std::uint16_t, kLiteralSymbols> symbols;
  std::size_t used = 0;

  explicit SortedCode(std::span<const std::uint8_t> lengths) noexcept {
    for (const std::uint8_t length : lengths) ++count[length];
    used = lengths.size() - count[0];
    count[0] = 0;
    std::array<std::uint16_t, kMaxCodeLength + 1> next{};
    for (unsigned length = 1; length < kMaxCodeLength; ++length)
      next[length + 1] = static_cast<std::uint16_t>(next[length] + count[length]);
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
      if (lengths[symbol] != 0)
        symbols[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }
  }

  /// Positive when there are codes left over, negative when there are too many.
  int unusedShare() const noexcept {
    int left = 1 << kMaxCodeLength;
    for (unsigned length = 1; length <= kMaxCodeLength; ++length)
      left -= static_cast<int>(count[length]) << (kMaxCodeLength - length);
    return left;
  }
};

// The code that follows, bit-reversed as the stream has it. The last one is followed by itself.
constexpr unsigned nextCode(unsigned code, unsigned length) {
  const unsigned zeros = code ^ ((1U << length) - 1);
  if (zeros == 0) return code;
  const unsigned top = std::bit_floor(zeros);
  return (code & (top - 1)) | top;
}

// Makes a table for codes up to one bit less into one for `length` bits.
void doubleTable(std::span<Entry> table, unsigned length) {
  std::copy_n(table.begin(), sizeOf(length - 1), &table[sizeOf(length - 1)]);
}

class TableBuilder {
 public:
  // `shortCodes`, which may be null, gets the codes that need no subtable.
  TableBuilder(SortedCode& code, const Entry* symbols, std::span<Entry> table, unsigned bits,
               ShortCodes* shortCodes)
      : code_(code), symbols_(symbols), table_(table), bits_(bits), shortCodes_(shortCodes) {}

  // Of a complete code.
  bool build() noexcept {
    fillPrimary();
    const bool filled = next_ == code_.used || fillSubtables();
    if (shortCodes_ != nullptr) shortCodes_->begin(bits_ + 1);
    return filled;
  }

 private:
  Entry entry(std::size_t index, unsigned codeBits) const {
    return symbols_[code_.symbols[index]] + codeBits * kPerCodeBit;
  }

  // A table for codes of one length is doubled into the table for the next.
  void fillPrimary() noexcept {
    for (unsigned length = 1; length <= bits_; ++length) {
      if (next_ != 0) doubleTable(table_, length);
      if (shortCodes_ != nullptr) shortCodes_->begin(length);
      for (unsigned n = code_.count[length]; n > 0; --n) {
        const Entry value = entry(next_++, length);
        table_[reversed_] = value;
        if (shortCodes_ != nullptr) shortCodes_->add(reversed_, value);
        reversed_ = nextCode(reversed_, length);
      }
    }
  }

  bool fillSubtables() noexcept {
    const unsigned mask = (1U << bits_) - 1;
    unsigned prefix = mask + 1;
    std::size_t start = 0;
    std::size_t end = sizeOf(bits_);
    for (unsigned length = bits_ + 1; length <= kMaxCodeLength; ++length) {
      for (; code_.count[length] > 0; --code_.count[length]) {
        if ((reversed_ & mask) != prefix) {
          prefix = reversed_ & mask;
          const unsigned width = subtableWidth(length);
          start = end;
          end += sizeOf(width);
          if (end > table_.size()) return false;
          const Entry pointer =
              kSubtable | bits_ | width << 8 | static_cast<Entry>(start) << kValueShift;
          table_[prefix] = pointer;
          if (shortCodes_ != nullptr) shortCodes_->add(prefix, pointer);
        }
        const Entry value = entry(next_++, length - bits_);
        for (std::size_t at = start + (reversed_ >> bits_); at < end; at += sizeOf(length - bits_))
          table_[at] = value;
        reversed_ = nextCode(reversed_, length);
      }
    }
    return true;
  }

  // Index bits of the subtable whose first code has this length: it ends where its codes, of this
  // and greater lengths, fill it.
  unsigned subtableWidth(unsigned length) const noexcept {
    int left = (1 << (length - bits_)) - code_.count[length];
    while (left > 0) left = 2 * left - code_.count[++length];
    return length - bits_;
  }

  SortedCode& code_;
  const Entry* symbols_;
  std::span<Entry> table_;
  unsigned bits_;
  ShortCodes* shortCodes_;
  std::size_t next_ = 0;
  unsigned reversed_ = 0;
};

// The first value stays in its place, the second in its own; everything else adds up.
constexpr Entry joined(Entry literal, Entry second) {
  constexpr Entry kFirst = 0xFFU << kLiteralShift;
  constexpr Entry kSecond = 0xFFU << kLengthShift;
  return (literal & ~kSecond) + (second & ~kFirst);
}

// Of the places of a table of pairs, how many hold a literal and a symbol behind it.
unsigned pairedPlaces(const ShortCodes& codes) noexcept {
  unsigned places = 0;
  unsigned complete = 0;  // values of `bits` bits that begin with a whole code
  for (unsigned bits = 1; bits < kLiteralBits; ++bits) {
    complete = 2 * complete + static_cast<unsigned>(codes.ofLength(bits).size());
    for (const ShortCodes::Item& first : codes.ofLength(kLiteralBits - bits))
      places += isLiteral(first.entry) ? complete : 0;
  }
  return places;
}

enum class Sparse { refused, oneAllowed, noneAllowed };

bool buildTable(std::span<const std::uint8_t> lengths, const Entry* symbols, std::span<Entry> table,
                unsigned bits, Sparse sparse, ShortCodes* shortCodes = nullptr) noexcept {
  if (shortCodes != nullptr) shortCodes->clear();
  SortedCode code(lengths);
  const int unused = code.unusedShare();
  if (unused == 0) return TableBuilder(code, symbols, table, bits, shortCodes).build();
  if (unused < 0 || sparse == Sparse::refused) return false;
  const bool single = code.used == 1 && code.count[1] == 1;
  if (!single && !(code.used == 0 && sparse == Sparse::noneAllowed)) return false;
  std::fill_n(table.begin(), sizeOf(bits), kInvalid);
  if (single) {
    for (std::size_t at = 0; at < sizeOf(bits); at += 2)
      table[at] = symbols[code.symbols[0]] + kPerCodeBit;
  }
  return true;
}

}  // namespace

bool buildLiteralTable(std::span<const std::uint8_t> lengths, Tables& tables) noexcept {
  return buildTable(lengths, kLiterals.data(), tables.literals, kLiteralBits, Sparse::oneAllowed,
                    &tables.shortCodes);
}

bool buildDistanceTable(std::span<const std::uint8_t> lengths, Tables& tables) noexcept {
  return buildTable(lengths, kDistances.data(), tables.distances, kDistanceBits,
                    Sparse::noneAllowed);
}

bool buildCodeLengthTable(std::span<const std::uint8_t> lengths, CodeLengthTable& table) noexcept {
  return buildTable(lengths, kCodeLengths.data(), table, kCodeLengthBits, Sparse::refused);
}

bool buildPairTable(Tables& tables) noexcept {
  constexpr unsigned kWorthwhile = sizeOf(kLiteralBits) / 12;
  const ShortCodes& codes = tables.shortCodes;
  if (pairedPlaces(codes) < kWorthwhile) return false;
  // As a table of single codes is made: what is as long as the table's index has one place in it,
  // and doubling repeats it.
  PairTable& pairs = tables.pairs;
  std::copy_n(tables.literals.begin(), pairs.size(), pairs.begin());
  const unsigned shortest = codes.shortest();
  for (unsigned length = 2 * shortest; length <= kLiteralBits; ++length) {
    doubleTable(pairs, length);
    for (const ShortCodes::Item& single : codes.ofLength(length)) pairs[single.code] = single.entry;
    for (unsigned bits = shortest; bits + shortest <= length; ++bits) {
      for (const ShortCodes::Item& first : codes.ofLength(bits)) {
        if (!isLiteral(first.entry)) continue;
        for (const ShortCodes::Item& second : codes.ofLength(length - bits)) {
          if (!isSpecial(second.entry))
            pairs[first.code | second.code << bits] = joined(first.entry, second.entry);
        }
      }
    }
  }
  return true;
}

const Tables& fixedTables() noexcept {
  static const Tables tables = [] {
    std::array<std::uint8_t, kLiteralSymbols> lengths;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
      lengths[symbol] = static_cast<std::uint8_t>(symbol < 144   ? 8
                                                  : symbol < 256 ? 9
                                                  : symbol < 280 ? 7
                                                                 : 8);
    }
    Tables fixed;
    buildLiteralTable(lengths, fixed);
    std::array<std::uint8_t, kDistanceSymbols> distances;
    distances.fill(5);
    buildDistanceTable(distances, fixed);
    return fixed;
  }();
  return tables;
}

}  // namespace zantrel::inflate
