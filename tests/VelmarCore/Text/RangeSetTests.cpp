#include "VelmarCore/Text/RangeSet.h"

#include "VelmarCore/Text/RangeSet+Collections.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmar {
namespace {

using Set = TextRangeSet;
using Values = std::set<std::int64_t>;

/// The values of a set one by one, for sets of small integers.
Values valuesOf(const Set& set) {
  Values values;
  for (const TextRange& range : set.ranges())
    for (std::int64_t value = range.lowerBound; value < range.upperBound; ++value)
      values.insert(value);
  return values;
}

/// A random number from 0 to below `limit`.
std::int64_t below(std::mt19937& random, std::int64_t limit) {
  return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
}

/// Some ranges below 40, at random: empty ones, and ones that touch and overlap, among them.
std::vector<TextRange> someRanges(std::mt19937& random) {
  std::vector<TextRange> ranges(random() % 9);
  for (TextRange& range : ranges) {
    const std::int64_t lower = below(random, 38);
    range = {lower, std::min<std::int64_t>(40, lower + below(random, 6))};
  }
  return ranges;
}

Values valuesOf(const std::vector<TextRange>& ranges) {
  Values values;
  for (const TextRange& range : ranges)
    for (std::int64_t value = range.lowerBound; value < range.upperBound; ++value)
      values.insert(value);
  return values;
}

template <class Keep>
Values valuesWhere(Keep keep) {
  Values values;
  for (std::int64_t value = 0; value < 40; ++value)
    if (keep(value))
      values.insert(value);
  return values;
}

// ---- Construction and questions ----------------------------------------------------------------

TEST(RangeSet, EmptyRangesAreDroppedOnConstruction) {
  EXPECT_TRUE(Set(TextRange(4, 4)).isEmpty());
  EXPECT_TRUE((Set{{4, 4}, {1, 1}}).isEmpty());
  EXPECT_EQ((Set{{4, 4}, {1, 2}, {3, 3}}), (Set{{1, 2}}));
}

TEST(RangeSet, UnorderedRangesAreSortedAndMerged) {
  EXPECT_EQ((Set{{7, 9}, {0, 5}, {2, 3}, {5, 6}}), (Set{{0, 6}, {7, 9}}));
  EXPECT_EQ((Set{{0, 2}, {2, 4}, {4, 6}}), (Set{{0, 6}}));
}

TEST(RangeSet, IndicesBecomeTheirPositions) {
  const std::string text = "abcdef";
  EXPECT_EQ(Set::fromIndices(std::vector{4, 0, 1, 4}, text), (Set{{0, 2}, {4, 5}}));
  Set set{{0, 2}};
  EXPECT_TRUE(set.insert(2, text));
  EXPECT_FALSE(set.insert(1, text));
  set.remove(0, text);
  EXPECT_EQ(set, (Set{{1, 3}}));
}

TEST(RangeSet, UpperBoundsAreOutside) {
  const Set set{{0, 9}, {12, 15}};
  EXPECT_TRUE(set.contains(0));
  EXPECT_TRUE(set.contains(8));
  EXPECT_FALSE(set.contains(9));
  EXPECT_FALSE(set.contains(11));
  EXPECT_TRUE(set.contains(14));
  EXPECT_FALSE(set.contains(15));
  EXPECT_FALSE(set.contains(-1));
  EXPECT_FALSE(Set().contains(0));
}

TEST(RangeSet, TouchingIsNotIntersecting) {
  const Set set{{0, 9}};
  EXPECT_FALSE(set.intersectsContentsOf({9, 12}));
  EXPECT_TRUE(set.intersectsContentsOf({8, 12}));
  EXPECT_FALSE(set.intersectsContentsOf({4, 4}));
  EXPECT_TRUE((Set{{0, 2}, {5, 6}}).intersectsContentsOf({1, 9}));
  EXPECT_FALSE((Set{{0, 2}, {5, 6}}).intersectsContentsOf({2, 5}));
}

TEST(RangeSet, SubsetsLieInsideSingleRanges) {
  const Set set{{0, 9}, {12, 15}};
  EXPECT_TRUE(Set().isSubsetOf(Set()));
  EXPECT_FALSE(Set().isStrictSubsetOf(Set()));
  EXPECT_TRUE(Set().isStrictSubsetOf(set));
  EXPECT_TRUE((Set{{1, 3}, {5, 9}, {12, 13}}).isStrictSubsetOf(set));
  EXPECT_FALSE((Set{{8, 13}}).isSubsetOf(set));
  EXPECT_TRUE(set.isSupersetOf(set));
  EXPECT_FALSE(set.isStrictSupersetOf(set));
  EXPECT_TRUE(set.isStrictSupersetOf(Set{{14, 15}}));
}

TEST(RangeSet, OneRangeBetweenThoseOfTheOtherLeavesNothing) {
  Set set{{21, 24}, {44, 55}};
  set.formIntersection({{18, 21}, {35, 42}});
  EXPECT_TRUE(set.isEmpty());
}

TEST(RangeSet, GapsStayWithinTheirBounds) {
  const std::string text(10, ' ');
  EXPECT_EQ(Set().invertedWithin(text), (Set{{0, 10}}));
  EXPECT_TRUE((Set{{0, 10}}).invertedWithin(text).isEmpty());
  EXPECT_EQ((Set{{0, 2}, {5, 10}}).invertedWithin(text), (Set{{2, 5}}));
  EXPECT_EQ((Set{{0, 4}, {6, 20}}).gapsBoundedBy({2, 8}), (Set{{4, 6}}));
  EXPECT_TRUE((Set{{0, 20}}).gapsBoundedBy({2, 8}).isEmpty());
  EXPECT_EQ((Set{{0, 2}, {8, 9}}).gapsBoundedBy({2, 8}), (Set{{2, 8}}));
  EXPECT_TRUE(Set().gapsBoundedBy({3, 3}).isEmpty());
}

TEST(RangeSet, DescribesItselfAsAListOfRanges) {
  EXPECT_EQ((Set{{0, 3}, {4, 9}}).description(), "[0..<3, 4..<9]");
  EXPECT_EQ(Set().description(), "[]");
}

TEST(RangeSet, EqualSetsHashAlike) {
  Set grown{{0, 3}, {5, 6}, {8, 9}};
  grown.removeContentsOf({5, 9});
  EXPECT_EQ(std::hash<Set>()(grown), std::hash<Set>()(Set{{0, 3}}));
  EXPECT_NE(std::hash<Set>()(grown), std::hash<Set>()(Set{{0, 4}}));
}

TEST(RangeSet, AnyOrderedTypeWillDo) {
  RangeSet<std::string> names{{"ant", "cat"}, {"dog", "eel"}};
  names.insertContentsOf({"bee", "dog"});
  EXPECT_EQ(names, (RangeSet<std::string>{{"ant", "eel"}}));
  names.formUnion({{"fox", "gnu"}, {"hen", "ibis"}});
  names.subtract({{"cow", "elk"}, {"goat", "gull"}});
  EXPECT_EQ(names.description(), "[ant..<cow, fox..<gnu, hen..<ibis]");
  EXPECT_TRUE(names.contains("bat"));
  RangeSet<std::string> copy = names;
  copy.formIntersection({{"b", "g"}, {"gnat", "i"}});
  EXPECT_EQ(copy.description(), "[b..<cow, fox..<g, gnat..<gnu, hen..<i]");
  names = std::move(copy);
  EXPECT_EQ(names.ranges().size(), 4U);
}

// ---- Laws, against a set of the values themselves -------------------------------------------

TEST(RangeSetLaws, OperationsOnTwoSetsAreThoseOnTheirValues) {
  std::mt19937 random(20240817);
  for (int step = 0; step < 4'000; ++step) {
    const auto someA = someRanges(random);
    const auto someB = someRanges(random);
    const Set a{std::span<const TextRange>(someA)};
    const Set b{std::span<const TextRange>(someB)};
    const Values inA = valuesOf(someA);
    const Values inB = valuesOf(someB);
    SCOPED_TRACE(testing::Message() << "step " << step << ": " << a << " and " << b);
    a.checkInvariants();
    ASSERT_EQ(valuesOf(a), inA);

    const auto check = [&](const Set& result, const Values& expected) {
      result.checkInvariants();
      EXPECT_EQ(valuesOf(result), expected) << result;
    };
    const auto either = valuesWhere([&](auto v) { return inA.contains(v) || inB.contains(v); });
    const auto both = valuesWhere([&](auto v) { return inA.contains(v) && inB.contains(v); });
    const auto one = valuesWhere([&](auto v) { return inA.contains(v) != inB.contains(v); });
    const auto rest = valuesWhere([&](auto v) { return inA.contains(v) && !inB.contains(v); });
    check(a.unionWith(b), either);
    check(a.intersection(b), both);
    check(a.symmetricDifference(b), one);
    check(a.subtracting(b), rest);
    const auto checkInPlace = [&](auto form, const Values& expected) {
      Set set = a;
      (set.*form)(b);
      check(set, expected);
    };
    checkInPlace(&Set::formUnion, either);
    checkInPlace(&Set::formIntersection, both);
    checkInPlace(&Set::formSymmetricDifference, one);
    checkInPlace(&Set::subtract, rest);
    EXPECT_EQ(a.isDisjoint(b), both.empty());
    EXPECT_EQ(a.isSubsetOf(b), rest.empty());
    EXPECT_EQ(a == b, one.empty());
    EXPECT_EQ(Set::fromOrderedRanges(a.ranges()), a);
    const TextRange bounds(below(random, 20), 20 + below(random, 20));
    check(a.gapsBoundedBy(bounds),
          valuesWhere([&](auto v) { return bounds.contains(v) && !inA.contains(v); }));
    EXPECT_EQ(a.intersectsContentsOf(bounds), !a.isDisjoint(Set(bounds)));
    if (HasFailure())
      return;
  }
}

TEST(RangeSetLaws, ASetMayBeCombinedWithItself) {
  const Set set{{0, 3}, {5, 8}, {9, 12}};
  Set same = set;
  same.formUnion(same);
  EXPECT_EQ(same, set);
  same.formIntersection(same);
  EXPECT_EQ(same, set);
  same.formSymmetricDifference(same);
  EXPECT_TRUE(same.isEmpty());
  same = set;
  same.subtract(same);
  EXPECT_TRUE(same.isEmpty());
}

TEST(RangeSetLaws, ChangesOneAfterTheOtherAreThoseOfTheValues) {
  std::mt19937 random(7);
  Set set;
  Values values;
  for (int step = 0; step < 20'000; ++step) {
    const std::int64_t lower = below(random, 200);
    const TextRange range(lower, lower + below(random, 7));
    const bool inserts = below(random, 2) == 0;
    SCOPED_TRACE(testing::Message()
                 << "step " << step << (inserts ? ": insert " : ": remove ") << range);
    const Values before = values;
    for (std::int64_t v = range.lowerBound; v < range.upperBound; ++v)
      inserts ? void(values.insert(v)) : void(values.erase(v));
    if (inserts)
      ASSERT_EQ(set.insertContentsOf(range), values != before);
    else
      set.removeContentsOf(range);
    set.checkInvariants();
    ASSERT_EQ(valuesOf(set), values);
    ASSERT_EQ(set.contains(lower), values.contains(lower));
  }
}

// ---- Collections -----------------------------------------------------------------------------

TEST(RangeSetCollections, RangesWhereFindsWhatPasses) {
  const std::string text = "aaBBaBa";
  const auto isUpper = [](char c) { return c == 'B'; };
  EXPECT_EQ(rangesWhere(text, isUpper), (Set{{2, 4}, {5, 6}}));
  EXPECT_EQ(rangesWhere(text, [](char) { return true; }), (Set{{0, 7}}));
  EXPECT_TRUE(rangesWhere(std::string(), isUpper).isEmpty());
  EXPECT_THROW((void)rangesWhere(text, [](char) -> bool { throw std::runtime_error("no"); }),
               std::runtime_error);
}

TEST(RangeSetCollections, ElementsComeInOrder) {
  EXPECT_EQ(elementsIn(std::string("abcdefg"), Set{{0, 2}, {5, 7}}),
            (std::vector{'a', 'b', 'f', 'g'}));
}

TEST(RangeSetCollections, RemovedElementsComeHighestPositionFirst) {
  std::vector<std::string> words{"a", "b", "c", "d", "e", "f", "g"};
  EXPECT_EQ(removeInRanges(words, Set{{1, 3}, {4, 5}}), (std::vector<std::string>{"e", "c", "b"}));
  EXPECT_EQ(words, (std::vector<std::string>{"a", "d", "f", "g"}));
  EXPECT_TRUE(removeInRanges(words, Set()).empty());
  EXPECT_EQ(removeInRanges(words, Set{{0, 4}}), (std::vector<std::string>{"g", "f", "d", "a"}));
  EXPECT_TRUE(words.empty());
}

// ---- Misuse ------------------------------------------------------------------------------------

TEST(RangeSetDeathTest, OrderedRangesMustBeApart) {
  const std::vector<TextRange> touching{{0, 5}, {5, 9}};
  EXPECT_DEATH((void)Set::fromOrderedRanges(touching), "touch or are out of order");
  const std::vector<TextRange> empty{{5, 5}};
  EXPECT_DEATH((void)Set::fromOrderedRanges(empty), "empty or reversed");
}

TEST(RangeSetDeathTest, PositionsMustLieInTheirCollection) {
  Set set;
  std::string text = "abc";
  EXPECT_DEATH((void)set.insert(3, text), "outside its collection");
  EXPECT_DEATH(set.remove(-1, text), "outside its collection");
  EXPECT_DEATH((void)elementsIn(text, Set{{2, 4}}), "outside its collection");
  EXPECT_DEATH((void)removeInRanges(text, Set{{-1, 2}}), "outside its collection");
}

} // namespace
} // namespace velmar
