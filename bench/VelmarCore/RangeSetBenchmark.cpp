// Range sets beside plain sorted vectors: what the merging and the keeping apart cost.

#include "VelmarCore/Text/RangeSet.h"

#include "bench/Pair.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

namespace velmar {

namespace {

using Ranges = std::vector<TextRange>;

/// Two lists of `size` ranges each, dealt out at random from one list in which none touch.
struct TwoLists {
  explicit TwoLists(std::int64_t size) {
    std::mt19937 random(20);
    for (std::int64_t at = 0; std::ssize(a) < size || std::ssize(b) < size; at += 8) {
      const bool toA = std::ssize(b) == size || (std::ssize(a) < size && random() % 2 == 0);
      (toA ? a : b).push_back({at, at + 4});
    }
  }

  Ranges a;
  Ranges b;
};

bool startsBefore(const TextRange& left, const TextRange& right) {
  return left.lowerBound < right.lowerBound;
}

/// The least: the two lists merged as they are, without a look at whether ranges meet.
void mergeVectors(bench::State& state) {
  const TwoLists lists(state.size());
  for (auto _ : state) {
    Ranges merged;
    merged.reserve(lists.a.size() + lists.b.size());
    std::merge(lists.a.begin(), lists.a.end(), lists.b.begin(), lists.b.end(),
               std::back_inserter(merged), startsBefore);
    benchmark::DoNotOptimize(merged.data());
  }
}

void uniteSets(bench::State& state) {
  const TwoLists lists(state.size());
  const auto a = TextRangeSet::fromOrderedRanges(lists.a);
  const auto b = TextRangeSet::fromOrderedRanges(lists.b);
  for (auto _ : state)
    benchmark::DoNotOptimize(a.unionWith(b));
}

void intersectVectors(bench::State& state) {
  const TwoLists lists(state.size());
  Ranges other = lists.a; // half of the ranges are in both
  for (std::size_t k = 0; k < other.size(); k += 2)
    other[k] = lists.b[k];
  std::ranges::sort(other, startsBefore);
  for (auto _ : state) {
    Ranges common;
    common.reserve(lists.a.size());
    std::set_intersection(lists.a.begin(), lists.a.end(), other.begin(), other.end(),
                          std::back_inserter(common), startsBefore);
    benchmark::DoNotOptimize(common.data());
  }
}

void intersectSets(bench::State& state) {
  const TwoLists lists(state.size());
  Ranges other = lists.a;
  for (std::size_t k = 0; k < other.size(); k += 2)
    other[k] = lists.b[k];
  const auto a = TextRangeSet::fromOrderedRanges(lists.a);
  const TextRangeSet b{std::span<const TextRange>(other)};
  for (auto _ : state)
    benchmark::DoNotOptimize(a.intersection(b));
}

void mergeAndTakeOutOfVectors(bench::State& state) {
  const TwoLists lists(state.size());
  Ranges ranges = lists.a;
  Ranges scratch;
  for (auto _ : state) {
    scratch.clear();
    std::merge(ranges.begin(), ranges.end(), lists.b.begin(), lists.b.end(),
               std::back_inserter(scratch), startsBefore);
    ranges.clear();
    std::set_difference(scratch.begin(), scratch.end(), lists.b.begin(), lists.b.end(),
                        std::back_inserter(ranges), startsBefore);
    benchmark::DoNotOptimize(ranges.data());
  }
}

void uniteAndSubtractInPlace(bench::State& state) {
  const TwoLists lists(state.size());
  auto set = TextRangeSet::fromOrderedRanges(lists.a);
  const auto b = TextRangeSet::fromOrderedRanges(lists.b);
  for (auto _ : state) {
    set.formUnion(b);
    set.subtract(b);
    benchmark::DoNotOptimize(set.ranges().data());
  }
}

void appendToVector(bench::State& state) {
  for (auto _ : state) {
    Ranges ranges;
    for (std::int64_t at = 0; at < 8 * state.size(); at += 8)
      ranges.push_back({at, at + 4});
    benchmark::DoNotOptimize(ranges.data());
  }
}

void appendToSet(bench::State& state) {
  for (auto _ : state) {
    TextRangeSet set;
    for (std::int64_t at = 0; at < 8 * state.size(); at += 8)
      set.insertContentsOf({at, at + 4});
    benchmark::DoNotOptimize(set.ranges().data());
  }
}

/// What an edit does with the set of one layer: a set of one range, united with another that
/// overlaps it, and cut.
void workOnOneRangeInAVector(bench::State& state) {
  for (auto _ : state) {
    Ranges ranges{{0, 9}};
    TextRange other(4, 20);
    benchmark::DoNotOptimize(other);
    ranges[0].upperBound = std::max(ranges[0].upperBound, other.upperBound);
    ranges[0] = ranges[0].intersection({2, 15}).value_or(TextRange());
    benchmark::DoNotOptimize(ranges.data());
  }
}

void workOnOneRangeInASet(bench::State& state) {
  for (auto _ : state) {
    TextRangeSet set(TextRange(0, 9));
    TextRange other(4, 20);
    benchmark::DoNotOptimize(other);
    set.formUnion(TextRangeSet(other));
    set.formIntersection(TextRangeSet(TextRange(2, 15)));
    benchmark::DoNotOptimize(set.ranges().data());
  }
}

void searchVector(bench::State& state) {
  const TwoLists lists(state.size());
  std::mt19937 random(1);
  for (auto _ : state) {
    const auto at = static_cast<std::int64_t>(random()) % (16 * state.size());
    const auto found = std::ranges::upper_bound(lists.a, at, {}, &TextRange::upperBound);
    benchmark::DoNotOptimize(found != lists.a.end() && found->lowerBound <= at);
  }
}

void searchSet(bench::State& state) {
  const TwoLists lists(state.size());
  const auto set = TextRangeSet::fromOrderedRanges(lists.a);
  std::mt19937 random(1);
  for (auto _ : state) {
    const auto at = static_cast<std::int64_t>(random()) % (16 * state.size());
    benchmark::DoNotOptimize(set.contains(at));
  }
}

VELMAR_PAIR("rangeSet/union", 1.1, mergeVectors, uniteSets, 100, 1'000, 10'000, 100'000);
VELMAR_PAIR("rangeSet/intersection", 2, intersectVectors, intersectSets, 100, 1'000, 10'000,
            100'000);
VELMAR_PAIR("rangeSet/uniteAndSubtractInPlace", 1.8, mergeAndTakeOutOfVectors,
            uniteAndSubtractInPlace, 100, 1'000, 10'000, 100'000);
VELMAR_PAIR("rangeSet/append", 1.8, appendToVector, appendToSet, 100, 100'000);
VELMAR_PAIR("rangeSet/oneRange", 2.2, workOnOneRangeInAVector, workOnOneRangeInASet);
VELMAR_PAIR("rangeSet/contains", 1.2, searchVector, searchSet, 100, 100'000);

} // namespace

} // namespace velmar
