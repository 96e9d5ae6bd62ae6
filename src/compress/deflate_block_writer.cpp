// The lengths of all three forms are known exactly before a bit is written: so the shortest is
// taken, and the room needed is never more than that of a stored block.

#include "compress/deflate_block_writer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "compress/deflate_prefix_code.h"

namespace zantrel::zee {

namespace {

// One bit less than the format allows costs nothing and lets four literals go at once.
constexpr unsigned kMaxLiteralBits = kMaxCodeBits - 1;

/// The two codes of a block.
struct Codes {
  std::array<CodeWord, kFixedLiteralSymbols> literal;
  std::array<CodeWord, kDistanceSymbols> distance;
};

Codes makeFixedCodes() {
  Codes codes;
  for (unsigned i = 0; i < kFixedLiteralSymbols; ++i)
    codes.literal[i].length = static_cast<std::uint8_t>(i < 144   ? 8
                                                        : i < 256 ? 9
                                                        : i < 280 ? 7
                                                                  : 8);
  for (CodeWord& word : codes.distance) word.length = 5;
  assignCodeWords(codes.literal);
  assignCodeWords(codes.distance);
  return codes;
}

const Codes& fixedCodes() {
  static const Codes kCodes = makeFixedCodes();
  return kCodes;
}

/// How the lengths of both codes are written: runs, and a code for them (section 3.2.7).
class CodeHeader {
 public:
  explicit CodeHeader(const Codes& codes) {
    std::array<std::uint8_t, kLiteralSymbols + kDistanceSymbols> lengths;
    literals_ = used(std::span(codes.literal).first(kLiteralSymbols), kFirstLengthSymbol);
    distances_ = used(codes.distance, 1);
    for (std::size_t i = 0; i < literals_; ++i) lengths[i] = codes.literal[i].length;
    for (std::size_t i = 0; i < distances_; ++i) lengths[literals_ + i] = codes.distance[i].length;
    findRuns(std::span(lengths).first(literals_ + distances_));
    buildPrefixCode(frequencies_, kMaxLengthCodeBits, code_);
    for (codeLengths_ = kLengthCodeSymbols; codeLengths_ > 4; --codeLengths_)
      if (code_[kLengthCodeOrder[codeLengths_ - 1]].length != 0) break;
  }

  std::uint64_t bits() const {
    std::uint64_t sum = 5 + 5 + 4 + 3 * codeLengths_;
    for (unsigned i = 0; i < kLengthCodeSymbols; ++i)
      sum += frequencies_[i] * (code_[i].length + kExtraBits[i]);
    return sum;
  }

  void write(BitWriter& out) const {
    out.add(literals_ - kFirstLengthSymbol, 5);
    out.add(distances_ - 1, 5);
    out.addFlushed(codeLengths_ - 4, 4);
    for (std::size_t i = 0; i < codeLengths_; ++i)
      out.addFlushed(code_[kLengthCodeOrder[i]].length, 3);
    for (std::size_t i = 0; i < runs_; ++i) {
      const Run run = run_[i];
      out.add(code_[run.symbol].bits, code_[run.symbol].length);
      out.addFlushed(run.extra, kExtraBits[run.symbol]);
    }
  }

 private:
  static constexpr unsigned kCopyLast = 16, kFewZeros = 17, kManyZeros = 18;
  static constexpr std::array<std::uint8_t, kLengthCodeSymbols> kExtraBits = {
      0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 7};

  struct Run {
    std::uint8_t symbol;
    std::uint8_t extra;
  };

  static std::size_t used(std::span<const CodeWord> code, std::size_t atLeast) {
    std::size_t n = code.size();
    while (n > atLeast && code[n - 1].length == 0) --n;
    return n;
  }

  void add(unsigned symbol, std::size_t extra) {
    run_[runs_++] = {static_cast<std::uint8_t>(symbol), static_cast<std::uint8_t>(extra)};
    ++frequencies_[symbol];
  }

