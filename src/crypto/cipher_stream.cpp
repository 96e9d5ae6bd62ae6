// The frame around the ciphers: blocks out of pieces, chaining across pieces, padding at the end.
//
// Encryption keeps the bytes behind the last whole block for the next piece. Decryption cannot know
// whether more is to come, and the last byte of all may declare up to 255 bytes to be padding, so
// with the schemes that are taken off again it stays that far behind. Time is linear in the text
// and memory beside the output constant, however the text is cut.

#include "crypto/cipher_stream.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "core/data_buffer.h"
#include "core/log_base.h"

namespace zantrel {

namespace {

constexpr char kNoMemory[] = "Not enough memory.";

template <std::size_t Capacity>
void keep(SecretBytes<Capacity>& store, const std::uint8_t* bytes, std::size_t size) {
  if (size > 0) std::memcpy(store.bytes.data() + store.size, bytes, size);
  store.size += size;
}

}  // namespace

bool CipherStream::begin(const CipherSettings& settings, CipherDirection direction, LogBase& log) {
  reset();
  if (settings.key.empty()) {
    log.logError(
        "No secret key has been set.  Need a secret key for symmetric encryption algorithms");
    return false;
  }
  if (!setCipher(settings)) {
    log.logError("Unrecognized encryption method");
    return false;
  }
  chain_.bytes = cipherIv(settings.iv);
  direction_ = direction;
  blockSize_ = cipherBlockSize(settings.id);
  ecb_ = settings.ecb;
  padding_ = settings.padding;
  return true;
}

bool CipherStream::setCipher(const CipherSettings& settings) noexcept {
  const CipherKey key = cipherKey(settings.id, settings.keyLength, settings.key);
  switch (settings.id) {
    case CipherId::aes:
      cipher_.emplace<Aes>().setKey(key.span());
      return true;
    case CipherId::blowfish:
    case CipherId::blowfish2:
      cipher_.emplace<Blowfish>().setKey(key.span());
      return true;
    case CipherId::twofish:
      cipher_.emplace<Twofish>().setKey(key.span());
      return true;
    case CipherId::des:
      if (key.size == 8)
        cipher_.emplace<Des>().setKey(key.span());
      else
        cipher_.emplace<TripleDes>().setKey(key.span());
      return true;
    case CipherId::rc2:
      cipher_.emplace<Rc2>().setKey(key.span(), settings.effectiveKeyBits);
      return true;
    case CipherId::rc4:
      cipher_.emplace<Rc4>().setKey(key.span());
      return true;
  }
  return false;
}

void CipherStream::reset() noexcept {
  cipher_.emplace<std::monostate>();
  blockSize_ = 0;
  carriedData_ = false;
  chain_ = {};
  tail_ = {};
  held_ = {};
}

bool CipherStream::fail(const char* reason, LogBase& log) {
  log.logError(reason);
  reset();
  return false;
}

// How many bytes of the tail and `added` more make whole blocks.
std::size_t CipherStream::wholeSize(std::size_t added) const noexcept {
  const std::size_t size = tail_.size + added;
  return size - size % blockSize_;
}

void CipherStream::transform(const std::uint8_t* in, std::uint8_t* out, std::size_t size) noexcept {
  const auto run = [=, this](auto& cipher) {
    using Cipher = std::remove_reference_t<decltype(cipher)>;
    if constexpr (std::is_same_v<Cipher, Rc4>) {
      cipher.apply(in, out, size);
    } else if constexpr (!std::is_same_v<Cipher, std::monostate>) {
      const std::size_t blocks = size / Cipher::kBlockSize;
      const bool encrypt = direction_ == CipherDirection::encrypt;
      std::uint8_t* const chain = chain_.bytes.data();
      if (ecb_)
        encrypt ? cipher.ecbEncrypt(in, out, blocks) : cipher.ecbDecrypt(in, out, blocks);
      else
        encrypt ? cipher.cbcEncrypt(chain, in, out, blocks)
                : cipher.cbcDecrypt(chain, in, out, blocks);
    }
  };
  if (size > 0) std::visit(run, cipher_);
}

// Tail and piece up to the last whole block; what is left becomes the tail.
void CipherStream::transformPieces(ByteSpan in, std::uint8_t* out) noexcept {
  carriedData_ = carriedData_ || !in.empty();
  if (tail_.size > 0 && wholeSize(in.size()) > 0) {
    const std::size_t missing = blockSize_ - tail_.size;
    keep(tail_, in.data(), missing);
    transform(tail_.bytes.data(), out, blockSize_);
    in = in.subspan(missing);
    out += blockSize_;
    tail_.size = 0;
  }
  const std::size_t whole = tail_.size > 0 ? 0 : wholeSize(in.size());
  transform(in.data(), out, whole);
  keep(tail_, in.data() + whole, in.size() - whole);
}

bool CipherStream::update(ByteSpan in, DataBuffer& out, LogBase& log) {
  if (!started()) return fail("The encryption was not begun.", log);
  if (direction_ == CipherDirection::decrypt) return decryptPiece(in, false, out, log);
  const std::size_t whole = wholeSize(in.size());
  std::uint8_t* const room = out.prepare(whole);
  if (room == nullptr) return fail(kNoMemory, log);
  transformPieces(in, room);
  out.commit(whole);
  return true;
}

bool CipherStream::finish(ByteSpan in, DataBuffer& out, LogBase& log) {
  if (!started()) return fail("The encryption was not begun.", log);
  const bool done = direction_ == CipherDirection::encrypt ? finishEncryption(in, out, log)
                                                           : decryptPiece(in, true, out, log);
  reset();
  return done;
}

bool CipherStream::finishEncryption(ByteSpan in, DataBuffer& out, LogBase& log) {
  if (!carriedData_ && in.empty()) return true;
  const std::size_t length = tail_.size + in.size();
  const std::size_t added = blockSize_ > 1 ? paddingSize(padding_, length, blockSize_) : 0;
  if ((length + added) % blockSize_ != 0)
    return fail("The data is not a whole number of blocks, and the padding scheme adds nothing.",
                log);
  std::uint8_t* const room = out.prepare(length + added);
  if (room == nullptr) return fail(kNoMemory, log);
  std::uint8_t padding[kMaxBlock];
  writePadding(padding_, padding, added);
  const std::size_t whole = wholeSize(in.size());
  transformPieces(in, room);
  transformPieces({padding, added}, room + whole);
  out.commit(length + added);
  return true;
}

bool CipherStream::decryptPiece(ByteSpan in, bool last, DataBuffer& out, LogBase& log) {
  const std::size_t whole = wholeSize(in.size());
  if (last && whole != tail_.size + in.size())
    return fail("The encrypted data is not a whole number of blocks.", log);
  const std::size_t size = held_.size + whole;
  std::uint8_t* const room = out.prepare(size);
  if (room == nullptr) return fail(kNoMemory, log);
  if (held_.size > 0) std::memcpy(room, held_.bytes.data(), held_.size);
  transformPieces(in, room + held_.size);

  const int scheme = blockSize_ > 1 ? padding_ : kPaddingRandom;
  const std::size_t withheld =
      last ? removablePadding(scheme, room, size) : std::min(size, maxRemovablePadding(scheme));
  held_.size = 0;
  if (!last) keep(held_, room + size - withheld, withheld);
  secureWipe(room + size - withheld, withheld);
  out.commit(size - withheld);
  return true;
}

bool encryptBytes(const CipherSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log) {
  CipherStream stream;
  return stream.begin(settings, CipherDirection::encrypt, log) && stream.finish(in, out, log);
}

bool decryptBytes(const CipherSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log) {
  CipherStream stream;
  return stream.begin(settings, CipherDirection::decrypt, log) && stream.finish(in, out, log);
}

}  // namespace zantrel
