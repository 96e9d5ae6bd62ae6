// Quoted-printable, RFC 2045 section 6.7.
//
// Encoding stores four characters for every byte and advances by the one or three that count, so
// that a line needs no branch on what its bytes are; a blank in front of a line end is put right
// when the line end is met (vector paths: escape_avx2_x86.cpp, escape_avx512_x86.cpp). Decoding
// copies runs up to the next "=", line end or zero byte; the vector paths
// (quoted_printable_x86.cpp) find and copy a run in one go.

#include "core/encode/quoted_printable.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
#include "core/encode/escape_kernels.h"
#include "core/encode/hex.h"
#include "core/encode/quoted_printable_kernels.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

// The engines may write this much past their result: whole vectors, whole table entries.
constexpr std::size_t kSlack = 64;

// Bytes that stand for themselves everywhere but at the ends of a line.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (unsigned c = 32; c < 127; ++c) plain[c] = c != '=';
  plain['\t'] = true;
  return plain;
}();

// Arithmetic instead of the table, in blocks that a byte can count: compilers turn it into vectors.
std::size_t countEscaped(ByteSpan in) noexcept {
  std::size_t count = 0;
  while (!in.empty()) {
    const ByteSpan block = in.first(std::min<std::size_t>(in.size(), 255));
    std::uint8_t blockCount = 0;
    for (const std::uint8_t c : block) {
      const bool plain = (static_cast<std::uint8_t>(c - 32) < 95 && c != '=') || c == '\t';
      blockCount = static_cast<std::uint8_t>(blockCount + (plain ? 0 : 1));
    }
    count += blockCount;
    in = in.subspan(block.size());
  }
  return count;
}

char* writeEscaped(std::uint8_t byte, char* out) noexcept {
  out[0] = '=';
  out[1] = kHexDigits[byte >> 4];
  out[2] = kHexDigits[byte & 15];
  return out + 3;
}

bool isBlank(std::uint8_t byte) noexcept {
  return byte == ' ' || byte == '\t';
}

// What mail transport would alter at the start of a line: a dot, and the word From with a blank.
bool startsBadly(const std::uint8_t* in, std::size_t left) noexcept {
  return *in == '.' || (*in == 'F' && left >= 5 && std::memcmp(in, "From ", 5) == 0);
}

struct Form {
  char text[4];
};

constexpr auto kForms = [] {
  std::array<Form, 256> forms{};
  for (unsigned c = 0; c < 256; ++c) {
    forms[c] = {{'=', kHexDigits[c >> 4], kHexDigits[c & 15], 0}};
    if (kPlain[c]) forms[c] = {{static_cast<char>(c), 0, 0, 0}};
  }
  return forms;
}();

constexpr auto kLengths = [] {
  std::array<std::uint8_t, 256> lengths{};
  for (unsigned c = 0; c < 256; ++c) lengths[c] = kPlain[c] ? 1 : 3;
  return lengths;
}();

bool isLineBreak(const std::uint8_t* in, const std::uint8_t* end) noexcept {
  return end - in >= 2 && in[0] == '\r' && in[1] == '\n';
}

char* writeLineBreak(char* out) noexcept {
  out[0] = '\r';
  out[1] = '\n';
  return out + 2;
}

// Encodes bytes until `room` columns are reached, a CRLF is next, or the input ends.
char* encodeColumns(const std::uint8_t*& in, const std::uint8_t* end, std::size_t room,
                    char* const start) noexcept {
  const std::uint8_t* p = in;  // a copy that the stores below cannot alias
  char* out = start;
  while (p != end && static_cast<std::size_t>(out - start) < room) {
    if (*p == '\r' && isLineBreak(p, end)) break;
    std::memcpy(out, kForms[*p].text, 4);
    out += kLengths[*p++];
  }
  in = p;
  return out;
}

// Encodes the beginning of such columns; null where the processor has no vector path.
using EncodeVectors = escape::Progress (*)(const std::uint8_t* in, std::size_t size,
                                           std::size_t room, char* out) noexcept;

EncodeVectors chooseEncodeVectors() noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.avx512) return escape::quotedPrintableLineAvx512;
  if (cpu.avx2) return escape::quotedPrintableLineAvx2;
