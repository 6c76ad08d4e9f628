#include "VelmarCore/Text/RegularExpressionSplit.h"

#include "VelmarCore/Text/CharacterClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

namespace {

constexpr std::int64_t unlimited = std::numeric_limits<std::int64_t>::max();

struct SplitCase {
  const char* name;
  const char* text;
  const char* separator;
  SplitOptions options;
  std::vector<std::string_view> parts;
};
class RegularExpressionSplit : public testing::TestWithParam<SplitCase> {};

TEST_P(RegularExpressionSplit, GivesTrimmedParts) {
  const SplitCase& row = GetParam();
  EXPECT_EQ(splitTrimmed(row.text, RegularExpression(row.separator), row.options), row.parts);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RegularExpressionSplit,
    testing::Values(SplitCase{"AtEachMatch", " a ,b;; é ", "[,;]+", {}, {"a", "b", "é"}},
                    SplitCase{
                        "BlankPartsAreDropped", "a,  ,b", ",", {unlimited, false}, {"a", "b"}},
                    SplitCase{"NoMatch", " a b ", ",", {}, {"a b"}},
                    SplitCase{"NothingLeft", " , ", ",", {}, {}},
                    SplitCase{"EmptyText", "", ",", {}, {}},
                    SplitCase{"AtMostOnce", "a,b,c", ",", {1, true}, {"a", "b,c"}},
                    SplitCase{"NotAtAll", "a,b", ",", {0, true}, {"a,b"}},
                    SplitCase{"EmptyPartsDontCount", ",,a,b", ",", {1, true}, {"a", "b"}},
                    SplitCase{"EmptyPartsCount", ",,a,b", ",", {1, false}, {",a,b"}},
                    SplitCase{"EmptyMatches", "ab,c", ",*", {}, {"a", "b", "c"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CharacterClass, ServesAsSeparator) {
  EXPECT_EQ(splitTrimmed("a, b;c", CharacterClass::anyOf(",;")),
            (std::vector<std::string_view>{"a", "b", "c"}));
}

} // namespace

} // namespace velmar
