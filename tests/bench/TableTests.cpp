#include "bench/Table.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace velmar::bench {

namespace {

PairResult pairWith(double bound, std::optional<double> floor, std::optional<double> ours) {
  return {.name = "array/find/10",
          .bound = bound,
          .floorTime = 1000,
          .oursTime = 1500,
          .floorInstructions = floor,
          .oursInstructions = ours};
}

struct TextCase {
  double value;
  const char* text;
};

TEST(BenchTable, TimesHaveThreeDigitsAndTheUnitThatFits) {
  for (const auto& [value, text] : {TextCase{0.123, "0.12 ns"},
                                    {9.994, "9.99 ns"},
                                    {9.996, "10.0 ns"},
                                    {999.4, "999 ns"},
                                    {999.6, "1.00 µs"},
                                    {1'234, "1.23 µs"},
                                    {71'200'000, "71.2 ms"},
                                    {5e9, "5.00 s"},
                                    {5e12, "5000 s"}})
    EXPECT_EQ(timeText(value), text) << value;
}

TEST(BenchTable, QuantitiesHaveADecimalPrefix) {
  for (const auto& [value, text] :
       {TextCase{7, "7.00 "}, {20'100'000, "20.1 M"}, {1.94e9, "1.94 G"}, {2.5e12, "2500 G"}})
    EXPECT_EQ(quantityText(value), text) << value;
}

TEST(BenchTable, MedianIsTheMiddleOrTheMeanOfTheMiddleTwo) {
  EXPECT_EQ(median({3}), 3);
  EXPECT_EQ(median({9, 1, 5}), 5);
  EXPECT_EQ(median({8, 1, 4, 100}), 6);
}

TEST(BenchTable, OnlyMoreInstructionsThanTheBoundAllowsAreOver) {
  EXPECT_FALSE(isOverBound(pairWith(1.2, 100, 120)));
  EXPECT_TRUE(isOverBound(pairWith(1.2, 100, 121)));
  EXPECT_FALSE(isOverBound(pairWith(0, 100, 1'000))) << "a bound of zero promises nothing";
  EXPECT_FALSE(isOverBound(pairWith(1.2, std::nullopt, 1'000)))
      << "what wasn't counted can't be judged";
}

TEST(BenchTable, LineShowsTimesRatiosAndTheMark) {
  const std::string over = lineFor(pairWith(1.2, 100, 250));
  EXPECT_TRUE(over.starts_with("array/find/10 ")) << over;
  EXPECT_TRUE(over.ends_with("1.00 µs     1.50 µs      1.50          2.50      1.20  OVER"))
      << over;
  const std::string uncounted = lineFor(pairWith(0, std::nullopt, std::nullopt));
  EXPECT_TRUE(uncounted.ends_with("1.50             -         -")) << uncounted;
}

TEST(BenchTable, LinesAlignWithTheHeading) {
  // The micro sign takes two bytes and one column.
  EXPECT_EQ(lineFor(pairWith(1.2, 100, 110)).size() - 2, pairHeading().size());
}

TEST(BenchTable, LatenciesAboveTheirGoalAreMarked) {
  const LatencyResult result{
      .name = "html/unbalancing", .half = {1'000, 1'200, 1.25}, .slowest = {2'000, 8'000, 2}};
  const std::string line = lineFor(result);
  EXPECT_TRUE(line.starts_with("html/unbalancing ")) << line;
  EXPECT_TRUE(line.find("1.00 µs     1.20 µs    1.20    1.25 ") != line.npos) << line;
  EXPECT_TRUE(line.ends_with("2.00 µs     8.00 µs    4.00  ! 2.00")) << line;
  EXPECT_EQ(line.size() - 4, latencyHeading().size());
  EXPECT_TRUE(lineFor(LatencyResult{.name = "a", .half = {1, 9, 0}, .slowest = {0, 9, 2}})
                  .ends_with("0.00 ns     9.00 ns       -    2.00"));
}

} // namespace

} // namespace velmar::bench