  void findRuns(std::span<const std::uint8_t> lengths) {
    for (std::size_t i = 0; i < lengths.size();) {
      const std::uint8_t length = lengths[i];
      std::size_t run = 1;
      while (i + run < lengths.size() && lengths[i + run] == length) ++run;
      i += run;
      if (length != 0) {
        add(length, 0);
        --run;
      }
      run -= addRepeats(run, length == 0);
      for (; run > 0; --run) add(length, 0);
    }
  }

  // Answers how many lengths the symbols for runs took.
  std::size_t addRepeats(std::size_t run, bool zeros) {
    const std::size_t before = run;
    for (; zeros && run >= 11; run -= std::min<std::size_t>(run, 138))
      add(kManyZeros, std::min<std::size_t>(run, 138) - 11);
    const std::size_t most = zeros ? 10 : 6;
    for (; run >= 3; run -= std::min(run, most))
      add(zeros ? kFewZeros : kCopyLast, std::min(run, most) - 3);
    return before - run;
  }

  std::array<std::uint32_t, kLengthCodeSymbols> frequencies_{};
  std::array<CodeWord, kLengthCodeSymbols> code_;
  std::array<Run, kLiteralSymbols + kDistanceSymbols> run_;
  std::size_t runs_ = 0;
  std::size_t literals_ = 0, distances_ = 0, codeLengths_ = 0;
};

/// Bits of a block's content under given codes.
std::uint64_t contentBits(const Codes& codes, const Frequencies& frequencies) {
  std::uint64_t sum = 0;
  for (unsigned i = 0; i < kLiteralSymbols; ++i)
    sum += std::uint64_t{frequencies.literal[i]} * codes.literal[i].length;
  for (unsigned i = 0; i < kLengthSlots; ++i)
    sum += std::uint64_t{frequencies.literal[kFirstLengthSymbol + i]} * kLengths.extra[i];
  for (unsigned i = 0; i < kDistanceSymbols; ++i)
    sum +=
        std::uint64_t{frequencies.distance[i]} * (codes.distance[i].length + distanceExtraBits(i));
  return sum;
}

std::uint64_t storedBits(const BitWriter& out, std::size_t size) {
  const std::size_t blocks = std::max<std::size_t>((size + kMaxStored - 1) / kMaxStored, 1);
  const unsigned first = (out.heldBits() + 3 + 7) / 8 * 8 - out.heldBits();
  return first + (blocks - 1) * 8 + blocks * 32 + std::uint64_t{size} * 8;
}

/// Bits below their number, in one word that is loaded at once.
class PackedBits {
 public:
  PackedBits() = default;
  PackedBits(std::uint32_t bits, unsigned count) : word_(bits << kCountBits | count) {}
  std::uint64_t bits() const { return word_ >> kCountBits; }
  unsigned count() const { return word_ & ((1U << kCountBits) - 1); }
  /// These or no bits at all.
  PackedBits onlyIf(bool wanted) const {
    PackedBits result = *this;
    result.word_ &= 0U - static_cast<std::uint32_t>(wanted);
    return result;
  }

 private:
  static constexpr unsigned kCountBits = 6;
  std::uint32_t word_;
};

/// Code words as they are written, those of a length with its extra bits.
class Encoder {
 public:
  explicit Encoder(const Codes& codes) {
    for (unsigned i = 0; i < literal_.size(); ++i)
      literal_[i] = {codes.literal[i].bits, codes.literal[i].length};
    for (unsigned length = kMinMatch; length <= kMaxMatch; ++length) {
      const unsigned slot = kLengths.of[length];
      const CodeWord word = codes.literal[kFirstLengthSymbol + slot];
      const unsigned extra = length - kLengths.base[slot];
      const unsigned count = word.length + 0U + kLengths.extra[slot];
      length_[length] = {word.bits | extra << word.length, count};
    }
    for (unsigned i = 0; i < kDistanceSymbols; ++i)
      distance_[i] = {codes.distance[i].bits, codes.distance[i].length};
    end_ = {codes.literal[kEndOfBlock].bits, codes.literal[kEndOfBlock].length};
  }

