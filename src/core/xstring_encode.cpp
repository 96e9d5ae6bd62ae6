// Text encodings applied in place, and the scrambling of passwords.

#include <cstring>
#include <utility>

#include "core/ascii_text.h"
#include "core/auto_link.h"
#include "core/charset/code_page.h"
#include "core/encode/base64.h"
#include "core/encode/hex.h"
#include "core/encode/html_entities.h"
#include "core/encode/quoted_printable.h"
#include "core/encode/url_encode.h"
#include "core/xstring.h"
#include "platform/random.h"
#include "platform/secure_wipe.h"

namespace zantrel {
namespace {

constexpr int kQpLineLength = 72;

// A scrambled text is, in hexadecimal: 8 random bytes, then 4 bytes of check sum and the UTF-8
// form, both combined by exclusive or with a stream of numbers that starts from the random bytes.
// The random start makes equal passwords look different; there is no key, so nothing is kept
// secret.
constexpr std::size_t kSeedSize = 8;
constexpr std::size_t kCheckSize = 4;

std::uint32_t checkSum(ByteSpan bytes) noexcept {  // FNV-1a
  std::uint32_t sum = 2166136261U;
  for (const std::uint8_t byte : bytes) sum = (sum ^ byte) * 16777619U;
  return sum;
}

/// Combines bytes with the stream of a seed (SplitMix64); doing it twice gives the bytes back.
void scramble(const std::uint8_t* seed, std::uint8_t* bytes, std::size_t count) noexcept {
  std::uint64_t state = 0;
  for (std::size_t i = 0; i < kSeedSize; ++i) state = state << 8 | seed[i];
  for (std::size_t i = 0; i < count; ++i) {
    state += 0x9E3779B97F4A7C15U;
    std::uint64_t z = (state ^ state >> 30) * 0xBF58476D1CE4E5B9U;
    z = (z ^ z >> 27) * 0x94D049BB133111EBU;
    bytes[i] ^= static_cast<std::uint8_t>(z >> 56);
  }
}

void storeCheckSum(std::uint32_t sum, std::uint8_t* out) noexcept {
  for (std::size_t i = 0; i < kCheckSize; ++i) out[i] = static_cast<std::uint8_t>(sum >> 8 * i);
}

bool qpEncodeText(ByteSpan in, StringBuffer& out) {
  return quotedPrintableEncode(in, kQpLineLength, out);
}

}  // namespace

bool XString::encodeWith(const char* charsetName, bool (*encode)(ByteSpan, StringBuffer&)) {
  const int codePage = textCodePage(charsetName);
  DataBuffer bytes;
  const bool exact = codePage != codepage::kUnknown && getConverted(codePage, bytes);
  if (!exact && bytes.getSize() == 0) return false;
  StringBuffer encoded;
  return encode(bytes.bytes(), encoded) && replaceText(std::move(encoded)) && exact;
}

bool XString::decodeWith(const char* charsetName, bool trim,
                         bool (*decode)(std::string_view, DataBuffer&)) {
  if (textCodePage(charsetName) == codepage::kUnknown) return false;
  const std::string_view text = trim ? trimmed(utf8()) : utf8();
  DataBuffer bytes;
  if (!decode(text, bytes)) return false;
  XString decoded;
  const bool valid = decoded.appendFromEncoding(bytes.bytes(), charsetName);
  if (!valid && decoded.isEmpty() && bytes.getSize() != 0) return false;
  *this = std::move(decoded);
  return valid;
}

bool XString::base64Encode(const char* charsetName) {
  return encodeWith(charsetName, zantrel::base64Encode);
}

bool XString::base64Decode(const char* charsetName) {
  return decodeWith(charsetName, true, zantrel::base64Decode);
}

bool XString::qpEncode(const char* charsetName) {
  return encodeWith(charsetName, qpEncodeText);
}

bool XString::qpDecode(const char* charsetName) {
  return decodeWith(charsetName, true, quotedPrintableDecode);
}

bool XString::hexEncode(const char* charsetName) {
  return encodeWith(charsetName, zantrel::hexEncode);
}

bool XString::hexDecode(const char* charsetName) {
  return decodeWith(charsetName, true, zantrel::hexDecode);
}

bool XString::urlDecode(const char* charsetName) {
  return decodeWith(charsetName, false, UrlEncode::decode);
}

bool XString::encodeXMLSpecial() {
  return rewriteWith(xmlSpecialEncode);
}

bool XString::decodeXMLSpecial() {
  return rewriteWith(xmlSpecialDecode);
}

bool XString::entityEncode_A() {
  return rewriteWith(entityEncodeDec);
}

bool XString::entityDecode_A() {
  return rewriteWith(htmlEntityDecode);
}

bool XString::autoLinkUrls() {
  return rewriteWith(zantrel::autoLinkUrls);
}

bool XString::obfus() {
  const std::string_view text = utf8();
  if (text.empty()) return true;
  const std::size_t count = kCheckSize + text.size();
  DataBuffer bytes;
  std::uint8_t* const seed = bytes.prepare(kSeedSize + count);
  if (seed == nullptr) return false;
  std::uint8_t* const body = seed + kSeedSize;
  randomBytes(seed, kSeedSize);
  storeCheckSum(checkSum(asBytes(text)), body);
  std::memcpy(body + kCheckSize, text.data(), text.size());
  scramble(seed, body, count);
  bytes.commit(kSeedSize + count);

  StringBuffer digits;
  if (!zantrel::hexEncode(bytes.bytes(), digits)) return false;
  wipe();
  return replaceText(std::move(digits));
}

bool XString::unobfus() {
  const std::string_view text = utf8();
  if (text.empty()) return true;
  const bool onlyDigits = text.size() % 2 == 0 && text.find_first_not_of(kHexDigits) == text.npos;
  DataBuffer bytes;
  if (!onlyDigits || !zantrel::hexDecode(text, bytes)) return false;
  if (bytes.getSize() < kSeedSize + kCheckSize) return false;

  std::uint8_t* const body = bytes.getData2() + kSeedSize;
  const std::size_t count = bytes.getSize() - kSeedSize;
  scramble(bytes.getData2(), body, count);
  const ByteSpan plain(body + kCheckSize, count - kCheckSize);
  std::uint8_t expected[kCheckSize];
  storeCheckSum(checkSum(plain), expected);
  const bool ours = std::memcmp(expected, body, kCheckSize) == 0;
  const bool stored = ours && setFromUtf8(asText(plain));
  bytes.secureClear();
  return stored;
}

}  // namespace zantrel
