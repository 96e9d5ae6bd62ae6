// Cost of the activity log, which is always on: time and memory of an entry, and the whole road of
// a method that does nothing.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "core/string_buffer.h"
#include "core/xstring.h"
#include "frame/component.h"
#include "frame/logger.h"

namespace zantrel {
namespace {

// Asks the allocator what is in use, large blocks included.
std::size_t heapBytes() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

template <class Write>
void entries(benchmark::State& state, Write write) {
  const auto count = static_cast<int>(state.range(0));
  Logger log;
  double bytes = 0;
  for (auto _ : state) {
    const std::size_t before = heapBytes();
    for (int i = 0; i < count; ++i) write(log, i);
    bytes = static_cast<double>(heapBytes() - before) / count;
    log.clearLog();
  }
  state.SetItemsProcessed(state.iterations() * count);
  state.counters["bytes/entry"] = bytes;
}

void infoEntries(benchmark::State& state) {
  entries(state, [](Logger& log, int) { log.logInfo("Detected the charset."); });
}

void dataEntries(benchmark::State& state) {
  entries(state, [](Logger& log, int) { log.logData("contentType", "text/html; charset=utf-8"); });
}

void numberEntries(benchmark::State& state) {
  entries(state, [](Logger& log, int i) { log.logDataLong("numBytes", i); });
}

void contexts(benchmark::State& state) {
  entries(state, [](Logger& log, int i) {
    const LogContext context(log, "SendCommand");
    log.logDataLong("code", i);
  });
}

template <bool (LogBase::*render)(StringBuffer&)>
void rendering(benchmark::State& state) {
  Logger log;
  for (int i = 0; i < static_cast<int>(state.range(0)); ++i)
    log.logData("contentType", "text/html; charset=utf-8");
  StringBuffer out;
  for (auto _ : state) (log.*render)(out);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(out.getSize()));
}

class Empty final : public Component {
 public:
  bool Method() {
    return call("Method", [](MethodCall&) { return true; });
  }
};

void emptyMethod(benchmark::State& state) {
  Empty component;
  for (auto _ : state) benchmark::DoNotOptimize(component.Method());
}

void createCallAndReadTheLog(benchmark::State& state) {
  for (auto _ : state) {
    Empty component;
    component.Method();
    XString text;
    component.get_LastErrorText(text);
    benchmark::DoNotOptimize(text.getUtf8());
  }
}

BENCHMARK(infoEntries)->Arg(10)->Arg(1000)->Arg(100'000);
BENCHMARK(dataEntries)->Arg(10)->Arg(1000)->Arg(100'000);
BENCHMARK(numberEntries)->Arg(1000);
BENCHMARK(contexts)->Arg(1000);
BENCHMARK(rendering<&LogBase::getText>)->Arg(10)->Arg(100'000);
BENCHMARK(rendering<&LogBase::getXml>)->Arg(10)->Arg(100'000);
BENCHMARK(rendering<&LogBase::getHtml>)->Arg(10)->Arg(100'000);
BENCHMARK(emptyMethod);
BENCHMARK(createCallAndReadTheLog);

}  // namespace
}  // namespace zantrel
