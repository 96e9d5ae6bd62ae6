// What the public classes cost on top of the engines: a whole life of a component with an empty
// method call and its log, single calls, and conversions into a reused buffer (the facade column of
// the engines' benchmarks).

#include <benchmark/benchmark.h>
#include <zantrel/zantrel.h>

#include <string>

namespace {

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

}  // namespace
