// The outline and the folds of a document, beside the runtime's bare cursor walking the same query
// over the same tree; and how soon the reading of a large one is given up.

#include "VelmarParser/Structure/Structure.h"

#include "VelmarPlatform/Concurrency/Cancellation.h"
#include "bench/Pair.h"
#include "bench/VelmarParser/JavaScriptDocument.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <pthread.h>
#include <thread>
#include <time.h>
#include <vector>

namespace velmar {

namespace {

using std::chrono::steady_clock;

void walkBare(bench::State& state) {
  const Parse& document = javaScriptDocument(state.size());
  const auto queries = javaScript().structureQuerySet();
  for (auto _ : state) {
    TSQueryCursor* const cursor = ts_query_cursor_new();
    ts_query_cursor_exec(cursor, queries->query()->base(), document.rootLayer().root()->base());
    TSQueryMatch match;
    while (ts_query_cursor_next_match(cursor, &match))
      benchmark::DoNotOptimize(match.captures);
    ts_query_cursor_delete(cursor);
  }
}

void readStructure(bench::State& state) {
  const Parse& document = javaScriptDocument(state.size());
  precondition(!parseStructure(document.rootLayer()).symbols.empty(), "There is an outline.");
  for (auto _ : state)
    benchmark::DoNotOptimize(parseStructure(document.rootLayer()));
}

VELMAR_PAIR("structure/parseStructure", 2.0, walkBare, readStructure, 1'000, 10'000, 100'000);

double millisecondsOf(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// From the call of `cancel` on another thread to the end of `parseStructure`, at moments all
/// through its run; the slowest of them is what a user would wait. On a machine that does other
/// things too, the reading thread's own time says more.
void cancelAnywhere(benchmark::State& state) {
  constexpr std::int64_t lines = 300'000; // 9 MB of UTF-8
  const Parse& document = javaScriptDocument(lines);
  const auto start = steady_clock::now();
  benchmark::DoNotOptimize(parseStructure(document.rootLayer()));
  const auto whole = steady_clock::now() - start;

  clockid_t reading{};
  pthread_getcpuclockid(pthread_self(), &reading);
  std::vector<double> waits;
  std::vector<double> works;
  int moment = 0;
  constexpr int moments = 40;
  for (auto _ : state) {
    const auto delay = whole * (moment++ % moments) / moments;
    const CancellationToken token;
    steady_clock::time_point cancelled;
    double worked = 0;
    std::atomic<bool> runs = false;
    std::jthread canceller([&] {
      runs.wait(false);
      std::this_thread::sleep_for(delay);
      cancelled = steady_clock::now();
      worked = millisecondsOf(reading);
      token.cancel();
    });
    runs = true;
    runs.notify_one();
    bool isWhole = true;
    try {
      benchmark::DoNotOptimize(parseStructure(document.rootLayer(), token));
    } catch (const CancellationError&) {
      isWhole = false;
    }
    const auto ended = steady_clock::now();
    const double workedInAll = millisecondsOf(reading);
    canceller.join();
    if (!isWhole) {
      waits.push_back(std::chrono::duration<double, std::milli>(ended - cancelled).count());
      works.push_back(workedInAll - worked);
    }
    state.SetIterationTime(waits.empty() ? 0 : waits.back() / 1000);
  }
  std::ranges::sort(waits);
  if (waits.empty())
    return;
  state.counters["uncancelled ms"] = std::chrono::duration<double, std::milli>(whole).count();
  state.counters["median ms"] = waits[waits.size() / 2];
  state.counters["slowest ms"] = waits.back();
  state.counters["slowest work ms"] = std::ranges::max(works);
}
BENCHMARK(cancelAnywhere)->Name("structure/cancel/9MB")->UseManualTime()->Iterations(40);

} // namespace

} // namespace velmar
