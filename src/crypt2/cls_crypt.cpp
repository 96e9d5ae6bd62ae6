#include "crypt2/cls_crypt.h"

#include <algorithm>

#include "core/charset/charset_request.h"
#include "frame/text_to_charset.h"

namespace zantrel {

void ClsCrypt::get_HashAlgorithm(XString& out) {
  out.setFromUtf8(findHashAlgorithm(hashId_)->name);
}
void ClsCrypt::put_HashAlgorithm(const XString& name) {
  hashId_ = hashIdOf(name.utf8());
}

void ClsCrypt::put_HavalRounds(int rounds) {
  havalRounds_ = Haval2::legalPasses(rounds);
}

void ClsCrypt::get_CryptAlgorithm(XString& out) {
  out.setFromUtf8(std::string_view(algorithm_.name));
}
void ClsCrypt::put_CryptAlgorithm(const XString& name) {
  algorithm_ = CryptAlgorithm::of(name.utf8());
}

bool ClsCrypt::setAlgorithm(const char* method, std::string_view name) {
  return call(method, [&](MethodCall&) {
    algorithm_ = CryptAlgorithm::of(name);
    return true;
  });
}

void ClsCrypt::put_CipherMode(int mode) {
  cipherMode_ = std::clamp<int>(mode, kModeCbc, kModeCfb);
}
void ClsCrypt::put_CipherModeX(const XString& name) {
  cipherMode_ = cipherModeOf(name.utf8());
}

void ClsCrypt::put_IV(const DataBuffer& iv) {
  constexpr std::size_t kMaxIv = 16;
  const ByteSpan bytes = iv.bytes();
  iv_.set(bytes.first(std::min(bytes.size(), kMaxIv)));
  hasIv_ = true;
}

bool ClsCrypt::toCharset(MethodCall& call, const XString& text, DataBuffer& out) {
  return textToCharset(text, CharsetRequest::parse(settings_.charset.utf8()),
                       CharsetOrigin::CharsetProperty, out, call.log());
}

bool ClsCrypt::encoded(MethodCall& call, const DataBuffer& bytes, XString& out) {
  if (encodingMode() == EncodingMode::Html) noteEmptyEncoding(call);
  return encodeInMode(bytes, out);
}

void ClsCrypt::noteEmptyEncoding(MethodCall& call) {
  call.log().logInfo("The encoding html encodes nothing: the result is empty.");
}

}  // namespace zantrel
