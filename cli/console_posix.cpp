#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "console.h"

namespace zantrel_cli {

std::vector<std::string> openConsole(int argc, char** argv) {
  return {argv, argv + argc};
}

bool errorIsTerminal() {
  return isatty(STDERR_FILENO) != 0;
}
bool outputIsTerminal() {
  return isatty(STDOUT_FILENO) != 0;
}

std::optional<std::string> standardInputPath() {
  struct stat status;
  if (fstat(STDIN_FILENO, &status) != 0) return std::nullopt;
  // A file is opened anew at its start: it must not have been read from.
  const bool atStart = S_ISREG(status.st_mode) && lseek(STDIN_FILENO, 0, SEEK_CUR) == 0;
  if (!atStart && !S_ISFIFO(status.st_mode)) return std::nullopt;
  if (access("/dev/stdin", R_OK) != 0) return std::nullopt;
  return "/dev/stdin";
}

std::optional<std::string> standardOutputPath() {
  struct stat status;
  if (fstat(STDOUT_FILENO, &status) != 0 || !S_ISFIFO(status.st_mode)) return std::nullopt;
  if (access("/dev/stdout", W_OK) != 0) return std::nullopt;
  return "/dev/stdout";
}

std::FILE* openFile(const std::string& path, const char* mode) {
  return std::fopen(path.c_str(), mode);
}

void removeFile(const std::string& path) {
  unlink(path.c_str());
}

std::string makeTemporaryFile() {
  const std::optional<std::string> folder = environmentVariable("TMPDIR");
  std::string path = folder.value_or("").empty() ? "/tmp" : *folder;
  path += "/zantrel-XXXXXX";
  const int file = mkstemp(path.data());
  if (file < 0) return {};
  close(file);
  return path;
}

std::optional<std::string> environmentVariable(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

namespace {

constexpr char kInterruptKey = 3;

/// The terminal of this process, whatever its streams are, without echo while this object lives.
class SilentTerminal {
 public:
  SilentTerminal() : file_(open("/dev/tty", O_RDWR | O_CLOEXEC)) {
    if (file_ < 0 || tcgetattr(file_, &before_) != 0) return;
    termios silent = before_;
    // Without signals too: an interrupt would leave the terminal as it is now.
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG | ICANON);
    changed_ = tcsetattr(file_, TCSAFLUSH, &silent) == 0;
  }
  ~SilentTerminal() {
    if (changed_) tcsetattr(file_, TCSAFLUSH, &before_);
    if (file_ >= 0) close(file_);
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

  bool isSilent() const { return changed_; }
  bool write(std::string_view text) {
    return ::write(file_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }
  bool readKey(char& key) { return ::read(file_, &key, 1) == 1; }

 private:
  int file_;
  termios before_{};
  bool changed_ = false;
};

}  // namespace

bool promptSecret(const std::string& prompt, std::string& out) {
  constexpr char kBackspace = 8, kDelete = 127, kEndOfInput = 4;
  SilentTerminal terminal;
  if (!terminal.isSilent() || !terminal.write(prompt)) return false;
  out.clear();
  for (char key = 0; terminal.readKey(key);) {
    if (key == '\n' || key == '\r' || key == kEndOfInput || key == kInterruptKey) {
      terminal.write("\n");
      return key != kInterruptKey;
    }
    if (key != kBackspace && key != kDelete) {
      out += key;
      continue;
    }
    // A whole character of UTF-8.
    while (!out.empty() && (static_cast<unsigned char>(out.back()) & 0xC0) == 0x80) out.pop_back();
    if (!out.empty()) out.pop_back();
  }
  return false;
}

}  // namespace zantrel_cli
