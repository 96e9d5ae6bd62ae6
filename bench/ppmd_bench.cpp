// PPMd beside the program 7-Zip (7zz or 7z), in processor time of one thread. The program's time to
// store the same file is taken off, so that its start, reading and writing do not count.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "compress/ppmd_engine.h"
#include "core/log_null.h"

#if defined(__unix__)
#include <sys/resource.h>
#endif

namespace {

using namespace zantrel;

constexpr std::size_t kBytes = 12 << 20;

// Words with a long tail of rare ones, and lines of figures: what a log or a book is like to the
// model.
std::string sample() {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < kBytes) {
    const auto rank = (random() % 200) * (random() % 200);
    text += "w" + std::to_string(rank * 7919) + (random() % 12 ? " " : ".\n");
    if (random() % 100 == 0) text += std::to_string(random()) + ";" + std::to_string(random());
  }
  text.resize(kBytes);
  return text;
}

const std::string& text() {
  static const std::string bytes = sample();
  return bytes;
}

void setModel(PpmdEngine& engine) {
  engine.setModel(8, 16, PpmdRestore::Restart);
}

#if defined(__unix__)
double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}
double userTime(int who) {
  rusage usage{};
  getrusage(who, &usage);
  return seconds(usage.ru_utime);
}

template <class Work>
void measure(benchmark::State& state, int who, const Work& work) {
  for (auto _ : state) {
    const double start = userTime(who);
    if (!work()) state.SkipWithError("failed");
    state.SetIterationTime(std::max(1e-6, userTime(who) - start));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text().size()));
}

void compressOurs(benchmark::State& state) {
  PpmdEngine engine;
  LogNull log;
  setModel(engine);
  measure(state, RUSAGE_SELF, [&] {
    DataBuffer out;
    return engine.compressBuffer(asBytes(text()), out, log, nullptr);
  });
}

void decompressOurs(benchmark::State& state) {
  PpmdEngine engine;
  LogNull log;
  DataBuffer packed;
  setModel(engine);
  engine.compressBuffer(asBytes(text()), packed, log, nullptr);
  measure(state, RUSAGE_SELF, [&] {
    DataBuffer out;
    return engine.decompressBuffer(packed.bytes(), out, log, nullptr);
  });
}

// The program's processor time for one command line.
class Peer final {
 public:
  Peer() : folder_(std::filesystem::temp_directory_path() / "zantrel_ppmd_bench") {
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "f", std::ios::binary) << text();
    for (const char* name : {"7zz", "7z"})
      if (program_.empty() && run(std::string("command -v ") + name)) program_ = name;
  }
  ~Peer() { std::filesystem::remove_all(folder_); }
  bool there() const { return !program_.empty(); }
  /// Seconds; negative when it failed.
  double pack(const std::string& method) {
    std::filesystem::remove(archive(method));
    return timed(program_ + " a -tzip -mmt1 -mm=" + method + " '" + archive(method) + "' '" +
                 (folder_ / "f").string() + "'");
  }
  double unpack(const std::string& method) {
    return timed(program_ + " t -mmt1 '" + archive(method) + "'");
  }

 private:
  static bool run(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
  }
  static double timed(const std::string& command) {
    const double start = userTime(RUSAGE_CHILDREN);
    return run(command) ? userTime(RUSAGE_CHILDREN) - start : -1;
  }
  std::string archive(const std::string& method) const {
    return (folder_ / (method.substr(0, 4) + ".zip")).string();
  }

  std::filesystem::path folder_;
  std::string program_;
};

constexpr const char* kPeerModel = "PPMd:o=8:mem=16m";

template <double (Peer::*Action)(const std::string&)>
void peer(benchmark::State& state) {
  static Peer program;
  if (!program.there()) return state.SkipWithError("7-Zip is missing");
  program.pack("Copy");
  program.pack(kPeerModel);
  for (auto _ : state) {
    const double stored = (program.*Action)("Copy");
    const double packed = (program.*Action)(kPeerModel);
    if (stored < 0 || packed < 0) state.SkipWithError("failed");
    state.SetIterationTime(std::max(1e-6, packed - stored));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text().size()));
}

BENCHMARK(compressOurs)->Name("ppmd compress/zantrel")->UseManualTime()->Iterations(2);
BENCHMARK(peer<&Peer::pack>)->Name("ppmd compress/7-Zip")->UseManualTime()->Iterations(2);
BENCHMARK(decompressOurs)->Name("ppmd decompress/zantrel")->UseManualTime()->Iterations(2);
BENCHMARK(peer<&Peer::unpack>)->Name("ppmd decompress/7-Zip")->UseManualTime()->Iterations(2);
#endif

}  // namespace
