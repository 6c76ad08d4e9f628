#include "VelmarPlatform/Concurrency/Executor.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/SerialExecutor.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace velmar {
namespace {

using testing_support::run;
using testing_support::runUntil;

constexpr std::chrono::nanoseconds atOnce{0};
bool never() {
  return false;
}

std::vector<int> upTo(int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

// Serial executors

class SerialExecutors : public testing::TestWithParam<Lane> {};

TEST_P(SerialExecutors, RunJobsInTheOrderOfQueueing) {
  const auto serial = SerialExecutor::make("order", GetParam());
  std::vector<int> ran;
  std::latch done(1);
  for (int i = 0; i < 1'000; ++i)
    serial->post([&ran, i] { ran.push_back(i); });
  serial->post([&] { done.count_down(); });
  done.wait();
  EXPECT_EQ(ran, upTo(1'000));
}

TEST_P(SerialExecutors, RunOneJobAtATime) {
  const auto serial = SerialExecutor::make("one", GetParam());
  constexpr int threadCount = 4;
  constexpr int jobCount = 2'000;
  int unguarded = 0;
  std::latch done(threadCount * jobCount);
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < jobCount; ++i)
        serial->post([&] {
          ++unguarded;
          done.count_down();
        });
    });
  for (std::thread& thread : threads)
    thread.join();
  done.wait();
  EXPECT_EQ(unguarded, threadCount * jobCount);
}

TEST_P(SerialExecutors, RunWhatIsQueuedAfterTheLastReferenceWent) {
  std::latch done(2);
  auto serial = SerialExecutor::make("gone", GetParam());
  std::weak_ptr<SerialExecutor> weak = serial;
  serial->post([&] { done.count_down(); });
  serial->post([&] { done.count_down(); });
  serial = nullptr;
  done.wait();
  runUntil([&] { return weak.expired(); });
}

INSTANTIATE_TEST_SUITE_P(Lanes, SerialExecutors,
                         testing::Values(Lane::pool, Lane::poolOrReactor, Lane::ownThread),
                         [](const auto& row) {
                           return std::string(row.param == Lane::pool            ? "Pool"
                                              : row.param == Lane::poolOrReactor ? "PoolOrReactor"
                                                                                 : "OwnThread");
                         });

TEST(SerialExecutor, KnowsWhetherItIsCurrent) {
  const auto serial = SerialExecutor::make("here");
  const auto other = SerialExecutor::make("there");
  EXPECT_FALSE(serial->isCurrent());
  EXPECT_EQ(Executor::current(), nullptr);
  std::latch done(1);
  serial->post([&] {
    EXPECT_TRUE(serial->isCurrent());
    EXPECT_FALSE(other->isCurrent());
    EXPECT_EQ(Executor::current()->label(), "here");
    done.count_down();
  });
  done.wait();
}

TEST(SerialExecutor, PerformsAtOnceWhatIsPerformedFromInside) {
  const auto serial = SerialExecutor::make("perform");
  std::string trace;
  std::latch done(1);
  serial->perform([&] {
    serial->post([&] {
      trace += "c";
      done.count_down();
    });
    serial->perform([&] { trace += "a"; });
    trace += "b";
  });
  done.wait();
  EXPECT_EQ(trace, "abc");
}

TEST(SerialExecutor, OnItsOwnThreadMayBlockWhileThePoolGoesOn) {
  // More blocked executors than the pool has threads, and work on the pool that unblocks them.
  const unsigned count = 2 * std::max(2U, std::thread::hardware_concurrency()) + 2;
  std::latch blocked(count);
  std::latch release(1);
  std::latch done(count);
  for (unsigned i = 0; i < count; ++i)
    SerialExecutor::make("blocking", Lane::ownThread)->post([&] {
      blocked.count_down();
      release.wait();
      done.count_down();
    });
  blocked.wait();
  poolExecutor().post([&] { release.count_down(); });
  done.wait();
}

class Echo : public SerialObject {
public:
  Echo() : SerialObject("echo") {}
  Task<std::thread::id> threadID() { co_return std::this_thread::get_id(); }
};

TEST(SerialExecutor, ACallToAnIdleObjectAndBackStaysOnItsThread) {
  EXPECT_TRUE(run([] {
    return spawn([]() -> Task<bool> {
             const auto first = std::make_shared<Echo>();
             const std::thread::id here = std::this_thread::get_id();
             const std::thread::id there = co_await first->threadID();
             co_return here == there&& std::this_thread::get_id() == here;
           })
        .value();
  }));
}

class Ball : public SerialObject {
public:
  Ball() : SerialObject("ball") {}
  Task<void> touch() { co_return; }
};

TEST(SerialExecutor, ObjectsThatCallEachOtherAllDayLetOthersRun) {
  run([]() -> Task<void> {
    std::atomic<bool> stop = false;
    co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
      const unsigned pairs = 2 * std::max(2U, std::thread::hardware_concurrency());
      for (unsigned i = 0; i < pairs; ++i)
        group.add([&]() -> Task<void> {
          const auto ball = std::make_shared<Ball>();
          while (!stop)
            co_await ball->touch();
        });
      group.add([&] { stop = true; });
      co_await group.waitForAll();
    });
  });
}

