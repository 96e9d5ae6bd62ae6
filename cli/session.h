#pragma once
// Files, streams and the activity log as the sub-commands use them.

#include <zantrel/charset.h>

#include <functional>
#include <string>
#include <string_view>

#include "commands.h"

namespace zantrel_cli {

/// "-" stands for standard input and output.
inline bool isStandardStream(std::string_view path) {
  return path == "-";
}

/// What a sub-command reads and writes as a whole.
class Streams {
 public:
  explicit Streams(const Context& context) : context_(context) {}
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;

  /// The content of a file or of standard input.
  bool read(const std::string& path, Zantrel::Bytes& out);
  /// Writes a file, keeping what stood there if that fails, or standard output.
  bool write(const std::string& path, Zantrel::ByteView content);

  /// Says on standard error why nothing can be done; for reasons that no log tells. False.
  bool complain(std::string_view reason);

 protected:
  bool wantsLog(bool succeeded) const { return !succeeded || context_.log; }
  static void showLog(std::string text);

  const Context& context_;

 private:
  Zantrel::Charset files_;
};

/// One component at work for a sub-command: its calls and their log.
template <class Component>
class Session final : public Streams {
 public:
  explicit Session(const Context& context) : Streams(context) {
    component_.put_VerboseLogging(context.verbose);
  }

  Component& component() { return component_; }

  /// Passes a call's result on, with the activity log on standard error if it failed or if the user
  /// asked for it.
  bool report(bool succeeded) {
    if (wantsLog(succeeded)) showLog(component_.get_LastErrorText());
    return succeeded;
  }

 private:
  Component component_;
};

/// Shows a progress bar on standard error while a long call runs, if that is a terminal, and turns
/// the first interrupt from the keyboard into an abort, so that no half-written file is left.
class Progress {
 public:
  template <class Component>
  Progress(Component& component, const Context& context)
      : Progress(component.OnPercentDone, component.OnAbortCheck, context) {}
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Whether the user has interrupted the work.
  static bool interrupted();

 private:
  using OnPercentDone = std::function<void(Zantrel::PercentDoneEventArgs&)>;
  using OnAbortCheck = std::function<void(Zantrel::AbortCheckEventArgs&)>;

  Progress(OnPercentDone& percentDone, OnAbortCheck& abortCheck, const Context& context);
  void draw(unsigned percent);

  OnPercentDone& percentDone_;
  OnAbortCheck& abortCheck_;
  bool shown_ = false;
  bool wanted_;
};

}  // namespace zantrel_cli
