#pragma once
// The digests and authentication codes of files and standard input, as text.

#include <zantrel/crypt2.h>

#include <string>

#include "session.h"

namespace zantrel_cli {

struct DigestOptions {
  std::string algorithm = "sha256";  ///< as normalisedAlgorithm() makes it
  std::string encoding = "hex";
  int havalBits = 256;
  int havalPasses = 3;
};

class Hasher {
 public:
  Hasher(const Context& context, const DigestOptions& options);

  /// Makes authentication codes under a key instead of digests.
  void useKey(const Zantrel::Bytes& key);
  void choose(const std::string& algorithm);
  /// How the algorithm is called in tagged lines: "SHA256", "HAVAL256,3", "HMAC-SHA256".
  std::string tag() const;

  /// The digest of a file or of standard input; false after showing the log.
  bool hash(const std::string& file, std::string& out);
  /// Characters that a digest has in the encoding.
  std::size_t digestSize();

  Streams& streams() { return session_; }

 private:
  bool hashStandardInput(std::string& out);

  const Context& context_;
  Session<Zantrel::Crypt2> session_;
  Zantrel::Crypt2& crypt_;
  std::string algorithm_;
  bool keyed_ = false;
  bool isHex_;
};

}  // namespace zantrel_cli
