#include "VelmarCore/Text/Indentation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string>

namespace velmar {

void PrintTo(const Indentation& found, std::ostream* stream) {
  *stream << found.range << " tabs " << found.tabCount << " spaces " << found.spaceCount
          << " effective " << found.effectiveSpaces << " level " << found.level;
}

namespace {

struct IndentationCase {
  const char* name;
  std::string text;
  std::int64_t tabWidth;
  std::optional<std::int64_t> most;
  Indentation expected;
};

void PrintTo(const IndentationCase& row, std::ostream* stream) {
  *stream << row.name;
}

class IndentationOf : public testing::TestWithParam<IndentationCase> {};

TEST_P(IndentationOf, IsMeasured) {
  const auto& row = GetParam();
  EXPECT_EQ(indentationForTabWidth(row.text, row.tabWidth, row.most), row.expected);
  const std::u16string utf16(row.text.begin(), row.text.end()); // the rows are ASCII
  EXPECT_EQ(indentationForTabWidth(utf16, row.tabWidth, row.most), row.expected);
}

constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();

// The expected values: range, tabs, spaces, effective spaces, level.
INSTANTIATE_TEST_SUITE_P(
    Cases, IndentationOf,
    testing::Values(
        IndentationCase{"Empty", "", 4, std::nullopt, {{0, 0}, 0, 0, 0, 0}},
        IndentationCase{"None", "x  ", 4, std::nullopt, {{0, 0}, 0, 0, 0, 0}},
        IndentationCase{"TabThenSpaces", "\t  x", 4, std::nullopt, {{0, 3}, 1, 2, 6, 1}},
        IndentationCase{"OneTab", "\tx", 4, std::nullopt, {{0, 1}, 1, 0, 4, 1}},
        IndentationCase{"SpacesOfOneStep", "    x", 4, std::nullopt, {{0, 4}, 0, 4, 4, 1}},
        IndentationCase{"SpacesOfTwoSteps", "        x", 4, std::nullopt, {{0, 8}, 0, 8, 8, 2}},
        IndentationCase{
            "ATabAddsItsWidthAtAnyColumn", "  \tx", 4, std::nullopt, {{0, 3}, 1, 2, 6, 1}},
        IndentationCase{"OnlyBlanks", " \t", 2, std::nullopt, {{0, 2}, 1, 1, 3, 1}},
        IndentationCase{"StopsAtANewline", "  \n  ", 2, std::nullopt, {{0, 2}, 0, 2, 2, 1}},
        IndentationCase{"WidthOne", " \t ", 1, std::nullopt, {{0, 3}, 1, 2, 3, 3}},
        IndentationCase{"WidthZero", "\t  x", 0, std::nullopt, {{0, 0}, 0, 0, 0, 0}},
        IndentationCase{"WidthNegative", "\t  x", -4, std::nullopt, {{0, 0}, 0, 0, 0, 0}},
        IndentationCase{"AtMostInsideAGroup", "        x", 4, 6, {{0, 6}, 0, 6, 6, 1}},
        IndentationCase{"AtMostAtAGroupsEnd", "        x", 4, 4, {{0, 4}, 0, 4, 4, 1}},
        IndentationCase{"ATabOvershootsAtMost", "\t\t\tx", 4, 5, {{0, 2}, 2, 0, 8, 2}},
        IndentationCase{"AtMostZero", "\tx", 4, 0, {{0, 0}, 0, 0, 0, 0}},
        IndentationCase{"AtMostNegative", " x", 4, -1, {{0, 0}, 0, 0, 0, 0}},
        IndentationCase{"AHugeTabWidth", "\t\t x", huge, std::nullopt, {{0, 3}, 2, 1, huge, 1}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Indentation, ABlankWithACombiningMarkEndsIt) {
  EXPECT_EQ(indentationForTabWidth("  \u0301x", 4).range, TextRange(0, 1));
  EXPECT_EQ(indentationForTabWidth(u"  \u0301x", 4).range, TextRange(0, 1));
  // A mark can't join a tab, which is a control.
  EXPECT_EQ(indentationForTabWidth(u"\t\u0301x", 4).range, TextRange(0, 1));
}

TEST(Indentation, NoBreakSpacesAreText) {
  EXPECT_EQ(indentationForTabWidth(" \u00A0 x", 4).range, TextRange(0, 1));
}

} // namespace
} // namespace velmar
