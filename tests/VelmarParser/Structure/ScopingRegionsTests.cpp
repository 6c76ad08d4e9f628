#include "VelmarParser/Structure/ScopingRegions.h"

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarPlatform/Concurrency/Cancellation.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <sstream>

namespace velmar {
namespace {

using Candidate = ScopingCandidate;
using Span = ScopingCandidate::PartialRange;

struct Mark {
  using Value = std::string;
  static constexpr std::string_view name = "mark";
};
struct Number {
  using Value = int;
  static constexpr std::string_view name = "number";
};

struct OtherType {
  using Value = std::string;
  static constexpr std::string_view name = Number::name;
};

std::string shown(const std::vector<ScopingRegion>& regions) {
  std::ostringstream stream;
  for (const ScopingRegion& region : regions) {
    stream << (stream.view().empty() ? "" : " ") << region.range.lowerBound << '-'
           << region.range.upperBound << (region.isIncomplete ? " incomplete" : "");
    if (const auto* const mark = region.attributes.valueFor<Mark>())
      stream << *mark;
  }
  return stream.str();
}

struct TextOf : DocumentText {
  explicit TextOf(std::u16string_view contents) { replaceSubrange({0, 0}, contents); }
};

Candidate whole(std::int64_t lower, std::int64_t upper, std::int64_t level = 0) {
  return {.span = Span::whole({lower, upper}), .level = level};
}
Candidate start(std::int64_t offset, std::optional<std::string> group = {},
                std::int64_t level = 0) {
  return {.span = Span::startingAt(offset), .level = level, .group = std::move(group)};
}
Candidate end(std::int64_t offset, std::optional<std::string> group = {}, std::int64_t level = 0) {
  return {.span = Span::endingAt(offset), .level = level, .group = std::move(group)};
}
Candidate extended(std::int64_t offset, std::int64_t level = 0) {
  return {.span = Span::startingAt(offset), .level = level, .isExtended = true};
}
Candidate byLine(Candidate candidate) {
  candidate.byLine = true;
  return candidate;
}
Candidate marked(Candidate candidate, std::string mark) {
  candidate.attributes.set<Mark>(std::move(mark));
  return candidate;
}

struct PairingCase {
  const char* name;
  std::u16string text;
  std::vector<Candidate> candidates;
  const char* regions;
  bool enforceMultiline = false;
};
class ScopingPairing : public ::testing::TestWithParam<PairingCase> {};

TEST_P(ScopingPairing, GivesTheRegions) {
  EXPECT_EQ(shown(scopingRegionsFor(TextOf(GetParam().text), GetParam().candidates,
                                    {.enforceMultiline = GetParam().enforceMultiline})),
            GetParam().regions);
}

const std::u16string tenUnits = u"0123456789";
// Lines at 0, 8, 12, 14, 16.
const std::u16string block = u"f() { a\n  b\nc\n}\n";
// Lines at 0, 4, 8, 9, 13, 17.
const std::u16string headings = u"# a\nabc\n\n# b\nabc\n# c\n";

INSTANTIATE_TEST_SUITE_P(
    Cases, ScopingPairing,
    ::testing::Values(
        PairingCase{"StartAndEndPair", tenUnits, {end(7), start(2)}, "2-7"},
        PairingCase{"TheSecondOfTwoStartsWins", tenUnits, {start(2), start(4), end(7)}, "4-7"},
        PairingCase{"AnEndClosesOneStart", tenUnits, {start(2), end(4), end(7)}, "2-4"},
        PairingCase{"AnEndComesBeforeAStartAtItsPlace",
                    tenUnits,
                    {start(2), start(5), end(5), end(8)},
                    "2-5 5-8"},
        PairingCase{"AnEndWithoutAStartIsNothing", tenUnits, {end(3), start(4)}, ""},
        PairingCase{"NothingOfNoLength", tenUnits, {start(3), end(3)}, ""},
        PairingCase{"LongerOnesFirst", tenUnits, {whole(2, 4), whole(2, 8), whole(0, 1)},
                    "0-1 2-8 2-4"},
        PairingCase{"GroupsPairEachForItself",
                    tenUnits,
                    {start(0, "a"), start(1, "b"), end(5, "a"), end(6, "b"), start(7, "c")},
                    "0-5 1-6"},
        PairingCase{"GroupsNest",
                    tenUnits,
                    {start(0, "a"), start(1, "a"), end(5, "a"), end(6, "a")},
                    "0-6 1-5"},
        PairingCase{"AnEndOfALevelPassesOverOthers",
                    tenUnits,
                    {start(0, "a", 2), start(1, "a", 3), end(5, "a", 2), end(6, "a", 2)},
                    "0-5"},
        PairingCase{"AnEndWithoutALevelTakesTheLastStart",
                    tenUnits,
                    {start(0, "a", 2), start(1, "a", 3), end(5, "a"), end(6, "a", 2)},
                    "0-6 1-5"},
        PairingCase{"TheStartsAttributesWin",
                    tenUnits,
                    {marked(start(0), "s"), marked(end(5), "e"), start(6), marked(end(8), "e")},
                    "0-5s 6-8e"},
        PairingCase{"ByLineLeavesTheEdgesInSight", block, {byLine(start(5)), end(14)}, "7-13"},
        PairingCase{"ByLineOfTheEndCountsToo", block, {start(5), byLine(end(14))}, "7-13"},
        PairingCase{"ByLineTakesALastLineThatEndsThere", block, {byLine(start(5)), end(15)}, "7-15"},
        PairingCase{"ByLineInOneLineIsNothing", block, {byLine(start(1)), end(5)}, ""},
        PairingCase{"MoreThanOneLine", block, {start(5), end(7), start(9), end(12)}, "9-12", true},
        PairingCase{"ExtendedInTheOpenRunsToTheEnd", tenUnits, {extended(3)}, "3-10"},
        PairingCase{"ExtendedEndsWithWhatIsAround",
                    tenUnits,
                    {whole(1, 8), extended(3), extended(5), whole(8, 9)},
                    "1-8 3-8 5-8 8-9"},
        PairingCase{"HeadingsEndBeforeTheNextOfTheirLevel",
                    headings,
                    {extended(0, 1), extended(9, 2), extended(17, 1)},
                    "0-16 9-16 17-21"},
        PairingCase{"DeeperOnesEndNothing",
                    headings,
                    {extended(0, 1), extended(9, 2), extended(17, 2)},
                    "0-21 9-16 17-21"},
        PairingCase{"OneBlankLineIsLeftOut", headings, {extended(0, 1), whole(9, 10, 1)},
                    "0-7 9-10"},
        PairingCase{"AnEndThatIsNoneFallsBackOnWhatIsAround",
                    headings,
                    {whole(0, 21), extended(9, 1), extended(10, 1)},
                    "0-21 9-21 10-21"},
        PairingCase{"ExtendedInAGroup",
                    tenUnits,
                    {[] {
                      Candidate candidate = start(2, "a");
                      candidate.isExtended = true;
                      return candidate;
                    }()},
                    "2-10"}),
    [](const auto& row) { return std::string(row.param.name); });

// The same rules, told plainly: lists that are searched through.
class PlainPairing {
public:
  static std::vector<ScopingRegion> regions(const DocumentText& text,
                                            std::vector<Candidate> candidates) {
    std::list<Candidate> sorted(candidates.begin(), candidates.end());
    sorted.sort([](const Candidate& left, const Candidate& right) {
      const auto key = [](const Candidate& candidate) {
        return std::tuple(candidate.span.range().lowerBound, -candidate.span.range().upperBound,
                          candidate.span.sortPriority());
      };
      return key(left) < key(right);
    });
    std::vector<Candidate> waiting;
    std::list<ScopingRegion> found;
    const auto finish = [&](const Candidate& from, TextRange range, bool isIncomplete) {
      found.push_back({.range = range,
                       .level = from.level,
                       .group = from.span.kind() == Span::Kind::range ? std::nullopt : from.group,
                       .isIncomplete = isIncomplete,
                       .attributes = from.attributes});
    };
    for (const Candidate& candidate : sorted) {
      if (candidate.span.kind() == Span::Kind::range) {
        finish(candidate, candidate.span.range(), false);
      } else if (candidate.span.kind() == Span::Kind::start) {
        if (!candidate.group && !candidate.isExtended)
          std::erase_if(waiting, [](const Candidate& other) { return !other.group; });
        if (!candidate.group && candidate.isExtended)
          finish(candidate, candidate.span.range(), true);
        else
          waiting.push_back(candidate);
      } else {
        const auto match = std::find_if(waiting.rbegin(), waiting.rend(), [&](const auto& other) {
          return other.group == candidate.group &&
                 (!candidate.group || candidate.level == 0 || other.level == candidate.level);
        });
        if (match == waiting.rend())
          continue;
        const TextRange range(match->span.range().lowerBound, candidate.span.range().lowerBound);
        if (!range.isEmpty())
          finish(*match, range, false);
        waiting.erase(std::next(match).base());
      }
    }
    std::list<Candidate> left(waiting.begin(), waiting.end());
    left.sort([](const Candidate& one, const Candidate& two) { return one.group < two.group; });
    for (const Candidate& candidate : left) {
      if (candidate.isExtended)
        finish(candidate, candidate.span.range(), true);
    }
    found.sort([](const ScopingRegion& left, const ScopingRegion& right) {
      return RangeComparator<std::int64_t>()(left.range, right.range);
    });
    return extendedOnes(text, {found.begin(), found.end()});
  }

private:
  static std::vector<ScopingRegion> extendedOnes(const DocumentText& text,
                                                 const std::vector<ScopingRegion>& sorted) {
    std::vector<ScopingRegion> result;
    std::vector<TextRange> around;
    for (auto region = sorted.begin(); region != sorted.end(); ++region) {
      const std::int64_t lower = region->range.lowerBound;
      while (!around.empty() &&
             (lower < around.back().lowerBound || lower >= around.back().upperBound))
        around.pop_back();
      result.push_back(*region);
      around.push_back(region->range);
      if (!region->isIncomplete)
        continue;
      around.pop_back();
      std::int64_t upper = around.empty() ? text.count() : around.back().upperBound;
      const auto next = std::find_if(region + 1, sorted.end(), [&](const ScopingRegion& other) {
        return region->level > 0 && other.level > 0 && other.level <= region->level;
      });
      if (next != sorted.end()) {
        std::int64_t line = text.indexOfLineContaining(next->range.lowerBound) - 1;
        if (line > 0 && text.rangeOfLine(line).length() == 1)
          --line;
        if (line >= 0 && text.rangeOfLine(line).upperBound - 1 > lower)
          upper = text.rangeOfLine(line).upperBound - 1;
      }
      if (lower < upper) {
        result.back().range = {lower, upper};
        result.back().isIncomplete = false;
      } else {
        result.pop_back();
      }
    }
    return result;
  }
};

TEST(ScopingPairingModel, RandomCandidatesPairAsInTheModel) {
  std::mt19937 random(20261122); // NOLINT(cert-msc51-cpp): the same steps every time
  const auto upTo = [&](std::int64_t most) {
    return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(most + 1));
  };
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE(round);
    std::u16string contents;
    while (contents.size() < 40)
      contents += upTo(3) == 0 ? u'\n' : u'x';
    contents += u'\n';
    std::vector<Candidate> candidates;
    for (std::int64_t count = upTo(14); count > 0; --count) {
      const std::int64_t lower = upTo(39);
      Candidate candidate;
      switch (upTo(3)) {
      case 0:
        candidate.span = Span::whole({lower, lower + 1 + upTo(39 - lower)});
        break;
      case 1:
        candidate.span = Span::endingAt(lower);
        break;
      default:
        candidate.span = Span::startingAt(lower);
        candidate.isExtended = upTo(1) == 0;
      }
      candidate.level = upTo(3);
      if (upTo(1) == 0)
        candidate.group = upTo(1) == 0 ? "a" : "b";
      candidate.attributes.set<Number>(static_cast<int>(count));
      candidates.push_back(std::move(candidate));
    }
    const TextOf text(contents);
    const auto expected = PlainPairing::regions(text, candidates);
    const auto actual = scopingRegionsFor(text, candidates);
    ASSERT_EQ(shown(actual), shown(expected));
    ASSERT_THAT(actual, ::testing::UnorderedElementsAreArray(expected));
  }
}

