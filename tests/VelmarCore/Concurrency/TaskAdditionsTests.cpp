#include "VelmarCore/Concurrency/TaskAdditions.h"

#include "VelmarCore/Concurrency/AggregatingTaskGroup.h"
#include "VelmarCore/Concurrency/Background.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/Continuation.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/TaskLocal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace velmar {
namespace {

using namespace std::chrono_literals;

template <class Operation>
auto run(Operation operation) {
  return mainExecutor().run(std::move(operation));
}

TaskHandle<int> succeeding() {
  return spawn([] { return 5; });
}
TaskHandle<int> failing() {
  return spawn([]() -> Task<int> {
    throw std::runtime_error("no");
    co_return 0;
  });
}
/// "5", or what was thrown.
Task<std::string> endOf(TaskHandle<int> task) {
  try {
    co_return std::to_string(co_await task.value());
  } catch (const std::exception& error) {
    co_return error.what();
  }
}

// then, catch, finally

struct Following {
  const char* name;
  TaskHandle<int> (*first)();
  TaskHandle<int> (*follow)(TaskHandle<int>, std::shared_ptr<std::string> trace);
  std::string trace;
  std::string end;
};
void PrintTo(const Following& row, std::ostream* stream) {
  *stream << row.name;
}

TaskHandle<int> followThen(TaskHandle<int> task, std::shared_ptr<std::string> trace) {
  return then(task, [trace](int value) { *trace += "then " + std::to_string(value); });
}
TaskHandle<int> followCatch(TaskHandle<int> task, std::shared_ptr<std::string> trace) {
  return catchWith(task, [trace](std::exception_ptr failure) -> Task<void> {
    try {
      std::rethrow_exception(failure);
    } catch (const std::exception& error) {
      *trace += std::string("catch ") + error.what();
    }
    co_return;
  });
}
TaskHandle<int> followFinally(TaskHandle<int> task, std::shared_ptr<std::string> trace) {
  return finally(task, [trace]() -> Task<void> {
    *trace += "finally";
    co_return;
  });
}
TaskHandle<int> followByAll(TaskHandle<int> task, std::shared_ptr<std::string> trace) {
  return followFinally(followCatch(followThen(task, trace), trace), trace);
}
TaskHandle<int> followBadly(TaskHandle<int> task, std::shared_ptr<std::string>) {
  return finally(task, [] { throw std::runtime_error("body"); });
}

class FollowingTasks : public testing::TestWithParam<Following> {};

TEST_P(FollowingTasks, PassOnTheFirstTasksEnd) {
  const Following& row = GetParam();
  const auto trace = std::make_shared<std::string>();
  EXPECT_EQ(run([&] { return endOf(row.follow(row.first(), trace)); }), row.end);
  EXPECT_EQ(*trace, row.trace);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FollowingTasks,
    testing::Values(Following{"ThenAfterSuccess", succeeding, followThen, "then 5", "5"},
                    Following{"ThenAfterFailure", failing, followThen, "", "no"},
                    Following{"CatchAfterSuccess", succeeding, followCatch, "", "5"},
                    Following{"CatchAfterFailure", failing, followCatch, "catch no", "no"},
                    Following{"FinallyAfterSuccess", succeeding, followFinally, "finally", "5"},
                    Following{"FinallyAfterFailure", failing, followFinally, "finally", "no"},
                    Following{"ChainAfterSuccess", succeeding, followByAll, "then 5finally", "5"},
                    Following{"ChainAfterFailure", failing, followByAll, "catch nofinally", "no"},
                    Following{"BodyFails", succeeding, followBadly, "", "body"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(TaskAdditions, WorkForTasksWithoutAValue) {
  run([]() -> Task<void> {
    std::atomic<int> calls = 0;
    const auto first = spawn([] {});
    co_await then(first, [&] { ++calls; }).value();
    co_await catchWith(first, [&](std::exception_ptr) { calls += 100; }).value();
    co_await finally(first, [&] { ++calls; }).value();
    EXPECT_EQ(calls, 2);
  });
}

// waitUnlessCancelled

/// A task that ends with 5 when the clock is turned by an hour.
TaskHandle<int> slow(ManualClock& clock) {
  return spawn([&]() -> Task<int> {
    co_await clock.sleepFor(1h);
    co_return 5;
  });
}

TEST(WaitUnlessCancelled, WaitsForTheEnd) {
  run([]() -> Task<void> {
    ManualClock clock;
    const auto task = slow(clock);
    while (clock.sleeperCount() == 0)
      co_await spawn([] {}).value();
    clock.advance(1h);
    co_await waitUnlessCancelled(task);
    EXPECT_TRUE(task.isFinished());
    co_await waitUnlessCancelled(task);
  });
}

TEST(WaitUnlessCancelled, PassesOnTheFailure) {
  run([]() -> Task<void> {
    EXPECT_THROW(co_await waitUnlessCancelled(failing()), std::runtime_error);
  });
}

TEST(WaitUnlessCancelled, EndsWithItsOwnTaskAndLeavesTheOtherRunning) {
  run([]() -> Task<void> {
    ManualClock clock;
    const auto task = slow(clock);
    const auto waiter = spawn([task] { return waitUnlessCancelled(task); });
    while (clock.sleeperCount() == 0)
      co_await spawn([] {}).value();
    waiter.cancel();
    EXPECT_THROW(co_await waiter.value(), CancellationError);
    EXPECT_FALSE(task.isFinished());
    EXPECT_FALSE(task.isCancelled());
    clock.advance(1h);
    EXPECT_EQ(co_await task.value(), 5);
  });
}

TEST(WaitUnlessCancelled, FailsAtOnceInACancelledTask) {
  run([]() -> Task<void> {
    const auto ended = succeeding();
    co_await ended.value();
    TaskScope scope;
    scope.cancelAll();
    EXPECT_THROW(co_await scope.spawn([=] { return waitUnlessCancelled(ended); }).value(),
                 CancellationError);
  });
}

TEST(WaitUnlessCancelled, EndAndCancellationRaceThreeHundredTimes) {
  run([]() -> Task<void> {
    for (int round = 0; round < 300; ++round) {
      const auto task = spawn([] {});
      const auto waiter = spawn([task] { return waitUnlessCancelled(task); });
      const auto canceller = spawn([waiter] { waiter.cancel(); });
      const Outcome<void> outcome = co_await waiter.outcome();
      if (!outcome) {
        EXPECT_THROW(std::rethrow_exception(outcome.error()), CancellationError);
      }
      co_await task.value();
      co_await canceller.value();
    }
  });
}

// withAggregatingTaskGroup

/// Returns when each thread of the pool has finished what it was at: tasks that were about to end
/// have ended.
void letThePoolFinish() {
  const unsigned threads = std::max(2U, std::thread::hardware_concurrency());
  const auto all = std::make_shared<std::latch>(threads + 1);
  for (unsigned i = 0; i < threads; ++i)
    poolExecutor().post([all] { all->arrive_and_wait(); });
  all->arrive_and_wait();
}

/// Values as decimals, "time" and "cancelled" for those errors, else the error's text.
std::string described(const Outcome<int>& outcome) {
  if (outcome)
    return std::to_string(*outcome);
  try {
    std::rethrow_exception(outcome.error());
  } catch (const TimeoutError&) {
    return "time";
  } catch (const CancellationError&) {
    return "cancelled";
  } catch (const std::exception& error) {
    return error.what();
  }
}
std::vector<std::string> described(const Aggregated<int>& aggregated) {
  std::vector<std::string> texts;
  for (const Outcome<int>& outcome : aggregated)
    texts.push_back(described(outcome));
  return texts;
}

TEST(AggregatingTaskGroup, AnEmptyCollectionIsAnsweredAtOnce) {
  run([]() -> Task<void> {
    const auto result = co_await withAggregatingTaskGroup(std::vector<int>(), 24h * 365,
                                                          [](int value) { return value; });
    EXPECT_EQ(result.size(), 0U);
  });
}

TEST(AggregatingTaskGroup, KeepsTheOrderOfTheInput) {
  run([]() -> Task<void> {
    // Each waits for the one after it.
    auto ended = std::make_shared<std::array<std::atomic<bool>, 4>>();
    (*ended)[3] = true;
    const auto result = co_await withAggregatingTaskGroup(
        std::vector{0, 1, 2}, 1h, [ended](int value) -> Task<int> {
          while (!(*ended)[static_cast<std::size_t>(value) + 1])
            co_await spawn([] {}).value();
          (*ended)[static_cast<std::size_t>(value)] = true;
          co_return 10 * value;
        });
    EXPECT_EQ(described(result), (std::vector<std::string>{"0", "10", "20"}));
  });
}

TEST(AggregatingTaskGroup, AFailureStaysInItsPlace) {
  run([]() -> Task<void> {
    const auto result =
        co_await withAggregatingTaskGroup(std::vector{1, 2, 3}, 1h, [](int value) -> Task<int> {
          if (value == 2)
            throw std::runtime_error("two");
          if (value == 3)
            throw CancellationError();
          co_return value;
        });
    EXPECT_EQ(described(result), (std::vector<std::string>{"1", "two", "cancelled"}));
  });
}

TEST(AggregatingTaskGroup, WhatNeverEndsTimesOut) {
  run([]() -> Task<void> {
    ManualClock clock;
    std::atomic<int> ended = 0;
    const auto group = spawn([&] {
      return withAggregatingTaskGroup(
          std::vector{1, 2, 3}, 30s,
          [&](int value) -> Task<int> {
            if (value == 2)
              co_await clock.sleepFor(24h);
            ++ended;
            co_return value;
          },
          &clock);
    });
    while (clock.sleeperCount() < 2 || ended < 2)
      co_await spawn([] {}).value();
    clock.advance(29s);
    EXPECT_FALSE(group.isFinished());
    letThePoolFinish();
    clock.advance(1s);
    EXPECT_EQ(described(co_await group.value()), (std::vector<std::string>{"1", "time", "3"}));
    EXPECT_EQ(ended, 2);
  });
}

TEST(AggregatingTaskGroup, GivesNothingForOperationsWithoutAValue) {
  run([]() -> Task<void> {
    std::atomic<int> sum = 0;
    const auto result = co_await withAggregatingTaskGroup(std::vector{1, 2, 3}, 1h,
                                                          [&](int value) { sum += value; });
    EXPECT_EQ(sum, 6);
    EXPECT_EQ(result.size(), 3U);
    EXPECT_TRUE(result[2].hasValue());
  });
}

// runInBackground

const TaskLocal<int>& local() {
  static const auto& value = *new TaskLocal<int>(0);
  return value;
}

TEST(RunInBackground, RunsOnAQueueOfItsOwnAndComesBack) {
  run([]() -> Task<void> {
    const std::string label = co_await runInBackground([]() -> Task<std::string> {
      const std::string before = Executor::current()->label();
      co_await spawn([] {}).value();
      EXPECT_EQ(Executor::current()->label(), before);
      co_return before;
    });
    EXPECT_EQ(label, "com.tolbek.orvell.serial-executor");
    EXPECT_TRUE(mainExecutor().isCurrent());
  });
}

TEST(RunInBackground, PassesOnAFailure) {
  run([]() -> Task<void> {
    EXPECT_THROW(co_await runInBackground([] { throw std::runtime_error("no"); }),
                 std::runtime_error);
  });
}

TEST(RunInBackground, MayBlockWithoutStoppingOthers) {
  run([]() -> Task<void> {
    const unsigned count = std::max(2U, std::thread::hardware_concurrency()) + 2;
    const auto release = std::make_shared<std::latch>(1);
    std::vector<TaskHandle<void>> blocked;
    for (unsigned i = 0; i < count; ++i)
      blocked.push_back(
          spawn([release] { return runInBackground([release] { release->wait(); }); }));
    co_await spawn([release] { release->count_down(); }).value();
    for (const auto& task : blocked)
      co_await task.value();
  });
}

TEST(RunInBackground, BelongsToTheCallingTask) {
  run([]() -> Task<void> {
    TaskScope scope;
    scope.cancelAll();
    EXPECT_TRUE(
        co_await scope.spawn([] { return runInBackground([] { return isTaskCancelled(); }); })
            .value());
    EXPECT_EQ(
        co_await local().withValue(3, [] { return runInBackground([] { return local().get(); }); }),
        3);
  });
}

} // namespace
} // namespace velmar
