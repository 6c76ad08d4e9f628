#include "VelmarCore/Text/TextPosition.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <unordered_set>
#include <utility>

namespace velmar {
namespace {

TEST(TextPosition, DescriptionHasTheZeroBasedNumbers) {
  EXPECT_EQ((TextPosition{3, 14}.description()), "3:14");
  EXPECT_EQ(testing::PrintToString(TextPosition{0, 0}), "0:0");
}

TEST(TextPosition, OrdersByLineThenColumn) {
  EXPECT_LT((TextPosition{1, 9}), (TextPosition{2, 0}));
  EXPECT_LT((TextPosition{2, 3}), (TextPosition{2, 4}));
  EXPECT_EQ((TextPosition{2, 4}), (TextPosition{2, 4}));
}

TEST(TextPosition, HashesTellNearbyPositionsApart) {
  std::unordered_set<std::size_t> hashes;
  for (std::int64_t line = 0; line < 100; ++line)
    for (std::int64_t column = 0; column < 100; ++column)
      hashes.insert(std::hash<TextPosition>()({line, column}));
  EXPECT_EQ(hashes.size(), 10'000U);
}

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

struct ForeignCase {
  const char* name;
  ForeignTextRange foreign;
  Range<TextPosition> expected;
};

void PrintTo(const ForeignCase& row, std::ostream* stream) {
  *stream << row.name;
}

class ForeignRange : public testing::TestWithParam<ForeignCase> {};

TEST_P(ForeignRange, IsTakenAsMeant) {
  EXPECT_EQ(textPositionRangeFrom(GetParam().foreign), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ForeignRange,
    testing::Values(
        ForeignCase{"FromZero",
                    {.startLine = 1, .startColumn = 2, .endLine = 3, .endColumn = 4},
                    {{1, 2}, {3, 4}}},
        ForeignCase{"FromOne",
                    {.startLine = 1,
                     .startColumn = 2,
                     .endLine = 3,
                     .endColumn = 4,
                     .linesStartAtOne = true,
                     .columnsStartAtOne = true},
                    {{0, 1}, {2, 3}}},
        ForeignCase{"OnlyColumnsFromOne",
                    {.startLine = 5, .startColumn = 1, .endColumn = 3, .columnsStartAtOne = true},
                    {{5, 0}, {5, 2}}},
        ForeignCase{"OnlyALine", {.startLine = 7}, {{7, 0}, {7, 0}}},
        ForeignCase{"OnlyALineFromOne",
                    {.startLine = 7, .linesStartAtOne = true, .columnsStartAtOne = true},
                    {{6, 0}, {6, 0}}},
        ForeignCase{"AMissingEndColumnIsTheStartsColumn",
                    {.startLine = 1, .startColumn = 8, .endLine = 2},
                    {{1, 8}, {2, 8}}},
        ForeignCase{"LineZeroWhereLinesStartAtOne",
                    {.startLine = 0, .linesStartAtOne = true, .columnsStartAtOne = true},
                    {{0, 0}, {0, 0}}},
        ForeignCase{"NegativeNumbersAreClamped",
                    {.startLine = -4, .startColumn = -1, .endLine = 2, .endColumn = -9},
                    {{0, 0}, {2, 0}}},
        ForeignCase{"AReversedRangeIsEmptyAtItsStart",
                    {.startLine = 4, .startColumn = 2, .endLine = 3, .endColumn = 9},
                    {{4, 2}, {4, 2}}},
        ForeignCase{"ReversedColumns",
                    {.startLine = 4, .startColumn = 9, .endColumn = 2},
                    {{4, 9}, {4, 9}}},
        ForeignCase{"TheLowestNumbers",
                    {.startLine = lowest,
                     .startColumn = lowest,
                     .endLine = lowest,
                     .endColumn = lowest,
                     .linesStartAtOne = true,
                     .columnsStartAtOne = true},
                    {{0, 0}, {0, 0}}},
        ForeignCase{"TheHighestNumbers",
                    {.startLine = highest, .startColumn = highest},
                    {{highest, highest}, {highest, highest}}}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
