#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zantrel::test {

/// A number at a time, the same on every machine.
class Numbers {
 public:
  explicit Numbers(std::uint64_t seed) : state_(seed * 2 + 1) {}
  std::uint32_t next() {
    state_ = state_ * 6364136223846793005 + 1442695040888963407;
    return static_cast<std::uint32_t>(state_ >> 33);
  }
  std::uint32_t below(std::uint32_t limit) { return next() % limit; }

 private:
  std::uint64_t state_;
};

/// Bytes below `symbols`.
inline std::string noise(std::size_t size, std::uint32_t symbols = 256, std::uint64_t seed = 1) {
  Numbers numbers(seed);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(numbers.below(symbols));
  return bytes;
}

}  // namespace zantrel::test
