// The members of ClsCrypt that compress, alone and together with encryption.

#include "compress/zantrel_compress.h"
#include "crypt2/cls_crypt.h"

namespace zantrel {

void ClsCrypt::get_CompressionAlgorithm(XString& out) {
  out.setFromUtf8(compressionAlgorithmName(compression_));
}

void ClsCrypt::put_CompressionAlgorithm(const XString& name) {
  compression_ = compressionAlgorithmOf(name.utf8());
}

bool ClsCrypt::put_MaxDecompressedSize(std::int64_t bytes) {
  if (bytes < 0) {
    log().logError("A size cannot be negative.");
    return false;
  }
  settings_.maxDecompressedSize = bytes;
  return true;
}

bool ClsCrypt::compress(MethodCall& call, ByteSpan in, DataBuffer& out) {
  call.log().logData("compressionAlgorithm", compressionAlgorithmName(compression_));
  ZantrelCompress front;
  front.setAlgorithm(compression_);
  return front.compress(in, out, call.log(), nullptr);
}

bool ClsCrypt::inflate(MethodCall& call, ByteSpan in, DataBuffer& out) {
  call.log().logData("compressionAlgorithm", compressionAlgorithmName(compression_));
  ZantrelCompress front;
  front.setAlgorithm(compression_);
  front.setMaxDecompressedSize(static_cast<std::uint64_t>(settings_.maxDecompressedSize));
  if (front.decompress(in, out, call.log(), nullptr)) return true;
  out.clear();  // what came before the failure is not to be taken for the whole
  return false;
}

bool ClsCrypt::inflateText(MethodCall& call, ByteSpan in, XString& out) {
  SecretBuffer text;
  return inflate(call, in, text.buffer()) &&
         fromCharset(call, text.bytes(), settings_.charset, out);
}

bool ClsCrypt::CompressBytesX(const DataBuffer& data, DataBuffer& out) {
  return call("CompressBytes", [&](MethodCall& c) { return compress(c, data.bytes(), out); });
}

bool ClsCrypt::CompressBytesENCX(const DataBuffer& data, XString& out) {
  return call("CompressBytesENC", [&](MethodCall& c) {
    return withEncoded(c, out, [&](DataBuffer& bytes) { return compress(c, data.bytes(), bytes); });
  });
}

bool ClsCrypt::CompressStringX(const XString& text, DataBuffer& out) {
  return call("CompressString", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) { return compress(c, bytes, out); });
  });
}

bool ClsCrypt::CompressStringENCX(const XString& text, XString& out) {
  return call("CompressStringENC", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) {
      return withEncoded(c, out, [&](DataBuffer& result) { return compress(c, bytes, result); });
    });
  });
}

bool ClsCrypt::InflateBytesX(const DataBuffer& data, DataBuffer& out) {
  return call("InflateBytes", [&](MethodCall& c) { return inflate(c, data.bytes(), out); });
}

bool ClsCrypt::InflateBytesENCX(const XString& text, DataBuffer& out) {
  return call("InflateBytesENC", [&](MethodCall& c) {
    DataBuffer bytes;
    return decodeInMode(text, bytes) && inflate(c, bytes.bytes(), out);
  });
}

bool ClsCrypt::InflateStringX(const DataBuffer& data, XString& out) {
  return call("InflateString", [&](MethodCall& c) { return inflateText(c, data.bytes(), out); });
}

bool ClsCrypt::InflateStringENCX(const XString& text, XString& out) {
  return call("InflateStringENC", [&](MethodCall& c) {
    DataBuffer bytes;
    return decodeInMode(text, bytes) && inflateText(c, bytes.bytes(), out);
  });
}

// With encryption. Each call stands for itself, whatever FirstChunk and LastChunk say.

bool ClsCrypt::zipAndEncrypt(MethodCall& call, ByteSpan in, DataBuffer& out) {
  SecretBuffer zipped;
  return compress(call, in, zipped.buffer()) &&
         crypt(call, CipherDirection::encrypt, Chunking::whole, zipped.bytes(), out);
}

bool ClsCrypt::decryptAndUnzip(MethodCall& call, ByteSpan in, DataBuffer& out) {
  SecretBuffer zipped;
  return decrypt(call, "Failed to decrypt data", Chunking::whole, in, zipped.buffer()) &&
         inflate(call, zipped.bytes(), out);
}

bool ClsCrypt::ZipAndEncryptX(const DataBuffer& data, DataBuffer& out) {
  return call("ZipAndEncrypt", [&](MethodCall& c) { return zipAndEncrypt(c, data.bytes(), out); });
}

bool ClsCrypt::ZipAndEncryptStrX(const XString& text, DataBuffer& out) {
  return call("ZipAndEncryptStr", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) { return zipAndEncrypt(c, bytes, out); });
  });
}

bool ClsCrypt::DecryptAndUnzipX(const DataBuffer& data, DataBuffer& out) {
  return call("DecryptAndUnzip",
              [&](MethodCall& c) { return decryptAndUnzip(c, data.bytes(), out); });
}

bool ClsCrypt::DecryptAndUnzipStrX(const DataBuffer& data, XString& out) {
  return call("DecryptAndUnzipStr", [&](MethodCall& c) {
    SecretBuffer text;
    return decryptAndUnzip(c, data.bytes(), text.buffer()) &&
           fromCharset(c, text.bytes(), settings_.charset, out);
  });
}

}  // namespace zantrel
