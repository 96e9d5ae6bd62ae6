#include "gzip_names.h"

#include <string_view>

namespace zantrel_cli {
namespace {

struct Suffix {
  std::string_view text;
  std::string_view becomes;
};

constexpr Suffix kSuffixes[] = {{".gz", ""}, {"-gz", ""}, {".tgz", ".tar"}, {".taz", ".tar"},
                                {".z", ""},  {"-z", ""},  {"_z", ""}};

}  // namespace

std::string lastName(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  return name == "." || name == ".." || name.find(':') != std::string::npos ? std::string() : name;
}

std::string withoutGzipSuffix(const std::string& path, const std::string& suffix) {
  const auto without = [&](std::string_view end, std::string_view becomes) {
    const std::string rest = path.substr(0, path.size() - end.size());
    return lastName(rest).empty() ? std::string() : rest + std::string(becomes);
  };
  if (!suffix.empty() && path.ends_with(suffix)) return without(suffix, "");
  for (const Suffix& row : kSuffixes) {
    if (path.ends_with(row.text)) return without(row.text, row.becomes);
  }
  return {};
}

bool hasGzipSuffix(const std::string& path, const std::string& suffix) {
  return !withoutGzipSuffix(path, suffix).empty();
}

}  // namespace zantrel_cli
