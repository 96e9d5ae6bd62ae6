#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <variant>

#include "core/bytes.h"
#include "crypto/aes.h"
#include "crypto/blowfish.h"
#include "crypto/cipher_key.h"
#include "crypto/des.h"
#include "crypto/padding.h"
#include "crypto/rc2.h"
#include "crypto/rc4.h"
#include "crypto/twofish.h"

namespace zantrel {

class DataBuffer;
class LogBase;

/// What a cipher run depends on. Key and IV of any size: cipher_key.h says what is taken of them.
struct CipherSettings {
  CipherId id = CipherId::aes;
  int keyLength = 128;         ///< bits
  int effectiveKeyBits = 128;  ///< of RC2
  bool ecb = false;            ///< CBC otherwise
  int padding = kPaddingCounted;
  ByteSpan key;
  ByteSpan iv;  ///< empty is all zeros
};

enum class CipherDirection { encrypt, decrypt };

/// Runs a cipher over a text that comes in pieces of any size. The results, one after the other,
/// are those of the whole text at once. Every result is appended to `out`, which the input must not
/// lie in; after a failure `out` is as it was and the stream is over.
class CipherStream final {
 public:
  CipherStream() = default;

  /// Starts afresh, whatever came before. Fails when the key is empty or the cipher unknown.
  bool begin(const CipherSettings& settings, CipherDirection direction, LogBase& log);
  /// Bytes that do not fill a block are kept for the next piece. Decryption also keeps what the
  /// padding may turn out to be.
  bool update(ByteSpan in, DataBuffer& out, LogBase& log);
  /// The last piece, which may be empty: adds or takes off the padding, then forgets the key. A
  /// stream without a single byte results in nothing, not even padding.
  bool finish(ByteSpan in, DataBuffer& out, LogBase& log);

  bool started() const noexcept { return blockSize_ != 0; }
  /// Forgets key and text.
  void reset() noexcept;

 private:
  static constexpr std::size_t kMaxBlock = 16;
  static constexpr std::size_t kMaxHeld = 255;  ///< a padding's length is one byte

  bool setCipher(const CipherSettings& settings) noexcept;
  bool fail(const char* reason, LogBase& log);
  bool finishEncryption(ByteSpan in, DataBuffer& out, LogBase& log);
  std::size_t wholeSize(std::size_t added) const noexcept;
  void transform(const std::uint8_t* in, std::uint8_t* out, std::size_t size) noexcept;
  void transformPieces(ByteSpan in, std::uint8_t* out) noexcept;
  bool decryptPiece(ByteSpan in, bool last, DataBuffer& out, LogBase& log);

  std::variant<std::monostate, Aes, Blowfish, Twofish, Des, TripleDes, Rc2, Rc4> cipher_;
  CipherDirection direction_ = CipherDirection::encrypt;
  std::size_t blockSize_ = 0;
  bool ecb_ = false;
  int padding_ = kPaddingCounted;
  bool carriedData_ = false;
  SecretBytes<kMaxBlock> chain_;
  SecretBytes<kMaxBlock> tail_;  ///< bytes of input that do not fill a block
  SecretBytes<kMaxHeld> held_;   ///< decrypted, but perhaps padding
};

/// The whole text at once.
bool encryptBytes(const CipherSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log);
bool decryptBytes(const CipherSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log);

}  // namespace zantrel
