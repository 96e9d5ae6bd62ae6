// What the public classes cost on top of the engines: a whole life of a component with an empty
// method call and its log, single calls, and conversions into a reused buffer (the facade column of
// the engines' benchmarks).

#include <benchmark/benchmark.h>
#include <zantrel/zantrel.h>

#include <string>

namespace {

using Zantrel::Bytes;
using Zantrel::Charset;

void createUseAndReadTheLog(benchmark::State& state) {
  for (auto _ : state) {
    Charset charset;
    benchmark::DoNotOptimize(charset.CharsetToCodePage("utf-8"));
    const std::string log = charset.get_LastErrorText();
    benchmark::DoNotOptimize(log.data());
  }
}
BENCHMARK(createUseAndReadTheLog)->Name("create_call_read_log/facade");

void callOnly(benchmark::State& state) {
  Charset charset;
  for (auto _ : state) benchmark::DoNotOptimize(charset.CharsetToCodePage("utf-8"));
}
BENCHMARK(callOnly)->Name("empty_call/facade");

void readAndWriteAProperty(benchmark::State& state) {
  Charset charset;
  for (auto _ : state) {
    charset.put_ToCharset("windows-1252");
    benchmark::DoNotOptimize(charset.get_ErrorAction());
  }
}
BENCHMARK(readAndWriteAProperty)->Name("property_put_and_get/facade");

void convert(benchmark::State& state, const char* from, const char* to, std::string unit) {
  const auto size = static_cast<std::size_t>(state.range(0));
  std::string text;
  while (text.size() + unit.size() <= size) text += unit;
  Charset charset;
  charset.put_FromCharset(from);
  charset.put_ToCharset(to);
  Bytes out;
  for (auto _ : state) {
    if (!charset.ConvertData(Zantrel::bytesOf(text), out)) {
      state.SkipWithError(charset.get_LastErrorText().c_str());
      return;
    }
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// Mostly ASCII, as text of the West is, and text that is not.
const std::string kWestern =
    "Ein gro\xDF"
    "es Gesch\xE4"
    "ft in der Stadt, sagte er. ";
const std::string kMixedUtf8 =
    "Price: 20 \xE2\x82\xAC, \xD0\xBC\xD0\xB8\xD1\x80 \xE6\x97\xA5\xE6\x9C\xAC. ";

void convertWestern(benchmark::State& state) {
  convert(state, "windows-1252", "utf-8", kWestern);
}
BENCHMARK(convertWestern)->Name("windows-1252_to_utf-8/1K/facade")->Arg(1 << 10);
BENCHMARK(convertWestern)->Name("windows-1252_to_utf-8/64K/facade")->Arg(64 << 10);
BENCHMARK(convertWestern)->Name("windows-1252_to_utf-8/16M/facade")->Arg(16 << 20);

void convertMixed(benchmark::State& state) {
  convert(state, "utf-8", "utf-16", kMixedUtf8);
}
BENCHMARK(convertMixed)->Name("utf-8_to_utf-16/1K/facade")->Arg(1 << 10);
BENCHMARK(convertMixed)->Name("utf-8_to_utf-16/64K/facade")->Arg(64 << 10);
BENCHMARK(convertMixed)->Name("utf-8_to_utf-16/16M/facade")->Arg(16 << 20);

}  // namespace
