// The members of ClsCrypt that hash and authenticate.

#include "core/data_source.h"
#include "crypt2/cls_crypt.h"

namespace zantrel {
namespace {

const char* printedName(int hashId) {
  return findHashAlgorithm(hashId)->printedName;
}

}  // namespace

// Digests in one piece

bool ClsCrypt::hash(MethodCall& call, ByteSpan data, DataBuffer& out) {
  if (call.verbose()) call.log().logData("hashAlgorithm", printedName(hashId_));
  hashBytes(digestChoice(), data, out);
  return true;
}

bool ClsCrypt::HashBytesX(const DataBuffer& data, DataBuffer& out) {
  return call("HashBytes", [&](MethodCall& c) { return hash(c, data.bytes(), out); });
}

bool ClsCrypt::HashBytesENCX(const DataBuffer& data, XString& out) {
  return call("HashBytesENC", [&](MethodCall& c) {
    return withEncoded(c, out, [&](DataBuffer& digest) { return hash(c, data.bytes(), digest); });
  });
}

bool ClsCrypt::HashStringX(const XString& text, DataBuffer& out) {
  return call("HashString", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) { return hash(c, bytes, out); });
  });
}

bool ClsCrypt::HashStringENCX(const XString& text, XString& out) {
  return call("HashStringENC", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) {
      return withEncoded(c, out, [&](DataBuffer& digest) { return hash(c, bytes, digest); });
    });
  });
}

// Files

bool ClsCrypt::hashFile(MethodCall& call, const XString& path, DataBuffer& out) {
  call.log().logDataStr("filename", path);
  FileDataSource file;
  return file.open(path.getUtf8(), call.log()) &&
         hashSource(digestChoice(), file, call.startProgress(file.size()), call.log(), out);
}

bool ClsCrypt::HashFileX(const XString& path, DataBuffer& out, ProgressEvent* progress) {
  return call("HashFile", progress, [&](MethodCall& c) { return hashFile(c, path, out); });
}

bool ClsCrypt::HashFileENCX(const XString& path, XString& out, ProgressEvent* progress) {
  return call("HashFileENC", progress, [&](MethodCall& c) {
    return withEncoded(c, out, [&](DataBuffer& digest) { return hashFile(c, path, digest); });
  });
}

// Digests in several pieces

bool ClsCrypt::hashBegin(MethodCall& call, ByteSpan data) {
  if (call.verbose()) call.log().logData("hashAlgorithm", printedName(hashId_));
  hasher_.begin(digestChoice());
  hasher_.more(hashId_, data);
  return true;
}

bool ClsCrypt::isHashUnderWay(MethodCall& call) {
  if (hasher_.isUnderWay(hashId_)) return true;
  call.log().logInfo("No digest of this HashAlgorithm is under way: begin one first.");
  return false;
}

bool ClsCrypt::hashMore(MethodCall& call, ByteSpan data) {
  if (isHashUnderWay(call)) hasher_.more(hashId_, data);
  return true;
}

bool ClsCrypt::hashFinal(MethodCall& call, DataBuffer& out) {
  if (isHashUnderWay(call)) hasher_.final(hashId_, out);
  return true;
}

bool ClsCrypt::HashBeginBytes(const DataBuffer& data) {
  return call("HashBeginBytes", [&](MethodCall& c) { return hashBegin(c, data.bytes()); });
}

bool ClsCrypt::HashBeginString(const XString& text) {
  return call("HashBeginString", [&](MethodCall& c) {
    // Text that cannot be converted must not be taken for the continuation of an older digest.
    hasher_.discard(hashId_);
    return withBytesOf(c, text, [&](ByteSpan bytes) { return hashBegin(c, bytes); });
  });
}

bool ClsCrypt::HashMoreBytes(const DataBuffer& data) {
  return call("HashMoreBytes", [&](MethodCall& c) { return hashMore(c, data.bytes()); });
}

bool ClsCrypt::HashMoreString(const XString& text) {
  return call("HashMoreString", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) { return hashMore(c, bytes); });
  });
}

bool ClsCrypt::HashFinalX(DataBuffer& out) {
  return call("HashFinal", [&](MethodCall& c) { return hashFinal(c, out); });
}

