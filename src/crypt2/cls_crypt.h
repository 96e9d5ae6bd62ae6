#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "compress/zantrel_compress.h"
#include "core/data_buffer.h"
#include "core/encode/cls_encode.h"
#include "core/secret.h"
#include "core/xstring.h"
#include "crypt2/crypt2_settings.h"
#include "crypt2/crypt_cipher.h"
#include "crypt2/crypt_hasher.h"
#include "crypt2/crypt_names.h"
#include "crypto/hash.h"
#include "frame/component.h"
#include "frame/live_objects.h"
#include "frame/zantrel_crit_sec.h"

namespace zantrel {

/// Digests, authentication codes and encryption: the component behind the public class Crypt2,
/// which describes its members. Outputs arrive empty. Several threads may use one object.
class ClsCrypt final : public Component, public ClsEncode, public ZantrelCritSec {
 public:
  Crypt2Settings& settings() { return settings_; }
  ZantrelCritSec* criticalSection() noexcept override { return this; }

  // Settings (cls_crypt.cpp). Setters make any value fit.

  void get_HashAlgorithm(XString& out);
  void put_HashAlgorithm(const XString& name);
  int get_HavalRounds() { return havalRounds_; }
  void put_HavalRounds(int rounds);

  void get_CryptAlgorithm(XString& out);
  void put_CryptAlgorithm(const XString& name);
  int get_CipherMode() { return cipherMode_; }
  void put_CipherMode(int mode);
  void put_CipherModeX(const XString& name);
  int get_BlockSize() { return algorithm_.blockSize(); }
  void get_LastAlgorithm(XString& out) { out.setFromUtf8(lastAlgorithm_); }

  void get_SecretKey(DataBuffer& out) { out.append(secretKey_.bytes()); }
  void put_SecretKey(const DataBuffer& key) { secretKey_.set(key.bytes()); }
  void get_IV(DataBuffer& out) { out.append(iv_.bytes()); }
  void put_IV(const DataBuffer& iv);
  bool get_HasIV() { return hasIv_; }
  void get_Salt(DataBuffer& out) { out.append(salt_.bytes()); }
  void put_Salt(const DataBuffer& salt) { salt_.set(salt.bytes()); }
  void get_PbesPassword(XString& out) { out = pbesPassword_.text(); }
  void put_PbesPassword(const XString& password) { pbesPassword_.set(password); }

  bool SetAlgorithmRijndael() { return setAlgorithm("SetAlgorithmRijndael", "rijndael"); }
  bool SetAlgorithmBlowfish() { return setAlgorithm("SetAlgorithmBlowfish", "blowfish"); }
  bool SetAlgorithmTwofish() { return setAlgorithm("SetAlgorithmTwofish", "twofish"); }
  bool SetAlgorithmRSA() { return setAlgorithm("SetAlgorithmRSA", "pki"); }

  // Digests and authentication codes (crypt_hash.cpp)

  bool HashBytesX(const DataBuffer& data, DataBuffer& out);
  bool HashBytesENCX(const DataBuffer& data, XString& out);
  bool HashStringX(const XString& text, DataBuffer& out);
  bool HashStringENCX(const XString& text, XString& out);
  bool HashFileX(const XString& path, DataBuffer& out, ProgressEvent* progress);
  bool HashFileENCX(const XString& path, XString& out, ProgressEvent* progress);

  bool HashBeginBytes(const DataBuffer& data);
  bool HashBeginString(const XString& text);
  bool HashMoreBytes(const DataBuffer& data);
  bool HashMoreString(const XString& text);
  bool HashFinalX(DataBuffer& out);
  bool HashFinalENCX(XString& out);

  bool SetHmacKeyBytes(const DataBuffer& key);
  bool SetHmacKeyString(const XString& text);
  bool SetHmacKeyEncoded(const XString& text, const XString& encoding);
  bool HmacBytesX(const DataBuffer& data, DataBuffer& out);
  bool HmacBytesENCX(const DataBuffer& data, XString& out);
  bool HmacStringX(const XString& text, DataBuffer& out);
  bool HmacStringENCX(const XString& text, XString& out);

  bool CalcSha1HashX(const DataBuffer& data, DataBuffer& out);
  bool CalcSha1HashStrX(const XString& text, DataBuffer& out);
  bool CalcDigestMD5X(const DataBuffer& data, DataBuffer& out);
  bool CalcDigestMD5StrX(const XString& text, DataBuffer& out);
  bool CalcMd2HashX(const DataBuffer& data, DataBuffer& out);
  bool CalcMd2HashStrX(const XString& text, DataBuffer& out);

