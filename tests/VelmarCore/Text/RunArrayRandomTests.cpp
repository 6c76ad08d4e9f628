// Random changes to run arrays with every comparator, held against the model of their seams and
// against a plain list of the values.

#include "VelmarCore/Text/RunArray.h"
#include "tests/VelmarCore/Text/RunArrayModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

/// Plays random changes on an array, on a model that knows the seams, and on a plain list of
/// values.
///
/// `makeValue` gives a value for each random number. Values that merge count as the same in the
/// plain list, since a merged run keeps one of them; that says nothing (`knowsValues`) where
/// merging isn't a relation of equals.
template <class T, class Comparator, class MakeValue>
void playRandomSteps(const Comparator& comparator, MakeValue makeValue, unsigned seed,
                     bool knowsValues = true) {
  using Array = RunArray<T, Comparator>;
  using Pairs = std::vector<std::pair<T, std::int64_t>>;
  std::mt19937 random(seed);
  const auto below = [&](std::int64_t limit) {
    return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
  };
  const auto someArray = [&] {
    Array array(comparator);
    for (std::int64_t runs = below(5); runs > 0; --runs)
      array.append(makeValue(random()), 1 + below(3));
    return array;
  };

  for (int round = 0; round < 60; ++round) {
    Array array(comparator);
    RunArrayModel<T, Comparator> seams(comparator);
    std::vector<T> values;
    if (round % 3 == 0) {
      const T first = makeValue(random());
      const std::int64_t length = below(3);
      array = Array(first, length, comparator);
      seams = RunArrayModel<T, Comparator>(first, length, comparator);
      values.assign(static_cast<std::size_t>(length), first);
    }
    for (int step = 0; step < 100; ++step) {
      std::int64_t lower = below(array.count() + 1);
      std::int64_t upper = lower + below(std::min<std::int64_t>(8, array.count() - lower) + 1);
      if (array.count() > 60)
        lower = 0, upper = array.count() - 5;
      const std::int64_t operation = below(6);
      SCOPED_TRACE(testing::Message() << "round " << round << " step " << step << " operation "
                                      << operation << " on " << lower << "..<" << upper);
      const Array before = array;
      const auto runsBefore = seams.runs();
      Pairs pairs; // what the change lays down
      switch (operation) {
      case 0:
        array.removeSubrange({lower, upper});
        break;
      case 1:
        upper = lower;
        [[fallthrough]];
      case 2: {
        pairs.emplace_back(makeValue(random()), 1 + below(4));
        array.replaceSubrange({lower, upper}, pairs[0].first, pairs[0].second);
        break;
      }
      case 3: {
        std::vector<typename Array::Pair> laid;
        for (std::int64_t k = below(4); k > 0; --k)
          laid.push_back({makeValue(random()), below(3)});
        array.replaceSubrangeWithPairs({lower, upper}, laid);
        for (const auto& pair : laid)
          if (pair.count > 0)
            pairs.emplace_back(pair.value, pair.count);
        break;
      }
      case 4: {
        // Another array, the array itself, or a part of it.
        const bool isOther = below(2) == 0 || array.isEmpty() || array.count() > 30;
        const Array other = isOther ? someArray() : array;
        std::optional<TextRange> part;
        if (!other.isEmpty() && below(2) == 0) {
          const std::int64_t start = below(other.count());
          part = TextRange(start, start + below(other.count() - start + 1));
        }
        array.replaceSubrangeWithContentsOf({lower, upper}, isOther ? other : array, part);
        for (const auto& run : part ? other.runsIn(*part) : other.runs()) {
          if (run.range.isEmpty())
            continue;
          if (!pairs.empty() && comparator.canMerge(pairs.back().first, run.value))
            pairs.back().second += run.range.length();
          else
            pairs.emplace_back(run.value, run.range.length());
        }
        break;
      }
      case 5: {
        if (lower == array.count())
          continue;
        const T value = makeValue(random());
        array.transformSubrange({lower, upper}, [&](const T& old) {
          return comparator.canMerge(old, value) ? old : value;
        });
        for (const auto& run : before.runsIn({lower, upper})) {
          const T& changed = comparator.canMerge(run.value, value) ? run.value : value;
          if (run.range.isEmpty())
            continue;
          if (!pairs.empty() && comparator.canMerge(pairs.back().first, changed))
            pairs.back().second += run.range.length();
          else
            pairs.emplace_back(changed, run.range.length());
        }
        break;
      }
      }
      seams.replace(lower, upper, pairs);
      const auto place = values.erase(values.begin() + lower, values.begin() + upper);
      std::vector<T> laidDown;
      for (const auto& [value, length] : pairs)
        laidDown.insert(laidDown.end(), static_cast<std::size_t>(length), value);
      values.insert(place, laidDown.begin(), laidDown.end());

      array.checkInvariants();
      ASSERT_EQ(array.count(), seams.count());
      const auto runs = array.runs();
      ASSERT_EQ(runs.size(), seams.runs().size());
      for (std::size_t k = 0; k < runs.size(); ++k) {
        ASSERT_EQ(runs.value(k), seams.runs()[k].value) << "run " << k;
        ASSERT_EQ(runs.range(k), TextRange(seams.runs()[k].start, seams.runs()[k].end));
      }
      if (knowsValues) {
        const auto isSame = [&](const T& left, const T& right) {
          return left == right || comparator.canMerge(left, right);
        };
        ASSERT_TRUE(std::equal(array.begin(), array.end(), values.begin(), values.end(), isSame));
        for (std::int64_t offset = 0; offset < array.count(); ++offset)
          ASSERT_TRUE(isSame(array[offset], values[static_cast<std::size_t>(offset)]));
      }
      std::vector<T> backwards;
      for (auto it = array.end(); it != array.begin();)
        backwards.push_back(*--it);
      ASSERT_TRUE(std::equal(backwards.rbegin(), backwards.rend(), array.begin(), array.end()));
      // The copy that was taken first has seen nothing.
      ASSERT_EQ(before.runs().size(), runsBefore.size());
      for (std::size_t k = 0; k < runsBefore.size(); ++k)
        ASSERT_EQ(before.runs().value(k), runsBefore[k].value);
    }
  }
}

