// Runs benchmarks: the timing is Google Benchmark's, the counting of instructions our own.
#pragma once

#include "bench/Pair.h"
#include "bench/Table.h"

#include <optional>
#include <string>
#include <vector>

namespace velmar::bench {

struct TimingOptions {
  int repetitions = 5;
  double minimumTime = 0.1; ///< Seconds for each repetition of each side.
};

/// Hands the options to Google Benchmark. Call it once, before anything is timed.
void prepareTiming(const TimingOptions& options);

/// Times both sides, their repetitions in random order, and puts the medians into `result`. Forgets
/// the plain benchmarks.
void timePair(const SinglePair& pair, PairResult& result);

/// Instructions for one iteration of each side.
struct InstructionCounts {
  double floor = 0;
  double ours = 0;
};

/// Counts both sides over the same number of iterations; absent if `counter` lost the count.
[[nodiscard]] std::optional<InstructionCounts> countInstructions(const SinglePair& pair,
                                                                 InstructionCounter& counter);

/// Times the plain benchmarks whose name `filter` matches, in the order in which they were
/// registered.
[[nodiscard]] std::vector<PlainResult> timePlainBenchmarks(const std::string& filter);

} // namespace velmar::bench
