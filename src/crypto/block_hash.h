#pragma once
// The frame that all digests share: it collects the input into whole blocks, counts it, and hands
// the rest to the algorithm for padding and output.
//
// An algorithm is a class of its own, called State here, with
//   kBlockBytes                     bytes a block
//   kMaxDigestBytes, digestBytes()  the room a digest needs at most, and what it takes
//   start()                         loads the initial values
//   compress(blocks, count)         absorbs whole blocks; where two ranges at once are quicker,
//   also
//                                   with (last, lastCount)
//   finish(rest, total, out)        absorbs what is left of `total` bytes and writes the digest
// WordState below supplies start() and finish() for those that follow the pattern of MD4: a word
// array for a state, one bit behind the message, the message's length in bits at the end.
//
// Inputs may be passwords and keys, so that blocks that held input are wiped.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/byte_order.h"
#include "core/bytes.h"
#include "platform/secure_wipe.h"

namespace zantrel {

/// secureWipe() for a local variable of small fixed size, inline: the overhead counts on short
/// messages.
template <class T>
inline void wipeLocal(T& object) noexcept {
  static_assert(std::is_trivially_copyable_v<T>);
  std::memset(static_cast<void*>(&object), 0, sizeof object);
  __asm__ __volatile__("" : : "r"(&object) : "memory");
}

/// Absorbs the rest of a message, pads it with `padByte`, zeros and the trailer.
template <std::size_t TrailerBytes, class State>
inline void absorbPadded(State& state, ByteSpan rest, std::uint8_t padByte,
                         const std::array<std::uint8_t, TrailerBytes>& trailer) {
  constexpr std::size_t kBlock = State::kBlockBytes;
  static_assert(TrailerBytes < kBlock);
  // The last blocks are laid out first: their bytes are then in the cache, and need not be picked
  // from narrower stores under way, when the chain of the whole blocks gets to them.
  const std::size_t blocks = rest.size() / kBlock;
  const std::size_t used = rest.size() % kBlock;
  std::uint8_t last[2 * kBlock] = {};
  if (used > 0) std::memcpy(last, rest.data() + blocks * kBlock, used);
  last[used] = padByte;
  const std::size_t count = used + 1 + TrailerBytes <= kBlock ? 1 : 2;
  std::memcpy(last + count * kBlock - TrailerBytes, trailer.data(), TrailerBytes);
  if constexpr (requires { state.compress(last, count, last, count); }) {
    state.compress(rest.data(), blocks, last, count);
  } else {
    if (blocks > 0) state.compress(rest.data(), blocks);
    state.compress(last, count);
  }
  wipeLocal(last);
}

/// State of an algorithm that works on an array of words. Algorithm is the class that derives from
/// it and has kInitial and compress(); LengthBytes is the width of the length behind the message.
template <class Algorithm, class Word, std::size_t StateWords, std::size_t BlockBytes,
          std::size_t DigestBytes, std::endian Order, std::size_t LengthBytes = 8>
class WordState {
 public:
  static constexpr std::size_t kBlockBytes = BlockBytes;
  static constexpr std::size_t kMaxDigestBytes = DigestBytes;
  static constexpr std::size_t digestBytes() noexcept { return DigestBytes; }

  void start() noexcept { words_ = Algorithm::kInitial; }

  void finish(ByteSpan rest, std::uint64_t total, std::uint8_t* out) {
    std::array<std::uint8_t, LengthBytes> length{};
    if constexpr (Order == std::endian::little) {
      static_assert(Order == std::endian::big || LengthBytes == 8);
      storeWord<Order>(total << 3, length.data());
    } else {
      storeWord<Order>(total << 3, length.data() + LengthBytes - 8);
      if constexpr (LengthBytes == 16) storeWord<Order>(total >> 61, length.data());
    }
    absorbPadded(static_cast<Algorithm&>(*this), rest, 0x80, length);
    storeWords<Order, DigestBytes / sizeof(Word)>(words_.data(), out);
  }

 protected:
  std::array<Word, StateWords> words_;
};

template <class State>
class BlockHash {
 public:
  static constexpr std::size_t kBlockBytes = State::kBlockBytes;
  static constexpr std::size_t kMaxDigestBytes = State::kMaxDigestBytes;

  explicit BlockHash(const State& parameters = State()) noexcept : state_(parameters) {
    state_.start();
  }
  BlockHash(const BlockHash&) = default;
  BlockHash& operator=(const BlockHash&) = default;
  ~BlockHash() {
    secureWipe(block_, sizeof block_);
    secureWipe(&state_, sizeof state_);
  }

  std::size_t digestBytes() const noexcept { return state_.digestBytes(); }

  void initialize() noexcept {
    state_.start();
    total_ = 0;
  }

  void update(ByteSpan bytes) {
    const std::uint8_t* from = bytes.data();
    std::size_t left = bytes.size();
    if (left == 0) return;
    std::size_t used = static_cast<std::size_t>(total_ % kBlockBytes);
    total_ += left;
    if (used > 0) {
      const std::size_t taken = std::min(left, kBlockBytes - used);
      std::memcpy(block_ + used, from, taken);
      from += taken;
      left -= taken;
      used += taken;
      if (used < kBlockBytes) return;
      state_.compress(block_, 1);
    }
    const std::size_t blocks = left / kBlockBytes;
    if (blocks > 0) state_.compress(from, blocks);
    left -= blocks * kBlockBytes;
    if (left > 0) std::memcpy(block_, from + blocks * kBlockBytes, left);
  }

  /// Writes digestBytes() bytes and starts over.
  void finalize(std::uint8_t* out) {
    state_.finish({block_, static_cast<std::size_t>(total_ % kBlockBytes)}, total_, out);
    secureWipe(block_, sizeof block_);
    initialize();
  }

  /// The digest of what was absorbed, followed by `bytes`; this context stays as it is. Input that
  /// begins at a block's border is not copied.
  void finalizeWith(ByteSpan bytes, std::uint8_t* out) const {
    if (total_ % kBlockBytes != 0) {
      BlockHash copy(*this);
      copy.update(bytes);
      copy.finalize(out);
      return;
    }
    State state(state_);
    state.finish(bytes, total_ + bytes.size(), out);
    wipeLocal(state);
  }

  /// The digest of one range, without a context.
  static void digest(ByteSpan bytes, std::uint8_t* out, State state = State()) {
    state.start();
    state.finish(bytes, bytes.size(), out);
    wipeLocal(state);
  }

 private:
  State state_;
  std::uint64_t total_ = 0;  // bytes
  std::uint8_t block_[kBlockBytes];
};

}  // namespace zantrel
