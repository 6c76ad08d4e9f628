#include "bench/Pair.h"

#include "bench/InstructionCounter.h"

#include <algorithm>
#include <utility>

namespace velmar::bench {

namespace {

struct Registry {
  std::vector<SinglePair> pairs;
  std::vector<LeftOut> leftOut;
};

/// Made when first used, because the files that register come in no order.
Registry& registry() {
  static Registry instance;
  return instance;
}

} // namespace

State::State(benchmark::State& timed, std::int64_t size)
    : timed_(&timed), iterations_(timed.max_iterations), size_(size) {}

State::State(InstructionCounter* counter, std::int64_t iterations, std::int64_t size)
    : counter_(counter), iterations_(iterations), size_(size) {}

State::Iterator State::begin() {
  // One batch of all iterations: its start starts the clock, and asking for another stops it.
  if (timed_)
    timed_->KeepRunningBatch(timed_->max_iterations);
  if (counter_)
    counter_->start();
  return {this, iterations_};
}

void State::finish() {
  if (counter_)
    counter_->stop();
  if (timed_)
    timed_->KeepRunningBatch(timed_->max_iterations);
}

void State::pause() {
  if (counter_)
    counter_->pause();
  if (timed_)
    timed_->PauseTiming();
}

void State::resume() {
  if (timed_)
    timed_->ResumeTiming();
  if (counter_)
    counter_->resume();
}

bool registerPair(const Pair& pair) {
  auto& pairs = registry().pairs;
  if (pair.sizes.empty())
    pairs.push_back({pair.name, pair.bound, pair.floor, pair.ours, 0, pair.clock});
  for (const std::int64_t size : pair.sizes)
    pairs.push_back({pair.name + "/" + std::to_string(size), pair.bound, pair.floor, pair.ours,
                     size, pair.clock});
  return true;
}

bool leaveOut(std::string_view name, std::string_view reason) {
  registry().leftOut.push_back({std::string(name), std::string(reason)});
  return true;
}

std::vector<SinglePair> registeredPairs() {
  std::vector<SinglePair> pairs = registry().pairs;
  // By name, and the sizes of one pair by number: "10" before "9" would read badly.
  std::ranges::sort(pairs, {}, [](const SinglePair& pair) {
    const std::string_view name = pair.name;
    return std::pair(pair.size == 0 ? name : name.substr(0, name.rfind('/')), pair.size);
  });
  return pairs;
}

std::vector<LeftOut> leftOutPairs() {
  return registry().leftOut;
}

} // namespace velmar::bench
