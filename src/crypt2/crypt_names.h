#pragma once
// The names by which applications choose algorithms and modes. Every name is taken: what an unknown
// one means stands below.

#include <string>
#include <string_view>

namespace zantrel {

struct HashAlgorithm;

/// Numbers of the encryption algorithms; the values are fixed.
enum CryptId : int {
  kCryptPki = 1,
  kCryptAes = 2,
  kCryptBlowfish = 3,
  kCryptTwofish = 4,
  kCryptNone = 5,
  kCryptBlowfish2 = 6,
  kCryptDes = 7,
  kCryptRc2 = 8,
  kCryptRc4 = 9,
  kCryptPbes1 = 10,
  kCryptPbes2 = 11
};

/// What a name of an encryption algorithm stands for.
struct CryptAlgorithm {
  int id = kCryptAes;
  std::string name = "aes";  ///< without "-", trimmed, in lower case
  bool known = true;         ///< false for a name that became AES for want of a better

  static CryptAlgorithm of(std::string_view name);
  /// Bytes of a block; 1 for RC4 and 0 where there are no blocks.
  int blockSize() const noexcept;
};

enum CipherMode : int { kModeCbc = 0, kModeEcb = 1, kModeCfb = 2 };

/// The mode of a name, in which "-", blanks and case do not matter. What is neither CBC nor CFB is
/// ECB (deliberate, if unwise: old settings count on it).
int cipherModeOf(std::string_view name);

/// The digest of a name, in which "-" and case do not matter; null for an unknown one.
const HashAlgorithm* findHashByName(std::string_view name);
/// Its number; SHA-1's for an unknown name.
int hashIdOf(std::string_view name);

}  // namespace zantrel
