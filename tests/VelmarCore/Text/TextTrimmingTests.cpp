#include "VelmarCore/Text/TextTrimming.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace velmar {
namespace {

using testing::ElementsAre;

TEST(Trimmed, LeavesNoWhiteSpaceAtTheEnds) {
  EXPECT_EQ(trimmed("  a b\t\r\n"), "a b");
  EXPECT_EQ(trimmed("\u00A0\u3000é\u2028\u0085"), "é");
  EXPECT_EQ(trimmed("a"), "a");
  EXPECT_EQ(trimmed(" \r\n "), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("\u200Ba"), "\u200Ba"); // a zero-width space isn't white space
}

TEST(Trimmed, IsAViewIntoTheText) {
  const std::string text = "  abc ";
  EXPECT_EQ(trimmed(text).data(), text.data() + 2);
}

TEST(TrimmedWhere, TakesOnlyTheRunsAtTheEnds) {
  const auto isX = [](std::string_view character) { return character == "x"; };
  EXPECT_EQ(trimmedWhere("xxaxbx", isX), "axb");
  EXPECT_EQ(trimmedWhere("xx", isX), "");
  EXPECT_EQ(trimmedWhere("ax\u0301", isX), "ax\u0301"); // an x with an accent is another character
}

TEST(TrimmedWhere, SeesWholeCharacters) {
  std::vector<std::string> seen;
  (void)trimmedWhere("🇩🇪\r\na", [&](std::string_view character) {
    seen.emplace_back(character);
    return character != "a";
  });
  EXPECT_THAT(seen, ElementsAre("🇩🇪", "\r\n", "a", "a"));
}

TEST(TrimmedWhere, PassesOnWhatThePredicateThrows) {
  EXPECT_THROW(
      (void)trimmedWhere("a", [](std::string_view) -> bool { throw std::runtime_error("no"); }),
      std::runtime_error);
}

struct SplitCase {
  const char* name;
  std::string text;
  SplitOptions options;
  std::vector<std::string> expected;
};

void PrintTo(const SplitCase& row, std::ostream* stream) {
  *stream << row.name;
}

class SplitTrimmed : public testing::TestWithParam<SplitCase> {};

TEST_P(SplitTrimmed, AtCommas) {
  const auto& row = GetParam();
  const auto byCharacter = splitTrimmed(row.text, ",", row.options);
  EXPECT_THAT(byCharacter, testing::ElementsAreArray(row.expected));
  const auto byPredicate = splitTrimmed(
      row.text, [](std::string_view character) { return character == ","; }, row.options);
  EXPECT_EQ(byPredicate, byCharacter);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SplitTrimmed,
    testing::Values(SplitCase{"Empty", "", {}, {}}, SplitCase{"OnePart", " a ", {}, {"a"}},
                    SplitCase{"PartsAreTrimmed", "a , b\t,\nc", {}, {"a", "b", "c"}},
                    SplitCase{"EmptyPartsGo", ",a,,b,", {}, {"a", "b"}},
                    SplitCase{"BlankPartsGo", "a, ,b", {}, {"a", "b"}},
                    SplitCase{"BlankPartsGoEvenWhereEmptyOnesCount",
                              "a, ,,b",
                              {.omittingEmptySubsequences = false},
                              {"a", "b"}},
                    SplitCase{"NoSplit", " a,b ", {.maxSplits = 0}, {"a,b"}},
                    SplitCase{"OneSplit", "a, b, c", {.maxSplits = 1}, {"a", "b, c"}},
                    SplitCase{"DroppedPartsCostNoSplit", ",,a,b,c", {.maxSplits = 1}, {"a", "b,c"}},
                    SplitCase{"BlankPartsCostASplit", " ,a,b", {.maxSplits = 1}, {"a,b"}},
                    SplitCase{"EmptyPartsCostASplitWhereTheyCount",
                              ",,a,b",
                              {.maxSplits = 2, .omittingEmptySubsequences = false},
                              {"a,b"}},
                    SplitCase{"MoreSplitsThanSeparators", "a,b", {.maxSplits = 9}, {"a", "b"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(SplitTrimmedAtCharacters, ALongSeparatorIsOneCharacter) {
  EXPECT_THAT(splitTrimmed("a\r\nb\nc\r\n", "\r\n"), ElementsAre("a", "b\nc"));
  EXPECT_THAT(splitTrimmed("e\u0301,é,e", "e"), ElementsAre("e\u0301,é,"));
}

TEST(SplitTrimmedDeathTest, MisuseStopsTheProcess) {
  EXPECT_DEATH((void)splitTrimmed("a", ", "), "one character");
  EXPECT_DEATH((void)splitTrimmed("a", ""), "one character");
  EXPECT_DEATH((void)splitTrimmed("a", ",", {.maxSplits = -1}), "fewer than 0");
}

} // namespace
} // namespace velmar
