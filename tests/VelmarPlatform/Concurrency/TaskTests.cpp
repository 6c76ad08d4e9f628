#include "VelmarPlatform/Concurrency/Task.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/AsyncStream.h"
#include "VelmarPlatform/Concurrency/CancellationHandler.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"
#include "VelmarPlatform/Concurrency/TaskLocal.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmar {
namespace {

using testing_support::Counted;
using testing_support::Gate;
using testing_support::run;

// Ways of awaiting

struct Pair {
  Counted first;
  Counted second;
};

Task<Counted> give(Counted value) {
  co_return value;
}
Task<int> sum(Pair pair) {
  co_return pair.first.value() + pair.second.value();
}
Task<int> later(Counted value) {
  co_await withContinuation([](Continuation<> continuation) {
    spawn([continuation = std::move(continuation)]() mutable { std::move(continuation).resume(); });
  });
  co_return value.value();
}
Task<int> failWith(Counted value) {
  throw value;
  co_return 0;
}
Task<std::unique_ptr<Counted>> giveOwner(int value) {
  co_return std::make_unique<Counted>(value);
}

class Keeper : public SerialObject {
public:
  Keeper() : SerialObject("keeper") {}
  Task<Counted> exchange(Counted value) {
    std::swap(value_, value);
    co_return value;
  }

private:
  Counted value_{1};
};

const TaskLocal<Counted>& scopedValue() {
  static const auto& local = *new TaskLocal<Counted>(Counted(0));
  return local;
}

struct Way {
  const char* name;
  std::function<Task<int>()> run;
};
void PrintTo(const Way& way, std::ostream* stream) {
  *stream << way.name;
}

/// Each gives 7 by way of a Counted.
std::vector<Way> ways() {
  return {
      {"Value", []() -> Task<int> { co_return (co_await give(Counted(7))).value(); }},
      {"NamedValue",
       []() -> Task<int> {
         Counted value(7);
         const Counted given = co_await give(value);
         co_return value.value() * given.value() - 42;
       }},
      {"NamedTask",
       []() -> Task<int> {
         Task<Counted> task = give(Counted(7));
         co_return (co_await std::move(task)).value();
       }},
      {"TwoInOneExpression",
       []() -> Task<int> {
         co_return (co_await give(Counted(3))).value() + (co_await give(Counted(4))).value();
       }},
      {"NestedInArguments",
       []() -> Task<int> { co_return (co_await give(co_await give(Counted(7)))).value(); }},
      {"TemporaryAggregate",
       []() -> Task<int> { co_return co_await sum({Counted(3), Counted(4)}); }},
      {"TemporaryAggregateWithAwaits",
       []() -> Task<int> {
         co_return co_await sum({co_await give(Counted(3)), co_await give(Counted(4))});
       }},
      {"InACondition",
       []() -> Task<int> {
         if ((co_await give(Counted(1))).value() == 1)
           co_return 7;
         co_return 0;
       }},
      {"ChosenByACondition",
       []() -> Task<int> {
         bool second = true;
         co_return (second ? co_await give(Counted(7)) : co_await give(Counted(8))).value();
       }},
      {"InALoop",
       []() -> Task<int> {
         int total = 0;
         for (int i = 0; i < 7; ++i)
           total += (co_await give(Counted(1))).value();
         co_return total;
       }},
      {"OnAnotherThreadAndBack", []() -> Task<int> { co_return co_await later(Counted(7)); }},
      {"MoveOnlyValue", []() -> Task<int> { co_return (co_await giveOwner(7))->value(); }},
      {"ThrownAndCaught",
       []() -> Task<int> {
         try {
           co_return co_await failWith(Counted(7));
         } catch (const Counted& thrown) {
           co_return thrown.value();
         }
       }},
      {"SerialObject",
       []() -> Task<int> {
         co_await std::make_shared<Keeper>()->exchange(Counted(5));
         auto keeper = std::make_shared<Keeper>();
         const int before = (co_await keeper->exchange(Counted(6))).value();
         co_return before + (co_await keeper->exchange(Counted(0))).value();
       }},
      {"Closure",
       []() -> Task<int> {
         auto closure = [value = Counted(7)]() -> Task<Counted> { co_return value; };
         co_return (co_await closure()).value();
       }},
      {"SpawnedClosure",
       []() -> Task<int> {
         co_return (co_await spawn([value = Counted(7)]() -> Task<Counted> {
                      co_await later(Counted(1));
                      co_return value;
                    }).value())
             .value();
       }},
      {"SpawnedPlainFunction",
       []() -> Task<int> {
         auto handle = spawn([value = Counted(7)] { return value; });
         const Counted first = co_await handle.value();
         const Outcome<Counted> second = co_await handle.outcome();
         co_return first.value() + second->value() - 7;
       }},
      {"SpawnedFailure",
       []() -> Task<int> {
         auto handle = spawn([] { return failWith(Counted(7)); });
         int total = 0;
         for (int i = 0; i < 2; ++i)
           try {
             co_await handle.value();
           } catch (const Counted& thrown) {
             total += thrown.value();
           }
         co_return total / 2;
       }},
      {"Group",
       []() -> Task<int> {
         co_return co_await withTaskGroup<Counted>([](TaskGroup<Counted>& group) -> Task<int> {
           for (int i = 0; i < 7; ++i)
             group.add([value = Counted(1)] { return give(value); });
           int total = 0;
           while (const std::optional<Counted> value = co_await group.next())
             total += value->value();
           co_return total;
         });
       }},
      {"GroupLeftWithChildren",
       []() -> Task<int> {
         const Counted result = co_await withTaskGroup<Counted>(
             [seven = Counted(7)](TaskGroup<Counted>& group) -> Task<Counted> {
               group.add([value = Counted(1)] { return give(value); });
               group.add([] { return give(Counted(2)); });
               co_return seven;
             });
         co_return result.value();
       }},
      {"Continuation",
       []() -> Task<int> {
         const Counted value = co_await withContinuation<Counted>(
             [value = Counted(7)](Continuation<Counted> c) { std::move(c).resume(value); });
         co_return value.value();
       }},
      {"FailedContinuation",
       []() -> Task<int> {
         try {
           co_await withContinuation([value = Counted(7)](Continuation<> c) {
             std::move(c).fail(std::make_exception_ptr(value));
           });
         } catch (const Counted& thrown) {
           co_return thrown.value();
         }
         co_return 0;
       }},
      {"Stream",
       []() -> Task<int> {
         auto ends = makeAsyncStream<Counted>();
         ends.source.yield(Counted(3));
         auto source = std::make_optional(ends.source);
         const auto feeder = spawn([source = ends.source] {
           source.yield(Counted(4));
           source.finish();
         });
         int total = 0;
         while (const std::optional<Counted> value = co_await ends.stream.next())
           total += value->value();
         co_return total;
       }},
      {"TaskLocal",
       []() -> Task<int> {
         co_return co_await scopedValue().withValue(Counted(7),
                                                    [unused = Counted(1)]() -> Task<int> {
                                                      co_await later(unused);
                                                      co_return scopedValue().get().value();
                                                    });
       }},
      {"CancellationHandler",
       []() -> Task<int> {
         co_return co_await withTaskCancellationHandler(
             [value = Counted(7)]() -> Task<int> { co_return co_await later(value); },
             [value = Counted(1)] { static_cast<void>(value.value()); });
       }},
      {"NeverAwaited",
       []() -> Task<int> {
         {
           const Task<Counted> dropped = give(Counted(1));
         }
         co_return 7;
       }},
  };
}

class WaysOfAwaiting : public testing::TestWithParam<Way> {};

TEST_P(WaysOfAwaiting, KeepEveryValueWhole) {
  const int before = Counted::live;
  EXPECT_EQ(run(GetParam().run), 7);
  // What a spawned task captured goes on its own thread before its end is told; only the feeder of
  // the stream isn't waited for.
  testing_support::runUntil([&] { return Counted::live == before; });
}

TEST_P(WaysOfAwaiting, KeepEveryValueWholeOnThePool) {
  const int before = Counted::live;
  EXPECT_EQ(run([] { return spawn([run = GetParam().run] { return run(); }).value(); }), 7);
  testing_support::runUntil([&] { return Counted::live == before; });
}

INSTANTIATE_TEST_SUITE_P(All, WaysOfAwaiting, testing::ValuesIn((scopedValue(), ways())),
                         [](const auto& row) { return std::string(row.param.name); });

// Depth and number

Task<int> one() {
  co_return 1;
}
Task<int> chain(int depth) {
  if (depth == 0)
    co_return 0;
  co_return 1 + co_await chain(depth - 1);
}
Task<int> failingChain(int depth) {
  if (depth == 0)
    throw std::runtime_error("bottom");
  co_return 1 + co_await failingChain(depth - 1);
}
Task<int> manyChildren() {
  int total = 0;
  for (int i = 0; i < 1'000'000; ++i)
    total += co_await one();
  co_return total;
}
Task<int> manyContinuations() {
  int total = 0;
  for (int i = 0; i < 1'000'000; ++i)
    total += co_await withContinuation<int>(
        [](Continuation<int> continuation) { std::move(continuation).resume(1); });
  co_return total;
}

class Adder : public SerialObject {
public:
  Adder() : SerialObject("adder") {}
  Task<int> add(int amount) {
    total_ += amount;
    co_return total_;
  }
  Task<int> down(std::shared_ptr<Adder> other, int depth) {
    if (depth == 0)
      co_return 0;
    co_return 1 + co_await other->down(shared(*this), depth - 1);
  }

private:
  int total_ = 0;
};

Task<int> manyCalls() {
  const auto adder = std::make_shared<Adder>();
  int total = 0;
  for (int i = 0; i < 1'000'000; ++i)
    total = co_await adder->add(1);
  co_return total;
}

TEST(Task, AMillionChildrenThatCompleteAtOnce) {
  EXPECT_EQ(run(manyChildren), 1'000'000);
}

TEST(Task, AMillionContinuationsAnsweredAtOnce) {
  EXPECT_EQ(run(manyContinuations), 1'000'000);
  EXPECT_EQ(run([] { return spawn(manyContinuations).value(); }), 1'000'000);
}

TEST(Task, AMillionCallsToAnObject) {
  EXPECT_EQ(run([] { return spawn(manyCalls).value(); }), 1'000'000);
}

TEST(Task, AMillionWaitsForTasksThatHaveEnded) {
  EXPECT_EQ(run([]() -> Task<int> {
              const auto ended = spawn(mainExecutor(), [] { return 1; });
              co_await ended.value();
              int total = 0;
              for (int i = 0; i < 1'000'000; ++i)
                total += co_await ended.value();
              co_return total;
            }),
            1'000'000);
}

TEST(Task, AChainOfAHundredThousand) {
  EXPECT_EQ(run([] { return chain(100'000); }), 100'000);
  EXPECT_EQ(run([] { return spawn([] { return chain(100'000); }).value(); }), 100'000);
}

TEST(Task, AFailureTravelsUpAChainOfAHundredThousand) {
  EXPECT_THROW(run([] { return failingChain(100'000); }), std::runtime_error);
}

TEST(Task, AChainOfAHundredThousandBetweenTwoObjects) {
  EXPECT_EQ(run([] { return std::make_shared<Adder>()->down(std::make_shared<Adder>(), 100'000); }),
            100'000);
}

// What a task is

TEST(Task, DoesNotStartUntilAwaited) {
  run([]() -> Task<void> {
    bool started = false;
    auto start = [&]() -> Task<void> {
      started = true;
      co_return;
    };
    Task<void> task = start();
    EXPECT_FALSE(started);
    co_await std::move(task);
    EXPECT_TRUE(started);
  });
}

TEST(Task, RunsOnTheExecutorOfItsAwaiter) {
  static constexpr auto executor = []() -> Task<Executor*> { co_return Executor::current(); };
  run([]() -> Task<void> {
    EXPECT_EQ(co_await executor(), &mainExecutor());
    const auto serial = SerialExecutor::make("test");
    EXPECT_EQ(co_await spawn(*serial, executor).value(), serial.get());
    EXPECT_EQ(co_await spawn(executor).value(), &poolExecutor());
    EXPECT_EQ(Executor::current(), &mainExecutor());
  });
}

class Place : public SerialObject {
public:
  Place() : SerialObject("place") {}
  explicit Place(Executor& executor) : SerialObject(executor) {}
  Task<Executor*> member() const { co_return Executor::current(); }
  Task<Executor*> viaFree();
  Task<bool> backAfter(Gate& gate) {
    co_await gate.pass();
    co_return executor().isCurrent();
  }
};
Task<Executor*> freeFunction() {
  co_return Executor::current();
}
Task<Executor*> byReference(const Place&) {
  co_return Executor::current();
}
Task<Executor*> byPointer(std::shared_ptr<const Place>) {
  co_return Executor::current();
}
Task<Executor*> Place::viaFree() {
  co_return co_await freeFunction();
}

TEST(SerialObject, ItsCoroutinesRunOnItsExecutor) {
  run([]() -> Task<void> {
    const auto place = std::make_shared<Place>();
    EXPECT_EQ(co_await place->member(), &place->executor());
    EXPECT_EQ(co_await place->viaFree(), &place->executor());
    EXPECT_EQ(co_await byReference(*place), &place->executor());
    EXPECT_EQ(co_await byPointer(place), &mainExecutor());
    EXPECT_EQ(co_await std::make_shared<Place>(mainExecutor())->member(), &mainExecutor());
    EXPECT_EQ(Executor::current(), &mainExecutor());
  });
}

TEST(SerialObject, ACoroutineIsBackOnItsExecutorAfterAWait) {
  Gate gate;
  EXPECT_TRUE(run([&]() -> Task<bool> {
    const auto place = std::make_shared<Place>();
    auto handle = spawn([&] { return place->backAfter(gate); });
    spawn([&] { gate.open(); });
    co_return co_await handle.value();
  }));
}

class Mortal : public SerialObject {
public:
  explicit Mortal(bool& gone) : SerialObject("mortal"), gone_(gone) {}
  ~Mortal() override { gone_ = true; }
  Task<bool> isAliveAfter(Gate& gate) {
    co_await gate.pass();
    co_return !gone_;
  }

private:
  bool& gone_;
};

TEST(SerialObject, LivesAsLongAsItsCoroutines) {
  bool gone = false;
  Gate gate;
  run([&]() -> Task<void> {
    auto object = std::make_shared<Mortal>(gone);
    auto handle = spawn(mainExecutor(),
                        [task = object->isAliveAfter(gate)]() mutable { return std::move(task); });
    object = nullptr;
    EXPECT_FALSE(gone);
    gate.open();
    EXPECT_TRUE(co_await handle.value());
    EXPECT_TRUE(gone);
  });
}

class Overlap : public SerialObject {
public:
  Overlap() : SerialObject("overlap") {}
  Task<void> first(Gate& gate) {
    trace += "a";
    co_await gate.pass();
    trace += "c";
  }
  Task<void> second() {
    trace += "b";
    co_return;
  }
  std::string trace;
};

TEST(SerialObject, OthersRunAtSuspensionPoints) {
  Gate gate;
  run([&]() -> Task<void> {
    const auto object = std::make_shared<Overlap>();
    const auto first = spawn([&] { return object->first(gate); });
    while (gate.waitingCount() == 0)
      co_await spawn([] {}).value();
    co_await object->second();
    gate.open();
    co_await first.value();
    EXPECT_EQ(object->trace, "abc");
  });
}

class Sum : public SerialObject {
public:
  Sum() : SerialObject("sum") {}
  Task<void> add(int amount) {
    total_ += amount; // without a lock: the thread sanitizer would tell
    co_return;
  }
  Task<int> total() const { co_return total_; }

private:
  int total_ = 0;
};

TEST(SerialObject, ManyThreadsAddOneByOne) {
  EXPECT_EQ(run([]() -> Task<int> {
              const auto sum = std::make_shared<Sum>();
              co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
                for (int child = 0; child < 20; ++child)
                  group.add([sum]() -> Task<void> {
                    for (int i = 0; i < 500; ++i)
                      co_await sum->add(1);
                  });
                co_await group.waitForAll();
              });
              co_return co_await sum->total();
            }),
            10'000);
}

// Misuse

TEST(TaskDeathTest, AwaitingTwiceStopsTheProcess) {
  EXPECT_DEATH(run([]() -> Task<void> {
                 Task<int> task = one();
                 co_await std::move(task);
                 co_await std::move(task);
               }),
               "awaited after it had been moved or awaited");
}

TEST(TaskDeathTest, CallingAnObjectThatNobodySharesStopsTheProcess) {
  EXPECT_DEATH(
      {
        Place place;
        static_cast<void>(place.member());
      },
      "no shared pointer owned the object");
}

} // namespace
} // namespace velmar