TEST(ScopingPairingModel, ACancelledTokenEndsIt) {
  const CancellationToken token;
  token.cancel();
  const std::vector<Candidate> candidates(5000, whole(0, 5));
  EXPECT_THROW(
      static_cast<void>(scopingRegionsFor(TextOf(tenUnits), candidates, {.cancel = &token})),
      CancellationError);
}

TEST(ScopingAttributes, AreEqualByKeysTypesAndValues) {
  ScopingAttributes one;
  one.set<Number>(1);
  one.set<Mark>("m");
  ScopingAttributes two;
  two.set<Mark>("m");
  EXPECT_NE(one, two);
  two.set<OtherType>("1");
  EXPECT_NE(one, two);
  EXPECT_EQ(two.valueFor<Number>(), nullptr);
  two.set<Number>(2);
  EXPECT_NE(one, two);
  two.set<Number>(1);
  EXPECT_EQ(one, two);
  two.remove<Mark>();
  EXPECT_EQ(two.valueFor<Mark>(), nullptr);
}

struct CandidateCase {
  const char* name;
  const char* query;
  const char* regions;
};
class ScopingQuery : public ::testing::TestWithParam<CandidateCase> {};

TEST_P(ScopingQuery, MarksTheRegions) {
  const ParseConfiguration json = testing::plainLanguage(Grammar::BuiltIn::json);
  Parse document(json);
  document.replaceSubrange({0, 0}, u"[{\"a\": 1,\n\"b\": 2}, 3]\n");
  const auto query = std::make_shared<const Query>(GetParam().query, json.grammar());
  EXPECT_EQ(shown(scopingRegions(document.rootLayer(), query)), GetParam().regions);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ScopingQuery,
    ::testing::Values(
        CandidateCase{"OfANode", "(object) @subtree", "1-17"},
        CandidateCase{"TheLastOfTwoNodes", "(object (pair) @subtree . (pair) @subtree)", "10-16"},
        CandidateCase{"BetweenBrackets", R"((object "{" @start "}" @end))", "2-16"},
        CandidateCase{"WithBrackets", R"((object "{" @start.before "}" @end.after))", "1-17"},
        CandidateCase{"TheNarrowestOfSeveral", R"((object "{" @start . (pair) @start "}" @end))",
                      "8-16"},
        CandidateCase{"ANodeBeforeItsEnds", R"((object "{" @start "}" @end) @subtree)", "1-17"},
        CandidateCase{"NothingFromTheEndToTheStart", R"((object "{" @end "}" @start))", ""},
        CandidateCase{"NothingNamedOtherwise", R"((object) @object)", ""},
        CandidateCase{"ByLine", R"(((array "[" @start "]" @end) (#set! "scope.byLine")))", ""},
        CandidateCase{"OfTwoMatches", R"((object "{" @start) (array "]" @end))", "2-20"},
        CandidateCase{
            "InAGroupWhateverItsValue",
            R"(((object "{" @start) (#set! "scope.group")) ((array "]" @end) (#set! "scope.group" "")))",
            "2-20"},
        CandidateCase{"ALevelThatIsNoNumberIsNone",
                      R"(((object "{" @start) (#set! "scope.group" "g") (#set! "scope.level" "2x"))
                         ((array "]" @end) (#set! "scope.group" "g") (#set! "scope.level" "0")))",
                      "2-20"},
        CandidateCase{"LevelsOfAGroup",
                      R"(((object "{" @start) (#set! "scope.group" "g") (#set! "scope.level" "+2"))
                         ((array "]" @end) (#set! "scope.group" "g") (#set! "scope.level" "1")))",
                      ""},
        CandidateCase{"Extended", R"(((object "{" @start) (#set! "scope.extend")))", "2-22"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
