// Inflate beside zlib, libdeflate and ISA-L: raw streams of zlib's level 6 (stored blocks without
// it), in one piece and through pieces of 64 KB on both sides. Bytes per second are of the output.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
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

#include "compress/inflate_state2.h"
#include "compression_samples.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

constexpr std::size_t kPiece = 65536;

struct Stream {
  std::vector<std::uint8_t> packed;
  std::vector<std::uint8_t> plain;
};

std::vector<std::uint8_t> deflated(const std::vector<std::uint8_t>& plain) {
  std::vector<std::uint8_t> packed;
#ifdef HAVE_ZLIB
  z_stream z{};
  deflateInit2(&z, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
  packed.resize(deflateBound(&z, plain.size()));
  z.next_in = const_cast<Bytef*>(plain.data());
  z.avail_in = static_cast<uInt>(plain.size());
  z.next_out = packed.data();
  z.avail_out = static_cast<uInt>(packed.size());
  deflate(&z, Z_FINISH);
  packed.resize(z.total_out);
  deflateEnd(&z);
#else
  for (std::size_t at = 0; at < plain.size(); at += 65535) {
    const std::size_t count = std::min<std::size_t>(65535, plain.size() - at);
    packed.push_back(at + count == plain.size());
    for (const std::size_t word : {count, ~count}) {
      packed.push_back(static_cast<std::uint8_t>(word));
      packed.push_back(static_cast<std::uint8_t>(word >> 8));
    }
    packed.insert(packed.end(), plain.begin() + static_cast<std::ptrdiff_t>(at),
                  plain.begin() + static_cast<std::ptrdiff_t>(at + count));
  }
#endif
  return packed;
}

/// Expands the stream and answers how many bytes came out.
using Run = std::function<std::size_t(const Stream&)>;

struct Implementation {
  const char* name;
  Run run;
  CpuFeatures features = detectCpuFeatures();
};

void add(const std::string& operation, const std::shared_ptr<Stream>& stream,
         const std::vector<Implementation>& implementations) {
  for (const Implementation& implementation : implementations) {
    benchmark::RegisterBenchmark(
        (operation + "/" + implementation.name).c_str(), [=](benchmark::State& state) {
          const ScopedCpuFeatures scope(implementation.features);
          for (auto _ : state) {
            if (implementation.run(*stream) != stream->plain.size()) state.SkipWithError("wrong");
          }
          state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                  static_cast<std::int64_t>(stream->plain.size()));
        });
  }
}

std::vector<Implementation> withPaths(const Run& ours, std::vector<Implementation> peers) {
  std::vector<Implementation> list = {{"zantrel", ours}, {"zantrel_portable", ours, CpuFeatures{}}};
  list.insert(list.end(), peers.begin(), peers.end());
  return list;
}

Run oursWhole() {
  const auto state = std::make_shared<InflateState2>();
  const auto out = std::make_shared<DataBuffer>();
  return [=](const Stream& stream) -> std::size_t {
    out->clear();
    ByteSpan in(stream.packed);
    state->inflateAll(in, *out, 0);
    return out->getSize();
  };
}

Run oursInPieces() {
  const auto state = std::make_shared<InflateState2>();
  const auto out = std::make_shared<std::vector<std::uint8_t>>(kPiece);
  return [=](const Stream& stream) {
    state->reset();
    ByteSpan left(stream.packed);
    ByteSpan piece;
    std::size_t total = 0;
    auto status = InflateState2::Status::more;
    while (status == InflateState2::Status::more && !(piece.empty() && left.empty())) {
      if (piece.empty()) {
        piece = left.first(std::min(kPiece, left.size()));
        left = left.subspan(piece.size());
      }
      std::size_t produced = 0;
      status = state->run(piece, *out, produced);
      total += produced;
    }
    return total;
  };
}

#ifdef HAVE_ZLIB
Run zlib(std::size_t inStep, std::size_t outStep) {
  const std::shared_ptr<z_stream> z(new z_stream{}, [](z_stream* s) {
    inflateEnd(s);
    delete s;
  });
  inflateInit2(z.get(), -15);
  const auto out = std::make_shared<std::vector<std::uint8_t>>();
  return [=](const Stream& stream) {
    out->resize(std::min(outStep, stream.plain.size()));
    inflateReset(z.get());
    std::size_t fed = 0;
    int status = Z_OK;
    while (status == Z_OK) {
      if (z->avail_in == 0) {
        const std::size_t count = std::min(inStep, stream.packed.size() - fed);
        z->next_in = const_cast<Bytef*>(stream.packed.data() + fed);
        z->avail_in = static_cast<uInt>(count);
        fed += count;
      }
      z->next_out = out->data();
      z->avail_out = static_cast<uInt>(out->size());
      status = ::inflate(z.get(), Z_NO_FLUSH);
    }
    return static_cast<std::size_t>(z->total_out);
  };
}
#endif

#ifdef HAVE_LIBDEFLATE
Run libdeflate() {
  const std::shared_ptr<libdeflate_decompressor> state(libdeflate_alloc_decompressor(),
                                                       libdeflate_free_decompressor);
  const auto out = std::make_shared<std::vector<std::uint8_t>>();
  return [=](const Stream& stream) {
    out->resize(stream.plain.size());
    std::size_t produced = 0;
    libdeflate_deflate_decompress(state.get(), stream.packed.data(), stream.packed.size(),
                                  out->data(), out->size(), &produced);
    return produced;
  };
}
#endif

#ifdef HAVE_ISAL
Run isal(std::size_t inStep, std::size_t outStep) {
  const auto state = std::make_shared<inflate_state>();
  const auto out = std::make_shared<std::vector<std::uint8_t>>();
  return [=](const Stream& stream) {
    out->resize(std::min(outStep, stream.plain.size()));
    isal_inflate_init(state.get());
    std::size_t fed = 0;
    while (state->block_state != ISAL_BLOCK_FINISH) {
      if (state->avail_in == 0) {
        const std::size_t count = std::min(inStep, stream.packed.size() - fed);
        state->next_in = const_cast<std::uint8_t*>(stream.packed.data() + fed);
        state->avail_in = static_cast<std::uint32_t>(count);
        fed += count;
      }
      state->next_out = out->data();
      state->avail_out = static_cast<std::uint32_t>(out->size());
      if (isal_inflate(state.get()) != ISAL_DECOMP_OK) break;
    }
    return static_cast<std::size_t>(state->total_out);
  };
}
#endif

void addSizes(const char* label, std::size_t size) {
  [[maybe_unused]] constexpr std::size_t kWhole = ~std::size_t{0};
  for (bench::Sample& sample : bench::compressionSamples(size)) {
    const auto stream = std::make_shared<Stream>();
    stream->packed = deflated(sample.bytes);
    stream->plain = std::move(sample.bytes);
    std::vector<Implementation> whole;
    std::vector<Implementation> pieces;
#ifdef HAVE_ZLIB
    whole.push_back({"zlib", zlib(kWhole, kWhole)});
    pieces.push_back({"zlib", zlib(kPiece, kPiece)});
#endif
#ifdef HAVE_LIBDEFLATE
    whole.push_back({"libdeflate", libdeflate()});
#endif
#ifdef HAVE_ISAL
    whole.push_back({"isal", isal(kWhole, kWhole)});
    pieces.push_back({"isal", isal(kPiece, kPiece)});
#endif
    add("inflate/" + sample.name + "/" + label, stream, withPaths(oursWhole(), whole));
    if (size > kPiece)
      add("inflate_stream/" + sample.name + "/" + label, stream, withPaths(oursInPieces(), pieces));
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
