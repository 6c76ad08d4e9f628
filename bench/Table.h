// How measurements are judged and written: one line for each pair, in columns that fit whatever is
// printed later.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::bench {

/// What was measured of one pair: medians in nanoseconds, and instructions, each for one iteration.
struct PairResult {
  std::string name;
  double bound = 0; ///< 0 promises nothing.
  double floorTime = 0;
  double oursTime = 0;
  std::optional<double> floorInstructions =
      std::nullopt; ///< Absent where nothing could count them.
  std::optional<double> oursInstructions = std::nullopt;
};

/// Of a plain benchmark. Rates are absent where the benchmark gave none.
struct PlainResult {
  std::string name;
  double time = 0; ///< Nanoseconds for one iteration.
  std::optional<double> bytesPerSecond = std::nullopt;
  std::optional<double> itemsPerSecond = std::nullopt;
  std::string complexity; ///< Such as "3.1 ns · N log N"; empty if it wasn't asked for.
  std::map<std::string, double> counters = {}; ///< What else it told, by names with their units.
};

/// How long single steps took, in nanoseconds, and what our share of the floor is to be at most; a
/// goal of 0 is none.
struct Latency {
  double floor = 0;
  double ours = 0;
  double goal = 0;
};

/// Of many such steps.
struct LatencyResult {
  std::string name;
  Latency half;    ///< Half of all are as fast or faster.
  Latency slowest; ///< As slow as the fastest of the slowest hundredth.
};

/// Instructions of ours for each of the floor's; absent if they weren't counted or the floor has
/// none.
[[nodiscard]] std::optional<double> instructionRatio(const PairResult& result);
/// Whether the pair breaks its promise, which only instructions can show.
[[nodiscard]] bool isOverBound(const PairResult& result);

/// The middle one, or the mean of the two middle ones. There must be one at least.
[[nodiscard]] double median(std::vector<double> values);

/// Three digits and a unit: "1.23 µs".
[[nodiscard]] std::string timeText(double nanoseconds);
/// Three digits with a decimal prefix: "20.1 M".
[[nodiscard]] std::string quantityText(double value);

/// Lines without their line break.
[[nodiscard]] std::string pairHeading();
[[nodiscard]] std::string lineFor(const PairResult& result);
[[nodiscard]] std::string plainHeading();
[[nodiscard]] std::string lineFor(const PlainResult& result);
[[nodiscard]] std::string latencyHeading();
/// A goal that is missed is marked "!".
[[nodiscard]] std::string lineFor(const LatencyResult& result);
/// Of the table of keystrokes: what was typed in, which part of the keystrokes the line tells of,
/// and a cell for each column.
[[nodiscard]] std::string keystrokeLine(std::string_view name, std::string_view which,
                                        std::span<const std::string> cells);

} // namespace velmar::bench
