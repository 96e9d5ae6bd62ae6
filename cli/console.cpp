// Standard streams by the C library; the rest is per system.

#include "console.h"

#include <cstdio>

namespace zantrel_cli {

namespace {
// A buffer of the library holds no more.
constexpr std::uint64_t kMostBytes = 0xFFFFFFFFu;
constexpr std::size_t kBlock = 1 << 16;
}  // namespace

bool readStandardInput(const std::function<bool(std::span<const std::uint8_t>)>& take) {
  std::vector<std::uint8_t> block(kBlock);
  for (;;) {
    const std::size_t got = std::fread(block.data(), 1, kBlock, stdin);
    if (got > 0 && !take({block.data(), got})) return false;
    if (got < kBlock) return std::ferror(stdin) == 0;
  }
}

bool readStandardInput(std::vector<std::uint8_t>& out) {
  out.clear();
  return readStandardInput([&out](std::span<const std::uint8_t> block) {
    if (out.size() > kMostBytes - block.size()) return false;
    out.insert(out.end(), block.begin(), block.end());
    return true;
  });
}

bool writeStandardOutput(std::span<const std::uint8_t> bytes) {
  const bool written =
      bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
  return std::fflush(stdout) == 0 && written;
}

}  // namespace zantrel_cli
