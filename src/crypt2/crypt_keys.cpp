// The members of ClsCrypt for keys, IVs, salts and random bytes.

#include <algorithm>

#include "crypt2/cls_crypt.h"
#include "crypto/pass_phrase_key.h"
#include "platform/random.h"

namespace zantrel {
namespace {

bool fillRandomly(std::size_t count, SecretBuffer& out, LogBase& log) {
  std::uint8_t* const room = out.buffer().prepare(count);
  if (room == nullptr) {
    log.logError("Not enough memory.");
    return false;
  }
  randomBytes(room, count);
  out.buffer().commit(count);
  return true;
}

}  // namespace

bool ClsCrypt::decodeSecret(const XString& text, const XString& encoding, SecretBuffer& out) {
  return out.buffer().reserve(text.getSizeUtf8()) && Decode(text, encoding, out.buffer(), false);
}

bool ClsCrypt::SetEncodedKey(const XString& key, const XString& encoding) {
  return call("SetEncodedKey", [&](MethodCall& c) {
    SecretBuffer decoded;
    if (!decodeSecret(key, encoding, decoded)) return false;
    if (decoded.isEmpty()) {
      c.log().logError("Key not set, no data provided.");
      return false;
    }
    // Deliberate, though it is a secret: a key mistyped or in another encoding is found here.
    c.log().logDataStr("keyData", key);
    c.log().logData64("keyLengthInBits", std::int64_t{8} * decoded.buffer().getSize());
    return secretKey_.set(decoded.bytes());
  });
}

bool ClsCrypt::GetEncodedKeyX(const XString& encoding, XString& out) {
  return call("GetEncodedKey",
              [&](MethodCall& c) { return encodedAs(c, encoding, secretKey_.buffer(), out); });
}

bool ClsCrypt::GetEncodedIVX(const XString& encoding, XString& out) {
  return call("GetEncodedIV",
              [&](MethodCall& c) { return encodedAs(c, encoding, iv_.buffer(), out); });
}

bool ClsCrypt::SetEncodedSalt(const XString& salt, const XString& encoding) {
  return call("SetEncodedSalt", [&](MethodCall&) {
    SecretBuffer decoded;
    return decodeSecret(salt, encoding, decoded) && salt_.set(decoded.bytes());
  });
}

bool ClsCrypt::GetEncodedSaltX(const XString& encoding, XString& out) {
  return call("GetEncodedSalt",
              [&](MethodCall& c) { return encodedAs(c, encoding, salt_.buffer(), out); });
}

// Random bytes

bool ClsCrypt::RandomizeKey() {
  return call("RandomizeKey", [&](MethodCall& c) {
    const auto id = static_cast<CipherId>(algorithm_.id);
    const int bytes = std::max(settings_.keyLength, 8) / 8;
    secretKey_.clear();
    return fillRandomly(algorithm_.blockSize() != 0 ? cipherKeySize(id, settings_.keyLength)
                                                    : static_cast<std::size_t>(bytes),
                        secretKey_, c.log());
  });
}

bool ClsCrypt::RandomizeIV() {
  return call("RandomizeIV", [&](MethodCall& c) {
    iv_.clear();
    hasIv_ = true;
    return fillRandomly(static_cast<std::size_t>(algorithm_.blockSize()), iv_, c.log());
  });
}

bool ClsCrypt::GenRandomBytesENCX(int numBytes, XString& out) {
  return call("GenRandomBytesENC", [&](MethodCall& c) {
    if (numBytes < 0) {
      c.log().logError("The number of bytes is negative.");
      c.log().logDataLong("numBytes", numBytes);
      return false;
    }
    SecretBuffer bytes;
    return fillRandomly(static_cast<std::size_t>(numBytes), bytes, c.log()) &&
           encoded(c, bytes.buffer(), out);
  });
}

// Keys of pass phrases

bool ClsCrypt::generateSecretKey(MethodCall& call, const XString& passPhrase, DataBuffer& out) {
  return withBytesOf(call, passPhrase, [&](ByteSpan bytes) {
    const std::size_t wanted = static_cast<std::size_t>(std::max(settings_.keyLength, 0)) / 8;
    PassPhraseKey key;
    return passPhraseKey(bytes, key) && out.append(key.span().first(std::min(wanted, key.size)));
  });
}

bool ClsCrypt::GenerateSecretKeyX(const XString& passPhrase, DataBuffer& out) {
  return call("GenerateSecretKey",
              [&](MethodCall& c) { return generateSecretKey(c, passPhrase, out); });
}

bool ClsCrypt::GenEncodedSecretKeyX(const XString& passPhrase, const XString& encoding,
                                    XString& out) {
  return call("GenEncodedSecretKey", [&](MethodCall& c) {
    SecretBuffer key;
    return generateSecretKey(c, passPhrase, key.buffer()) &&
           encodedAs(c, encoding, key.buffer(), out);
  });
}

bool ClsCrypt::PassPhraseToSecretKeyAnsi(const XString& passPhrase) {
  return call("PassPhraseToSecretKeyAnsi", [&](MethodCall&) {
    PassPhraseKey key;
    return passPhraseKey(asBytes(passPhrase.ansi()), key) && secretKey_.set(key.span());
  });
}

}  // namespace zantrel
