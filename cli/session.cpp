#include "session.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>

#include "console.h"

namespace zantrel_cli {

bool Streams::read(const std::string& path, Zantrel::Bytes& out) {
  if (isStandardStream(path)) {
    return readStandardInput(out) || complain("standard input cannot be read, or is 4 GB or more");
  }
  const bool done = files_.ReadFile(path, out);
  if (wantsLog(done)) showLog(files_.get_LastErrorText());
  return done;
}

bool Streams::write(const std::string& path, Zantrel::ByteView content) {
  if (isStandardStream(path)) {
    return writeStandardOutput(content) || complain("standard output cannot be written");
  }
  const bool done = files_.WriteFile(path, content);
  if (wantsLog(done)) showLog(files_.get_LastErrorText());
  return done;
}

bool Streams::complain(std::string_view reason) {
  std::fprintf(stderr, "zantrel: %.*s\n", static_cast<int>(reason.size()), reason.data());
  return false;
}

void Streams::showLog(std::string text) {
  std::erase(text, '\r');
  std::fputs(text.c_str(), stderr);
}

namespace {

volatile std::sig_atomic_t interruptSeen = 0;

void onInterrupt(int) {
  interruptSeen = 1;
  std::signal(SIGINT, SIG_DFL);  // a second one ends the program at once
}

constexpr auto kPatience = std::chrono::milliseconds(400);
constexpr unsigned kBarWidth = 40;

}  // namespace

Progress::Progress(OnPercentDone& percentDone, OnAbortCheck& abortCheck, const Context& context)
    : percentDone_(percentDone),
      abortCheck_(abortCheck),
      wanted_(!context.noProgress && errorIsTerminal()) {
  interruptSeen = 0;
  std::signal(SIGINT, onInterrupt);
  const auto begin = std::chrono::steady_clock::now();
  percentDone_ = [this, begin](Zantrel::PercentDoneEventArgs& args) {
    args.Abort = interrupted();
    // Short work is over before a bar could be read.
    if (wanted_ && std::chrono::steady_clock::now() - begin > kPatience) draw(args.PercentDone);
  };
  abortCheck_ = [](Zantrel::AbortCheckEventArgs& args) { args.Abort = interrupted(); };
}

Progress::~Progress() {
  percentDone_ = nullptr;
  abortCheck_ = nullptr;
  std::signal(SIGINT, SIG_DFL);
  if (shown_) std::fprintf(stderr, "\r%*s\r", static_cast<int>(kBarWidth) + 8, "");
}

bool Progress::interrupted() {
  return interruptSeen != 0;
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
