#include "VelmarPlatform/Concurrency/Spawn.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"
#include "VelmarPlatform/Concurrency/TaskLocal.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmar {
namespace {

using testing_support::Gate;
using testing_support::run;

// Handles

TEST(TaskHandle, EveryWaiterGetsTheSameFailure) {
  run([]() -> Task<void> {
    Gate gate;
    const auto failing = spawn([&]() -> Task<void> {
      co_await gate.pass();
      throw std::runtime_error("no");
    });
    std::vector<TaskHandle<Outcome<void>>> waiting;
    for (int i = 0; i < 3; ++i)
      waiting.push_back(spawn([failing] { return failing.outcome(); }));
    gate.open();
    const Outcome<void> first = co_await failing.outcome();
    for (const auto& handle : waiting) {
      const Outcome<void> outcome = co_await handle.value();
      EXPECT_FALSE(outcome.hasValue());
      EXPECT_EQ(outcome.error(), first.error());
    }
  });
}

TEST(TaskHandle, CancellingTheWaiterDoesntCutTheWaitShort) {
  run([]() -> Task<void> {
    Gate gate;
    const auto slow = spawn([&]() -> Task<int> {
      co_await gate.pass();
      co_return 5;
    });
    const auto waiter = spawn([slow] { return slow.value(); });
    waiter.cancel();
    gate.open();
    EXPECT_EQ(co_await waiter.value(), 5);
    EXPECT_FALSE(slow.isCancelled());
  });
}

TEST(TaskHandle, WhatTheTaskHeldIsGoneWhenItsEndIsTold) {
  run([]() -> Task<void> {
    for (int i = 0; i < 200; ++i) {
      auto held = std::make_shared<int>(1);
      const std::weak_ptr<int> watch = held;
      const auto handle = spawn([held = std::move(held)]() -> Task<int> { co_return *held; });
      co_await handle.value();
      EXPECT_TRUE(watch.expired());
    }
  });
}

TEST(TaskHandle, ATaskSurvivesItsHandleAndItsExecutor) {
  Gate gate;
  bool ended = false;
  {
    const auto serial = SerialExecutor::make("short");
    spawn(*serial, [&]() -> Task<void> {
      co_await gate.pass();
      const auto end = [&]() -> Task<void> {
        ended = true;
        co_return;
      };
      co_await spawn(mainExecutor(), end).value();
    });
  }
  gate.open();
  testing_support::runUntil([&] { return ended; });
}

TEST(TaskHandleDeathTest, TakingTheValueTooEarlyStopsTheProcess) {
  EXPECT_DEATH(
      {
        auto handle = spawn(mainExecutor(), [] { return 1; });
        static_cast<void>(std::move(handle).takeValue());
      },
      "before the task had ended");
}

// Scopes

TEST(TaskScope, CancelsItsTasksWhenItGoes) {
  run([]() -> Task<void> {
    ManualClock clock;
    auto scope = std::make_unique<TaskScope>();
    std::vector<TaskHandle<void>> tasks;
    for (int i = 0; i < 3; ++i)
      tasks.push_back(scope->spawn([&] { return clock.sleepFor(std::chrono::hours(1)); }));
    const auto other = spawn([] { return isTaskCancelled(); });
    scope = nullptr;
    for (const auto& task : tasks)
      EXPECT_THROW(co_await task.value(), CancellationError);
    EXPECT_FALSE(co_await other.value());
  });
}

TEST(TaskScope, ATaskThatComesAfterCancelAllIsCancelled) {
  EXPECT_TRUE(run([]() -> Task<bool> {
    TaskScope scope;
    scope.cancelAll();
    co_return co_await scope.spawn([] { return isTaskCancelled(); }).value();
  }));
}

// Task-scoped values

const TaskLocal<std::string>& color() {
  static const auto& local = *new TaskLocal<std::string>("none");
  return local;
}
const TaskLocal<int>& number() {
  static const auto& local = *new TaskLocal<int>(0);
  return local;
}
std::string seen() {
  return color().get() + std::to_string(number().get());
}
Task<std::string> seenInATask() {
  co_return seen();
}

TEST(TaskLocal, HasItsDefaultOutsideOfTasks) {
  EXPECT_EQ(seen(), "none0");
}

TEST(TaskLocal, IsSeenByWhatIsAwaitedAndByThatAlone) {
  run([]() -> Task<void> {
    EXPECT_EQ(co_await color().withValue("red", seenInATask), "red0");
    EXPECT_EQ(co_await color().withValue("red", seen), "red0");
    EXPECT_EQ(seen(), "none0");
  });
}

TEST(TaskLocal, TheInnermostValueWinsAndTheOuterOneComesBack) {
  run([]() -> Task<void> {
    co_await color().withValue("red", []() -> Task<void> {
      co_await number().withValue(1, []() -> Task<void> {
        EXPECT_EQ(co_await color().withValue("blue", seenInATask), "blue1");
        EXPECT_EQ(seen(), "red1");
      });
      EXPECT_EQ(seen(), "red0");
    });
  });
}

TEST(TaskLocal, IsInheritedByGroupsAndSpawnedTasks) {
  run([]() -> Task<void> {
    Gate gate;
    TaskHandle<std::string> late;
    co_await color().withValue("red", [&]() -> Task<void> {
      late = spawn([&]() -> Task<std::string> {
        co_await gate.pass();
        co_return co_await seenInATask();
      });
      EXPECT_EQ(co_await spawn(seen).value(), "red0");
      co_await withTaskGroup<std::string>([](TaskGroup<std::string>& group) -> Task<void> {
        group.add(seenInATask);
        EXPECT_EQ(co_await group.next(), "red0");
      });
    });
    gate.open();
    EXPECT_EQ(co_await late.value(), "red0") << "A spawned task keeps what it was started with.";
  });
}

class Listener : public SerialObject {
public:
  Listener() : SerialObject("listener") {}
  Task<std::string> hear() { co_return seen(); }
};

TEST(TaskLocal, FollowsACallToAnotherExecutor) {
  run([]() -> Task<void> {
    const auto listener = std::make_shared<Listener>();
    EXPECT_EQ(co_await color().withValue("red", [=] { return listener->hear(); }), "red0");
    EXPECT_EQ(co_await listener->hear(), "none0");
  });
}

TEST(TaskLocal, IsSeenWhileAContinuationIsRegistered) {
  run([]() -> Task<void> {
    EXPECT_EQ(co_await color().withValue("red",
                                         []() -> Task<std::string> {
                                           co_return co_await withContinuation<std::string>(
                                               [](Continuation<std::string> continuation) {
                                                 std::move(continuation).resume(seen());
                                               });
                                         }),
              "red0");
  });
}

} // namespace
} // namespace velmar