  // Encryption and decryption (crypt_encrypt.cpp)

  bool EncryptX(const DataBuffer& data, DataBuffer& out);
  bool EncryptBytesX(const DataBuffer& data, DataBuffer& out);
  bool EncryptBytesENCX(const DataBuffer& data, XString& out);
  bool EncryptStringX(const XString& text, DataBuffer& out);
  bool EncryptStringENCX(const XString& text, XString& out);
  bool EncryptEncodedX(const XString& text, XString& out);
  bool DecryptX(const DataBuffer& data, DataBuffer& out);
  bool DecryptBytesENCX(const XString& text, DataBuffer& out);
  bool DecryptStringX(const DataBuffer& data, XString& out);
  bool DecryptToStringX(const DataBuffer& data, XString& out);
  bool DecryptStringENCX(const XString& text, XString& out);
  bool DecryptEncodedX(const XString& text, XString& out);
  bool ZT_EncryptFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);
  bool ZT_DecryptFile(const XString& inPath, const XString& outPath, ProgressEvent* progress);

  // Keys, IVs, salts and random bytes (crypt_keys.cpp)

  bool SetEncodedKey(const XString& key, const XString& encoding);
  bool GetEncodedKeyX(const XString& encoding, XString& out);
  bool GetEncodedIVX(const XString& encoding, XString& out);
  bool SetEncodedSalt(const XString& salt, const XString& encoding);
  bool GetEncodedSaltX(const XString& encoding, XString& out);
  bool RandomizeKey();
  bool RandomizeIV();
  bool GenRandomBytesENCX(int numBytes, XString& out);
  bool GenerateSecretKeyX(const XString& passPhrase, DataBuffer& out);
  bool GenEncodedSecretKeyX(const XString& passPhrase, const XString& encoding, XString& out);
  bool PassPhraseToSecretKeyAnsi(const XString& passPhrase);

  // Keys of passwords, MySQL (crypt_passwords.cpp)

  bool Pbkdf1X(const XString& password, const XString& charset, const XString& hash,
               const XString& salt, int iterations, int keyBits, const XString& encoding,
               XString& out);
  bool Pbkdf2X(const XString& password, const XString& charset, const XString& hash,
               const XString& salt, int iterations, int keyBits, const XString& encoding,
               XString& out);
  bool MySqlAesEncryptX(const XString& text, const XString& password, XString& out);
  bool MySqlAesDecryptX(const XString& text, const XString& password, XString& out);

  // Compression, alone and with encryption (crypt_compress.cpp)

  void get_CompressionAlgorithm(XString& out);
  void put_CompressionAlgorithm(const XString& name);
  bool put_MaxDecompressedSize(std::int64_t bytes);
  bool CompressBytesX(const DataBuffer& data, DataBuffer& out);
  bool CompressBytesENCX(const DataBuffer& data, XString& out);
  bool CompressStringX(const XString& text, DataBuffer& out);
  bool CompressStringENCX(const XString& text, XString& out);
  bool InflateBytesX(const DataBuffer& data, DataBuffer& out);
  bool InflateBytesENCX(const XString& text, DataBuffer& out);
  bool InflateStringX(const DataBuffer& data, XString& out);
  bool InflateStringENCX(const XString& text, XString& out);
  bool ZipAndEncryptX(const DataBuffer& data, DataBuffer& out);
  bool ZipAndEncryptStrX(const XString& text, DataBuffer& out);
  bool DecryptAndUnzipX(const DataBuffer& data, DataBuffer& out);
  bool DecryptAndUnzipStrX(const DataBuffer& data, XString& out);

  // Encodings and utilities (crypt_encode.cpp)

  bool EncodeStringX(const XString& text, const XString& charset, const XString& encoding,
                     XString& out);
  bool DecodeStringX(const XString& text, const XString& charset, const XString& encoding,
                     XString& out);
  bool ReEncodeX(const XString& text, const XString& fromEncoding, const XString& toEncoding,
                 XString& out);
  bool Base64EncodeX(const XString& text, const XString& charset, XString& out);
  bool Base64DecodeX(const XString& text, const XString& charset, XString& out);
  bool QuotedPrintableEncodeX(const XString& text, const XString& charset, XString& out);
  bool QuotedPrintableDecodeX(const XString& text, const XString& charset, XString& out);
  bool BytesToStringX(const DataBuffer& data, const XString& charset, XString& out);
  bool StringToBytesX(const XString& text, const XString& charset, DataBuffer& out);
  bool TrimEndingWithX(const XString& text, const XString& ending, XString& out);
  bool ReadFileX(const XString& path, DataBuffer& out);
  bool WriteFileX(const XString& path, const DataBuffer& data);

