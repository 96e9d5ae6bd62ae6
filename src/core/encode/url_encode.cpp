// URL encoding (application/x-www-form-urlencoded, HTML 4.01 section 17.13.4, in its strictest
// form).
//
// The output is counted first. Encoding stores four characters for every byte and advances by the
// one or three that count, which needs no branch and hence costs the same for every text (vector
// path: escape_avx512_x86.cpp). Decoding copies the runs between escapes (escape_avx2_x86.cpp).

#include "core/encode/url_encode.h"

#include <array>
#include <cstring>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
#include "core/encode/escape_kernels.h"
#include "core/encode/hex.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

struct Form {
  char text[4];
};

constexpr bool isAlphanumeric(unsigned c) noexcept {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

constexpr auto kForms = [] {
  std::array<Form, 256> forms{};
  for (unsigned c = 0; c < 256; ++c) {
    forms[c] = {{'%', kHexDigits[c >> 4], kHexDigits[c & 15], 0}};
    if (isAlphanumeric(c)) forms[c] = {{static_cast<char>(c), 0, 0, 0}};
  }
  forms[' '] = {{'+', 0, 0, 0}};
  return forms;
}();

constexpr auto kLengths = [] {
  std::array<std::uint8_t, 256> lengths{};
  for (unsigned c = 0; c < 256; ++c) lengths[c] = isAlphanumeric(c) || c == ' ' ? 1 : 3;
  return lengths;
}();

// Decodes what stands in front of the first "%" and returns how many bytes that is.
using CopyRun = std::size_t (*)(const char* in, std::size_t size, std::uint8_t* out) noexcept;

std::size_t copyRunPortable(const char* in, std::size_t size, std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; i < size && in[i] != '%'; ++i)
    out[i] = in[i] == '+' ? std::uint8_t{' '} : static_cast<std::uint8_t>(in[i]);
  return i;
}

CopyRun chooseCopyRun() noexcept {
#if defined(ZT_X86_64)
  if (cpuFeatures().avx2) return escape::urlRunAvx2;
#endif
  return copyRunPortable;
}

}  // namespace

std::size_t UrlEncode::encodedSize(ByteSpan in) noexcept {
  std::uint64_t size = 0;
  for (const std::uint8_t byte : in) size += kLengths[byte];
  return clampSize(size);
}

std::size_t UrlEncode::encode(ByteSpan in, char* out) noexcept {
#if defined(ZT_X86_64)
  if (cpuFeatures().avx512) return escape::urlAvx512(in.data(), in.size(), out);
#endif
  const char* const start = out;
  for (const std::uint8_t byte : in) {
    std::memcpy(out, kForms[byte].text, 4);
    out += kLengths[byte];
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t UrlEncode::decode(std::string_view in, std::uint8_t* out) noexcept {
  const CopyRun copyRun = chooseCopyRun();
  const std::uint8_t* const start = out;
  for (std::size_t i = 0; i < in.size();) {
    const std::size_t run = copyRun(in.data() + i, in.size() - i, out);
    i += run;
    out += run;
    for (; i < in.size() && in[i] == '%'; i += 3) {
      if (in.size() - i < 3) return static_cast<std::size_t>(out - start);
      *out++ = unvalidatedHexPair(in[i + 1], in[i + 2]);
    }
  }
  return static_cast<std::size_t>(out - start);
}

bool UrlEncode::encode(ByteSpan in, StringBuffer& out) {
  if (in.empty()) return true;
  return appendFilled(out, clampSize(std::uint64_t{encodedSize(in)} + kSlack),
                      [in](char* room) { return encode(in, room); });
}

bool UrlEncode::decode(std::string_view in, DataBuffer& out) {
  return appendFilled(out, in.size(), [in](std::uint8_t* room) { return decode(in, room); });
}

}  // namespace zantrel
