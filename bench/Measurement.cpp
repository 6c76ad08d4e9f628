#include "bench/Measurement.h"

#include "bench/InstructionCounter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <string_view>
#include <utility>

namespace velmar::bench {

namespace {

using Run = benchmark::BenchmarkReporter::Run;

/// Keeps what Google Benchmark reports and prints nothing but its errors.
class Collector final : public benchmark::BenchmarkReporter {
public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& reported) override {
    for (const Run& run : reported) {
      if (run.error_occurred)
        GetErrorStream() << run.benchmark_name() << ": " << run.error_message << '\n';
      // Medians of the single runs are ours to take; of the aggregates only the complexity is news.
      else if (run.run_type == Run::RT_Iteration || run.report_big_o)
        runs.push_back(run);
    }
  }

  std::vector<Run> runs;
};

/// Nanoseconds for one iteration, of the clock that the benchmark chose.
double nanoseconds(const Run& run) {
  const bool wall =
      run.run_name.time_type == "real_time" || run.run_name.time_type == "manual_time";
  const double time = wall ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
  return time * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
}

void registerSide(const SinglePair& pair, const char* side, const Side& run) {
  auto* registered = benchmark::RegisterBenchmark(side, [&pair, &run](benchmark::State& timed) {
    State state(timed, pair.size);
    run(state);
  });
  if (pair.clock == Clock::wall)
    registered->UseRealTime();
}

double medianOfSide(const std::vector<Run>& runs, std::string_view side) {
  std::vector<double> times;
  for (const Run& run : runs) {
    if (run.run_name.function_name == side)
      times.push_back(nanoseconds(run));
  }
  return times.empty() ? 0 : median(std::move(times));
}

/// How often to run `side` under the counter: a power of ten, so that it rarely changes from day to
/// day, that takes no more than some ten milliseconds. The run that finds it out also warms the
/// caches and binds the symbols.
std::int64_t iterationsToCount(const Side& side, std::int64_t size) {
  using Milliseconds = std::chrono::duration<double, std::milli>;
  const auto start = std::chrono::steady_clock::now();
  State state(nullptr, 1, size);
  side(state);
  const double once = Milliseconds(std::chrono::steady_clock::now() - start).count();
  std::int64_t iterations = 1;
  while (iterations < 1000 && once * static_cast<double>(iterations) < 1)
    iterations *= 10;
  return iterations;
}

std::optional<double> countSide(const Side& side, std::int64_t size, std::int64_t iterations,
                                InstructionCounter& counter) {
  State state(&counter, iterations, size);
  side(state);
  const std::optional<double> total = counter.count();
  return total ? std::optional(*total / static_cast<double>(iterations)) : std::nullopt;
}

std::string complexityName(benchmark::BigO complexity) {
  switch (complexity) {
  case benchmark::o1:
    return "1";
  case benchmark::oN:
    return "N";
  case benchmark::oNSquared:
    return "N²";
  case benchmark::oNCubed:
    return "N³";
  case benchmark::oLogN:
    return "log N";
  case benchmark::oNLogN:
    return "N log N";
  default:
    return "f(N)";
  }
}

std::optional<double> counterNamed(const Run& run, const char* name) {
  const auto found = run.counters.find(name);
  return found == run.counters.end() ? std::nullopt : std::optional<double>(found->second.value);
}

/// The run in the middle stands for its repetitions, with its rates; of other counters the largest
/// value does.
PlainResult plainResult(std::vector<Run> repetitions) {
  std::ranges::sort(repetitions, {}, nanoseconds);
  const Run& middle = repetitions[repetitions.size() / 2];
  std::map<std::string, double> counters;
  for (const Run& run : repetitions) {
    for (const auto& [name, counter] : run.counters)
      counters[name] = std::max(counters[name], counter.value);
  }
  counters.erase("bytes_per_second");
  counters.erase("items_per_second");
  return {.name = middle.run_name.str(),
          .time = nanoseconds(middle),
          .bytesPerSecond = counterNamed(middle, "bytes_per_second"),
          .itemsPerSecond = counterNamed(middle, "items_per_second"),
          .complexity = {},
          .counters = std::move(counters)};
}

} // namespace

void prepareTiming(const TimingOptions& options) {
  std::array<std::string, 4> arguments{
      "bench", "--benchmark_repetitions=" + std::to_string(options.repetitions),
      "--benchmark_min_time=" + std::to_string(options.minimumTime),
      "--benchmark_enable_random_interleaving=true"};
  std::array<char*, 4> pointers{};
  std::ranges::transform(arguments, pointers.begin(),
                         [](std::string& text) { return text.data(); });
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
}

void timePair(const SinglePair& pair, PairResult& result) {
  benchmark::ClearRegisteredBenchmarks();
  registerSide(pair, "floor", pair.floor);
  registerSide(pair, "ours", pair.ours);
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector, ".");
  benchmark::ClearRegisteredBenchmarks();
  result.floorTime = medianOfSide(collector.runs, "floor");
  result.oursTime = medianOfSide(collector.runs, "ours");
}

std::optional<InstructionCounts> countInstructions(const SinglePair& pair,
                                                   InstructionCounter& counter) {
  const std::int64_t iterations = iterationsToCount(pair.floor, pair.size);
  State warmUp(nullptr, 1, pair.size);
  pair.ours(warmUp);
  // Both do equally much, because a text that grows while it is edited costs more with each edit.
  const auto floor = countSide(pair.floor, pair.size, iterations, counter);
  const auto ours = countSide(pair.ours, pair.size, iterations, counter);
  if (!floor || !ours)
    return std::nullopt;
  return InstructionCounts{.floor = *floor, .ours = *ours};
}

std::vector<PlainResult> timePlainBenchmarks(const std::string& filter) {
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector, filter);
  // Runs come in random order. A family is one BENCHMARK(…), its instances are the sizes.
  std::map<std::int64_t, std::map<std::int64_t, std::vector<Run>>> repetitions;
  std::map<std::int64_t, std::string> complexities;
  for (const Run& run : collector.runs) {
    if (run.report_big_o)
      complexities[run.family_index] =
          timeText(nanoseconds(run)) + " · " + complexityName(run.complexity);
    else
      repetitions[run.family_index][run.per_family_instance_index].push_back(run);
  }
  std::vector<PlainResult> results;
  for (const auto& [family, instances] : repetitions) {
    for (const auto& [instance, runs] : instances)
      results.push_back(plainResult(runs));
    results.back().complexity = complexities[family]; // beside the largest
  }
  return results;
}

} // namespace velmar::bench
