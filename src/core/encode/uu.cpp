// UU encoding as uuencode(1) of POSIX.1 describes it (the historical algorithm): each line starts
// with its byte count and holds groups of four characters for three bytes, all as 32 plus six bits.
//
// Only the line that says "end", or one with a count of zero, ends a block. The size of the output
// is bounded by the number of lines, so a hostile count cannot make it grow past 63 bytes a line.

#include "core/encode/uu.h"

#include <algorithm>
#include <array>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
#include "core/encode/uu_kernels.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

using uu::kBytesPerLine;
using uu::kMaxLineCount;

constexpr std::size_t kCharsPerLine = 1 + kBytesPerLine / 3 * 4 + 2;  // with count and CRLF

constexpr char digit(std::uint32_t value) noexcept {
  return value == 0 ? '`' : static_cast<char>(32 + value);
}

// A blank and "`" are both zero; nothing else is validated.
constexpr std::uint32_t digitValue(char c) noexcept {
  return (static_cast<unsigned char>(c) - 32U) & 63U;
}

char* encodeLine(ByteSpan in, char* out) noexcept {
  *out++ = digit(static_cast<std::uint32_t>(in.size()));
  for (std::size_t i = 0; i < in.size(); i += 3) {
    const auto at = [&](std::size_t k) -> std::uint32_t { return k < in.size() ? in[k] : 0U; };
    const std::uint32_t bits = at(i) << 16 | at(i + 1) << 8 | at(i + 2);
    for (int shift = 18; shift >= 0; shift -= 6) *out++ = digit(bits >> shift & 63);
  }
  *out++ = '\r';
  *out++ = '\n';
  return out;
}

// What the processor at hand runs; null where the portable code does all.
struct Paths {
  std::size_t (*encodeLines)(const std::uint8_t* in, std::size_t size,
                             char* out) noexcept = nullptr;
  void (*decodeLine)(const char* in, std::size_t count, std::uint8_t* out) noexcept = nullptr;
};

Paths choosePaths() noexcept {
  Paths paths;
#if defined(ZT_X86_64)
  if (cpuFeatures().avx2) paths = {uu::encodeLinesAvx2, uu::decodeLineAvx2};
#endif
  return paths;
}

std::size_t encodeAllLines(ByteSpan in, char* out) noexcept {
  const Paths paths = choosePaths();
  char* end = out;
  if (paths.encodeLines != nullptr) {
    const std::size_t bulk = paths.encodeLines(in.data(), in.size(), out);
    end += bulk / kBytesPerLine * kCharsPerLine;
    in = in.subspan(bulk);
  }
  for (std::size_t i = 0; i < in.size(); i += kBytesPerLine)
    end = encodeLine(in.subspan(i, std::min(kBytesPerLine, in.size() - i)), end);
  return static_cast<std::size_t>(end - out);
}

// What a line lacks at its end reads as zeros.
void decodeLine(std::string_view data, std::size_t count, std::uint8_t* out) noexcept {
  for (std::size_t done = 0, i = 0; done < count; i += 4) {
    const auto at = [&](std::size_t k) { return k < data.size() ? digitValue(data[k]) : 0U; };
    const std::uint32_t bits = at(i) << 18 | at(i + 1) << 12 | at(i + 2) << 6 | at(i + 3);
    for (int shift = 16; shift >= 0 && done < count; shift -= 8)
      out[done++] = static_cast<std::uint8_t>(bits >> shift);
  }
}

// Takes the next line off the text, without its line end.
std::string_view takeLine(std::string_view& text) noexcept {
  const std::size_t lineFeed = text.find('\n');
  std::string_view line = text.substr(0, lineFeed);
  text.remove_prefix(lineFeed == text.npos ? text.size() : lineFeed + 1);
  while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::string_view trimBlanks(std::string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// "begin", a mode of octal digits, a name; prose that starts with the word is no header.
bool parseHeader(std::string_view line, std::string_view& mode, std::string_view& name) noexcept {
  constexpr std::string_view kBegin = "begin ";
  if (!line.starts_with(kBegin)) return false;
  line = trimBlanks(line.substr(kBegin.size()));
  const std::size_t modeEnd = line.find_first_not_of("01234567");
  if (modeEnd == 0 || modeEnd == line.npos || line[modeEnd] != ' ') return false;
  mode = line.substr(0, modeEnd);
  name = trimBlanks(line.substr(modeEnd));
  return true;
}

bool isEnd(std::string_view line) noexcept {
  return trimBlanks(line) == "end";
}

bool canHoldData(std::string_view line) noexcept {
  return line[0] >= ' ' && line[0] <= '`';
}

// Text for the header line: `fallback` when nothing printable remains.
bool appendHeaderText(std::string_view text, std::string_view fallback, StringBuffer& out) {
  const std::uint32_t before = out.getSize();
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 32 && byte != 127 && !out.appendChar(c)) return false;
  }
  return out.getSize() != before || out.append(fallback);
}

}  // namespace

bool Uu::encode(ByteSpan in, std::string_view mode, std::string_view fileName, StringBuffer& out) {
  if (!out.append("begin ") || !appendHeaderText(mode, "644", out) || !out.append(" ") ||
      !appendHeaderText(fileName, "file.dat", out) || !out.append("\r\n"))
    return false;
  const std::uint64_t lines = in.size() / kBytesPerLine + 1;
  const std::uint64_t bound = (std::uint64_t{in.size()} + 2) / 3 * 4 + lines * 3;
  return appendFilled(out, clampSize(bound),
                      [in](char* room) { return encodeAllLines(in, room); }) &&
         out.append("`\r\nend\r\n");
}

bool Uu::decode(std::string_view in, DataBuffer& out, StringBuffer& mode, StringBuffer& fileName) {
  std::string_view headerMode;
  std::string_view headerName;
  while (!parseHeader(takeLine(in), headerMode, headerName))
    if (in.empty()) return true;
  if (!mode.setString(headerMode) || !fileName.setString(headerName)) return false;

  const Paths paths = choosePaths();
  std::array<std::uint8_t, 64 * kMaxLineCount + uu::kDecodeWrites> block;
  std::size_t used = 0;
  while (!in.empty()) {
    const std::string_view line = takeLine(in);
    if (line.empty() || isEnd(line) || digitValue(line[0]) == 0) break;
    if (!canHoldData(line)) continue;
    const std::size_t count = digitValue(line[0]);
    const std::string_view data = line.substr(1);
    const bool isWhole = data.size() >= (count + 2) / 3 * 4;
    if (isWhole && in.size() >= uu::kDecodeReads && paths.decodeLine != nullptr) {
      paths.decodeLine(data.data(), count, block.data() + used);
    } else {
      decodeLine(data, count, block.data() + used);
    }
    used += count;
    if (block.size() - used >= uu::kDecodeWrites) continue;
    if (!out.append(block.data(), used)) return false;
    used = 0;
  }
  return out.append(block.data(), used);
}

}  // namespace zantrel
