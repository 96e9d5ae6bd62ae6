#include "byte_size.h"

#include <CLI/CLI.hpp>

#include <cctype>
#include <charconv>
#include <limits>

namespace zantrel_cli {

bool parseByteSize(const std::string& text, std::int64_t& bytes) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [unit, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || number < 0 || end - unit > 1) return false;
  static constexpr std::string_view kUnits = "KMGT";
  std::size_t power = 0;
  if (unit != end) {
    const int letter = std::toupper(static_cast<unsigned char>(*unit));
    power = kUnits.find(static_cast<char>(letter)) + 1;
    if (power == 0) return false;
  }
  if (number > std::numeric_limits<std::int64_t>::max() >> (10 * power)) return false;
  bytes = number << (10 * power);
  return true;
}

void addMaxSize(CLI::App& command, std::int64_t& bytes) {
  command
      .add_option_function<std::string>(
          "--max-size",
          [&bytes](const std::string& text) {
            if (!parseByteSize(text, bytes)) throw CLI::ValidationError("--max-size", text);
          },
          "Fail when more bytes than this come out; K, M, G or T may follow the number")
      ->type_name("SIZE");
}

}  // namespace zantrel_cli
