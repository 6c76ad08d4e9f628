// Run arrays beside the plainest thing that does the same: a vector of starts and values that is
// searched by halves, spliced, and shifted behind the edit.

#include "VelmarCore/Text/RunArray.h"

#include "bench/Pair.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <random>
#include <vector>

namespace velmar {

namespace {

enum class Kind : std::uint8_t { keyword, comment, string };
using Value = std::optional<Kind>;
using Array = RunArray<Value, OptionalRunComparator<EquatableRunComparator<Kind>>>;

constexpr std::int64_t runLength = 8;

Value valueOfRun(std::int64_t run) {
  return run % 2 == 0 ? Value() : Value(static_cast<Kind>(run / 2 % 3));
}

Array arrayOf(std::int64_t runs) {
  Array array;
  for (std::int64_t run = 0; run < runs; ++run)
    array.append(valueOfRun(run), runLength);
  return array;
}

struct BareRun {
  std::int64_t start;
  Value value;
};

struct BareRuns {
  explicit BareRuns(std::int64_t count) {
    for (std::int64_t run = 0; run < count; ++run)
      runs.push_back({run * runLength, valueOfRun(run)});
  }

  [[nodiscard]] auto holding(std::int64_t offset) {
    return std::ranges::upper_bound(runs, offset, {}, &BareRun::start) - 1;
  }
  void shift(std::vector<BareRun>::iterator from, std::int64_t delta) {
    for (; from != runs.end(); ++from)
      from->start += delta;
  }

  std::vector<BareRun> runs;
};

/// The middle of a random run, the same sequence for both sides.
class RandomPlaces {
public:
  explicit RandomPlaces(std::int64_t runs) : runs_(static_cast<std::uint64_t>(runs)) {}
  std::int64_t next() {
    return static_cast<std::int64_t>(random_() % runs_) * runLength + runLength / 2;
  }

private:
  std::mt19937 random_{42};
  std::uint64_t runs_;
};

// ---- A key typed inside a run, anywhere, and typed and deleted in one place --------------------

// Each key goes to a random run, and the one before it is deleted, so that runs keep their lengths.

void typeAnywhereInBareRuns(bench::State& state) {
  BareRuns bare(state.size());
  RandomPlaces places(state.size());
  std::int64_t last = places.next();
  bare.shift(bare.holding(last) + 1, 1);
  for (auto _ : state) {
    const std::int64_t place = places.next();
    bare.shift(bare.holding(place) + 1, 1);
    bare.shift(bare.holding(last) + 1, -1);
    last = place;
    benchmark::DoNotOptimize(bare.runs.data());
  }
}

void typeAnywhereInArray(bench::State& state) {
  Array array = arrayOf(state.size());
  RandomPlaces places(state.size());
  std::int64_t last = places.next();
  array.insert(array[last], last, 1);
  for (auto _ : state) {
    const std::int64_t place = places.next();
    array.insert(array[place], place, 1);
    array.removeSubrange({last, last + 1});
    last = place;
    benchmark::DoNotOptimize(array.count());
  }
}

void typeInOnePlaceInBareRuns(bench::State& state) {
  BareRuns bare(state.size());
  const std::int64_t place = state.size() / 2 * runLength + 3;
  for (auto _ : state) {
    bare.shift(bare.holding(place) + 1, 1);
    bare.shift(bare.holding(place) + 1, -1);
    benchmark::DoNotOptimize(bare.runs.data());
  }
}

void typeInOnePlaceInArray(bench::State& state) {
  Array array = arrayOf(state.size());
  const std::int64_t place = state.size() / 2 * runLength + 3;
  for (auto _ : state) {
    array.insert(array[place], place, 1);
    array.removeSubrange({place, place + 1});
    benchmark::DoNotOptimize(array.count());
  }
}

// ---- A splice that makes two runs more, and one that takes them out again --------------------

void spliceBareRuns(bench::State& state) {
  BareRuns bare(state.size());
  RandomPlaces places(state.size());
  for (auto _ : state) {
    const std::int64_t place = places.next();
    auto run = bare.holding(place);
    const Value value = run->value;
    const Value other = value ? Value() : Value(Kind::string);
    run = bare.runs.insert(run + 1, {{place, other}, {place + 1, value}});
    bare.runs.erase(run, run + 2);
    benchmark::DoNotOptimize(bare.runs.data());
  }
}

void spliceArray(bench::State& state) {
  Array array = arrayOf(state.size());
  RandomPlaces places(state.size());
  for (auto _ : state) {
    const std::int64_t place = places.next();
    const Value value = array[place];
    const Value other = value ? Value() : Value(Kind::string);
    array.replaceSubrange({place, place + 1}, other, 1);
    array.replaceSubrange({place, place + 1}, value, 1);
    benchmark::DoNotOptimize(array.count());
  }
}

// ---- Laying down, reading, copying -----------------------------------------------------------

void appendToBareRuns(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(BareRuns(state.size()).runs.data());
}

void appendToArray(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(arrayOf(state.size()).count());
}

void readBareRuns(bench::State& state) {
  BareRuns bare(state.size());
  RandomPlaces places(state.size());
  for (auto _ : state)
    benchmark::DoNotOptimize(bare.holding(places.next())->value);
}

void readArray(bench::State& state) {
  const Array array = arrayOf(state.size());
  RandomPlaces places(state.size());
  for (auto _ : state)
    benchmark::DoNotOptimize(array[places.next()]);
}

void copyBareRunsAndType(bench::State& state) {
  BareRuns bare(state.size());
  for (auto _ : state) {
    const BareRuns copy = bare;
    benchmark::DoNotOptimize(copy.runs.data());
    bare.shift(bare.holding(3) + 1, 1);
    bare.shift(bare.holding(3) + 1, -1);
  }
}

void copyArrayAndType(bench::State& state) {
  Array array = arrayOf(state.size());
  for (auto _ : state) {
    const Array copy = array;
    benchmark::DoNotOptimize(copy.count());
    array.insert(Value(), 3, 1);
    array.removeSubrange({3, 4});
  }
}

// What is asked of the comparator and the state of a copy make up most of the cost of a small
// array.
VELMAR_PAIR("runArray/typeAnywhere", 2, typeAnywhereInBareRuns, typeAnywhereInArray, 100);
VELMAR_PAIR("runArray/typeAnywhere", 0.5, typeAnywhereInBareRuns, typeAnywhereInArray, 1'000,
            10'000, 100'000);
VELMAR_PAIR("runArray/typeInOnePlace", 2, typeInOnePlaceInBareRuns, typeInOnePlaceInArray, 100);
VELMAR_PAIR("runArray/typeInOnePlace", 0.3, typeInOnePlaceInBareRuns, typeInOnePlaceInArray, 1'000,
            10'000, 100'000);
VELMAR_PAIR("runArray/splice", 4.5, spliceBareRuns, spliceArray, 100);
VELMAR_PAIR("runArray/splice", 2, spliceBareRuns, spliceArray, 1'000);
VELMAR_PAIR("runArray/splice", 1, spliceBareRuns, spliceArray, 10'000, 100'000);
VELMAR_PAIR("runArray/append", 4, appendToBareRuns, appendToArray, 100, 100'000);
VELMAR_PAIR("runArray/read", 1.5, readBareRuns, readArray, 100, 100'000);
VELMAR_PAIR("runArray/copyAndType", 1, copyBareRunsAndType, copyArrayAndType, 100, 100'000);

} // namespace

} // namespace velmar
