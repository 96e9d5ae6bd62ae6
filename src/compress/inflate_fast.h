#pragma once
// The loop of inflate that most bytes pass through: it runs while input and output have a margin,
// so that it may read and write whole words past what it needs, and checks nothing twice.
// In plain C++, always inlined, so that each instruction set compiles it for itself.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "compress/inflate_bits.h"
#include "compress/inflate_tables.h"
#include "compress/inflate_window.h"

namespace zantrel::inflate {

/// The output so far: matches may begin as early as `begin`, and before that in the window.
struct Output {
  std::uint8_t* begin;
  std::uint8_t* next;
  std::uint8_t* end;

  std::size_t size() const noexcept { return static_cast<std::size_t>(next - begin); }
  std::size_t room() const noexcept { return static_cast<std::size_t>(end - next); }
};

enum class FastStop { margin, endOfBlock, badLiteral, badDistance, tooFar };

struct FastJob {
  BitReader& in;
  Output& out;
  const Window& window;
  const Entry* primary;   ///< plain or paired literals and lengths
  const Entry* literals;  ///< where their subtables are
  const Entry* distances;
  bool paired;           ///< which of the two
  std::uint8_t* stopAt;  ///< the loop ends behind this position, or earlier
};

constexpr std::size_t kTableSize = std::size_t{1} << kLiteralBits;

// The margins: what one turn of the loop reads and writes at most, overshoot included.
inline constexpr std::size_t kInputMargin = 24;
inline constexpr std::size_t kWord = 8;
inline constexpr std::size_t kCopiedAtOnce = 5 * kWord;
inline constexpr std::size_t kOutputMargin = 12 + 258 + kCopiedAtOnce;

// Words, not vectors: matches often begin in what was just written, and a processor hands stored
// bytes on to a load only if one store holds them all.
[[gnu::always_inline]] inline void copyWord(std::uint8_t* to, const std::uint8_t* from) noexcept {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
#if defined(__GNUC__)
  __asm__("" : : : "memory");  // keeps the compiler from joining words into vectors
#endif
}

// A match within the output. Writes up to kCopiedAtOnce bytes past its end.
[[gnu::always_inline]] inline void copyMatch(std::uint8_t* to, std::size_t distance,
                                             std::size_t length) noexcept {
  const std::uint8_t* from = to - distance;
  std::uint8_t* const end = to + length;
  if (distance == 1) {
    do {
      std::memset(to, *from, 4 * kWord);
      to += 4 * kWord;
    } while (to < end);
    return;
  }
  // Each copy from the same place doubles the distance, until words do not overlap.
  for (; distance < kWord; distance *= 2) {
    copyWord(to, from);
    to += distance;
  }
  do {
    // Nearly all matches end within these, so that the loop is no matter of guessing.
    for (std::size_t at = 0; at < kCopiedAtOnce; at += kWord) copyWord(to + at, from + at);
    to += kCopiedAtOnce;
    from += kCopiedAtOnce;
  } while (to < end);
}

// Bits says how the lowest bits of a word are had, Paired whether one entry may give more than one
// literal, or a literal and a length.
template <class Bits, bool Paired>
[[gnu::always_inline]] inline FastStop fastLoop(const FastJob& job) noexcept {
  BitReader in = job.in;
  const Entry* const primary = job.primary;
  const Entry* const distances = job.distances;
  std::uint8_t* const begin = job.out.begin;
  std::uint8_t* out = job.out.next;
  const std::uint8_t* const inLimit = in.end - kInputMargin;
  std::uint8_t* const outLimit = job.stopAt;
  FastStop stop = FastStop::margin;
  std::uint64_t before = 0;

  // As BitReader does, but with whole entries subtracted, so that only the low byte counts.
  std::uint64_t bits = in.bits;
  unsigned count = in.count;
  const auto take = [&](Entry entry) __attribute__((always_inline)) {
    bits >>= bitsOf(entry) & 63;
    count -= entry;
  };
  const auto fill = [&]() __attribute__((always_inline)) {
    bits |= loadWord<std::uint64_t, std::endian::little>(in.next) << (count & 63);
    in.next += (~count >> 3) & 7;
    count |= 56;
  };
  // Gives an entry's literals and takes its bits.
  const auto apply = [&](Entry entry) __attribute__((always_inline)) {
    if constexpr (Paired) {
      storeWord<std::endian::little>(literalsIn(entry), out);
      out += literalsOf(entry);
    } else {
      *out = static_cast<std::uint8_t>(literalsIn(entry));
      out += isLiteral(entry) ? 1 : 0;
    }
    before = bits;
    take(entry);
  };
  const auto lookUp = [&]() __attribute__((always_inline)) {
    return primary[bits & (kTableSize - 1)];
  };
  const auto extra = [](std::uint64_t from, Entry entry) __attribute__((always_inline)) {
    return static_cast<unsigned>(Bits::low(from, bitsOf(entry)) >> codeBitsOf(entry));
  };
  const auto atMargin = [&]() __attribute__((always_inline)) {
    return in.next > inLimit || out > outLimit;
  };

  fill();
  Entry entry = lookUp();
  // Each turn begins with 28 bits or more, enough for the longest length and an index into the
  // distances. Most turns are a match; the order of the rest is measured.
  for (;;) {
    apply(entry);
    if (isLiteral(entry)) [[unlikely]] {
      entry = lookUp();
      fill();
      // Two more literals leave 34 bits, one and the longest length 25.
      apply(entry);
      if (isLiteral(entry)) {
        apply(entry = lookUp());
        if (isLiteral(entry)) [[unlikely]] {
          entry = lookUp();
          if (atMargin()) break;
          continue;
        }
      }
    }
    if (isSpecial(entry)) [[unlikely]] {
      if (isSubtable(entry)) apply(entry = inSubtable(job.literals, entry, bits));
      if (isSpecial(entry)) {
        stop = isEndOfBlock(entry) ? FastStop::endOfBlock : FastStop::badLiteral;
        break;
      }
      if (isLiteral(entry)) {
        entry = lookUp();
        fill();
        if (atMargin()) break;
        continue;
      }
    }
    const std::size_t length = lengthOf(entry) + extra(before, entry);
    Entry far = distances[bits & ((1U << kDistanceBits) - 1)];
    fill();
    if (isSpecial(far)) [[unlikely]] {
      if (isSubtable(far)) {
        take(kDistanceBits);
        far = inSubtable(distances, far, bits);
      }
      if (isSpecial(far)) {
        stop = FastStop::badDistance;
        break;
      }
    }
    const std::size_t distance = distanceOf(far) + extra(bits, far);
    take(far);
    entry = lookUp();  // while the match is copied

    const std::size_t history = static_cast<std::size_t>(out - begin);
    if (distance <= history) [[likely]] {
      copyMatch(out, distance, length);
    } else {
      const std::size_t back = distance - history;
      if (back > job.window.filled()) {
        stop = FastStop::tooFar;
        break;
      }
      const std::size_t copied = job.window.copyWide(out, back, length);
      if (copied < length) copyMatch(out + copied, distance, length - copied);
    }
    out += length;
    if (atMargin()) break;
  }
  in.bits = bits;
  in.count = count & 63;
  job.in = in;
  job.out.next = out;
  return stop;
}

/// Ends when a margin is used up, behind the end of a block, or at an error, everything before
/// which is done. Needs both margins on entry; the input's bits may be left with whole bytes.
FastStop fast(const FastJob& job) noexcept;

}  // namespace zantrel::inflate
