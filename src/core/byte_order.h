#pragma once
// Words in a stated byte order, at any address.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zantrel {

constexpr std::uint32_t byteSwap(std::uint32_t word) noexcept {
  return __builtin_bswap32(word);
}

constexpr std::uint64_t byteSwap(std::uint64_t word) noexcept {
  return __builtin_bswap64(word);
}

template <class Word, std::endian Order>
inline Word loadWord(const std::uint8_t* from) noexcept {
  Word word;
  std::memcpy(&word, from, sizeof word);
  return Order == std::endian::native ? word : byteSwap(word);
}

template <std::endian Order, class Word>
inline void storeWord(Word word, std::uint8_t* to) noexcept {
  if constexpr (Order != std::endian::native) word = byteSwap(word);
  std::memcpy(to, &word, sizeof word);
}

/// Writes Count words. Words of 32 bits are swapped four at a time: who reads the result in vectors
/// right after need not wait until it has left the store queue.
template <std::endian Order, std::size_t Count, class Word>
inline void storeWords(const Word* words, std::uint8_t* to) noexcept {
  std::size_t i = 0;
  if constexpr (Order != std::endian::native && sizeof(Word) == 4) {
    using Four = std::uint32_t __attribute__((vector_size(16)));
    for (; i + 4 <= Count; i += 4) {
      Four four;
      std::memcpy(&four, words + i, sizeof four);
      four = (four << 16) | (four >> 16);
      four = ((four & 0x00FF00FF) << 8) | ((four >> 8) & 0x00FF00FF);
      std::memcpy(to + 4 * i, &four, sizeof four);
    }
  }
  for (; i < Count; ++i) storeWord<Order>(words[i], to + i * sizeof(Word));
}

}  // namespace zantrel
