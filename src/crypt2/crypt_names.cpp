#include "crypt2/crypt_names.h"

#include <algorithm>
#include <iterator>

#include "core/ascii_text.h"
#include "crypto/hash.h"

namespace zantrel {
namespace {

struct CryptName {
  std::string_view name;
  int id;
};

constexpr CryptName kCryptNames[] = {
    {"pki", kCryptPki},
    {"aes", kCryptAes},
    {"rijndael", kCryptAes},
    {"rjindael", kCryptAes},  // deliberate: the misspelling has been in use
    {"blowfish", kCryptBlowfish},
    {"twofish", kCryptTwofish},
    {"none", kCryptNone},
    {"blowfish2", kCryptBlowfish2},
    {"des", kCryptDes},
    {"3des", kCryptDes},
    {"tripledes", kCryptDes},
    {"tdes", kCryptDes},
    {"rc2", kCryptRc2},
    {"pbes1", kCryptPbes1},
    {"pbes2", kCryptPbes2},
};

/// Bytes a block by number.
constexpr int kBlockSizes[] = {0, 0, 16, 8, 16, 0, 8, 8, 8, 1, 0, 0};

/// The name in lower case, trimmed, and without the characters of `dropped`.
std::string normalised(std::string_view name, std::string_view dropped) {
  std::string text;
  std::copy_if(name.begin(), name.end(), std::back_inserter(text),
               [dropped](char c) { return dropped.find(c) == std::string_view::npos; });
  text = std::string(trimmed(text));
  std::transform(text.begin(), text.end(), text.begin(), asciiLower);
  return text;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

CryptAlgorithm CryptAlgorithm::of(std::string_view name) {
  const std::string text = normalised(name, "-");
  const auto found = std::find_if(std::begin(kCryptNames), std::end(kCryptNames),
                                  [&text](const CryptName& row) { return row.name == text; });
  if (found != std::end(kCryptNames)) return {found->id, text, true};
  if (contains(text, "rc4") || contains(text, "arcfour")) return {kCryptRc4, text, true};
  return {kCryptAes, "aes", false};
}

int CryptAlgorithm::blockSize() const noexcept {
  return kBlockSizes[id];
}

int cipherModeOf(std::string_view name) {
  const std::string text = normalised(name, "- ");
  if (text.starts_with("cb")) return kModeCbc;
  return text == "cfb" ? kModeCfb : kModeEcb;
}

const HashAlgorithm* findHashByName(std::string_view name) {
  return findHashAlgorithm(std::string_view(normalised(name, "-")));
}

int hashIdOf(std::string_view name) {
  const HashAlgorithm* const found = findHashByName(name);
  return found != nullptr ? found->id : kHashSha1;
}

}  // namespace zantrel
