#include "checksum_line.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zantrel_cli {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::pair<char, char> kEscapes[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}};

constexpr std::string_view kHmac = "hmac";
constexpr std::string_view kHaval = "haval";

constexpr std::pair<std::string_view, std::string_view> kOtherNames[] = {
    {"sha2256", "sha256"},   {"sha2384", "sha384"},   {"sha2512", "sha512"},
    {"rmd128", "ripemd128"}, {"rmd160", "ripemd160"}, {"rmd256", "ripemd256"},
    {"rmd320", "ripemd320"}, {"ripemd", "ripemd160"}};

bool needsEscape(std::string_view file) {
  return file.find_first_of("\n\r\\") != std::string_view::npos;
}

std::string escaped(std::string_view file) {
  std::string out;
  for (const char c : file) {
    const auto row = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                  [c](const auto& escape) { return escape.first == c; });
    if (row != std::end(kEscapes)) {
      out += '\\';
      out += row->second;
    } else {
      out += c;
    }
  }
  return out;
}

/// Nothing for an escape that nobody writes.
std::optional<std::string> unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    const auto row = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                  [c = text[i]](const auto& escape) { return escape.second == c; });
    if (row == std::end(kEscapes)) return std::nullopt;
    out += row->first;
  }
  return out;
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// "SHA256 (file) = DIGEST", also "SHA2-256(file)= DIGEST".
std::optional<ChecksumLine> parseTagged(std::string_view line,
                                        const std::vector<std::string>& algorithms) {
  const std::size_t open = line.find('(');
  const std::size_t close = line.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open + 2)
    return std::nullopt;
  const std::string name = normalisedAlgorithm(withoutBlanks(line.substr(0, open)));
  if (std::find(algorithms.begin(), algorithms.end(), digestOfAlgorithm(name)) == algorithms.end())
    return std::nullopt;
  std::string_view rest = withoutBlanks(line.substr(close + 1));
  if (!rest.starts_with('=')) return std::nullopt;
  rest = withoutBlanks(rest.substr(1));
  if (rest.empty()) return std::nullopt;
  return ChecksumLine{name, std::string(rest),
                      std::string(line.substr(open + 1, close - open - 1))};
}

/// "DIGEST  file", "DIGEST *file" or "DIGEST file".
std::optional<ChecksumLine> parsePlain(std::string_view line) {
  const std::size_t end = line.find_first_of(kBlanks);
  if (end == std::string_view::npos || end == 0) return std::nullopt;
  std::string_view file = line.substr(end + 1);
  if (file.starts_with(' ') || file.starts_with('*')) file.remove_prefix(1);
  if (file.empty()) return std::nullopt;
  return ChecksumLine{"", std::string(line.substr(0, end)), std::string(file)};
}

}  // namespace

std::string normalisedAlgorithm(std::string_view name) {
  std::string out;
  for (const char c : name)
    if (c != '-') out += c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  const std::size_t start = isHmac(out) ? kHmac.size() : 0;
  const std::string_view digest = std::string_view(out).substr(start);
  for (const auto& [other, ours] : kOtherNames)
    if (digest == other) return out.substr(0, start) + std::string(ours);
  return out;
}

bool isHmac(std::string_view algorithm) {
  return algorithm.starts_with(kHmac);
}

std::string digestOfAlgorithm(std::string_view algorithm) {
  if (isHmac(algorithm)) algorithm.remove_prefix(kHmac.size());
  return std::string(algorithm.starts_with(kHaval) ? kHaval : algorithm);
}

std::string checksumLine(const std::string& digest, std::string_view file, const std::string& tag,
                         bool zeroEnded) {
  const bool escape = !zeroEnded && needsEscape(file);
  const std::string name = escape ? escaped(file) : std::string(file);
  std::string line = escape ? "\\" : "";
  line += tag.empty() ? digest + "  " + name : tag + " (" + name + ") = " + digest;
  line += zeroEnded ? '\0' : '\n';
  return line;
}

std::string printableName(std::string_view file) {
  return needsEscape(file) ? "\\" + escaped(file) : std::string(file);
}

std::optional<ChecksumLine> parseChecksumLine(std::string_view line,
                                              const std::vector<std::string>& algorithms) {
  const std::size_t start = line.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return std::nullopt;
  line.remove_prefix(start);
  const bool escape = line.starts_with('\\');
  if (escape) line.remove_prefix(1);
  std::optional<ChecksumLine> parsed = parseTagged(line, algorithms);
  if (!parsed) parsed = parsePlain(line);
  if (!parsed || !escape) return parsed;
  const std::optional<std::string> file = unescaped(parsed->file);
  if (!file) return std::nullopt;
  parsed->file = *file;
  return parsed;
}

}  // namespace zantrel_cli
