#pragma once
// The lines of checksum files, as sha256sum, BSD's tools and "openssl dgst" write them.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zantrel_cli {

struct ChecksumLine {
  std::string algorithm;  ///< "sha256", "hmacsha256"; empty where the line names none
  std::string digest;     ///< in whatever encoding it is
  std::string file;
};

/// Algorithm names as the library knows them: without "-", in lower case, and by one name where
/// others use several.
std::string normalisedAlgorithm(std::string_view name);

/// "DIGEST  file", or with `tag` "TAG (file) = DIGEST". A name with a line end in it is escaped,
/// and the line then starts with a backslash; not so when lines end with a zero byte.
std::string checksumLine(const std::string& digest, std::string_view file, const std::string& tag,
                         bool zeroEnded);

/// The name as it stands in a line of text: with its line ends escaped, behind a backslash.
std::string printableName(std::string_view file);

/// Takes a line without its end apart; nothing when it is none of a checksum file. Only the
/// algorithms given make a line a tagged one: "DIGEST  (a) = b" is about the file "(a) = b".
std::optional<ChecksumLine> parseChecksumLine(std::string_view line,
                                              const std::vector<std::string>& algorithms);

/// The digest that an algorithm of a line works with: "sha256" of "hmacsha256", "haval" of
/// "haval256,3".
std::string digestOfAlgorithm(std::string_view algorithm);
bool isHmac(std::string_view algorithm);

}  // namespace zantrel_cli
