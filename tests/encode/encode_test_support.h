#pragma once
// Engines as functions from text to text, in buffers of exactly the promised size, and inputs that
// reach their corners.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/encode/base32.h"
#include "core/encode/base64.h"
#include "core/encode/hex.h"
#include "core/encode/quoted_printable.h"
#include "core/encode/url_encode.h"
#include "core/string_buffer.h"

namespace zantrel::test {

/// Gives `fill` a block of exactly `size` bytes on the heap, where sanitizers watch its ends.
template <class Char, class Fill>
std::string inExactBlock(std::size_t size, const Fill& fill) {
  std::vector<Char> block(size);
  const std::size_t written = fill(block.data());
  EXPECT_LE(written, size);
  return std::string(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(written));
}

inline std::string base64(std::string_view in) {
  return inExactBlock<char>(base64EncodedSize(in.size()),
                            [in](char* out) { return base64Encode(asBytes(in), out); });
}
inline std::string base64Lines(std::string_view in, int lineLength) {
  return inExactBlock<char>(base64LinesSize(in.size(), lineLength), [&](char* out) {
    return base64EncodeLines(asBytes(in), lineLength, out);
  });
}
inline std::string unbase64(std::string_view in) {
  return inExactBlock<std::uint8_t>(base64DecodedMaxSize(in.size()),
                                    [in](std::uint8_t* out) { return base64Decode(in, out); });
}
inline std::string base32(std::string_view in) {
  return inExactBlock<char>(base32EncodedSize(in.size()),
                            [in](char* out) { return base32Encode(asBytes(in), out); });
}
inline std::string unbase32(std::string_view in) {
  return inExactBlock<std::uint8_t>(base32DecodedMaxSize(in.size()),
                                    [in](std::uint8_t* out) { return base32Decode(in, out); });
}
inline std::string hexText(std::string_view in) {
  return inExactBlock<char>(in.size() * 2, [in](char* out) { return hexEncode(asBytes(in), out); });
}
inline std::string unhexText(std::string_view in) {
  return inExactBlock<std::uint8_t>(in.size() / 2,
                                    [in](std::uint8_t* out) { return hexDecode(in, out); });
}
inline std::string quotedText(std::string_view in, int lineLength = 72) {
  return inExactBlock<char>(quotedPrintableMaxSize(asBytes(in), lineLength), [&](char* out) {
    return quotedPrintableEncode(asBytes(in), lineLength, out);
  });
}
inline std::string unquotedText(std::string_view in) {
  return inExactBlock<std::uint8_t>(quotedPrintableDecodedMaxSize(in), [in](std::uint8_t* out) {
    return quotedPrintableDecode(in, out);
  });
}
inline std::string urlEncoded(std::string_view in) {
  return inExactBlock<char>(UrlEncode::encodedSize(asBytes(in)) + UrlEncode::kSlack,
                            [in](char* out) { return UrlEncode::encode(asBytes(in), out); });
}
inline std::string urlDecoded(std::string_view in) {
  return inExactBlock<std::uint8_t>(in.size(),
                                    [in](std::uint8_t* out) { return UrlEncode::decode(in, out); });
}

/// `size` characters drawn from an alphabet; an empty one stands for all 256 bytes.
inline std::string randomText(std::mt19937& random, std::size_t size,
                              std::string_view alphabet = {}) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i)
    text += alphabet.empty() ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
  return text;
}

}  // namespace zantrel::test
