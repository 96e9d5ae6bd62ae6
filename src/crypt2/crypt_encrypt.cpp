// The members of ClsCrypt that encrypt and decrypt.

#include <algorithm>

#include "core/transform_file.h"
#include "crypt2/cls_crypt.h"
#include "crypt2/crypt_file.h"

namespace zantrel {
namespace {

constexpr auto kEncrypt = CipherDirection::encrypt;
constexpr auto kDecrypt = CipherDirection::decrypt;

}  // namespace

CryptChoice ClsCrypt::cryptChoice() const {
  CryptChoice choice;
  choice.algorithm = algorithm_;
  choice.mode = cipherMode_;
  choice.hasIv = hasIv_;
  choice.cipher.keyLength = settings_.keyLength;
  choice.cipher.effectiveKeyBits = settings_.rc2EffectiveKeyLength;
  choice.cipher.padding = settings_.paddingScheme;
  choice.cipher.key = secretKey_.bytes();
  choice.cipher.iv = iv_.bytes();
  choice.pbesAlgorithm = settings_.pbesAlgorithm.utf8();
  choice.salt = salt_.bytes();
  choice.iterations = settings_.iterationCount;
  choice.hashId = hashId_;
  return choice;
}

template <class Body>
bool ClsCrypt::withCryptChoice(MethodCall& call, const Body& body) {
  CryptChoice choice = cryptChoice();
  logAlgorithm(choice, call.log());
  if (!choice.isPbes()) return body(choice);
  return withBytesOf(call, pbesPassword_.text(), [&](ByteSpan password) {
    choice.pbesPassword = password;
    return body(choice);
  });
}

// FirstChunk and LastChunk count for the ciphers only: everything else is always whole.
bool ClsCrypt::crypt(MethodCall& call, CipherDirection direction, Chunking chunking, ByteSpan in,
                     DataBuffer& out) {
  return withCryptChoice(call, [&](const CryptChoice& choice) {
    const bool isWhole = chunking == Chunking::whole || !choice.isKeyed();
    const bool first = isWhole || settings_.firstChunk;
    const bool last = isWhole || settings_.lastChunk;
    CryptCipher whole;
    CryptCipher& cipher = first && last ? whole : direction == kEncrypt ? encryption_ : decryption_;
    if (first) {
      if (!cipher.begin(choice, direction, !in.empty(), call.log())) return false;
      lastAlgorithm_ = lastAlgorithmName(choice.algorithm.id);
    }
    const bool done =
        last ? cipher.finish(in, out, call.log()) : cipher.update(in, out, call.log());
    if (done && first) logWeakSettings(choice, direction, call.log());
    return done;
  });
}

bool ClsCrypt::encrypt(MethodCall& call, ByteSpan in, DataBuffer& out) {
  return crypt(call, kEncrypt, Chunking::asSet, in, out);
}

bool ClsCrypt::decrypt(MethodCall& call, const char* failure, Chunking chunking, ByteSpan in,
                       DataBuffer& out) {
  if (crypt(call, kDecrypt, chunking, in, out)) return true;
  call.log().logError(failure);
  call.log().logData64("originalDataSize", static_cast<std::int64_t>(in.size()));
  call.log().logData64("decryptedDataSize", std::int64_t{out.getSize()});
  return false;
}

bool ClsCrypt::decryptBytes(MethodCall& call, ByteSpan in, DataBuffer& out) {
  return decrypt(call, "Failed to decrypt data", Chunking::asSet, in, out);
}

bool ClsCrypt::decryptText(MethodCall& call, ByteSpan in, XString& out) {
  SecretBuffer text;
  return decrypt(call, "Failed to decrypt data.", Chunking::asSet, in, text.buffer()) &&
         fromCharset(call, text.bytes(), settings_.charset, out);
}

// Encryption

bool ClsCrypt::EncryptX(const DataBuffer& data, DataBuffer& out) {
  return call("Encrypt", [&](MethodCall& c) { return encrypt(c, data.bytes(), out); });
}

bool ClsCrypt::EncryptBytesX(const DataBuffer& data, DataBuffer& out) {
  return call("EncryptBytes", [&](MethodCall& c) { return encrypt(c, data.bytes(), out); });
}

bool ClsCrypt::EncryptBytesENCX(const DataBuffer& data, XString& out) {
  return call("EncryptBytesENC", [&](MethodCall& c) {
    return withEncoded(c, out, [&](DataBuffer& bytes) { return encrypt(c, data.bytes(), bytes); });
  });
}

bool ClsCrypt::EncryptStringX(const XString& text, DataBuffer& out) {
  return call("EncryptString", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) { return encrypt(c, bytes, out); });
  });
}

