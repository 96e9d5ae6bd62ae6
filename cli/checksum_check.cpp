#include "checksum_check.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "checksum_line.h"

namespace zantrel_cli {
namespace {

bool exists(const std::string& file) {
  std::error_code error;
  const std::u8string name(file.begin(), file.end());
  return isStandardStream(file) || std::filesystem::exists(std::filesystem::path(name), error);
}

/// Takes the same time wherever texts of one length differ: a code must not be found out byte by
/// byte.
bool areSame(std::string_view one, std::string_view other) {
  if (one.size() != other.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < one.size(); ++i)
    difference |= static_cast<unsigned>(static_cast<unsigned char>(one[i] ^ other[i]));
  return difference == 0;
}

/// The digest in the case that this command writes; nothing when it has other digits.
std::optional<std::string> lowerCaseHex(std::string digest) {
  for (char& c : digest) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c + ('a' - 'A'));
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return std::nullopt;
  }
  return digest;
}

const char* ending(std::uint64_t count, const char* one, const char* many) {
  return count == 1 ? one : many;
}

/// One list of files and what came of it.
class Check {
 public:
  Check(Hasher& hasher, const CheckOptions& options) : hasher_(hasher), options_(options) {}

  bool list(const std::string& name);

 private:
  bool line(std::string_view text);
  bool choose(ChecksumLine& line);
  bool file(const ChecksumLine& line);
  bool say(const std::string& file, const char* result);
  void summarize(const std::string& name) const;
  void warn(std::uint64_t count, const char* one, const char* many) const;

  Hasher& hasher_;
  const CheckOptions& options_;
  std::uint64_t proper_ = 0, malformed_ = 0, unreadable_ = 0, different_ = 0, same_ = 0;
};

/// Chooses the algorithm of a line and brings its digest into the form that is compared; false for
/// a line that cannot be meant.
bool Check::choose(ChecksumLine& line) {
  std::string algorithm = options_.digest.algorithm;
  if (!line.algorithm.empty()) {
    if (isHmac(line.algorithm) != options_.keyed) return false;
    const std::string named = digestOfAlgorithm(line.algorithm);
    if (options_.algorithmGiven && named != algorithm) return false;
    algorithm = named;
  }
  hasher_.choose(algorithm);
  if (line.algorithm.find(',') != std::string::npos &&
      normalisedAlgorithm(hasher_.tag()) != line.algorithm)
    return false;
  if (options_.digest.encoding == "hex") {
    const std::optional<std::string> digits = lowerCaseHex(line.digest);
    if (!digits) return false;
    line.digest = *digits;
  }
  // In URL encoding the size depends on the digest.
  return options_.digest.encoding == "url" || line.digest.size() == hasher_.digestSize();
}

bool Check::say(const std::string& file, const char* result) {
  if (options_.status) return true;
  return hasher_.streams().write("-", Zantrel::bytesOf(printableName(file) + ": " + result + "\n"));
}

bool Check::file(const ChecksumLine& line) {
  if (options_.ignoreMissing && !exists(line.file)) return true;
  std::string digest;
  if (!hasher_.hash(line.file, digest)) {
    ++unreadable_;
    return say(line.file, "FAILED open or read") && !Progress::interrupted();
  }
  if (!areSame(digest, line.digest)) {
    ++different_;
    return say(line.file, "FAILED");
  }
  ++same_;
  return options_.quiet || say(line.file, "OK");
}

bool Check::line(std::string_view text) {
  std::optional<ChecksumLine> parsed = parseChecksumLine(text, options_.algorithms);
  if (!parsed || !choose(*parsed)) {
    ++malformed_;
    return true;
  }
  ++proper_;
  return file(*parsed);
}

bool Check::list(const std::string& name) {
  Zantrel::Bytes content;
  if (!hasher_.streams().read(name, content)) return false;
  std::string_view rest(reinterpret_cast<const char*>(content.data()), content.size());
  const char end = options_.zeroEnded ? '\0' : '\n';
  for (std::uint64_t number = 1; !rest.empty(); ++number) {
    const std::size_t size = std::min(rest.find(end), rest.size());
    std::string_view text = rest.substr(0, size);
    rest.remove_prefix(std::min(size + 1, rest.size()));
    if (!options_.zeroEnded && text.ends_with('\r')) text.remove_suffix(1);
    if (text.empty() || text.starts_with('#')) continue;
    const std::uint64_t before = malformed_;
    if (!line(text)) return false;
    if (malformed_ > before && options_.warn)
      hasher_.streams().complain(printableName(name) + ": " + std::to_string(number) +
                                 ": improperly formatted checksum line");
  }
  summarize(name);
  return proper_ > 0 && different_ == 0 && unreadable_ == 0 &&
         (malformed_ == 0 || !options_.strict) && (same_ > 0 || !options_.ignoreMissing);
}

void Check::warn(std::uint64_t count, const char* one, const char* many) const {
  if (count > 0)
    hasher_.streams().complain("WARNING: " + std::to_string(count) + " " +
                               ending(count, one, many));
}

void Check::summarize(const std::string& name) const {
  if (proper_ == 0) {
    hasher_.streams().complain(printableName(name) +
                               ": no properly formatted checksum lines found");
    return;
  }
  if (options_.status) return;
  warn(malformed_, "line is improperly formatted", "lines are improperly formatted");
  warn(unreadable_, "listed file could not be read", "listed files could not be read");
  warn(different_, "computed checksum did NOT match", "computed checksums did NOT match");
  if (options_.ignoreMissing && same_ + different_ + unreadable_ == 0)
    hasher_.streams().complain(printableName(name) + ": no file was verified");
}

}  // namespace

int checkFiles(Hasher& hasher, const std::vector<std::string>& lists, const CheckOptions& options) {
  int status = kDone;
  for (const std::string& list : lists) {
    if (!Check(hasher, options).list(list)) status = kFailed;
    if (Progress::interrupted()) break;
  }
  return status;
}

}  // namespace zantrel_cli
