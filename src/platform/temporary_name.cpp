#include "platform/temporary_name.h"

#include "platform/random.h"

namespace zantrel {

std::string temporaryNameBeside(const std::string& path, const char* separators,
                                std::string_view prefix, std::string_view suffix) {
  static constexpr char kDigits[] = "0123456789abcdef";
  unsigned char random[8];
  randomBytes(random, sizeof random);
  const std::size_t separator = path.find_last_of(separators);
  std::string name = path.substr(0, separator == std::string::npos ? 0 : separator + 1);
  name += prefix;
  for (const unsigned char byte : random) {
    name += kDigits[byte >> 4];
    name += kDigits[byte & 15];
  }
  name += suffix;
  return name;
}

}  // namespace zantrel
