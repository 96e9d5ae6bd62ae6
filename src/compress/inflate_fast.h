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
  std::uint8_t* stopAt;  ///< the loop ends behind this position, or earlier
};

/// The margins: what one turn of the loop reads and writes at most, overshoot included.
inline constexpr std::size_t kInputMargin = 32;
inline constexpr std::size_t kCopyStep = 32;
inline constexpr std::size_t kOutputMargin = 12 + 258 + 2 * kCopyStep;

[[gnu::always_inline]] inline void copyStep(std::uint8_t* to, const std::uint8_t* from) noexcept {
  std::uint8_t step[kCopyStep];
  std::memcpy(step, from, kCopyStep);
  std::memcpy(to, step, kCopyStep);
}

[[gnu::always_inline]] inline void copyWord(std::uint8_t* to, const std::uint8_t* from) noexcept {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
}

// A match within the output. Writes up to kCopyStep bytes past its end.
[[gnu::always_inline]] inline void copyMatch(std::uint8_t* to, std::size_t distance,
                                             std::size_t length) noexcept {
  const std::uint8_t* from = to - distance;
  std::uint8_t* const end = to + length;
  if (distance >= kCopyStep) {
    copyStep(to, from);
    while (length > kCopyStep) {
      to += kCopyStep;
      from += kCopyStep;
      length -= kCopyStep;
      copyStep(to, from);
    }
  } else if (distance == 1) {
    const std::uint8_t byte = *from;
    do {
      std::memset(to, byte, kCopyStep);
      to += kCopyStep;
    } while (to < end);
  } else {
    // Each copy from the same place doubles the distance, until whole words do not overlap.
    for (; distance < 8; distance *= 2) {
      copyWord(to, from);
      to += distance;
    }
    for (; to < end; to += 8, from += 8) copyWord(to, from);
  }
}

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

  // Gives an entry's literals and takes its bits.
  const auto apply = [&](Entry entry) __attribute__((always_inline)) {
    storeWord<std::endian::little>(entry >> 16, out);
    out += literalsOf(entry);
    before = in.bits;
    in.take(bitsOf(entry));
  };
  const auto lookUp = [&]() __attribute__((always_inline)) {
    return primary[lowBits(in.bits, kLiteralBits)];
  };
  constexpr Entry kNotLiteral = kMatch | kSpecial;

  in.fillWide();
  Entry entry = lookUp();
  for (;;) {
    // Three short codes and the longest match fit what was filled, but for the distance.
    apply(entry);
    if ((entry & kNotLiteral) == 0) {
      apply(entry = lookUp());
      if ((entry & kNotLiteral) == 0) {
        apply(entry = lookUp());
      }
    }
    if ((entry & kSpecial) != 0) [[unlikely]] {
      if ((entry & kSubtable) != 0) apply(entry = inSubtable(job.literals, entry, in.bits));
      if ((entry & kSpecial) != 0) {
        stop = (entry & kEndOfBlock) != 0 ? FastStop::endOfBlock : FastStop::badLiteral;
        break;
      }
    }
    if ((entry & kMatch) != 0) {
      const std::size_t length = lengthOf(entry) + extraOf(before, entry);
      in.fillWide();
      Entry far = distances[lowBits(in.bits, kDistanceBits)];
      if ((far & kSpecial) != 0) [[unlikely]] {
        if ((far & kSubtable) != 0) {
          in.take(kDistanceBits);
          far = inSubtable(distances, far, in.bits);
        }
        if ((far & kSpecial) != 0) {
          stop = FastStop::badDistance;
          break;
        }
      }
      const std::size_t distance = distanceOf(far) + extraOf(in.bits, far);
      in.take(bitsOf(far));
      entry = lookUp();
      in.fillWide();

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
    } else {
      entry = lookUp();
      in.fillWide();
    }
    if (in.next > inLimit || out > outLimit) break;
  }
  job.in = in;
  job.out.next = out;
  return stop;
}

/// Ends when a margin is used up, behind the end of a block, or at an error, everything before
/// which is done. Needs both margins on entry; the input's bits may be left with whole bytes.
FastStop fast(const FastJob& job) noexcept;

}  // namespace zantrel::inflate
