#pragma once
// Files, streams and the activity log as the sub-commands use them.

#include <zantrel/charset.h>

#include <string>
#include <string_view>

#include "commands.h"

namespace zantrel_cli {

/// "-" stands for standard input and output.
inline bool isStandardStream(std::string_view path) {
  return path == "-";
}

/// One component at work for a sub-command: its calls, their log and their progress.
class Session {
 public:
  explicit Session(const Context& context);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Zantrel::Charset& charset() { return charset_; }

  /// Passes a call's result on, with the activity log on standard error if it failed or if the user
  /// asked for it.
  bool report(bool succeeded);

  /// The content of a file or of standard input.
  bool read(const std::string& path, Zantrel::Bytes& out);
  /// Writes a file, keeping what stood there if that fails, or standard output.
  bool write(const std::string& path, Zantrel::ByteView content);

  /// Says on standard error why nothing can be done; for reasons that no log tells. False.
  bool complain(std::string_view reason);

 private:
  void showLog();

  const Context& context_;
  Zantrel::Charset charset_;
};

/// Shows a progress bar on standard error while a long call runs, if that is a terminal, and turns
/// the first interrupt from the keyboard into an abort, so that no half-written file is left.
class Progress {
 public:
  Progress(Zantrel::Charset& charset, const Context& context);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void draw(unsigned percent);

  Zantrel::Charset& charset_;
  bool shown_ = false;
  bool wanted_;
};

}  // namespace zantrel_cli
