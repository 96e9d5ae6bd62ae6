// The members of ClsCrypt that derive keys from passwords, and MySQL's encryption by password.

#include "core/charset/charset_request.h"
#include "crypt2/cls_crypt.h"
#include "crypto/mysql_aes.h"
#include "crypto/pbkdf.h"
#include "frame/text_to_charset.h"

namespace zantrel {
namespace {

/// The number of a hash that keys can be derived with, or 0, the reason being logged.
int derivationHash(const XString& name, LogBase& log) {
  const HashAlgorithm* const hash = findHashByName(name.utf8());
  if (hash != nullptr && hash->inDispatcher) return hash->id;
  log.logError("Keys are derived with sha1, sha256, sha384, sha512, md5 or md2 only.");
  log.logDataStr("hashAlgorithm", name);
  return 0;
}

/// How many bytes a key of this many bits has, or 0, the reason being logged.
std::size_t keyBytes(int keyBits, LogBase& log) {
  if (keyBits > 0 && keyBits % 8 == 0) return static_cast<std::size_t>(keyBits) / 8;
  log.logError("The length of a key must be a positive multiple of 8 bits.");
  log.logDataLong("keyBits", keyBits);
  return 0;
}

using Derivation = bool (*)(int hashId, ByteSpan password, ByteSpan salt, int iterations,
                            std::span<std::uint8_t> key, LogBase& log);

struct KeyRequest {
  const XString& password;
  const XString& charset;
  const XString& hash;
  int iterations;
  int keyBits;
};

bool deriveKey(Derivation derive, const KeyRequest& request, ByteSpan salt, SecretBuffer& key,
               LogBase& log) {
  const int hashId = derivationHash(request.hash, log);
  const std::size_t size = hashId != 0 ? keyBytes(request.keyBits, log) : 0;
  SecretBuffer password;
  if (size == 0 || !textToCharset(request.password, CharsetRequest::parse(request.charset.utf8()),
                                  CharsetOrigin::Argument, password.buffer(), log))
    return false;
  std::uint8_t* const room = key.buffer().prepare(size);
  if (room == nullptr) {
    log.logError("Not enough memory.");
    return false;
  }
  key.buffer().commit(size);
  return derive(hashId, password.bytes(), salt, request.iterations, {room, size}, log);
}

}  // namespace

bool ClsCrypt::Pbkdf1X(const XString& password, const XString& charset, const XString& hash,
                       const XString& salt, int iterations, int keyBits, const XString& encoding,
                       XString& out) {
  return call("Pbkdf1", [&](MethodCall& c) {
    SecretBuffer saltBytes, key;
    return decodeSecret(salt, encoding, saltBytes) &&
           deriveKey(pbkdf1, {password, charset, hash, iterations, keyBits}, saltBytes.bytes(), key,
                     c.log()) &&
           encodedAs(c, encoding, key.buffer(), out);
  });
}

bool ClsCrypt::Pbkdf2X(const XString& password, const XString& charset, const XString& hash,
                       const XString& salt, int iterations, int keyBits, const XString& encoding,
                       XString& out) {
  return call("Pbkdf2", [&](MethodCall& c) {
    SecretBuffer saltBytes, key;
    return decodeSecret(salt, encoding, saltBytes) &&
           deriveKey(pbkdf2, {password, charset, hash, iterations, keyBits}, saltBytes.bytes(), key,
                     c.log()) &&
           encodedAs(c, encoding, key.buffer(), out);
  });
}

bool ClsCrypt::MySqlAesEncryptX(const XString& text, const XString& password, XString& out) {
  return call("MySqlAesEncrypt", [&](MethodCall& c) {
    return withBytesOf(c, password, [&](ByteSpan key) {
      return withBytesOf(c, text, [&](ByteSpan bytes) {
        return withEncoded(c, out, [&](DataBuffer& result) {
          return mysqlAesEncrypt(bytes, key, result, c.log());
        });
      });
    });
  });
}

bool ClsCrypt::MySqlAesDecryptX(const XString& text, const XString& password, XString& out) {
  return call("MySqlAesDecrypt", [&](MethodCall& c) {
    return withBytesOf(c, password, [&](ByteSpan key) {
      DataBuffer bytes;
      SecretBuffer result;
      return decodeInMode(text, bytes) &&
             mysqlAesDecrypt(bytes.bytes(), key, result.buffer(), c.log()) &&
             fromCharset(c, result.bytes(), settings_.charset, out);
    });
  });
}

}  // namespace zantrel