#endif
  return nullptr;
}

// One line without its break.
char* encodeLine(const std::uint8_t*& in, const std::uint8_t* end, std::size_t limit, char* out,
                 EncodeVectors encodeVectors) noexcept {
  const std::uint8_t* const first = in;
  std::size_t room = limit;
  if (startsBadly(in, static_cast<std::size_t>(end - in))) {
    out = writeEscaped(*in++, out);
    room = limit < 3 ? 0 : limit - 3;
  }
  // A line that begins beyond ASCII tends to be full of escapes, for which the table is faster.
  if (encodeVectors != nullptr && in != end && *in < 0x80) {
    const escape::Progress done = encodeVectors(in, static_cast<std::size_t>(end - in), room, out);
    in += done.consumed;
    out += done.produced;
    room -= std::min(room, done.produced);
  }
  out = encodeColumns(in, end, room, out);
  const bool atLineEnd = in == end || isLineBreak(in, end);
  if (atLineEnd && in != first && isBlank(in[-1])) out = writeEscaped(in[-1], out - 1);
  return out;
}

// Where runs between escapes are shorter than this, the bulk decoder is quicker than copying runs.
[[maybe_unused]] constexpr std::size_t kLongRun = 8;

// Digit values, 0xFF for what is no digit.
constexpr auto kDigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(0xFF);
  for (unsigned value = 0; value < 16; ++value) {
    values[static_cast<unsigned char>(kHexDigits[value])] = static_cast<std::uint8_t>(value);
    values[static_cast<unsigned char>(kHexDigits[value]) | 0x20U] =
        static_cast<std::uint8_t>(value);
  }
  return values;
}();

// Whether one of eight bytes is zero.
constexpr bool hasZeroByte(std::uint64_t word) noexcept {
  return ((word - 0x0101'0101'0101'0101) & ~word & 0x8080'8080'8080'8080) != 0;
}

std::size_t copyRunPortable(const char* in, std::size_t size, std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; size - i >= 8; i += 8) {
    std::uint64_t word;
    std::memcpy(&word, in + i, 8);
    std::memcpy(out + i, &word, 8);
    if (hasZeroByte(word) || hasZeroByte(word ^ 0x3D3D'3D3D'3D3D'3D3D) ||  // "="
        hasZeroByte(word ^ 0x0A0A'0A0A'0A0A'0A0A))                         // LF
      break;
  }
  for (; i < size && in[i] != '=' && in[i] != '\n' && in[i] != '\0'; ++i)
    out[i] = static_cast<std::uint8_t>(in[i]);
  return i;
}

using CopyRun = std::size_t (*)(const char* in, std::size_t size, std::uint8_t* out) noexcept;

CopyRun chooseCopyRun() noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.avx512) return quoted_printable::copyRunAvx512;
  if (cpu.avx2) return quoted_printable::copyRunAvx2;
#endif
  return copyRunPortable;
}

// Takes the blanks, tabs and CRs in front of `p` off the output, where they stand as they are.
std::uint8_t* trimBlanks(const char* literal, const char* p, std::uint8_t* out) noexcept {
  while (p != literal && (p[-1] == ' ' || p[-1] == '\t' || p[-1] == '\r')) --p, --out;
  return out;
}

// Where the line ends that holds nothing but blanks from `in` on: at its LF or at the end of the
// text; null when something else stands there.
const char* blankLineEnd(const char* in, const char* end) noexcept {
  while (in != end && (*in == ' ' || *in == '\t' || *in == '\r')) ++in;
  return in == end || *in == '\n' || *in == '\0' ? in : nullptr;
}

}  // namespace

// Escapes triple a byte. A line start and a blank in front of a line end may cost two more each: at
// hard breaks the CRLF, counted as two escapes, has that to spare; soft breaks are bounded by the
// columns that the escapes fill.
std::size_t quotedPrintableMaxSize(ByteSpan in, int maxLineLength) noexcept {
  const std::uint64_t columns = in.size() + std::uint64_t{countEscaped(in)} * 2;
  const std::uint64_t lines =
      columns / static_cast<std::uint64_t>(std::max(maxLineLength - 4, 1)) + 1;
  return clampSize(columns + lines * 7 + kSlack);
}

