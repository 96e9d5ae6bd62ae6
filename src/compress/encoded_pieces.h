#pragma once
// Compressed bytes as text in an encoding, in pieces: the texts of all pieces make the encoding of
// the whole, and an encoded text may be cut anywhere to be decoded.

#include <string>
#include <string_view>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/encode/cls_encode.h"

namespace zantrel {

class EncodedPieces final {
 public:
  void restart();

  /// Sets `out` to what can be encoded now, in the mode of `encode`; what does not fill a group of
  /// the encoding waits, unless this is the last piece. False when storage cannot be had.
  bool encode(ByteSpan in, bool last, const ClsEncode& encode, XString& out);
  /// Appends what can be decoded now to `out`. Malformed text never fails.
  bool decode(std::string_view in, bool last, ClsEncode& encode, DataBuffer& out);

 private:
  bool decodeGroups(std::string_view in, bool last, ClsEncode& encode, DataBuffer& out);
  bool decodeWhole(std::size_t size, ClsEncode& encode, DataBuffer& out);

  DataBuffer bytes_;  ///< to be encoded
  std::string text_;  ///< to be decoded
};

}  // namespace zantrel
