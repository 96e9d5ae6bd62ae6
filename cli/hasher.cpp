#include "hasher.h"

#include <algorithm>

#include "console.h"

namespace zantrel_cli {
namespace {

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
  });
  return text;
}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  });
  return text;
}

}  // namespace

Hasher::Hasher(const Context& context, const DigestOptions& options)
    : context_(context),
      session_(context),
      crypt_(session_.component()),
      isHex_(options.encoding == "hex") {
  crypt_.put_EncodingMode(options.encoding);
  crypt_.put_KeyLength(options.havalBits);
  crypt_.put_HavalRounds(options.havalPasses);
  choose(options.algorithm);
}

void Hasher::useKey(const Zantrel::Bytes& key) {
  keyed_ = true;
  crypt_.SetHmacKeyBytes(key);
}

void Hasher::choose(const std::string& algorithm) {
  algorithm_ = algorithm;
  crypt_.put_HashAlgorithm(algorithm);
}

std::string Hasher::tag() const {
  std::string name = upperCase(algorithm_);
  if (algorithm_ == "haval")
    name += std::to_string(crypt_.get_KeyLength()) + "," + std::to_string(crypt_.get_HavalRounds());
  return keyed_ ? "HMAC-" + name : name;
}

bool Hasher::hash(const std::string& file, std::string& out) {
  bool done = false;
  if (keyed_) {
    Zantrel::Bytes content;
    done = session_.read(file, content) && session_.report(crypt_.HmacBytesENC(content, out));
  } else if (isStandardStream(file)) {
    done = hashStandardInput(out);
  } else {
    const Progress progress(crypt_, context_);
    done = session_.report(crypt_.HashFileENC(file, out));
  }
  if (done && isHex_) out = lowerCase(std::move(out));
  return done;
}

bool Hasher::hashStandardInput(std::string& out) {
  crypt_.HashBeginBytes({});
  if (!readStandardInput([this](Zantrel::ByteView block) { return crypt_.HashMoreBytes(block); }))
    return session_.complain("standard input cannot be read");
  return session_.report(crypt_.HashFinalENC(out));
}

std::size_t Hasher::digestSize() {
  return (keyed_ ? crypt_.HmacBytesENC({}) : crypt_.HashBytesENC({})).size();
}

}  // namespace zantrel_cli
