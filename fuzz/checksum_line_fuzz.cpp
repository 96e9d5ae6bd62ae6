// Any text as a line of a checksum file, and as the name of a file in one. Checked: what the
// command writes is read back as the same name and digest, whatever the name holds.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// The command is no library that could be linked.
#include "../cli/checksum_line.cpp"

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zantrel_cli;
  const std::vector<std::string> algorithms = {"sha256", "haval"};
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (const auto line = parseChecksumLine(text, algorithms)) {
    check(!line->file.empty() || !line->algorithm.empty());
    check(!line->digest.empty());
  }
  // A line of text ends at its first line end; a name has at least a byte and no zero byte.
  if (text.empty() || text.find('\0') != std::string::npos) return 0;
  for (const std::string tag : {"", "SHA256", "HMAC-SHA256", "HAVAL256,3"}) {
    std::string written = checksumLine("c0ffee", text, tag, false);
    check(written.find('\n') == written.size() - 1);
    written.pop_back();
    const auto line = parseChecksumLine(written, algorithms);
    check(line && line->file == text && line->digest == "c0ffee");
    check(line->algorithm == normalisedAlgorithm(tag));
  }
  return 0;
}
