// Deflate beside zlib, libdeflate and ISA-L, from memory to memory. Bytes per second are of the
// input; `ratio` is input to output. ISA-L has levels of its own: its highest stands beside our 1.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#ifdef HAVE_ZLIB
#include <zlib.h>
#endif
#ifdef HAVE_LIBDEFLATE
#include <libdeflate.h>
#endif
#ifdef HAVE_ISAL
#include <isa-l.h>
#endif

#include "compress/zantrel_deflate.h"
#include "compression_samples.h"
#include "core/log_null.h"

namespace {

using namespace zantrel;
using Bytes = std::vector<std::uint8_t>;

/// Compresses and answers the size of the result, 0 after a failure.
using Run = std::function<std::size_t(const Bytes& in, Bytes& out)>;

Run ours(int level) {
  const auto engine = std::make_shared<ZantrelDeflate>();
  const auto buffer = std::make_shared<DataBuffer>();
  engine->setLevel(level);
  return [=](const Bytes& in, Bytes&) -> std::size_t {
    LogNull log;
    buffer->clear();
    return engine->deflateBuffer(in, *buffer, log) ? buffer->getSize() : 0;
  };
}

#ifdef HAVE_ZLIB
Run zlib(int level) {
  const std::shared_ptr<z_stream> z(new z_stream{}, [](z_stream* s) {
    deflateEnd(s);
    delete s;
  });
  deflateInit2(z.get(), level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
  return [=](const Bytes& in, Bytes& out) -> std::size_t {
    deflateReset(z.get());
    z->next_in = const_cast<Bytef*>(in.data());
    z->avail_in = static_cast<uInt>(in.size());
    z->next_out = out.data();
    z->avail_out = static_cast<uInt>(out.size());
    return deflate(z.get(), Z_FINISH) == Z_STREAM_END ? z->total_out : 0;
  };
}
#endif

#ifdef HAVE_LIBDEFLATE
Run libdeflate(int level) {
  const std::shared_ptr<libdeflate_compressor> compressor(libdeflate_alloc_compressor(level),
                                                          libdeflate_free_compressor);
  return [=](const Bytes& in, Bytes& out) {
    return libdeflate_deflate_compress(compressor.get(), in.data(), in.size(), out.data(),
                                       out.size());
  };
}
#endif

#ifdef HAVE_ISAL
Run isal() {
  const auto work = std::make_shared<Bytes>(ISAL_DEF_LVL3_DEFAULT);
  const auto stream = std::make_shared<isal_zstream>();
  return [=](const Bytes& in, Bytes& out) -> std::size_t {
    isal_deflate_init(stream.get());
    stream->level = 3;
    stream->level_buf = work->data();
    stream->level_buf_size = static_cast<std::uint32_t>(work->size());
    stream->end_of_stream = 1;
    stream->flush = NO_FLUSH;
    stream->next_in = const_cast<std::uint8_t*>(in.data());
    stream->avail_in = static_cast<std::uint32_t>(in.size());
    stream->next_out = out.data();
    stream->avail_out = static_cast<std::uint32_t>(out.size());
    return isal_deflate(stream.get()) == COMP_OK ? stream->total_out : 0;
  };
}
#endif

void add(const std::string& name, const std::shared_ptr<bench::Sample>& sample, const Run& run) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    Bytes out(sample->bytes.size() + sample->bytes.size() / 8 + 1000);
    std::size_t size = 0;
    for (auto _ : state) {
      size = run(sample->bytes, out);
      if (size == 0) state.SkipWithError("failed");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(sample->bytes.size()));
    state.counters["ratio"] =
        static_cast<double>(sample->bytes.size()) / static_cast<double>(size == 0 ? 1 : size);
  });
}

void addSizes(const std::string& label, std::size_t size) {
  for (const bench::Sample& each : bench::compressionSamples(size)) {
    const auto sample = std::make_shared<bench::Sample>(each);
    for (const int level : {1, 6, 9}) {
      const std::string name =
          "deflate_" + std::to_string(level) + "/" + sample->name + "/" + label + "/";
      add(name + "zantrel", sample, ours(level));
#ifdef HAVE_LIBDEFLATE
      add(name + "libdeflate", sample, libdeflate(level));
#endif
#ifdef HAVE_ZLIB
      add(name + "zlib", sample, zlib(level));
#endif
#ifdef HAVE_ISAL
      if (level == 1) add(name + "isal", sample, isal());
#endif
    }
  }
}

[[maybe_unused]] const bool kRegistered = [] {
#ifdef M_MMAP_THRESHOLD
  // Memory given back between calls would come anew, page by page, from the kernel.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
  addSizes("8K", 8192);
  addSizes("1M", 1 << 20);
  return true;
}();

}  // namespace
