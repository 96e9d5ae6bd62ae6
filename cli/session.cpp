#include "session.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>

#include "console.h"

namespace zantrel_cli {

Session::Session(const Context& context) : context_(context) {
  charset_.put_VerboseLogging(context.verbose);
}

Session::~Session() = default;

bool Session::report(bool succeeded) {
  if (!succeeded || context_.log) showLog();
  return succeeded;
}

void Session::showLog() {
  std::string text = charset_.get_LastErrorText();
  std::erase(text, '\r');
  std::fputs(text.c_str(), stderr);
}

bool Session::read(const std::string& path, Zantrel::Bytes& out) {
  if (!isStandardStream(path)) return report(charset_.ReadFile(path, out));
  return readStandardInput(out) || complain("standard input cannot be read, or is 4 GB or more");
}

bool Session::write(const std::string& path, Zantrel::ByteView content) {
  if (!isStandardStream(path)) return report(charset_.WriteFile(path, content));
  return writeStandardOutput(content) || complain("standard output cannot be written");
}

bool Session::complain(std::string_view reason) {
  std::fprintf(stderr, "zantrel: %.*s\n", static_cast<int>(reason.size()), reason.data());
  return false;
}

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int) {
  interrupted = 1;
  std::signal(SIGINT, SIG_DFL);  // a second one ends the program at once
}

constexpr auto kPatience = std::chrono::milliseconds(400);
constexpr unsigned kBarWidth = 40;

}  // namespace

Progress::Progress(Zantrel::Charset& charset, const Context& context)
    : charset_(charset), wanted_(!context.noProgress && errorIsTerminal()) {
  interrupted = 0;
  std::signal(SIGINT, onInterrupt);
  const auto begin = std::chrono::steady_clock::now();
  charset_.OnPercentDone = [this, begin](Zantrel::PercentDoneEventArgs& args) {
    args.Abort = interrupted != 0;
    // Short work is over before a bar could be read.
    if (wanted_ && std::chrono::steady_clock::now() - begin > kPatience) draw(args.PercentDone);
  };
  charset_.OnAbortCheck = [](Zantrel::AbortCheckEventArgs& args) { args.Abort = interrupted != 0; };
}

Progress::~Progress() {
  charset_.OnPercentDone = nullptr;
  charset_.OnAbortCheck = nullptr;
  std::signal(SIGINT, SIG_DFL);
  if (shown_) std::fprintf(stderr, "\r%*s\r", static_cast<int>(kBarWidth) + 8, "");
}

void Progress::draw(unsigned percent) {
  percent = std::min(percent, 100u);
  const unsigned filled = percent * kBarWidth / 100;
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::fprintf(stderr, "\r[%s] %3u%%", bar.c_str(), percent);
  std::fflush(stderr);
  shown_ = true;
}

}  // namespace zantrel_cli
