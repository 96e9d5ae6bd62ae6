#pragma once
// Digests by the names of the vector tables: "sha256", "haval192,4".

#include <algorithm>
#include <string>
#include <string_view>

#include "crypto/digest_context.h"
#include "crypto/hash.h"

namespace zantrel::test {

inline DigestContext digestByName(const std::string& name) {
  if (!name.starts_with("haval")) {
    const HashAlgorithm* const row = findHashAlgorithm(std::string_view(name));
    return DigestContext(row != nullptr ? row->id : 0);
  }
  return DigestContext(kHashHaval, std::stoi(name.substr(5, 3)), std::stoi(name.substr(9)));
}

inline std::string finished(DigestContext& digest) {
  DataBuffer out;
  digest.finalize(out);
  return std::string(out.text());
}

/// In one piece.
inline std::string digestOf(const std::string& name, std::string_view bytes) {
  DataBuffer out;
  digestByName(name).digestData(asBytes(bytes), out);
  return std::string(out.text());
}

/// In pieces of one size, the last excepted.
inline std::string digestInPieces(const std::string& name, std::string_view bytes,
                                  std::size_t piece) {
  DigestContext digest = digestByName(name);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
    digest.update(asBytes(bytes.substr(0, piece)));
  return finished(digest);
}

}  // namespace zantrel::test