 private:
  /// Appends the text in the charset of the property Charset; a loss is logged and is a failure.
  bool toCharset(MethodCall& call, const XString& text, DataBuffer& out);
  /// Puts bytes into `out` as text in a charset; U+FFFD stands for what is not valid. False for an
  /// unknown charset only.
  bool fromCharset(MethodCall& call, ByteSpan bytes, const XString& charset, XString& out);
  /// Puts bytes into `out` in the encoding of the property EncodingMode.
  bool encoded(MethodCall& call, const DataBuffer& bytes, XString& out);
  bool encodedAs(MethodCall& call, const XString& encoding, const DataBuffer& bytes, XString& out);
  static void noteEmptyEncoding(MethodCall& call);

  /// Runs a body on the bytes of a text in Charset; false without that when they cannot be had.
  template <class Body>
  bool withBytesOf(MethodCall& call, const XString& text, const Body& body) {
    SecretBuffer bytes;
    return toCharset(call, text, bytes.buffer()) && body(bytes.bytes());
  }
  /// Runs a body that fills a buffer, and encodes what it made.
  template <class Body>
  bool withEncoded(MethodCall& call, XString& out, const Body& body) {
    DataBuffer bytes;
    return body(bytes) && encoded(call, bytes, out);
  }

  bool setAlgorithm(const char* method, std::string_view name);
  bool encodeText(MethodCall& call, const XString& text, const XString& charset,
                  const XString& encoding, XString& out);
  bool decodeText(MethodCall& call, const XString& text, const XString& charset,
                  const XString& encoding, XString& out);

  DigestChoice digestChoice() const { return {hashId_, settings_.keyLength, havalRounds_}; }
  bool hash(MethodCall& call, ByteSpan data, DataBuffer& out);
  bool hashFile(MethodCall& call, const XString& path, DataBuffer& out);
  bool hashBegin(MethodCall& call, ByteSpan data);
  bool hashMore(MethodCall& call, ByteSpan data);
  bool hashFinal(MethodCall& call, DataBuffer& out);
  bool isHashUnderWay(MethodCall& call);
  bool setHmacKey(MethodCall& call, ByteSpan key);
  bool hmac(MethodCall& call, ByteSpan data, DataBuffer& out);
  bool fixedDigest(const char* method, int hashId, const DataBuffer& data, DataBuffer& out);
  bool fixedDigest(const char* method, int hashId, const XString& text, DataBuffer& out);

  CryptChoice cryptChoice() const;
  template <class Body>
  bool withCryptChoice(MethodCall& call, const Body& body);
  /// Whether a call obeys FirstChunk and LastChunk.
  enum class Chunking { asSet, whole };
  bool crypt(MethodCall& call, CipherDirection direction, Chunking chunking, ByteSpan in,
             DataBuffer& out);
  bool encrypt(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool decrypt(MethodCall& call, const char* failure, Chunking chunking, ByteSpan in,
               DataBuffer& out);
  bool decryptBytes(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool decryptText(MethodCall& call, ByteSpan in, XString& out);
  bool decryptString(const char* method, const DataBuffer& data, XString& out);
  bool cryptFile(MethodCall& call, CipherDirection direction, const XString& inPath,
                 const XString& outPath);
  /// Logs the text that is to be decrypted, cut where it is long.
  static void logInput(MethodCall& call, std::string_view text, std::size_t count);
  /// Puts what a text encodes into `out`, leaving no copies behind.
  bool decodeSecret(const XString& text, const XString& encoding, SecretBuffer& out);
  bool compress(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool inflate(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool inflateText(MethodCall& call, ByteSpan in, XString& out);
  bool zipAndEncrypt(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool decryptAndUnzip(MethodCall& call, ByteSpan in, DataBuffer& out);
  bool generateSecretKey(MethodCall& call, const XString& passPhrase, DataBuffer& out);

  CountedObject<LiveObject::ClsCrypt> counted_;
  Crypt2Settings settings_;
  int hashId_ = kHashSha1;
  int havalRounds_ = 3;
  CryptHasher hasher_;

  CryptAlgorithm algorithm_;
  int cipherMode_ = kModeCbc;
  std::string lastAlgorithm_;
  CryptCipher encryption_;  ///< under way between a first and a last piece
  CryptCipher decryption_;
  SecretBuffer secretKey_;
  SecretBuffer iv_;
  bool hasIv_ = false;
  SecretBuffer salt_;
  SecretText pbesPassword_;
  CompressionAlgorithm compression_ = CompressionAlgorithm::Deflate;
};

}  // namespace zantrel
