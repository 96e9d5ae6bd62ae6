// CRC-32 and Adler-32 beside zlib, libdeflate and ISA-L.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <random>
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

#include "compress/adler32.h"
#include "compress/zip_crc.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

using Run = std::function<std::uint32_t(ByteSpan)>;

struct Implementation {
  const char* name;
  Run run;
  CpuFeatures features = detectCpuFeatures();
};

struct Size {
  const char* name;
  std::size_t bytes;
};
constexpr Size kSizes[] = {
    {"8", 8}, {"64", 64}, {"1K", 1 << 10}, {"64K", 1 << 16}, {"1M", 1 << 20}};

void add(const std::string& operation, const std::vector<Implementation>& implementations) {
  for (const Size& size : kSizes) {
    for (const Implementation& implementation : implementations) {
      const std::string name = operation + "/" + size.name + "/" + implementation.name;
      benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        std::mt19937 random(1);
        std::vector<std::uint8_t> bytes(size.bytes);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
        const ScopedCpuFeatures scope(implementation.features);
        for (auto _ : state) benchmark::DoNotOptimize(implementation.run(bytes));
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                static_cast<std::int64_t>(size.bytes));
      });
    }
  }
}

std::vector<Implementation> withPaths(const Run& ours, std::vector<Implementation> peers) {
  const CpuFeatures all = detectCpuFeatures();
  CpuFeatures avx2 = all;
  avx2.avx512 = avx2.vpclmul = false;
  std::vector<Implementation> list = {
      {"zantrel", ours}, {"zantrel_avx2", ours, avx2}, {"zantrel_portable", ours, CpuFeatures{}}};
  list.insert(list.end(), peers.begin(), peers.end());
  return list;
}

[[maybe_unused]] const bool kRegistered = [] {
  std::vector<Implementation> crc;
  std::vector<Implementation> adler;
#ifdef HAVE_ZLIB
  crc.push_back({"zlib", [](ByteSpan b) {
                   return static_cast<std::uint32_t>(crc32_z(0, b.data(), b.size()));
                 }});
  adler.push_back({"zlib", [](ByteSpan b) {
                     return static_cast<std::uint32_t>(adler32_z(1, b.data(), b.size()));
                   }});
#endif
#ifdef HAVE_LIBDEFLATE
  crc.push_back({"libdeflate", [](ByteSpan b) { return libdeflate_crc32(0, b.data(), b.size()); }});
  adler.push_back(
      {"libdeflate", [](ByteSpan b) { return libdeflate_adler32(1, b.data(), b.size()); }});
#endif
#ifdef HAVE_ISAL
  crc.push_back({"isal", [](ByteSpan b) { return crc32_gzip_refl(0, b.data(), b.size()); }});
  adler.push_back({"isal", [](ByteSpan b) { return isal_adler32(1, b.data(), b.size()); }});
#endif
  add("crc32", withPaths(ZipCRC::getCRC, crc));
  add("adler32", withPaths(Adler32::getAdler, adler));
  return true;
}();

}  // namespace
