#include "VelmarCore/Text/RunArray.h"

#include "tests/VelmarCore/Text/RunArrayModel.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace velmar {
namespace {

using Letters = RunArray<char>;
using NeverLetters = RunArray<char, NeverRunComparator<char>>;

static_assert(std::bidirectional_iterator<Letters::Iterator>);
static_assert(std::random_access_iterator<Letters::Runs::Iterator>);

/// Runs of letters as text, such as "a2 b1 a2": a letter and a length each.
template <class Array>
std::string shapeOf(const Array& array) {
  array.checkInvariants();
  std::string shape;
  for (const auto& run : array.runs())
    shape += (shape.empty() ? "" : " ") + (run.value + std::to_string(run.range.length()));
  return shape;
}

/// The reverse of `shapeOf`, for one-digit lengths; neighbours aren't merged.
template <class Array = Letters>
Array arrayOf(std::string_view shape) {
  std::vector<typename Array::Pair> pairs;
  for (std::size_t k = 0; k < shape.size(); k += 3)
    pairs.push_back({shape[k], shape[k + 1] - '0'});
  Array array;
  array.replaceSubrangeWithPairs({0, 0}, pairs);
  return array;
}

// ---- Seams -----------------------------------------------------------------------------------

struct ReplaceCase {
  const char* name;
  std::string before;
  TextRange range;
  char value;
  std::int64_t count;
  std::string after;
};
class RunArrayReplace : public testing::TestWithParam<ReplaceCase> {};
TEST_P(RunArrayReplace, MergesAtTheSeams) {
  Letters array = arrayOf(GetParam().before);
  array.replaceSubrange(GetParam().range, GetParam().value, GetParam().count);
  EXPECT_EQ(shapeOf(array), GetParam().after);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, RunArrayReplace,
    testing::Values(ReplaceCase{"TheSameValueInside", "v5", {2, 3}, 'v', 1, "v5"},
                    ReplaceCase{"AnotherValueInside", "v5", {2, 3}, 'w', 1, "v2 w1 v2"},
                    ReplaceCase{"InsertedInside", "v5", {2, 2}, 'w', 3, "v2 w3 v3"},
                    ReplaceCase{"SameInsertedInside", "v5", {2, 2}, 'v', 3, "v8"},
                    ReplaceCase{"InsertedAtTheFront", "v5", {0, 0}, 'w', 3, "w3 v5"},
                    ReplaceCase{"SameInsertedAtTheFront", "v5", {0, 0}, 'v', 3, "v8"},
                    ReplaceCase{"SameAsInFront", "v2 w2", {2, 2}, 'v', 1, "v3 w2"},
                    ReplaceCase{"SameAsBehind", "v2 w2", {2, 2}, 'w', 1, "v2 w3"},
                    ReplaceCase{"SameAsBoth", "v2 w1 v2", {2, 3}, 'v', 4, "v8"},
                    ReplaceCase{"AcrossSeveral", "a2 b2 c2 d2", {1, 7}, 'x', 1, "a1 x1 d1"},
                    ReplaceCase{"AllOfThem", "a2 b2 c2", {0, 6}, 'x', 2, "x2"},
                    ReplaceCase{"TheFirst", "a2 b2", {0, 2}, 'x', 3, "x3 b2"},
                    ReplaceCase{"TheFirstAndItsNeighbour", "a2 b2", {0, 2}, 'b', 3, "b5"},
                    ReplaceCase{"TheLast", "a2 b2", {2, 4}, 'x', 3, "a2 x3"},
                    ReplaceCase{"TheLastAndItsNeighbour", "a2 b2", {2, 4}, 'a', 3, "a5"},
                    ReplaceCase{"ByNothing", "v2 w1 v2", {2, 3}, 'x', 0, "v4"},
                    ReplaceCase{"NothingByNothing", "v2 w1", {2, 2}, 'x', 0, "v2 w1"},
                    ReplaceCase{"BetweenEqualNeighbours", "v2 w1 v2", {2, 3}, 'x', 1, "v2 x1 v2"}),
    [](const auto& row) { return std::string(row.param.name); });

struct RemoveCase {
  const char* name;
  std::string before;
  TextRange range;
  std::string after;
};
class RunArrayRemove : public testing::TestWithParam<RemoveCase> {};
TEST_P(RunArrayRemove, JoinsWhatIsLeft) {
  Letters array = arrayOf(GetParam().before);
  array.removeSubrange(GetParam().range);
  EXPECT_EQ(shapeOf(array), GetParam().after);
}
INSTANTIATE_TEST_SUITE_P(Cases, RunArrayRemove,
                         testing::Values(RemoveCase{"TheMiddle", "v2 w1 v2", {2, 3}, "v4"},
                                         RemoveCase{"Everything", "v2 w1 v2", {0, 5}, ""},
                                         RemoveCase{"Nothing", "v2 w1", {1, 1}, "v2 w1"},
                                         RemoveCase{"PartOfOne", "v5", {1, 3}, "v3"},
                                         RemoveCase{"TheStart", "v2 w3", {0, 3}, "w2"},
                                         RemoveCase{"TheEnd", "v2 w3", {1, 5}, "v1"},
                                         RemoveCase{"UpToASeam", "v2 w3 v1", {3, 5}, "v2 w1 v1"},
                                         RemoveCase{"FromASeam", "v2 w3 v4", {2, 6}, "v5"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RunArray, AppendingGrowsTheLastRunOrStartsOne) {
  Letters array;
  array.append('v', 3);
  EXPECT_EQ(shapeOf(array), "v3");
  array.append('v', 2);
  EXPECT_EQ(shapeOf(array), "v5");
  array.append('w', 1);
  EXPECT_EQ(shapeOf(array), "v5 w1");
  EXPECT_EQ(array.count(), 6);
}

TEST(RunArray, RemovingEverythingLeavesNoRuns) {
  Letters array('v', 5);
  array.removeSubrange({0, 5});
  EXPECT_EQ(array.count(), 0);
  EXPECT_TRUE(array.runs().empty());
  EXPECT_TRUE(array.isEmpty());
}

TEST(RunArray, AValueWithoutLengthLeavesAnEmptyRun) {
  Letters array('v', 0);
  EXPECT_EQ(shapeOf(array), "v0");
  array.append('v', 2);
  EXPECT_EQ(shapeOf(array), "v2");
  Letters other('v', 0);
  other.append('w', 2);
  EXPECT_EQ(shapeOf(other), "v0 w2");
  EXPECT_EQ(other[0], 'w');
  other.insert('v', 0, 1);
  EXPECT_EQ(shapeOf(other), "v1 w2");
}

TEST(RunArray, AnEmptyFirstRunTakesOverWhatBecomesItsNeighbour) {
  Letters array('v', 0);
  array.append('w', 2);
  array.append('v', 5);
  Letters cut = array;
  cut.removeSubrange({0, 3});
  EXPECT_EQ(shapeOf(cut), "v4");
  array.replaceSubrange({0, 3}, 'x', 1);
  EXPECT_EQ(shapeOf(array), "x1 v4");
}

TEST(RunArray, AnEmptyFirstRunThatTakesOverKeepsItsValue) {
  RunArray<Token, KeyPathRunComparator<Token, int Token::*>> array({1, 10}, 0, &Token::kind);
  array.append({2, 11}, 2);
  array.append({1, 12}, 5);
  array.replaceSubrange({0, 3}, {3, 13}, 1);
  EXPECT_EQ(array[0], (Token{3, 13}));
  EXPECT_EQ(array[1], (Token{1, 10}));
  EXPECT_EQ(array.runs().size(), 2U);
}

TEST(RunArray, EqualNeighboursAmongPairsStayTwoRuns) {
  Letters array = arrayOf("a2 b2");
  const std::vector<Letters::Pair> pairs{{'a', 1}, {'x', 1}, {'x', 2}, {'q', 0}, {'b', 1}};
  array.replaceSubrangeWithPairs({1, 3}, pairs);
  EXPECT_EQ(shapeOf(array), "a2 x1 x2 b2");
  EXPECT_EQ(arrayOf("a2 a3 a1").runs().size(), 3U);
}

TEST(RunArray, ContentsOfAnotherAreMergedOnTheWay) {
  const Letters other = arrayOf("a2 a2 b2 c4");
  Letters array = arrayOf("a1 c1");
  array.replaceSubrangeWithContentsOf({1, 1}, other);
  EXPECT_EQ(shapeOf(array), "a5 b2 c5");
  array.replaceSubrangeWithContentsOf({0, 12}, other, TextRange(3, 7));
  EXPECT_EQ(shapeOf(array), "a1 b2 c1");
  array.replaceSubrangeWithContentsOf({1, 1}, array);
  EXPECT_EQ(shapeOf(array), "a2 b2 c1 b2 c1");
  array.replaceSubrangeWithContentsOf({1, 8}, Letters());
  EXPECT_EQ(shapeOf(array), "a1");
}

TEST(RunArray, TransformedRunsMergeByTheirNewValues) {
  Letters array = arrayOf("a2 b2 c2 d2");
  std::string seen;
  array.transformSubrange({1, 6}, [&](char value) {
    seen += value;
    return value == 'c' ? 'd' : 'a';
  });
  EXPECT_EQ(seen, "abc");
  EXPECT_EQ(shapeOf(array), "a4 d4");
}

TEST(RunArray, AFailingTransformLeavesTheArrayAsItWas) {
  Letters array = arrayOf("a2 b2 c2");
  EXPECT_THROW(
      array.transformSubrange(
          {0, 6}, [](char value) { return value == 'b' ? throw std::runtime_error("no") : 'x'; }),
      std::runtime_error);
  EXPECT_EQ(shapeOf(array), "a2 b2 c2");
}

/// Says how often it has been copied.
struct Counted {
  int value = 0;
  static inline int copies = 0;
  explicit Counted(int number) : value(number) {}
  Counted(const Counted& other) : value(other.value) { ++copies; }
  Counted(Counted&&) noexcept = default;
  Counted& operator=(const Counted& other) {
    value = other.value;
    ++copies;
    return *this;
  }
  Counted& operator=(Counted&&) noexcept = default;
  bool operator==(const Counted&) const = default;
};

TEST(RunArray, ChangingAPartCopiesNoValuesElsewhere) {
  RunArray<Counted> array;
  for (int value = 0; value < 1'000; ++value)
    array.append(Counted(value), 2);
  const RunArray<Counted> other(Counted(-1), 3);
  Counted::copies = 0;
  array.transformSubrange({700, 702}, [](const Counted& old) { return Counted(-old.value); });
  array.replaceSubrangeWithContentsOf({300, 301}, other);
  array.removeSubrange({10, 20});
  EXPECT_LT(Counted::copies, 10);
  EXPECT_EQ(array.runs().size(), 996U);
}

TEST(RunArray, IsMadeFromTheTransformedContentsOfAnother) {
  const Letters source = arrayOf("a2 A2 b2 c2");
  const auto lower = [](char value) { return static_cast<char>(value | 0x20); };
  EXPECT_EQ(shapeOf(Letters::fromContentsOf(source, std::nullopt, {}, lower)), "a4 b2 c2");
  EXPECT_EQ(shapeOf(Letters::fromContentsOf(source, TextRange(1, 5), {}, lower)), "a3 b1");
  EXPECT_EQ(shapeOf(NeverLetters::fromContentsOf(source, TextRange(1, 5), {}, lower)), "a1 a2 b1");
  EXPECT_EQ(shapeOf(Letters::fromContentsOf(Letters(), std::nullopt, {}, lower)), "");
}

// ---- Comparators -----------------------------------------------------------------------------

TEST(RunComparator, NeverKeepsEqualNeighboursApart) {
  NeverLetters array;
  array.append('v', 2);
  array.append('v', 3);
  EXPECT_EQ(shapeOf(array), "v2 v3");
  array.insert('v', 1, 1);
  EXPECT_EQ(shapeOf(array), "v1 v1 v1 v3");
}

TEST(RunComparator, TwoAbsentValuesShareARun) {
  using Optional = std::optional<char>;
  RunArray<Optional, OptionalRunComparator<EquatableRunComparator<char>>> array;
  for (const Optional value : {Optional(), Optional(), Optional('a'), Optional('a'), Optional()})
    array.append(value, 1);
  EXPECT_EQ(array.runs().size(), 3U);
  RunArray<Optional, OptionalNeverRunComparator<char>> apart;
  for (const Optional value : {Optional(), Optional(), Optional('a'), Optional('a')})
    apart.append(value, 1);
  EXPECT_EQ(apart.runs().size(), 3U);
}

TEST(RunComparator, ObjectsMergeByIdentity) {
  using Pointer = std::shared_ptr<std::string>;
  const Pointer one = std::make_shared<std::string>("same");
  const Pointer other = std::make_shared<std::string>("same");
  RunArray<Pointer, ObjectRunComparator<Pointer>> array(one, 1);
  array.append(one, 1);
  array.append(other, 1);
  EXPECT_EQ(array.runs().size(), 2U);
  RunArray<std::optional<std::string*>, OptionalObjectRunComparator<std::string*>> optional;
  optional.append(one.get(), 1);
  optional.append(one.get(), 1);
  optional.append(std::nullopt, 1);
  optional.append(std::nullopt, 1);
  EXPECT_EQ(optional.runs().size(), 2U);
}

TEST(RunComparator, KeyPathsMergeByKeyAndTheValueInFrontStays) {
  using Tokens = RunArray<Token, KeyPathRunComparator<Token, int Token::*>>;
  Tokens array(&Token::kind);
  array.append({1, 10}, 2);
  array.append({1, 11}, 2);
  array.append({2, 12}, 1);
  array.append({1, 13}, 2);
  ASSERT_EQ(array.runs().size(), 3U);
  EXPECT_EQ(array.runContaining(3), (Tokens::Run{{1, 10}, {0, 4}}));
  // The runs around the replaced one are joined before they are split again.
  array.replaceSubrange({4, 5}, {3, 14}, 1);
  EXPECT_EQ(array[4], (Token{3, 14}));
  EXPECT_EQ(array[5], (Token{1, 10}));
}

TEST(RunComparator, KeysAreComparedAsTheirTypeAsks) {
  static_assert(std::is_same_v<DefaultRunComparator<int>, EquatableRunComparator<int>>);
  static_assert(std::is_same_v<DefaultRunComparator<Token*>, ObjectRunComparator<Token*>>);
  using Pointer = std::shared_ptr<Token>;
  static_assert(std::is_same_v<DefaultRunComparator<std::optional<Pointer>>,
                               OptionalRunComparator<ObjectRunComparator<Pointer>>>);
  const KeyPathRunComparator byKind(&Token::kind);
  EXPECT_TRUE(byKind.canMerge({1, 2}, {1, 3}));
  EXPECT_EQ(byKind, KeyPathRunComparator(&Token::kind));
  EXPECT_NE(byKind, KeyPathRunComparator(&Token::serial));
  const KeyPathRunComparator never(&Token::kind, NeverRunComparator<int>());
  EXPECT_FALSE(never.canMerge({1, 2}, {1, 2}));
  EXPECT_EQ(std::hash<std::remove_const_t<decltype(byKind)>>()(byKind), byKind.hashValue());
}

// ---- Reading ---------------------------------------------------------------------------------

TEST(RunArray, RunsInARangeAreClippedOrExpanded) {
  const auto ranges = [](const Letters& array, TextRange range, ExpandedRanges expanded) {
    std::vector<TextRange> found;
    for (const auto& run : array.runsIn(range, expanded))
      found.push_back(run.range);
    return found;
  };
  using Ranges = std::vector<TextRange>;
  const Letters small = arrayOf("a4 b1");
  const Letters large = arrayOf("a4 b5");
  EXPECT_EQ(ranges(small, {0, 5}, ExpandedRanges::no), (Ranges{{0, 4}, {4, 5}}));
  EXPECT_EQ(ranges(large, {0, 5}, ExpandedRanges::no), (Ranges{{0, 4}, {4, 5}}));
  EXPECT_EQ(ranges(large, {0, 4}, ExpandedRanges::no), (Ranges{{0, 4}}));
  EXPECT_EQ(ranges(large, {2, 5}, ExpandedRanges::yes), (Ranges{{0, 4}, {4, 9}}));
  EXPECT_EQ(ranges(large, {4, 4}, ExpandedRanges::no), (Ranges{{4, 4}}));
  EXPECT_EQ(ranges(large, {4, 4}, ExpandedRanges::yes), (Ranges{{4, 9}}));
}

TEST(RunArray, LongestEffectiveRangeEndsAtTheFirstRunThatFails) {
  const Letters array = arrayOf("a2 b2 a2 c4");
  const auto isNot = [](char unwanted) {
    return [unwanted](char value, TextRange) { return value != unwanted; };
  };
  EXPECT_EQ(array.longestEffectiveRange({1, 9}, isNot('c')), TextRange(1, 6));
  EXPECT_EQ(array.longestEffectiveRange({1, 5}, isNot('c')), TextRange(1, 5));
  EXPECT_EQ(array.longestEffectiveRange({0, 10}, isNot('a')), std::nullopt);
  EXPECT_EQ(array.longestEffectiveRange({3, 3}, isNot('x')), std::nullopt);
  std::vector<TextRange> seen;
  (void)array.longestEffectiveRange({1, 9}, [&](char value, TextRange part) {
    seen.push_back(part);
    return value != 'b';
  });
  EXPECT_EQ(seen, (std::vector<TextRange>{{1, 2}, {2, 4}}));
}

TEST(RunArray, BisectingFindsARunOrNothing) {
  const Letters array = arrayOf("a2 b2 c2 d2 e2");
  const auto lookFor = [&](char wanted) {
    return array.bisectUsing([&](const Letters::BisectContext& context) {
      EXPECT_EQ(context.previousRun.has_value(), context.run.value != 'a');
      EXPECT_EQ(context.nextRun.has_value(), context.run.value != 'e');
      if (context.run.value == wanted)
        return BisectResult::same;
      return wanted < context.run.value ? BisectResult::ascending : BisectResult::descending;
    });
  };
  for (const auto& run : array.runs())
    EXPECT_EQ(lookFor(run.value), run);
  EXPECT_EQ(lookFor('A'), std::nullopt); // always in front, past the first run
  EXPECT_EQ(lookFor('f'), std::nullopt); // always behind, past the last
  int calls = 0;
  EXPECT_EQ(array.bisectUsing([&](const auto&) { return ++calls, BisectResult::cancel; }),
            std::nullopt);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(Letters().bisectUsing([](const auto&) { return BisectResult::same; }), std::nullopt);
}

TEST(RunArray, ACopyAndItsRunsStillReadTheOldOnes) {
  Letters array = arrayOf("a2 b2");
  const Letters copy = array;
  const Letters::Runs runs = array.runs();
  array.replaceSubrange({1, 3}, 'x', 5);
  EXPECT_EQ(shapeOf(array), "a1 x5 b1");
  EXPECT_EQ(shapeOf(copy), "a2 b2");
  EXPECT_EQ(runs[1], (Letters::Run{'b', {2, 4}}));
  Letters target = copy;
  target.append('c', 1);
  EXPECT_EQ(shapeOf(copy), "a2 b2");
  Letters moved = std::move(target);
  EXPECT_EQ(shapeOf(moved), "a2 b2 c1");
}

TEST(RunArray, CopiesMayBeReadAndChangedOnOtherThreads) {
  Letters array = arrayOf("a2 b2 c2");
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int k = 0; k < 4; ++k)
    threads.emplace_back([copy = array, k]() mutable {
      for (int step = 0; step < 200; ++step) {
        Letters mine = copy;
        mine.replaceSubrange({2, 4}, static_cast<char>('p' + k), 2);
        ASSERT_EQ(mine[3], 'p' + k);
        ASSERT_EQ(copy[3], 'b');
        if (step % 50 == 49)
          copy.append('z', 1);
      }
    });
  for (int step = 0; step < 200; ++step)
    array.append(static_cast<char>('a' + step % 26), 1);
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(array.count(), 206);
}

TEST(RunArray, AsksTheComparatorInTheOrderOfTheValuesButAtTheFront) {
  RunArray<int, AscendingRunComparator> array;
  array.append(3, 2);
  array.append(2, 2);
  array.append(1, 2);
  ASSERT_EQ(array.runs().size(), 3U);
  array.replaceSubrange({2, 4}, 5, 2); // 3 takes 5 in; 3 and 1 stay apart
  EXPECT_EQ(array.runContaining(2).range, TextRange(0, 4));
  array.replaceSubrange({0, 4}, 0, 2); // at the front 1 is asked first
  EXPECT_EQ(array.runs().size(), 2U);
  array.replaceSubrange({0, 2}, 7, 2);
  EXPECT_EQ(array.runContaining(3), (RunArray<int, AscendingRunComparator>::Run{7, {0, 4}}));
}

// ---- Misuse ------------------------------------------------------------------------------------

TEST(RunArrayDeathTest, OffsetsAndRangesMustLieInTheArray) {
  Letters array = arrayOf("a2 b2");
  EXPECT_DEATH((void)array[4], "offset lies outside");
  EXPECT_DEATH((void)array[-1], "offset lies outside");
  EXPECT_DEATH((void)array.runContaining(4), "offset lies outside");
  EXPECT_DEATH((void)array.runsIn({4, 4}), "offset lies outside");
  EXPECT_DEATH((void)array.runsIn({1, 5}), "reaches beyond");
  EXPECT_DEATH((void)array.runs()[2], "no run with this index");
  EXPECT_DEATH(array.removeSubrange({3, 5}), "reaches beyond");
  EXPECT_DEATH(array.removeSubrange({-1, 2}), "reaches beyond");
  EXPECT_DEATH(array.insert('x', 5, 1), "reaches beyond");
  EXPECT_DEATH(array.transformSubrange({4, 4}, [](char c) { return c; }), "offset lies outside");
}

TEST(RunArrayDeathTest, LengthsMustNotBeNegative) {
  EXPECT_DEATH(Letters('a', -1), "negative length");
  EXPECT_DEATH(Letters().append('a', -1), "negative number of times");
  const std::vector<Letters::Pair> pairs{{'a', -1}};
  EXPECT_DEATH(Letters().replaceSubrangeWithPairs({0, 0}, pairs), "negative number of times");
}

} // namespace
} // namespace velmar
