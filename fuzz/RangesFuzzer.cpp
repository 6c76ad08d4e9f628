// Plays operations on range sets and run arrays and on simple models of them: a Boolean for each
// value, a list of runs with both ends. Each operation is four bytes: which, where, how long, what.

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarCore/Text/RunArray.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "tests/VelmarCore/Text/RunArrayModel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

using namespace velmar;

namespace {

struct Operation {
  int kind;
  std::int64_t place;
  std::int64_t length;
  int value;
};

std::vector<Operation> operationsIn(std::span<const std::uint8_t> bytes) {
  std::vector<Operation> operations;
  for (; bytes.size() >= 4 && operations.size() < 200; bytes = bytes.subspan(4))
    operations.push_back({bytes[0], bytes[1], bytes[2] % 24, bytes[3]});
  return operations;
}

// ---- Sets ------------------------------------------------------------------------------------

constexpr std::size_t setSize = 256 + 24;
using Bits = std::array<bool, setSize>;

void expectSame(const TextRangeSet& set, const Bits& bits) {
  set.checkInvariants();
  Bits found{};
  for (const TextRange& range : set.ranges())
    for (std::int64_t value = range.lowerBound; value < range.upperBound; ++value)
      found[static_cast<std::size_t>(value)] = true;
  precondition(found == bits, "A range set differs from its values.");
}

/// Two sets, of which the first is changed alone or by the second; they change places now and then.
void playOnSets(std::span<const Operation> operations) {
  TextRangeSet set;
  TextRangeSet other;
  Bits bits{};
  Bits otherBits{};
  const auto combine = [&](auto keep) {
    for (std::size_t value = 0; value < setSize; ++value)
      bits[value] = keep(bits[value], otherBits[value]);
  };
  for (const auto& [kind, place, length, what] : operations) {
    const TextRange range(place, place + length);
    switch (kind % 8) {
    case 0:
    case 1: {
      const Bits before = bits;
      std::fill_n(bits.begin() + place, length, true);
      precondition(set.insertContentsOf(range) == (bits != before),
                   "An insertion says wrongly whether it changed the set.");
      break;
    }
    case 2:
      set.removeContentsOf(range);
      std::fill_n(bits.begin() + place, length, false);
      break;
    case 3:
      expectSame(set.unionWith(other), [&] {
        Bits both = bits;
        for (std::size_t value = 0; value < setSize; ++value)
          both[value] |= otherBits[value];
        return both;
      }());
      set.formUnion(other);
      combine([](bool left, bool right) { return left || right; });
      break;
    case 4:
      precondition(set.isDisjoint(other) == set.intersection(other).isEmpty(),
                   "Disjoint sets have values in common.");
      set.formIntersection(other);
      combine([](bool left, bool right) { return left && right; });
      break;
    case 5:
      set.subtract(other);
      combine([](bool left, bool right) { return left && !right; });
      break;
    case 6:
      set.formSymmetricDifference(other);
      combine([](bool left, bool right) { return left != right; });
      break;
    default:
      std::swap(set, other);
      std::swap(bits, otherBits);
      break;
    }
    expectSame(set, bits);
    precondition(set.contains(place) == bits[static_cast<std::size_t>(place)],
                 "A set is wrong about one value.");
    precondition(set.isSubsetOf(other) == set.subtracting(other).isEmpty(),
                 "A set is wrong about being a subset.");
  }
}

// ---- Run arrays --------------------------------------------------------------------------------

/// Merges by remainder, so that values which merge still differ.
struct RemainderRunComparator {
  using Compared = int;
  [[nodiscard]] bool canMerge(int left, int right) const { return left % 3 == right % 3; }
  [[nodiscard]] std::size_t hashValue() const noexcept { return 0; }
  bool operator==(const RemainderRunComparator&) const = default;
};

template <class Comparator>
void expectSame(const RunArray<int, Comparator>& array,
                const RunArrayModel<int, Comparator>& model) {
  array.checkInvariants();
  const auto runs = array.runs();
  precondition(runs.size() == model.runs().size(), "A run array has other runs than its model.");
  for (std::size_t k = 0; k < runs.size(); ++k) {
    const auto& run = model.runs()[k];
    precondition(runs[k].value == run.value && runs[k].range == TextRange(run.start, run.end),
                 "A run differs from that of the model.");
  }
}

template <class Comparator>
void playOnArrays(std::span<const Operation> operations) {
  using Array = RunArray<int, Comparator>;
  using Model = RunArrayModel<int, Comparator>;
  Array array;
  Model model{Comparator()};
  if (!operations.empty() && operations[0].value % 2 == 0) {
    array = Array(operations[0].value, operations[0].length);
    model = Model(operations[0].value, operations[0].length, Comparator());
  }
  Array oldArray = array;
  Model oldModel = model;
  for (const auto& [kind, place, length, value] : operations) {
    const std::int64_t lower = place % (array.count() + 1);
    const std::int64_t upper = std::min(array.count(), lower + length);
    std::vector<std::pair<int, std::int64_t>> pairs;
    switch (kind % 5) {
    case 0:
      array.removeSubrange({lower, upper});
      model.remove(lower, upper);
      break;
    case 1:
      if (length > 0)
        pairs.emplace_back(value, length);
      array.insert(value, lower, length);
      model.replace(lower, lower, pairs);
      break;
    case 2: {
      pairs = {{value, 1 + length % 3}, {value / 2, 1}};
      std::vector<typename Array::Pair> laid;
      laid.reserve(pairs.size());
      for (const auto& [laidValue, count] : pairs)
        laid.push_back({laidValue, count});
      array.replaceSubrangeWithPairs({lower, upper}, laid);
      model.replace(lower, upper, pairs);
      break;
    }
    case 3:
      pairs.emplace_back(value, 1 + length / 2);
      array.replaceSubrange({lower, upper}, value, 1 + length / 2);
      model.replace(lower, upper, pairs);
      break;
    default:
      std::swap(array, oldArray); // both are right, whatever happened to the other
      std::swap(model, oldModel);
      if (value % 2 == 0) {
        oldArray = array;
        oldModel = model;
      }
      break;
    }
    expectSame(array, model);
    expectSame(oldArray, oldModel);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<Operation> operations = operationsIn({data, size});
  playOnSets(operations);
  playOnArrays<EquatableRunComparator<int>>(operations);
  playOnArrays<NeverRunComparator<int>>(operations);
  playOnArrays<RemainderRunComparator>(operations);
  playOnArrays<AscendingRunComparator>(operations);
  return 0;
}
