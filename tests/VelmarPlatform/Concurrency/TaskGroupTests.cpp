#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/Clock.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <string>

namespace velmar {
namespace {

using testing_support::Gate;
using testing_support::run;

TEST(TaskGroup, TellsEndsInTheirOwnOrder) {
  run([]() -> Task<void> {
    std::array<Gate, 3> gates;
    co_await withTaskGroup<int>([&](TaskGroup<int>& group) -> Task<void> {
      for (int i = 0; i < 3; ++i)
        group.add([&gates, i]() -> Task<int> {
          co_await gates[static_cast<std::size_t>(i)].pass();
          co_return i;
        });
      for (const int i : {2, 0, 1}) {
        gates[static_cast<std::size_t>(i)].open();
        EXPECT_EQ(co_await group.next(), i);
      }
      EXPECT_EQ(co_await group.next(), std::nullopt);
      EXPECT_TRUE(group.isEmpty());
    });
  });
}

TEST(TaskGroup, EndsAfterItsChildren) {
  run([]() -> Task<void> {
    std::atomic<int> ended = 0;
    co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
      for (int i = 0; i < 50; ++i)
        group.add([&] { ++ended; });
      co_return;
    });
    EXPECT_EQ(ended, 50);
  });
}

TEST(TaskGroup, ABodyThatThrowsCancelsTheChildrenAndWaitsForThem) {
  run([]() -> Task<void> {
    ManualClock clock;
    bool childSawIt = false;
    std::string failure;
    try {
      co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
        group.add([&]() -> Task<void> {
          try {
            co_await clock.sleepFor(std::chrono::hours(1));
          } catch (const CancellationError&) {
            childSawIt = true;
          }
        });
        throw std::runtime_error("body");
        co_return;
      });
    } catch (const std::runtime_error& error) {
      failure = error.what();
    }
    EXPECT_EQ(failure, "body");
    EXPECT_TRUE(childSawIt);
  });
}

TEST(TaskGroup, AChildsFailureLeavesTheOthersRunning) {
  run([]() -> Task<void> {
    Gate gate;
    co_await withTaskGroup<int>([&](TaskGroup<int>& group) -> Task<void> {
      group.add([]() -> Task<int> {
        throw std::runtime_error("child");
        co_return 0;
      });
      EXPECT_THROW(co_await group.next(), std::runtime_error);
      group.add([&]() -> Task<int> {
        co_await gate.pass();
        co_return isTaskCancelled() ? 0 : 1;
      });
      gate.open();
      EXPECT_EQ(co_await group.next(), 1);
    });
  });
}

TEST(TaskGroup, WaitForAllThrowsTheFirstFailureAfterAllHaveEnded) {
  run([]() -> Task<void> {
    Gate gate;
    std::atomic<int> ended = 0;
    EXPECT_THROW(co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
                   group.add([&]() -> Task<void> {
                     co_await gate.pass();
                     ++ended;
                   });
                   group.add([&]() -> Task<void> {
                     gate.open();
                     throw std::runtime_error("child");
                     co_return;
                   });
                   co_await group.waitForAll();
                 }),
                 std::runtime_error);
    EXPECT_EQ(ended, 1);
  });
}

TEST(TaskGroup, CancellingTheParentCancelsChildrenOfChildren) {
  run([]() -> Task<void> {
    ManualClock clock;
    const auto parent = spawn([&]() -> Task<bool> {
      co_return co_await withTaskGroup<bool>([&](TaskGroup<bool>& outer) -> Task<bool> {
        outer.add([&] {
          return withTaskGroup<bool>([&](TaskGroup<bool>& inner) -> Task<bool> {
            inner.add([&]() -> Task<bool> {
              try {
                co_await clock.sleepFor(std::chrono::hours(1));
              } catch (const CancellationError&) {
                co_return true;
              }
              co_return false;
            });
            co_return (co_await inner.next()).value();
          });
        });
        co_return (co_await outer.next()).value();
      });
    });
    while (clock.sleeperCount() == 0)
      co_await spawn([] {}).value();
    parent.cancel();
    EXPECT_TRUE(co_await parent.value());
  });
}

TEST(TaskGroup, CancelAllDoesntCancelTheParent) {
  run([]() -> Task<void> {
    co_await withTaskGroup<bool>([](TaskGroup<bool>& group) -> Task<void> {
      group.cancelAll();
      group.add([] { return isTaskCancelled(); });
      EXPECT_EQ(co_await group.next(), true);
      EXPECT_FALSE(isTaskCancelled());
    });
  });
}

TEST(TaskGroup, ChildrenRunWhereTheyAreToldTo) {
  run([]() -> Task<void> {
    co_await withTaskGroup<Executor*>([](TaskGroup<Executor*>& group) -> Task<void> {
      group.add([] { return Executor::current(); });
      EXPECT_EQ(co_await group.next(), &poolExecutor());
      group.add(mainExecutor(), [] { return Executor::current(); });
      EXPECT_EQ(co_await group.next(), &mainExecutor());
    });
  });
}

} // namespace
} // namespace velmar
