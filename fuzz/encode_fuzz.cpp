// Every binary-to-text encoding: decoding what was encoded gives the input back, decoders take any
// text, and each vector path gives the same bytes as the portable one.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "core/data_buffer.h"
#include "core/encode/base32.h"
#include "core/encode/base64.h"
#include "core/encode/cls_encode.h"
#include "core/encode/hex.h"
#include "core/encode/quoted_printable.h"
#include "core/encode/url_encode.h"
#include "core/encode/uu.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

void require(bool holds) {
  if (!holds) std::abort();
}

// In blocks of exactly the promised size, so that the sanitizer sees any step beyond.
template <class Char, class Fill>
std::string filled(std::size_t size, const Fill& fill) {
  std::vector<Char> block(size);
  const std::size_t written = fill(block.data());
  require(written <= size);
  return std::string(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(written));
}

struct Results {
  std::vector<std::string> encoded;  ///< each must decode to the input
  std::vector<std::string> decoded;  ///< the input taken as text
  bool operator==(const Results&) const = default;
};

std::string unbase64(std::string_view text) {
  return filled<std::uint8_t>(base64DecodedMaxSize(text.size()),
                              [=](std::uint8_t* out) { return base64Decode(text, out); });
}
std::string unquote(std::string_view text) {
  return filled<std::uint8_t>(quotedPrintableDecodedMaxSize(text),
                              [=](std::uint8_t* out) { return quotedPrintableDecode(text, out); });
}
std::string unhex(std::string_view text) {
  return filled<std::uint8_t>(text.size() / 2,
                              [=](std::uint8_t* out) { return hexDecode(text, out); });
}
std::string unescape(std::string_view text) {
  return filled<std::uint8_t>(text.size(),
                              [=](std::uint8_t* out) { return UrlEncode::decode(text, out); });
}
std::string unbase32(std::string_view text) {
  return filled<std::uint8_t>(base32DecodedMaxSize(text.size()),
                              [=](std::uint8_t* out) { return base32Decode(text, out); });
}

std::string encodeUu(std::string_view text) {
  StringBuffer block;
  require(Uu::encode(asBytes(text), "600", "x", block));
  return std::string(block.view());
}

std::string decodeUu(std::string_view block) {
  DataBuffer bytes;
  StringBuffer mode, name;
  require(Uu::decode(block, bytes, mode, name));
  require(mode.equals("600") && name.equals("x"));
  return std::string(bytes.text());
}

Results results(std::string_view text, int lineLength) {
  const ByteSpan in = asBytes(text);
  Results all;
  all.encoded = {
      filled<char>(base64EncodedSize(in.size()), [=](char* out) { return base64Encode(in, out); }),
      filled<char>(base64LinesSize(in.size(), lineLength),
                   [=](char* out) { return base64EncodeLines(in, lineLength, out); }),
      filled<char>(quotedPrintableMaxSize(in, lineLength),
                   [=](char* out) { return quotedPrintableEncode(in, lineLength, out); }),
      filled<char>(in.size() * 2, [=](char* out) { return hexEncode(in, out); }),
      filled<char>(UrlEncode::encodedSize(in) + UrlEncode::kSlack,
                   [=](char* out) { return UrlEncode::encode(in, out); }),
      filled<char>(base32EncodedSize(in.size()), [=](char* out) { return base32Encode(in, out); }),
      encodeUu(text)};
  all.decoded = {unbase64(text), unquote(text),  unhex(text),
                 unescape(text), unbase32(text), decodeUu("begin 600 x\n" + std::string(text))};
  require(unbase64(all.encoded[0]) == text);
  require(unbase64(all.encoded[1]) == text);
  require(unquote(all.encoded[2]) == text);
  require(unhex(all.encoded[3]) == text);
  require(unescape(all.encoded[4]) == text);
  require(unbase32(all.encoded[5]) == text);
  require(decodeUu(all.encoded[6]) == text);
  require(all.decoded[5].size() <= 63 * text.size());
  return all;
}

void checkSelector(std::string_view text) {
  const std::size_t nameSize = text.size() < 12 ? text.size() : 12;
  const XString name(text.substr(0, nameSize));
  ClsEncode encode;
  XString out;
  DataBuffer in, back;
  require(in.append(text) && encode.Encode(in, name, out, false));
  require(encode.Decode(out, name, back, false));
  encode.put_EncodingMode(name);
  XString canonical;
  encode.get_EncodingMode(canonical);
  encode.put_EncodingMode(canonical);
  XString again;
  encode.get_EncodingMode(again);
  require(again.utf8() == canonical.utf8());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int lineLength = data[0] == 0 ? kNoSoftBreaks : data[0] % 100;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  const CpuFeatures all = detectCpuFeatures();
  CpuFeatures middle;
  middle.ssse3 = all.ssse3;
  middle.avx2 = all.avx2;
  Results portable;
  {
    const ScopedCpuFeatures scope{CpuFeatures()};
    portable = results(text, lineLength);
  }
  for (const CpuFeatures& features : {middle, all}) {
    const ScopedCpuFeatures scope(features);
    require(results(text, lineLength) == portable);
  }
  checkSelector(text);
  return 0;
}
