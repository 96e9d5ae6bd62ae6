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

}  // namespace zantrel
