// bzip2 beside libbz2: streams of several kinds of data in both directions, each side reading what
// libbz2 packed, and the sizes as "ratio". LZW without a peer: none comes as a library.

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>

#ifdef HAVE_BZIP2
#include <bzlib.h>
#endif

#include "compress/bzip2_engine.h"
#include "compress/lzw_engine.h"
#include "compression_samples.h"
#include "core/log_null.h"

namespace {

using namespace zantrel;

constexpr std::size_t kBytes = 1'800'000;  // two blocks

struct Stream {
  std::string plain;
  std::string packed;
};
using SharedStream = std::shared_ptr<Stream>;

/// Answers the size of what it made.
using Run = std::function<std::size_t(const Stream&)>;

void add(const std::string& name, const SharedStream& stream, const Run& run, bool packs) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    std::size_t size = 0;
    for (auto _ : state) {
      size = run(*stream);
      if (size == 0 || (!packs && size != stream->plain.size())) state.SkipWithError("wrong");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(stream->plain.size()));
    if (packs)
      state.counters["ratio"] =
          static_cast<double>(stream->plain.size()) / static_cast<double>(size);
  });
}

template <class Engine>
std::string packed(const std::string& plain) {
  Engine engine;
  LogNull log;
  DataBuffer out;
  engine.compressBuffer(asBytes(plain), out, log, nullptr);
  return std::string(out.text());
}

template <class Engine>
std::size_t pack(const Stream& stream) {
  Engine engine;
  LogNull log;
  DataBuffer out;
  return engine.compressBuffer(asBytes(stream.plain), out, log, nullptr) ? out.getSize() : 0;
}

template <class Engine>
std::size_t unpack(const Stream& stream) {
  Engine engine;
  LogNull log;
  DataBuffer out;
  return engine.decompressBuffer(asBytes(stream.packed), out, log, nullptr) ? out.getSize() : 0;
}

#ifdef HAVE_BZIP2
std::string packedByPeer(const std::string& plain) {
  std::string out(plain.size() + plain.size() / 50 + 1000, '\0');
  auto size = static_cast<unsigned>(out.size());
  std::string in = plain;
  const int status = BZ2_bzBuffToBuffCompress(out.data(), &size, in.data(),
                                              static_cast<unsigned>(in.size()), 9, 0, 0);
  out.resize(status == BZ_OK ? size : 0);
  return out;
}

std::size_t unpackByPeer(const Stream& stream) {
  std::string out(stream.plain.size(), '\0');
  std::string in = stream.packed;
  auto size = static_cast<unsigned>(out.size());
  const int status = BZ2_bzBuffToBuffDecompress(out.data(), &size, in.data(),
                                                static_cast<unsigned>(in.size()), 0, 0);
  return status == BZ_OK ? size : 0;
}
#endif

void addSample(const std::string& kind, const std::string& plain) {
  const auto stream = std::make_shared<Stream>();
  stream->plain = plain;
#ifdef HAVE_BZIP2
  stream->packed = packedByPeer(plain);
#else
  stream->packed = packed<Bzip2Engine>(plain);
#endif
  add("bzip2_compress/" + kind + "/zantrel", stream, pack<Bzip2Engine>, true);
  add("bzip2_decompress/" + kind + "/zantrel", stream, unpack<Bzip2Engine>, false);
#ifdef HAVE_BZIP2
  add(
      "bzip2_compress/" + kind + "/libbz2", stream,
      [](const Stream& s) { return packedByPeer(s.plain).size(); }, true);
  add("bzip2_decompress/" + kind + "/libbz2", stream, unpackByPeer, false);
#endif
  const auto lzw = std::make_shared<Stream>();
  lzw->plain = plain;
  lzw->packed = packed<LzwEngine>(plain);
  add("lzw_compress/" + kind + "/zantrel", lzw, pack<LzwEngine>, true);
  add("lzw_decompress/" + kind + "/zantrel", lzw, unpack<LzwEngine>, false);
}

// Generated rather than files repeated to the size, which the peer's sort takes badly.
const bool registered = [] {
  namespace samples = bench::samples;
  const std::pair<const char*, std::string (*)(samples::Random&)> kinds[] = {
      {"text", samples::prose},
      {"source", samples::code},
      {"xml", samples::record},
      {"binary", samples::fields},
      {"noise", samples::noise}};
  for (const auto& [name, piece] : kinds) {
    samples::Random random(5);
    std::string plain;
    while (plain.size() < kBytes) plain += piece(random);
    plain.resize(kBytes);
    addSample(name, plain);
  }
  std::string periodic;
  while (periodic.size() < kBytes) periodic += "a repetition without end, ";
  addSample("repetition", periodic.substr(0, kBytes));
  return true;
}();

}  // namespace