  void write(BitWriter& to, const std::uint8_t* bytes, const Sequence* sequences,
             std::size_t count) const {
    BitWriter out = to;  // in registers
    for (const Sequence* s = sequences; s != sequences + count; ++s) {
      writeLiterals(out, bytes, s->literals);
      bytes += s->literals;
      if (s->lengthAndSlot == 0) continue;
      // At most 7 bits held, 19 of a length, 28 of a distance.
      static_assert(7 + kMaxLiteralBits + 5 + kMaxCodeBits + 13 <= BitWriter::kRoom);
      const PackedBits length = length_[s->length()];
      out.add(length.bits(), length.count());
      const unsigned slot = s->slot();
      const PackedBits distance = distance_[slot];
      out.add(distance.bits(), distance.count());
      const unsigned extra = distanceExtraBits(slot);
      out.addFlushed((s->distance - 1U) & ((1U << extra) - 1), extra);
      bytes += s->length();
    }
    out.addFlushed(end_.bits(), end_.count());
    to = out;
  }

 private:
  void writeLiterals(BitWriter& out, const std::uint8_t* bytes, std::uint32_t count) const {
    static_assert(7 + 4 * kMaxLiteralBits <= BitWriter::kRoom);
    const auto add = [&](std::uint8_t byte) {
      out.add(literal_[byte].bits(), literal_[byte].count());
    };
    for (; count >= 4; count -= 4, bytes += 4) {
      add(bytes[0]);
      add(bytes[1]);
      add(bytes[2]);
      add(bytes[3]);
      out.flush();
    }
    // How many are left cannot be foreseen: no branch is made of it. Bytes behind them can be read.
    for (unsigned i = 0; i < 3; ++i) {
      const PackedBits word = literal_[bytes[i]].onlyIf(i < count);
      out.add(word.bits(), word.count());
    }
    out.flush();
  }

  std::array<PackedBits, 256> literal_;
  std::array<PackedBits, kMaxMatch + 1> length_;
  std::array<PackedBits, kDistanceSymbols> distance_;
  PackedBits end_;
};

void startBlock(BitWriter& out, BlockKind kind, bool last) {
  out.addFlushed((last ? 1U : 0U) | static_cast<unsigned>(kind) << 1, 3);
}

}  // namespace

void writeBlock(BitWriter& out, const std::uint8_t* bytes, std::size_t size,
                const Sequence* sequences, std::size_t count, const Frequencies& counted,
                bool last) {
  Frequencies frequencies = counted;
  frequencies.literal[kEndOfBlock] = 1;
  Codes codes;
  buildPrefixCode(frequencies.literal, kMaxLiteralBits,
                  std::span(codes.literal).first(kLiteralSymbols));
  buildPrefixCode(frequencies.distance, kMaxCodeBits, codes.distance);
  const CodeHeader header(codes);

  const std::uint64_t dynamicBits = 3 + header.bits() + contentBits(codes, frequencies);
  const std::uint64_t fixedBits = 3 + contentBits(fixedCodes(), frequencies);
  if (storedBits(out, size) <= std::min(dynamicBits, fixedBits))
    return writeStored(out, bytes, size, last);
  if (fixedBits <= dynamicBits) {
    startBlock(out, BlockKind::fixedCode, last);
    Encoder(fixedCodes()).write(out, bytes, sequences, count);
  } else {
    startBlock(out, BlockKind::dynamicCode, last);
    header.write(out);
    Encoder(codes).write(out, bytes, sequences, count);
  }
  if (last) out.alignToByte();
}

void writeStored(BitWriter& out, const std::uint8_t* bytes, std::size_t size, bool last) {
  do {
    const std::size_t part = std::min(size, kMaxStored);
    size -= part;
    startBlock(out, BlockKind::stored, last && size == 0);
    out.alignToByte();
    out.addFlushed(part | (part ^ 0xFFFF) << 16, 32);
    std::uint8_t* const to = out.position();
    if (part > 0) std::memcpy(to, bytes, part);
    out.attach(to + part);
    bytes += part;
  } while (size > 0);
}

}  // namespace zantrel::zee
