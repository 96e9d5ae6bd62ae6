#pragma once
// What the command needs from the system itself: its arguments in UTF-8 and its standard streams
// byte for byte.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zantrel_cli {

/// The command line as UTF-8, the program's name first. Makes the standard streams binary.
std::vector<std::string> openConsole(int argc, char** argv);

/// Whether standard error is a terminal that somebody may be watching.
bool errorIsTerminal();

/// Whether standard output is a terminal.
bool outputIsTerminal();

/// Reads standard input to its end; false when reading failed or there is too much of it.
bool readStandardInput(std::vector<std::uint8_t>& out);

/// Writes all bytes to standard output; false when that failed (a full disk, a closed pipe).
bool writeStandardOutput(std::span<const std::uint8_t> bytes);

}  // namespace zantrel_cli
