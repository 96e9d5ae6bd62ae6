#pragma once
// Rows of cipher test vectors, and the ways to run a cipher over one.

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/data_buffer.h"
#include "core/log_null.h"
#include "crypto/cipher_stream.h"
#include "support/test_data.h"

namespace zantrel::test {

struct CipherVector {
  std::string key, iv, input, output;
  CipherSettings settings;  ///< without key and IV
  std::string mode;
  std::string status;  ///< empty unless the table has it

  CipherSettings keyed() const {
    CipherSettings result = settings;
    result.key = asBytes(key);
    result.iv = asBytes(iv);
    return result;
  }
};

inline CipherId cipherIdOf(std::string_view name) {
  static constexpr std::pair<std::string_view, CipherId> kNames[] = {
      {"aes", CipherId::aes}, {"blowfish", CipherId::blowfish}, {"twofish", CipherId::twofish},
      {"des", CipherId::des}, {"3des", CipherId::des},          {"rc2", CipherId::rc2},
      {"rc4", CipherId::rc4}};
  for (const auto& [known, id] : kNames)
    if (known == name) return id;
  throw std::runtime_error("no such cipher: " + std::string(name));
}

/// Fields: algorithm, mode, padding, key bits, effective key bits, key, IV, input, output[,
/// status].
inline std::vector<CipherVector> cipherVectors(const std::string& path) {
  std::vector<CipherVector> vectors;
  for (const auto& row : readTable(path)) {
    if (row.at(0) == "algorithm") continue;
    CipherVector v;
    v.settings.id = cipherIdOf(row[0]);
    v.mode = row.at(1);
    v.settings.ecb = v.mode == "ecb";
    v.settings.padding = row.at(2) == "pkcs5"   ? kPaddingCounted
                         : row.at(2) == "zeros" ? kPaddingZeros
                                                : kPaddingRandom;
    v.settings.keyLength = std::stoi(row.at(3));
    if (!row.at(4).empty()) v.settings.effectiveKeyBits = std::stoi(row[4]);
    v.key = unhex(row.at(5));
    v.iv = unhex(row.at(6));
    v.input = unhex(row.at(7));
    v.output = unhex(row.at(8));
    if (row.size() > 9) v.status = row[9];
    vectors.push_back(v);
  }
  return vectors;
}

/// The result of a stream fed with pieces of `piece` bytes; "failed" if any call fails.
inline std::string runCipher(const CipherSettings& settings, CipherDirection direction,
                             std::string_view text, std::size_t piece) {
  LogNull log;
  DataBuffer out;
  CipherStream stream;
  if (!stream.begin(settings, direction, log)) return "failed";
  for (; text.size() > piece; text.remove_prefix(piece))
    if (!stream.update(asBytes(text.substr(0, piece)), out, log)) return "failed";
  if (!stream.finish(asBytes(text), out, log)) return "failed";
  return std::string(out.text());
}

inline std::string runCipher(const CipherSettings& settings, CipherDirection direction,
                             std::string_view text) {
  return runCipher(settings, direction, text, text.size() + 1);
}

}  // namespace zantrel::test
