#pragma once
// What the command needs from the system itself: its arguments in UTF-8, its standard streams byte
// for byte, and files of its own.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
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

/// Hands standard input on in blocks until its end; false when reading failed or `take` answered
/// so.
bool readStandardInput(const std::function<bool(std::span<const std::uint8_t>)>& take);

/// Writes all bytes to standard output; false when that failed (a full disk, a closed pipe).
bool writeStandardOutput(std::span<const std::uint8_t> bytes);

/// Paths under which the standard streams can be opened as files, so that data of any size goes
/// through them in blocks; none where they are not such, as on Windows. An output that is a file is
/// none of these: opening it would write over what stands before.
std::optional<std::string> standardInputPath();
std::optional<std::string> standardOutputPath();

/// Opens a file by its name in UTF-8, as std::fopen does.
std::FILE* openFile(const std::string& path, const char* mode);

/// Removes a file, if it is there.
void removeFile(const std::string& path);

/// Makes an empty file that only this user may read, in the system's folder for such; its name, or
/// nothing when that failed.
std::string makeTemporaryFile();

/// A variable of the environment in UTF-8, if it is set.
std::optional<std::string> environmentVariable(const std::string& name);

/// Asks at the terminal for a line that is not shown while it is typed; false where there is no
/// terminal, and when the user breaks off.
bool promptSecret(const std::string& prompt, std::string& out);

}  // namespace zantrel_cli
