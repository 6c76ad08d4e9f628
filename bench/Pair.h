// Benchmarks that stand beside their floor: the least that any program must do for the same work,
// such as a plain array of line starts beside the line array. Both run in one process in the same
// minute, so their ratio means something on a busy machine, and each pair states the ratio that it
// promises to keep.
//
//     void floorCopy(bench::State& state) {
//       const std::string text(static_cast<std::size_t>(state.size()), 'a'); // isn't measured
//       for (auto _ : state)
//         benchmark::DoNotOptimize(std::string(text));
//     }
//     VELMAR_PAIR("text/copy", 1.2, floorCopy, oursCopy, 1'000, 1'000'000);
//
// makes the pairs "text/copy/1000" and "text/copy/1000000". A bound is on instructions, which
// repeat from run to run where times swing by two to three; the times are printed beside them. A
// question without a floor is a plain BENCHMARK(…) of Google Benchmark in the same file. How to run
// them: bench/README.md.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::bench {

class InstructionCounter;

/// One run of one side: loop over it once, with the measured work as the body. What stands before
/// and after the loop isn't measured. A side is run several times, so it must leave nothing behind.
///
/// Only the thread that loops is measured.
class State {
public:
  struct [[maybe_unused]] Iteration {};
  class Iterator;

  /// A run that is timed. Made by the harness.
  State(benchmark::State& timed, std::int64_t size);
  /// A run of `iterations` whose instructions are counted, or are not where `counter` is null.
  State(InstructionCounter* counter, std::int64_t iterations, std::int64_t size);

  /// The size that the pair was registered with, or 0 if it has none.
  [[nodiscard]] std::int64_t size() const noexcept { return size_; }

  /// Leaves out what follows until `resume()`: putting the state of one iteration back for the
  /// next, say. Each of the two costs about a microsecond of measured time, so prefer work that
  /// needs no putting back.
  void pause();
  void resume();

  [[nodiscard]] Iterator begin();
  [[nodiscard]] Iterator end();

private:
  void finish();

  benchmark::State* timed_ = nullptr; // exactly one of timed_ and (counter_, iterations_) is in use
  InstructionCounter* counter_ = nullptr;
  std::int64_t iterations_ = 0;
  std::int64_t size_ = 0;
};

/// Counts the iterations down; at the last it stops the clock or the counter.
class State::Iterator {
public:
  Iterator(State* state, std::int64_t remaining) noexcept : state_(state), remaining_(remaining) {}

  Iteration operator*() const noexcept { return {}; }
  Iterator& operator++() noexcept {
    --remaining_;
    return *this;
  }
  bool operator!=(const Iterator&) const {
    if (remaining_ != 0) [[likely]]
      return true;
    state_->finish();
    return false;
  }

private:
  State* state_;
  std::int64_t remaining_;
};

inline State::Iterator State::end() {
  return {this, 0};
}

using Side = std::function<void(State&)>;

/// Which time of a side is printed: the thread's own, which other programs disturb least, or the
/// wall's, for work that waits or runs elsewhere.
enum class Clock { thread, wall };

struct Pair {
  std::string
      name; ///< Words with slashes between them: what is asked, from the general to the special.
  double bound =
      0; ///< The most that `ours` may take, in instructions of `floor`; 0 promises nothing.
  Side floor;
  Side ours;
  /// Each makes a pair of its own, "name/size"; none makes a single one.
  std::vector<std::int64_t> sizes = {}; // NOLINT(readability-redundant-member-init): may be omitted
  Clock clock = Clock::thread;
};

/// Adds a pair to the table. For pairs that are known only at run time; the others use VELMAR_PAIR.
/// Call it while the program is initialised, from one thread. Always true, so that a constant can
/// be initialised with it.
bool registerPair(const Pair& pair);

/// Tells the table that `name` isn't measured here and why: "VELMAR_TRACES isn't set", say. Called
/// like `registerPair`.
bool leaveOut(std::string_view name, std::string_view reason);

/// A pair whose sizes have been taken apart.
struct SinglePair {
  std::string name;
  double bound = 0;
  Side floor;
  Side ours;
  std::int64_t size = 0;
  Clock clock = Clock::thread;
};

struct LeftOut {
  std::string name;
  std::string reason;
};

/// All that was registered, by name and size.
[[nodiscard]] std::vector<SinglePair> registeredPairs();
[[nodiscard]] std::vector<LeftOut> leftOutPairs();

} // namespace velmar::bench

#define VELMAR_PAIR_NAME_(line) velmarPair##line
#define VELMAR_PAIR_NAME(line) VELMAR_PAIR_NAME_(line)

/// VELMAR_PAIR(name, bound, floor, ours, sizes…): see the top of this file. At most one to a line.
#define VELMAR_PAIR(name, bound, floor, ours, ...)                                                 \
  [[maybe_unused]] static const bool VELMAR_PAIR_NAME(__LINE__) =                                  \
      ::velmar::bench::registerPair({name, bound, floor, ours, {__VA_ARGS__}})