bool ClsCrypt::HashFinalENCX(XString& out) {
  return call("HashFinalENC", [&](MethodCall& c) {
    return withEncoded(c, out, [&](DataBuffer& digest) { return hashFinal(c, digest); });
  });
}

// Authentication codes

bool ClsCrypt::setHmacKey(MethodCall& call, ByteSpan key) {
  if (hasher_.setHmacKey(key)) return true;
  call.log().logError("Not enough memory.");
  return false;
}

bool ClsCrypt::SetHmacKeyBytes(const DataBuffer& key) {
  return call("SetHmacKeyBytes", [&](MethodCall& c) { return setHmacKey(c, key.bytes()); });
}

bool ClsCrypt::SetHmacKeyString(const XString& text) {
  return call("SetHmacKeyString", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan key) { return setHmacKey(c, key); });
  });
}

bool ClsCrypt::SetHmacKeyEncoded(const XString& text, const XString& encoding) {
  return call("SetHmacKeyEncoded", [&](MethodCall& c) {
    SecretBuffer key;
    return Decode(text, encoding, key.buffer(), false) && setHmacKey(c, key.bytes());
  });
}

bool ClsCrypt::hmac(MethodCall& call, ByteSpan data, DataBuffer& out) {
  const HashAlgorithm& algorithm = *findHashAlgorithm(hashId_);
  if (call.verbose()) call.log().logData("hashAlgorithm", algorithm.printedName);
  hasher_.hmac(data, hashId_, out);
  if (!algorithm.inDispatcher) {
    call.log().logInfo("HMAC does not know this HashAlgorithm: it was computed with SHA-1.");
    call.log().logData("hashAlgorithm", algorithm.printedName);
  }
  return true;
}

bool ClsCrypt::HmacBytesX(const DataBuffer& data, DataBuffer& out) {
  return call("HmacBytes", [&](MethodCall& c) { return hmac(c, data.bytes(), out); });
}

bool ClsCrypt::HmacBytesENCX(const DataBuffer& data, XString& out) {
  return call("HmacBytesENC", [&](MethodCall& c) {
    return withEncoded(c, out, [&](DataBuffer& code) { return hmac(c, data.bytes(), code); });
  });
}

bool ClsCrypt::HmacStringX(const XString& text, DataBuffer& out) {
  return call("HmacString", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) { return hmac(c, bytes, out); });
  });
}

bool ClsCrypt::HmacStringENCX(const XString& text, XString& out) {
  return call("HmacStringENC", [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) {
      return withEncoded(c, out, [&](DataBuffer& code) { return hmac(c, bytes, code); });
    });
  });
}

// Digests that HashAlgorithm does not choose

bool ClsCrypt::fixedDigest(const char* method, int hashId, const DataBuffer& data,
                           DataBuffer& out) {
  return call(method, [&](MethodCall&) {
    Hash::doHash(data.getData2(), data.getSize(), hashId, out);
    return true;
  });
}

bool ClsCrypt::fixedDigest(const char* method, int hashId, const XString& text, DataBuffer& out) {
  return call(method, [&](MethodCall& c) {
    return withBytesOf(c, text, [&](ByteSpan bytes) {
      Hash::doHash(bytes.data(), bytes.size(), hashId, out);
      return true;
    });
  });
}

bool ClsCrypt::CalcSha1HashX(const DataBuffer& data, DataBuffer& out) {
  return fixedDigest("CalcSha1Hash", kHashSha1, data, out);
}
bool ClsCrypt::CalcSha1HashStrX(const XString& text, DataBuffer& out) {
  return fixedDigest("CalcSha1HashStr", kHashSha1, text, out);
}
bool ClsCrypt::CalcDigestMD5X(const DataBuffer& data, DataBuffer& out) {
  return fixedDigest("CalcDigestMD5", kHashMd5, data, out);
}
bool ClsCrypt::CalcDigestMD5StrX(const XString& text, DataBuffer& out) {
  return fixedDigest("CalcDigestMD5Str", kHashMd5, text, out);
}
bool ClsCrypt::CalcMd2HashX(const DataBuffer& data, DataBuffer& out) {
  return fixedDigest("CalcMd2Hash", kHashMd2, data, out);
}
bool ClsCrypt::CalcMd2HashStrX(const XString& text, DataBuffer& out) {
  return fixedDigest("CalcMd2HashStr", kHashMd2, text, out);
}

}  // namespace zantrel