TEST(RunArrayRandomSteps, Equatable) {
  playRandomSteps<int>(EquatableRunComparator<int>(), [](auto n) { return int(n % 3); }, 1);
}
TEST(RunArrayRandomSteps, EquatableThatOwnsMemory) {
  playRandomSteps<std::string>(
      EquatableRunComparator<std::string>(),
      [](auto n) { return std::string(20 + n % 3, static_cast<char>('a' + n % 3)); }, 2);
}
TEST(RunArrayRandomSteps, Objects) {
  const std::vector objects{std::make_shared<int>(1), std::make_shared<int>(1)};
  using Pointer = std::shared_ptr<int>;
  playRandomSteps<Pointer>(
      ObjectRunComparator<Pointer>(), [&](auto n) { return objects[n % 2]; }, 3);
}
TEST(RunArrayRandomSteps, Optional) {
  playRandomSteps<std::optional<int>>(
      OptionalRunComparator<EquatableRunComparator<int>>(),
      [](auto n) { return n % 3 == 0 ? std::nullopt : std::optional(int(n % 3)); }, 4);
}
TEST(RunArrayRandomSteps, OptionalObjects) {
  static int first = 0;
  static int second = 0;
  playRandomSteps<std::optional<int*>>(
      OptionalObjectRunComparator<int*>(),
      [](auto n) {
        return n % 3 == 0 ? std::nullopt : std::optional(n % 3 == 1 ? &first : &second);
      },
      5);
}
TEST(RunArrayRandomSteps, KeyPath) {
  playRandomSteps<Token>(
      KeyPathRunComparator(&Token::kind),
      [](auto n) { return Token{int(n % 3), int(n / 3 % 1'000)}; }, 6);
}
TEST(RunArrayRandomSteps, KeyPathThroughAProjection) {
  auto parity = [](const int& value) { return value % 2; };
  playRandomSteps<int>(
      KeyPathRunComparator<int, decltype(parity)>(parity), [](auto n) { return int(n % 1'000); },
      7);
}
TEST(RunArrayRandomSteps, Never) {
  playRandomSteps<int>(NeverRunComparator<int>(), [](auto n) { return int(n % 3); }, 8);
}
TEST(RunArrayRandomSteps, OptionalNever) {
  playRandomSteps<std::optional<int>>(
      OptionalNeverRunComparator<int>(),
      [](auto n) { return n % 2 == 0 ? std::nullopt : std::optional(int(n % 3)); }, 9);
}

TEST(RunArrayRandomSteps, OneThatAsksForAnOrder) {
  playRandomSteps<int>(AscendingRunComparator(), [](auto n) { return int(n % 5); }, 10, false);
}

} // namespace
} // namespace velmar