// The main executor

TEST(MainExecutor, RunsJobsInOrderWhenAskedTo) {
  std::vector<int> ran;
  for (int i = 0; i < 5; ++i)
    mainExecutor().post([&ran, i] { ran.push_back(i); });
  EXPECT_TRUE(ran.empty());
  EXPECT_EQ(mainExecutor().runReady(), 5U);
  EXPECT_EQ(ran, upTo(5));
  EXPECT_EQ(mainExecutor().runReady(), 0U);
}

TEST(MainExecutor, LeavesWhatIsQueuedMeanwhileForTheNextRound) {
  std::string trace;
  mainExecutor().post([&] {
    trace += "a";
    mainExecutor().post([&] { trace += "c"; });
  });
  mainExecutor().post([&] { trace += "b"; });
  EXPECT_EQ(mainExecutor().runReady(), 2U);
  EXPECT_EQ(trace, "ab");
  EXPECT_EQ(mainExecutor().runReady(), 1U);
  EXPECT_EQ(trace, "abc");
}

TEST(MainExecutor, AsksToBeRunUntilNothingIsLeft) {
  int wakes = 0;
  mainExecutor().setWakeHook([&] { ++wakes; });
  mainExecutor().post([&] { mainExecutor().post([] {}); });
  mainExecutor().post([] {});
  EXPECT_EQ(wakes, 1);
  EXPECT_EQ(mainExecutor().runReady(), 2U);
  EXPECT_EQ(wakes, 2) << "The job that was queued by a job needs another round.";
  EXPECT_EQ(mainExecutor().runReady(), 1U);
  EXPECT_EQ(wakes, 2);
  mainExecutor().setWakeHook({});
}

TEST(MainExecutor, AHookThatComesLateHearsOfWhatIsThere) {
  mainExecutor().post([] {});
  int wakes = 0;
  mainExecutor().setWakeHook([&] { ++wakes; });
  EXPECT_EQ(wakes, 1);
  mainExecutor().runReady();
  mainExecutor().setWakeHook({});
}

TEST(MainExecutor, RunUntilStopsAtThePredicate) {
  int count = 0;
  for (int i = 0; i < 5; ++i)
    mainExecutor().post([&] { ++count; });
  EXPECT_TRUE(mainExecutor().runUntil([&] { return count == 3; }, std::chrono::minutes(1)));
  EXPECT_EQ(count, 3);
  EXPECT_FALSE(mainExecutor().runUntil(never, atOnce));
  EXPECT_EQ(count, 4);
  EXPECT_TRUE(mainExecutor().runUntil([&] { return count == 5; }, atOnce));
}

TEST(MainExecutor, RunUntilStopsAtTheLimitThoughThereIsAlwaysMore) {
  bool goesOn = true;
  std::function<void()> again = [&] {
    if (goesOn)
      mainExecutor().post(again);
  };
  again();
  EXPECT_FALSE(mainExecutor().runUntil(never, std::chrono::milliseconds(1)));
  goesOn = false;
  mainExecutor().runReady();
}

TEST(MainExecutor, RunsJobsOfOtherThreadsOnItsOwn) {
  const std::thread::id here = std::this_thread::get_id();
  std::thread::id ranOn;
  std::thread other([&] { mainExecutor().post([&] { ranOn = std::this_thread::get_id(); }); });
  runUntil([&] { return ranOn != std::thread::id(); });
  other.join();
  EXPECT_EQ(ranOn, here);
}

TEST(MainExecutorDeathTest, BeingDrivenFromInsideOfAJobStopsTheProcess) {
  EXPECT_DEATH(run([]() -> Task<void> {
                 mainExecutor().post([] {});
                 mainExecutor().runReady();
                 co_return;
               }),
               "driven from inside of a job");
}

} // namespace
} // namespace velmar
