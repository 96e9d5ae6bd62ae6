// Quoted-printable, RFC 2045 section 6.7.
//
// Both directions copy runs: encoding finds the next byte that cannot stand for itself, decoding
// the next "=" of a line. Only what lies between runs is looked at byte by byte.

#include "core/encode/quoted_printable.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
#include "core/encode/hex.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

// Bytes that stand for themselves everywhere but at the ends of a line.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (unsigned c = 32; c < 127; ++c) plain[c] = c != '=';
  plain['\t'] = true;
  return plain;
}();

std::size_t plainRun(const std::uint8_t* in, std::size_t size) noexcept {
  std::size_t i = 0;
  while (i < size && kPlain[in[i]]) ++i;
  return i;
}

std::size_t countEscaped(ByteSpan in) noexcept {
  std::size_t count = 0;
  for (const std::uint8_t byte : in) count += kPlain[byte] ? 0U : 1U;
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

// Encodes one text; `in_` always points at the next byte.
class Encoder {
 public:
  Encoder(ByteSpan in, int maxLineLength, char* out) noexcept
      : in_(in.data()),
        end_(in.data() + in.size()),
        limit_(static_cast<std::size_t>(std::max(maxLineLength, 1))),
        start_(out),
        out_(out) {}

  std::size_t run() noexcept {
    while (in_ != end_) {
      if (atLineBreak()) {
        writeBreak();
        in_ += 2;
      } else if (column_ == 0 && startsBadly(in_, left())) {
        escapeOne();
      } else if (!copyRun()) {
        escapeOne();
      }
      if (column_ >= limit_ && !atLineBreak()) {
        *out_++ = '=';
        writeBreak();
      }
    }
    return static_cast<std::size_t>(out_ - start_);
  }

 private:
  std::size_t left() const noexcept { return static_cast<std::size_t>(end_ - in_); }
  bool atLineBreak() const noexcept { return left() >= 2 && in_[0] == '\r' && in_[1] == '\n'; }
  void writeBreak() noexcept {
    *out_++ = '\r';
    *out_++ = '\n';
    column_ = 0;
  }
  void escapeOne() noexcept {
    out_ = writeEscaped(*in_++, out_);
    column_ += 3;
  }

  // Copies bytes that stand for themselves, up to the line's limit. False when the next one does
  // not.
  bool copyRun() noexcept {
    std::size_t count = plainRun(in_, std::min(left(), limit_ - column_));
    if (count == 0) return false;
    if (isBlank(in_[count - 1])) {
      const std::size_t behind = left() - count;
      const bool lineEnds =
          behind == 0 || (behind >= 2 && in_[count] == '\r' && in_[count + 1] == '\n');
      if (lineEnds && --count == 0) return false;
    }
    std::memcpy(out_, in_, count);
    in_ += count;
    out_ += count;
    column_ += count;
    return true;
  }

  const std::uint8_t* in_;
  const std::uint8_t* const end_;
  const std::size_t limit_;
  const char* const start_;
  char* out_;
  std::size_t column_ = 0;
};

// Copies one line's text without its break and resolves its escapes.
std::uint8_t* decodeLine(const char* in, const char* end, std::uint8_t* out) noexcept {
  while (in != end) {
    const auto left = static_cast<std::size_t>(end - in);
    const auto* const escape = static_cast<const char*>(std::memchr(in, '=', left));
    const std::size_t run = escape == nullptr ? left : static_cast<std::size_t>(escape - in);
    std::memcpy(out, in, run);
    in += run;
    out += run;
    while (end - in >= 3 && *in == '=' && isHexDigit(in[1]) && isHexDigit(in[2])) {
      *out++ = unvalidatedHexPair(in[1], in[2]);
      in += 3;
    }
    if (in != end && *in == '=' && !(end - in >= 3 && isHexDigit(in[1]) && isHexDigit(in[2]))) {
      *out++ = static_cast<std::uint8_t>(*in++);
    }
  }
  return out;
}

}  // namespace

// Escapes triple a byte. A line start and a blank in front of a line end may cost two more each: at
// hard breaks the CRLF, counted as two escapes, has that to spare; soft breaks are bounded by the
// columns that the escapes fill.
std::size_t quotedPrintableMaxSize(ByteSpan in, int maxLineLength) noexcept {
  const std::uint64_t columns = in.size() + std::uint64_t{countEscaped(in)} * 2;
  const std::uint64_t lines =
      columns / static_cast<std::uint64_t>(std::max(maxLineLength - 4, 1)) + 1;
  return in.empty() ? 0 : clampSize(columns + lines * 7);
}

std::size_t quotedPrintableEncode(ByteSpan in, int maxLineLength, char* out) noexcept {
  return Encoder(in, maxLineLength, out).run();
}

std::size_t quotedPrintableDecodedMaxSize(std::string_view in) noexcept {
  return in.size() + static_cast<std::size_t>(std::count(in.begin(), in.end(), '\n'));
}

std::size_t quotedPrintableDecode(std::string_view in, std::uint8_t* out) noexcept {
  const std::uint8_t* const start = out;
  if (const std::size_t zero = in.find('\0'); zero != in.npos) in = in.substr(0, zero);
  while (!in.empty()) {
    const std::size_t lineFeed = in.find('\n');
    const bool broken = lineFeed != in.npos;
    const char* const line = in.data();
    const char* end = line + (broken ? lineFeed : in.size());
    in.remove_prefix(broken ? lineFeed + 1 : in.size());
    while (end != line && (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r')) --end;
    const bool joined = end != line && end[-1] == '=';
    out = decodeLine(line, joined ? end - 1 : end, out);
    if (broken && !joined) {
      *out++ = '\r';
      *out++ = '\n';
    }
  }
  return static_cast<std::size_t>(out - start);
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
