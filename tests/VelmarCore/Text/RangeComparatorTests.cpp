#include "VelmarCore/Text/RangeComparator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

/// A random number from 0 to below `limit`.
std::int64_t below(std::mt19937& random, std::int64_t limit) {
  return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
}

struct Item {
  TextRange range;
  std::optional<TextRange> place;
  std::string name;
};

std::string namesOf(const std::vector<Item>& items) {
  std::string names;
  for (const Item& item : items)
    names += item.name;
  return names;
}

TEST(RangeComparator, LowerBoundsDecideAndLongerRangesComeFirst) {
  const RangeComparator<std::int64_t> forward;
  EXPECT_EQ(forward.compare({1, 2}, {2, 9}), std::weak_ordering::less);
  EXPECT_EQ(forward.compare({2, 9}, {2, 3}), std::weak_ordering::less);
  EXPECT_EQ(forward.compare({2, 3}, {2, 9}), std::weak_ordering::greater);
  EXPECT_EQ(forward.compare({2, 3}, {2, 3}), std::weak_ordering::equivalent);
}

TEST(RangeComparator, ReverseIsTheMirrorImage) {
  const RangeComparator<std::int64_t> forward;
  const RangeComparator<std::int64_t> reverse{SortOrder::reverse};
  std::mt19937 random(3);
  for (int step = 0; step < 1'000; ++step) {
    const std::int64_t a = below(random, 4);
    const std::int64_t b = below(random, 4);
    const TextRange left(a, a + below(random, 3));
    const TextRange right(b, b + below(random, 3));
    ASSERT_EQ(forward.compare(left, right), reverse.compare(right, left)) << left << " " << right;
  }
}

TEST(RangeComparator, AbsentRangesNeitherPrecedeNorFollow) {
  const OptionalRangeComparator<std::int64_t> comparator{{SortOrder::forward}};
  EXPECT_EQ(comparator.compare(std::nullopt, TextRange(0, 1)), std::weak_ordering::equivalent);
  EXPECT_EQ(comparator.compare(TextRange(0, 1), std::nullopt), std::weak_ordering::equivalent);
  EXPECT_EQ(comparator.compare(TextRange(0, 1), TextRange(0, 2)), std::weak_ordering::greater);
}

TEST(SortBy, SortsByAMemberAndKeepsTheOrderOfEqualOnes) {
  std::vector<Item> items{
      {{2, 3}, {}, "a"}, {{2, 9}, {}, "b"}, {{1, 2}, {}, "c"}, {{2, 3}, {}, "d"}};
  EXPECT_EQ(namesOf(sortedBy(items, &Item::range)), "cbad");
  EXPECT_EQ(namesOf(sortedBy(items, &Item::range, SortOrder::reverse)), "adbc");
  EXPECT_EQ(namesOf(items), "abcd");
  sortBy(items, [](const Item& item) { return TextRange(0, item.range.length()); });
  EXPECT_EQ(namesOf(items), "bacd");
}

TEST(SortBy, ElementsWithoutARangeKeepTheirPlaces) {
  std::vector<Item> items{{{}, TextRange(5, 6), "a"},
                          {{}, std::nullopt, "b"},
                          {{}, TextRange(1, 2), "c"},
                          {{}, std::nullopt, "d"},
                          {{}, TextRange(3, 4), "e"}};
  EXPECT_EQ(namesOf(sortedBy(items, &Item::place)), "cbeda");
  EXPECT_EQ(namesOf(sortedBy(items, &Item::place, SortOrder::reverse)), "abedc");
}

TEST(SortBy, IsAStableSort) {
  std::mt19937 random(11);
  for (int step = 0; step < 200; ++step) {
    std::vector<std::pair<TextRange, int>> entries;
    for (int k = 0; k < 40; ++k) {
      const std::int64_t lower = below(random, 5);
      entries.push_back({{lower, lower + below(random, 3)}, k});
    }
    sortBy(entries, &std::pair<TextRange, int>::first);
    const bool inOrder = std::ranges::is_sorted(entries, [](const auto& left, const auto& right) {
      return std::tuple(left.first.lowerBound, -left.first.upperBound, left.second) <
             std::tuple(right.first.lowerBound, -right.first.upperBound, right.second);
    });
    ASSERT_TRUE(inOrder) << "step " << step;
  }
}

} // namespace
} // namespace velmar