std::size_t quotedPrintableEncode(ByteSpan in, int maxLineLength, char* out) noexcept {
  const EncodeVectors encodeVectors = chooseEncodeVectors();
  const auto limit = static_cast<std::size_t>(std::max(maxLineLength, 1));
  const char* const start = out;
  const std::uint8_t* p = in.data();
  const std::uint8_t* const end = p + in.size();
  while (p != end) {
    char* const line = out;
    out = encodeLine(p, end, limit, line, encodeVectors);
    if (isLineBreak(p, end)) {
      out = writeLineBreak(out);
      p += 2;
    } else if (static_cast<std::size_t>(out - line) >= limit) {
      *out++ = '=';
      out = writeLineBreak(out);
    }
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t quotedPrintableDecodedMaxSize(std::string_view in) noexcept {
  return in.size() + static_cast<std::size_t>(std::count(in.begin(), in.end(), '\n')) + kSlack;
}

std::size_t quotedPrintableDecode(std::string_view in, std::uint8_t* out) noexcept {
  const CopyRun copyRun = chooseCopyRun();
  const std::uint8_t* const start = out;
  const char* p = in.data();
  const char* const end = p + in.size();
  const char* literal = p;      // from here on, blanks of the input stand in the output too
  std::size_t run = in.size();  // in front of the latest "=" or line end
  while (p != end) {
    const auto advance = [&](std::size_t consumed, std::size_t produced) {
      p += consumed;
      out += produced;
    };
#if defined(ZT_X86_64)
    if (cpuFeatures().avx512 && run < kLongRun) {
      const bool afterCr = p != in.data() && p[-1] == '\r';
      const auto done =
          quoted_printable::decodeBulkAvx512(p, static_cast<std::size_t>(end - p), afterCr, out);
      advance(done.consumed, done.produced);
    }
#endif
    run = copyRun(p, static_cast<std::size_t>(end - p), out);
    advance(run, run);
    while (end - p >= 3 && *p == '=') {
      const unsigned high = kDigitValues[static_cast<unsigned char>(p[1])];
      const unsigned low = kDigitValues[static_cast<unsigned char>(p[2])];
      if ((high | low) > 15) break;
      *out++ = static_cast<std::uint8_t>(high << 4 | low);
      p += 3;
    }
    if (p == end || *p == '\0') break;
    if (*p == '\n') {
      out = trimBlanks(literal, p++, out);
      *out++ = '\r';
      *out++ = '\n';
    } else if (*p == '=') {
      if (const char* const lineEnd = blankLineEnd(p + 1, end); lineEnd != nullptr) {
        p = lineEnd != end && *lineEnd == '\n' ? lineEnd + 1 : lineEnd;
        literal = p;
      } else {
        *out++ = static_cast<std::uint8_t>(*p++);
      }
    }
  }
  return static_cast<std::size_t>(trimBlanks(literal, p, out) - start);
}

bool quotedPrintableEncode(ByteSpan in, int maxLineLength, StringBuffer& out) {
  return appendFilled(out, quotedPrintableMaxSize(in, maxLineLength),
                      [&](char* room) { return quotedPrintableEncode(in, maxLineLength, room); });
}

bool quotedPrintableDecode(std::string_view in, DataBuffer& out) {
  return appendFilled(out, quotedPrintableDecodedMaxSize(in),
                      [in](std::uint8_t* room) { return quotedPrintableDecode(in, room); });
}

bool quotedPrintableEncodeOneLine(ByteSpan in, StringBuffer& out) {
  const std::uint64_t bound = in.size() + std::uint64_t{countEscaped(in)} * 2 + 4;
  return in.empty() || appendFilled(out, clampSize(bound), [in](char* room) {
           char* end = room;
           for (std::size_t i = 0; i < in.size(); ++i) {
             const bool atEnd = i + 1 == in.size() && isBlank(in[i]);
             const bool atStart = i == 0 && startsBadly(in.data(), in.size());
             if (kPlain[in[i]] && !atEnd && !atStart) {
               *end++ = static_cast<char>(in[i]);
             } else {
               end = writeEscaped(in[i], end);
             }
           }
           return static_cast<std::size_t>(end - room);
         });
}

}  // namespace zantrel
