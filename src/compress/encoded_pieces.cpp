#include "compress/encoded_pieces.h"

#include <algorithm>

#include "core/ascii_text.h"
#include "core/encode/content_coding.h"

namespace zantrel {
namespace {

// How many bytes make a group that is encoded by itself; 0: there are none, all bytes must be
// there.
std::size_t bytesOfGroup(EncodingMode mode) {
  switch (mode) {
    case EncodingMode::Base64:
      return 3;
    case EncodingMode::Base32:
      return 5;
    case EncodingMode::QuotedPrintable:
    case EncodingMode::Uu:
      return 0;
    default:
      return 1;
  }
}

std::size_t charactersOfGroup(EncodingMode mode) {
  switch (mode) {
    case EncodingMode::Base64:
      return 4;
    case EncodingMode::Base32:
      return 8;
    default:
      return 2;
  }
}

/// Whether the decoder of a mode takes a character for data, as base64.h and base32.h say.
bool isDigit(EncodingMode mode, char c) {
  switch (mode) {
    case EncodingMode::Base64:
      return c >= '+' && c <= 'z';
    case EncodingMode::Base32:
      return (c >= '2' && c <= '7') || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z');
    default:
      return kTrimmedBlanks.find(c) == std::string_view::npos;
  }
}

/// How much of a text in a mode without groups can be decoded when more may follow.
std::size_t decodable(EncodingMode mode, std::string_view text) {
  switch (mode) {
    case EncodingMode::Uu:
      return 0;
    case EncodingMode::QuotedPrintable:  // blanks at the end of a line depend on what follows
      return text.rfind('\n') + 1;
    case EncodingMode::Url: {
      const std::size_t percent = text.rfind('%');
      return percent != std::string_view::npos && text.size() - percent < 3 ? percent : text.size();
    }
    default:
      return text.size();
  }
}

}  // namespace

void EncodedPieces::restart() {
  bytes_.clear();
  text_.clear();
}

bool EncodedPieces::encode(ByteSpan in, bool last, const ClsEncode& encode, XString& out) {
  const std::size_t group = bytesOfGroup(encode.encodingMode());
  if (!bytes_.reserve(in.size()) || !bytes_.append(in)) return false;
  const std::size_t size = bytes_.getSize();
  const std::size_t ready = last ? size : group == 0 ? 0 : size - size % group;
  if (ready == 0) return true;
  DataBuffer piece;
  piece.borrowData(bytes_.getData2(), static_cast<std::uint32_t>(ready));
  const bool done = encode.encodeInMode(piece, out);
  bytes_.removeFront(static_cast<std::uint32_t>(ready));
  return done;
}

bool EncodedPieces::decode(std::string_view in, bool last, ClsEncode& encode, DataBuffer& out) {
  const EncodingMode mode = encode.encodingMode();
  if (mode == EncodingMode::Base64 || mode == EncodingMode::Base32 || mode == EncodingMode::Hex) {
    return decodeGroups(in, last, encode, out);
  }
  text_ += in;
  return decodeWhole(last ? text_.size() : decodable(mode, text_), encode, out);
}

/// Keeps the characters that count until they fill a group; a "=" ends an incomplete one.
bool EncodedPieces::decodeGroups(std::string_view in, bool last, ClsEncode& encode,
                                 DataBuffer& out) {
  const EncodingMode mode = encode.encodingMode();
  for (const char c : in) {
    if (c == '=' && mode != EncodingMode::Hex) {
      if (!decodeWhole(text_.size(), encode, out)) return false;
    } else if (isDigit(mode, c)) {
      text_ += c;
    }
  }
  const std::size_t group = charactersOfGroup(mode);
  return decodeWhole(last ? text_.size() : text_.size() - text_.size() % group, encode, out);
}

bool EncodedPieces::decodeWhole(std::size_t size, ClsEncode& encode, DataBuffer& out) {
  if (size == 0) return true;
  const std::string_view piece = std::string_view(text_).substr(0, size);
  DataBuffer decoded;
  // The general decoder trims, which would drop a line end of quoted-printable.
  const bool done = encode.encodingMode() == EncodingMode::QuotedPrintable
                        ? ContentCoding().decodeQuotedPrintable(piece, decoded)
                        : encode.decodeInMode(XString(piece), decoded);
  text_.erase(0, size);
  return done && (out.getSize() != 0 ? out.append(decoded) : (out = std::move(decoded), true));
}

}  // namespace zantrel
