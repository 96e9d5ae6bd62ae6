#include "hex_option.h"

#include <zantrel/zt_string.h>
#include <CLI/CLI.hpp>

namespace zantrel_cli {

CLI::Option* addHexOption(CLI::App& command, const std::string& name, std::string& digits,
                          const std::string& description) {
  const auto check = [](const std::string& text) -> std::string {
    const bool whole = text.size() % 2 == 0 &&
                       text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return whole ? "" : "\"" + text + "\" is not made of pairs of hexadecimal digits";
  };
  return command.add_option(name, digits, description)->check(CLI::Validator(check, "HEX"));
}

Zantrel::Bytes bytesOfHex(const std::string& digits) {
  Zantrel::Bytes bytes;
  Zantrel::ZtString(digits).getBytes("hex", bytes);
  return bytes;
}

}  // namespace zantrel_cli
