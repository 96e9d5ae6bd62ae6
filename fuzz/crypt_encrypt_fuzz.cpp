// The component's encryption with settings of any kind: pieces give what the whole gives, what was
// encrypted decrypts to the text and its padding, and noise given to any decrypting member, keys
// and passwords in any encoding included, is answered without harm.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "crypt2/cls_crypt.h"

namespace {

using namespace zantrel;

void require(bool holds) {
  if (!holds) std::abort();
}

DataBuffer bytes(std::string_view text) {
  DataBuffer out;
  out.append(text);
  return out;
}

struct Input {
  std::string_view rest;

  std::uint8_t byte() {
    if (rest.empty()) return 0;
    const char first = rest.front();
    rest.remove_prefix(1);
    return static_cast<std::uint8_t>(first);
  }
  std::string_view part() {
    const std::size_t size = byte() % 48U;
    const std::string_view result = rest.substr(0, size);
    rest.remove_prefix(result.size());
    return result;
  }
};

constexpr const char* kAlgorithms[] = {"aes", "blowfish", "twofish", "3des",  "rc2", "arcfour",
                                       "pki", "none",     "pbes1",   "pbes2", "what"};
constexpr const char* kEncodings[] = {"base64", "hex", "qp", "url", "ansi", "base32", "uu", "html"};

void configure(ClsCrypt& crypt, Input input) {
  crypt.put_CryptAlgorithm(XString(kAlgorithms[input.byte() % std::size(kAlgorithms)]));
  crypt.settings().pbesAlgorithm.setFromUtf8(kAlgorithms[input.byte() % std::size(kAlgorithms)]);
  crypt.put_EncodingMode(XString(kEncodings[input.byte() % std::size(kEncodings)]));
  crypt.put_CipherMode(input.byte() % 4 - 1);
  crypt.settings().paddingScheme = input.byte() % 7 - 1;
  crypt.settings().keyLength = 3 * input.byte() - 8;
  crypt.settings().rc2EffectiveKeyLength = 5 * input.byte() - 20;
  crypt.settings().iterationCount = input.byte() % 8;
  crypt.put_SecretKey(bytes(input.part()));
  if (input.byte() % 2 != 0) crypt.put_IV(bytes(input.part()));
  crypt.put_Salt(bytes(input.part()));
  crypt.put_PbesPassword(XString(input.part()));
}

struct Result {
  bool done;
  std::string bytes;
};

using Member = bool (ClsCrypt::*)(const DataBuffer&, DataBuffer&);

Result whole(ClsCrypt& crypt, Member member, std::string_view text) {
  crypt.settings().firstChunk = crypt.settings().lastChunk = true;
  DataBuffer out;
  const bool done = (crypt.*member)(bytes(text), out);
  require(done || out.getSize() == 0);
  return {done, std::string(out.text())};
}

Result pieces(ClsCrypt& crypt, Member member, std::string_view text, std::size_t piece) {
  Result result{true, {}};
  for (bool first = true, last = false; !last; first = false) {
    last = text.size() <= piece;
    crypt.settings().firstChunk = first;
    crypt.settings().lastChunk = last;
    DataBuffer out;
    result.done = (crypt.*member)(bytes(text.substr(0, piece)), out) && result.done;
    result.bytes += out.text();
    text.remove_prefix(std::min(piece, text.size()));
  }
  return result;
}

void checkBytes(ClsCrypt& crypt, std::string_view text, std::size_t piece) {
  const bool streams = crypt.get_BlockSize() != 0;
  const int padding = crypt.settings().paddingScheme;
  const auto both = [&](Member member, std::string_view in, bool comparable) {
    const Result once = whole(crypt, member, in);
    if (!streams) return once;
    const Result split = pieces(crypt, member, in, piece);
    require(split.done == once.done);
    require(!once.done || split.bytes.size() == once.bytes.size());
    require(!once.done || !comparable || split.bytes == once.bytes);
    return once;
  };
  const Result encrypted = both(&ClsCrypt::EncryptX, text, padding != 1 && padding != 2);
  if (encrypted.done) {
    const Result decrypted = both(&ClsCrypt::DecryptX, encrypted.bytes, true);
    require(decrypted.done && decrypted.bytes.compare(0, text.size(), text) == 0);
  }
  both(&ClsCrypt::DecryptX, text, true);
}

void checkCompression(ClsCrypt& crypt, std::string_view text, std::uint8_t choice) {
  constexpr const char* kFormats[] = {"deflate", "bz2", "lzw", "ppmd", "none"};
  constexpr std::uint32_t kMost = 1 << 16;
  crypt.put_CompressionAlgorithm(XString(kFormats[choice % std::size(kFormats)]));
  crypt.put_MaxDecompressedSize(kMost);
  DataBuffer noise, sealed, opened;
  crypt.InflateBytesX(bytes(text), noise);
  crypt.DecryptAndUnzipX(bytes(text), noise);
  require(noise.getSize() <= 2 * kMost);
  const int padding = crypt.settings().paddingScheme;
  if (!crypt.ZipAndEncryptX(bytes(text), sealed) || (padding != 0 && padding != 1)) return;
  require(crypt.DecryptAndUnzipX(sealed, opened) && opened.text() == text);
}

void checkTexts(ClsCrypt& crypt, std::string_view text) {
  crypt.settings().firstChunk = crypt.settings().lastChunk = true;
  const XString noise(text);
  XString out, encrypted;
  DataBuffer data;
  crypt.DecryptStringX(bytes(text), out);
  crypt.DecryptStringENCX(noise, out);
  crypt.DecryptEncodedX(noise, out);
  crypt.DecryptBytesENCX(noise, data);
  crypt.MySqlAesDecryptX(noise, XString("password"), out);
  crypt.SetEncodedSalt(noise, XString("qp"));
  crypt.SetEncodedKey(noise, XString("base32"));

  crypt.put_EncodingMode(XString("hex"));
  XString back;
  require(crypt.MySqlAesEncryptX(noise, noise, encrypted));
  require(crypt.MySqlAesDecryptX(encrypted, noise, back));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view all = asText({data, std::min<std::size_t>(size, 4096)});
  ClsCrypt crypt;
  configure(crypt, Input{all.substr(0, 200)});
  const std::string_view text = all.substr(std::min<std::size_t>(all.size(), 64));
  checkBytes(crypt, text, 1 + all.size() % 67);
  // Making the compressors takes longer than all the rest.
  if (all.size() % 8 == 0) checkCompression(crypt, text, static_cast<std::uint8_t>(all.size() / 8));
  checkTexts(crypt, text);
  return 0;
}
