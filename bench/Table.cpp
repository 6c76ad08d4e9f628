#include "bench/Table.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>
#include <utility>

namespace velmar::bench {

namespace {

constexpr std::size_t nameWidth = 46;
constexpr std::size_t timeWidth = 12;
constexpr std::size_t ratioWidth = 14;
constexpr std::size_t latencyNameWidth = 36;
constexpr std::size_t goalWidth = 8;

/// The columns that `text` takes on a terminal; all that we print are single ones.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

std::string padding(std::string_view text, std::size_t width) {
  return std::string(width - std::min(width, widthOf(text)), ' ');
}

std::string left(std::string_view text, std::size_t width) {
  return std::string(text) + padding(text, width);
}

std::string right(std::string_view text, std::size_t width) {
  return padding(text, width) + std::string(text);
}

std::string fixed(double value, int decimals) {
  std::array<char, 64> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
  return std::string(buffer.data(), static_cast<std::size_t>(std::clamp(length, 0, 63)));
}

std::string threeDigits(double value) {
  return fixed(value, value < 9.995 ? 2 : value < 99.95 ? 1 : 0);
}

std::string ratioText(std::optional<double> ratio) {
  return ratio ? fixed(*ratio, 2) : "-";
}

std::optional<double> quotient(double dividend, double divisor) {
  return divisor > 0 ? std::optional(dividend / divisor) : std::nullopt;
}

using Scale = std::pair<double, std::string_view>;

/// `value` in the first of `scales` in which it needs no more than three digits before the point,
/// or in the last.
std::string scaled(double value, std::span<const Scale> scales) {
  for (const auto& [factor, unit] : scales) {
    if (value / factor < 999.5 || factor == scales.back().first)
      return threeDigits(value / factor) + std::string(unit);
  }
  return {};
}

} // namespace

std::optional<double> instructionRatio(const PairResult& result) {
  if (!result.floorInstructions || !result.oursInstructions)
    return std::nullopt;
  return quotient(*result.oursInstructions, *result.floorInstructions);
}

bool isOverBound(const PairResult& result) {
  return result.bound > 0 && instructionRatio(result).value_or(0) > result.bound;
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string timeText(double nanoseconds) {
  static constexpr std::array<Scale, 4> scales{
      {{1, " ns"}, {1e3, " µs"}, {1e6, " ms"}, {1e9, " s"}}};
  return scaled(nanoseconds, scales);
}

std::string quantityText(double value) {
  static constexpr std::array<Scale, 4> scales{{{1, " "}, {1e3, " k"}, {1e6, " M"}, {1e9, " G"}}};
  return scaled(value, scales);
}

std::string pairHeading() {
  return left("pair", nameWidth) + right("floor", timeWidth) + right("ours", timeWidth) +
         right("time", ratioWidth - 4) + right("instructions", ratioWidth) +
         right("bound", ratioWidth - 4);
}

std::string lineFor(const PairResult& result) {
  return left(result.name, nameWidth) + right(timeText(result.floorTime), timeWidth) +
         right(timeText(result.oursTime), timeWidth) +
         right(ratioText(quotient(result.oursTime, result.floorTime)), ratioWidth - 4) +
         right(ratioText(instructionRatio(result)), ratioWidth) +
         right(result.bound > 0 ? fixed(result.bound, 2) : "-", ratioWidth - 4) +
         (isOverBound(result) ? "  OVER" : "");
}

std::string plainHeading() {
  return left("benchmark", nameWidth) + right("time", timeWidth) + right("bytes/s", timeWidth) +
         right("items/s", timeWidth) + "  complexity";
}

std::string lineFor(const PlainResult& result) {
  const auto rate = [](std::optional<double> value) { return value ? quantityText(*value) : "-"; };
  std::string line = left(result.name, nameWidth) + right(timeText(result.time), timeWidth) +
                     right(rate(result.bytesPerSecond), timeWidth) +
                     right(rate(result.itemsPerSecond), timeWidth) +
                     (result.complexity.empty() ? "" : "  " + result.complexity);
  std::string_view separator = "  ";
  for (const auto& [name, value] : result.counters) {
    line += std::string(separator) + name + ' ' + threeDigits(value);
    separator = ", ";
  }
  return line;
}

std::string latencyHeading() {
  std::string line = left("keystroke beside the floor", latencyNameWidth);
  for (const std::string_view which : {"p50", "p99"})
    line += right("floor " + std::string(which), timeWidth) +
            right("ours " + std::string(which), timeWidth) + right("ratio", goalWidth) +
            right("goal", goalWidth);
  return line;
}

std::string lineFor(const LatencyResult& result) {
  std::string line = left(result.name, latencyNameWidth);
  for (const Latency& latency : {result.half, result.slowest}) {
    const std::optional<double> ratio = quotient(latency.ours, latency.floor);
    const bool isMissed = latency.goal > 0 && ratio.value_or(0) > latency.goal;
    line +=
        right(timeText(latency.floor), timeWidth) + right(timeText(latency.ours), timeWidth) +
        right(ratioText(ratio), goalWidth) +
        right(latency.goal > 0 ? (isMissed ? "! " : "") + fixed(latency.goal, 2) : "-", goalWidth);
  }
  return line;
}

std::string keystrokeLine(std::string_view name, std::string_view which,
                          std::span<const std::string> cells) {
  std::string line = left(name, 24) + right(which, 4);
  for (const std::string& cell : cells)
    line += right(cell, timeWidth);
  return line;
}

} // namespace velmar::bench
