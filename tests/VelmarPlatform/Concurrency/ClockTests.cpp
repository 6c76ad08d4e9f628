#include "VelmarPlatform/Concurrency/Clock.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/CancellationHandler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>

namespace velmar {
namespace {

using namespace std::chrono_literals;
using testing_support::run;
using testing_support::runUntil;

Task<void> sleepThenWrite(ManualClock& clock, Clock::Duration duration, std::string& trace,
                          char mark) {
  co_await clock.sleepFor(duration);
  trace += mark;
}

TEST(ManualClock, WakesExactlyWhoIsDueInTheOrderOfDeadlines) {
  ManualClock clock;
  std::string trace;
  for (const auto& [mark, seconds] : {std::pair('c', 3), {'a', 1}, {'B', 2}, {'b', 2}})
    spawn(mainExecutor(), [&, mark, seconds] {
      return sleepThenWrite(clock, std::chrono::seconds(seconds), trace, mark);
    });
  runUntil([&] { return clock.sleeperCount() == 4; });
  clock.advance(999ms);
  EXPECT_EQ(clock.sleeperCount(), 4U);
  clock.advance(1001ms);
  runUntil([&] { return trace.size() == 3; });
  EXPECT_EQ(trace, "aBb") << "Equal deadlines wake in the order of going to sleep.";
  clock.advance(1h);
  runUntil([&] { return trace.size() == 4; });
  EXPECT_EQ(trace, "aBbc");
}

TEST(Clock, ADeadlineThatHasPassedDoesntWait) {
  run([]() -> Task<void> {
    ManualClock clock;
    clock.advance(1h);
    co_await clock.sleepUntil(clock.now());
    co_await clock.sleepFor(-1s);
    co_await monotonicClock().sleepFor(0s);
  });
}

TEST(Clock, ACancelledSleepEndsAtOnce) {
  run([]() -> Task<void> {
    ManualClock manual;
    for (Clock* clock : {static_cast<Clock*>(&manual), &monotonicClock()}) {
      const auto sleeper = spawn([clock] { return clock->sleepFor(24h); });
      while (clock->sleeperCount() == 0)
        co_await spawn([] {}).value();
      sleeper.cancel();
      EXPECT_THROW(co_await sleeper.value(), CancellationError);
      EXPECT_EQ(clock->sleeperCount(), 0U);
    }
  });
}

TEST(Clock, ATaskThatIsCancelledAlreadyDoesntSleep) {
  run([]() -> Task<void> {
    TaskScope scope;
    scope.cancelAll();
    ManualClock clock;
    EXPECT_THROW(co_await scope.spawn([&] { return clock.sleepFor(-1s); }).value(),
                 CancellationError);
  });
}

TEST(Clock, TheEndOfTimeIsFarEnough) {
  run([]() -> Task<void> {
    const auto sleeper = spawn([] { return monotonicClock().sleepFor(Clock::Duration::max()); });
    while (monotonicClock().sleeperCount() == 0)
      co_await spawn([] {}).value();
    co_await monotonicClock().sleepFor(1ms);
    EXPECT_FALSE(sleeper.isFinished());
    sleeper.cancel();
    EXPECT_THROW(co_await sleeper.value(), CancellationError);
  });
}

TEST(MonotonicClock, SleepsNoShorterThanAsked) {
  run([]() -> Task<void> {
    for (const auto duration : {100us, 1'500us, 5'000us}) {
      const auto start = std::chrono::steady_clock::now();
      co_await monotonicClock().sleepFor(duration);
      EXPECT_GE(std::chrono::steady_clock::now() - start, duration);
    }
  });
}

TEST(MonotonicClock, AnEarlierDeadlineOvertakesALaterOne) {
  run([]() -> Task<void> {
    std::string trace;
    const auto sleep = [&](Clock::Duration duration, char mark) -> Task<void> {
      co_await monotonicClock().sleepFor(duration);
      trace += mark;
    };
    const auto late = spawn(mainExecutor(), [&] { return sleep(40ms, 'b'); });
    const auto early = spawn(mainExecutor(), [&] { return sleep(2ms, 'a'); });
    co_await late.value();
    co_await early.value();
    EXPECT_EQ(trace, "ab");
  });
}

TEST(MonotonicClock, DeadlineAndCancellationRaceThreeHundredTimes) {
  run([]() -> Task<void> {
    int cancelled = 0;
    for (int round = 0; round < 300; ++round) {
      const auto sleeper = spawn([] { return monotonicClock().sleepFor(20us); });
      const auto canceller = spawn([sleeper] { sleeper.cancel(); });
      if (!(co_await sleeper.outcome()).hasValue())
        ++cancelled;
      co_await canceller.value();
    }
    EXPECT_LE(cancelled, 300);
    EXPECT_EQ(monotonicClock().sleeperCount(), 0U);
  });
}

TEST(ManualClockDeathTest, CantBeTurnedBack) {
  EXPECT_DEATH(ManualClock().advance(-1ns), "can't be turned back");
}

// Cancellation handlers

TEST(CancellationHandler, RunsAtTheMomentOfCancelling) {
  run([]() -> Task<void> {
    testing_support::Gate gate;
    int calls = 0;
    const auto task = spawn([&] {
      return withTaskCancellationHandler(
          [&]() -> Task<int> {
            co_await gate.pass();
            co_return 5;
          },
          [&] { ++calls; });
    });
    while (gate.waitingCount() == 0)
      co_await spawn([] {}).value();
    EXPECT_EQ(calls, 0);
    task.cancel();
    EXPECT_EQ(calls, 1);
    task.cancel();
    EXPECT_EQ(calls, 1);
    gate.open();
    EXPECT_EQ(co_await task.value(), 5) << "The operation wasn't stopped by force.";
  });
}

TEST(CancellationHandler, RunsFirstInACancelledTask) {
  run([]() -> Task<void> {
    std::string trace;
    TaskScope scope;
    scope.cancelAll();
    co_await scope
        .spawn([&] {
          return withTaskCancellationHandler([&] { trace += "b"; }, [&] { trace += "a"; });
        })
        .value();
    EXPECT_EQ(trace, "ab");
  });
}

TEST(CancellationHandler, IsSilentAfterTheEnd) {
  run([]() -> Task<void> {
    testing_support::Gate gate;
    int calls = 0;
    const auto task = spawn([&]() -> Task<void> {
      co_await withTaskCancellationHandler([] {}, [&] { ++calls; });
      co_await gate.pass();
    });
    while (gate.waitingCount() == 0)
      co_await spawn([] {}).value();
    task.cancel();
    gate.open();
    co_await task.value();
    EXPECT_EQ(calls, 0);
  });
}

} // namespace
} // namespace velmar
