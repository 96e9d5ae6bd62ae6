// Standard streams by the C library; the rest is per system.

#include "console.h"

#include <cstdio>

namespace zantrel_cli {

namespace {
// A buffer of the library holds no more.
constexpr std::uint64_t kMostBytes = 0xFFFFFFFFu;
constexpr std::size_t kBlock = 1 << 16;
}  // namespace

bool readStandardInput(std::vector<std::uint8_t>& out) {
  out.clear();
  for (;;) {
    const std::size_t before = out.size();
    out.resize(before + kBlock);
    const std::size_t got = std::fread(out.data() + before, 1, kBlock, stdin);
    out.resize(before + got);
    if (got < kBlock) return std::ferror(stdin) == 0;
    if (out.size() > kMostBytes - kBlock) return false;
  }
}

bool writeStandardOutput(std::span<const std::uint8_t> bytes) {
  const bool written =
      bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
  return std::fflush(stdout) == 0 && written;
}

}  // namespace zantrel_cli