bool ClsCrypt::EncryptStringENCX(const XString& text, XString& out) {
  return call("EncryptStringENC", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) {
      return withEncoded(c, out, [&](DataBuffer& result) { return encrypt(c, bytes, result); });
    });
  });
}

bool ClsCrypt::EncryptEncodedX(const XString& text, XString& out) {
  return call("EncryptEncoded", [&](MethodCall& c) {
    SecretBuffer bytes;
    return decodeInMode(text, bytes.buffer()) && withEncoded(c, out, [&](DataBuffer& result) {
             return encrypt(c, bytes.bytes(), result);
           });
  });
}

// Decryption

void ClsCrypt::logInput(MethodCall& call, std::string_view text, std::size_t count) {
  constexpr std::size_t kMostShown = 1000;  // a log is read by people
  call.log().logDataStr("InStr", XString(text.substr(0, kMostShown)));
  call.log().logData64("InNumChars", static_cast<std::int64_t>(count));
}

bool ClsCrypt::DecryptX(const DataBuffer& data, DataBuffer& out) {
  return call("Decrypt", [&](MethodCall& c) { return decryptBytes(c, data.bytes(), out); });
}

bool ClsCrypt::DecryptBytesENCX(const XString& text, DataBuffer& out) {
  return call("DecryptBytesENC", [&](MethodCall& c) {
    DataBuffer bytes;
    return decodeInMode(text, bytes) && decryptBytes(c, bytes.bytes(), out);
  });
}

bool ClsCrypt::decryptString(const char* method, const DataBuffer& data, XString& out) {
  return call(method, [&](MethodCall& c) {
    constexpr std::uint32_t kMostShown = 500;
    DataBuffer start;
    start.append(data.bytes().first(std::min(data.getSize(), kMostShown)));
    XString shown;
    encodeInMode(start, shown);
    logInput(c, shown.utf8(), data.getSize());
    return decryptText(c, data.bytes(), out);
  });
}

bool ClsCrypt::DecryptStringX(const DataBuffer& data, XString& out) {
  return decryptString("DecryptString", data, out);
}

bool ClsCrypt::DecryptToStringX(const DataBuffer& data, XString& out) {
  return decryptString("DecryptToString", data, out);
}

bool ClsCrypt::DecryptStringENCX(const XString& text, XString& out) {
  return call("DecryptStringENC", [&](MethodCall& c) {
    logInput(c, text.utf8(), text.getNumChars());
    DataBuffer bytes;
    return decodeInMode(text, bytes) && decryptText(c, bytes.bytes(), out);
  });
}

bool ClsCrypt::DecryptEncodedX(const XString& text, XString& out) {
  return call("DecryptEncoded", [&](MethodCall& c) {
    DataBuffer bytes;
    SecretBuffer result;
    return decodeInMode(text, bytes) && decryptBytes(c, bytes.bytes(), result.buffer()) &&
           encoded(c, result.buffer(), out);
  });
}

// Files

bool ClsCrypt::cryptFile(MethodCall& call, CipherDirection direction, const XString& inPath,
                         const XString& outPath) {
  call.log().logDataStr("inputFile", inPath);
  call.log().logDataStr("outputFile", outPath);
  return withCryptChoice(call, [&](const CryptChoice& choice) {
    const auto cryptAll = [&](DataSource& in, DataSink& out) {
      return cryptSource(choice, direction, in, out, call.startProgress(in.size()), call.log());
    };
    if (!transformFile(inPath, outPath, call.log(), cryptAll)) return false;
    lastAlgorithm_ = lastAlgorithmName(choice.algorithm.id);
    logWeakSettings(choice, direction, call.log());
    return true;
  });
}

bool ClsCrypt::ZT_EncryptFile(const XString& inPath, const XString& outPath,
                              ProgressEvent* progress) {
  return call("ZT_EncryptFile", progress,
              [&](MethodCall& c) { return cryptFile(c, kEncrypt, inPath, outPath); });
}

bool ClsCrypt::ZT_DecryptFile(const XString& inPath, const XString& outPath,
                              ProgressEvent* progress) {
  return call("ZT_DecryptFile", progress,
              [&](MethodCall& c) { return cryptFile(c, kDecrypt, inPath, outPath); });
}

}  // namespace zantrel
