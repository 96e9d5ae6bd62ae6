#pragma once
// Options that take bytes in hexadecimal.

#include <zantrel/types.h>

#include <string>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zantrel_cli {

/// Registers an option that takes pairs of hexadecimal digits.
CLI::Option* addHexOption(CLI::App& command, const std::string& name, std::string& digits,
                          const std::string& description);

/// The bytes of such an option.
Zantrel::Bytes bytesOfHex(const std::string& digits);

}  // namespace zantrel_cli
