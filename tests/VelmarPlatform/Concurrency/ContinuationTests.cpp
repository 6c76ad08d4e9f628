#include "VelmarPlatform/Concurrency/Continuation.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/CancellationHandler.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmar {
namespace {

using namespace std::chrono_literals;
using testing_support::run;

TEST(Continuation, IsRegisteredInTheTurnOfItsCaller) {
  run([]() -> Task<void> {
    Executor* registeredOn = nullptr;
    co_await withContinuation([&](Continuation<> continuation) {
      registeredOn = Executor::current();
      std::move(continuation).resume();
    });
    EXPECT_EQ(registeredOn, &mainExecutor());
  });
}

TEST(Continuation, BringsItsCallerBackToItsExecutor) {
  run([]() -> Task<void> {
    const int value = co_await withContinuation<int>([](Continuation<int> continuation) {
      spawn([c = std::move(continuation)]() mutable { std::move(c).resume(3); });
    });
    EXPECT_EQ(value, 3);
    EXPECT_TRUE(mainExecutor().isCurrent());
  });
}

TEST(Continuation, ThrowsWhatItIsFailedWith) {
  run([]() -> Task<void> {
    std::string text;
    try {
      co_await withContinuation<int>([](Continuation<int> continuation) {
        std::move(continuation).fail(std::runtime_error("no"));
      });
    } catch (const std::runtime_error& error) {
      text = error.what();
    }
    EXPECT_EQ(text, "no");
  });
}

TEST(ContinuationDeathTest, DroppingItWithoutAnAnswerStopsTheProcess) {
  EXPECT_DEATH(run([]() -> Task<void> { co_await withContinuation([](Continuation<>) {}); }),
               "dropped without an answer: its task would wait for ever");
}

TEST(ContinuationDeathTest, AnsweringTwiceStopsTheProcess) {
  EXPECT_DEATH(run([]() -> Task<void> {
                 co_await withContinuation([](Continuation<> continuation) {
                   std::move(continuation).resume();
                   std::move(continuation).resume(); // NOLINT(bugprone-use-after-move): the point
                 });
               }),
               "answered twice");
}

// A table of requests, each of which ends by an answer, a cancellation or a time limit

enum class End { answered, cancelled, timedOut };

class Table : public SerialObject {
public:
  explicit Table(std::shared_ptr<Clock> clock) : SerialObject("table"), clock_(std::move(clock)) {}

  Task<int> request(int id, Clock::Duration limit) {
    const std::weak_ptr<Table> weak = shared(*this);
    // The names stand here and not in the closures: those run in this frame, which lives until they
    // are done.
    co_return co_await withTaskCancellationHandler(
        [&]() -> Task<int> {
          co_return co_await withContinuation<int>([&](Continuation<int> continuation) {
            auto timeout = spawn([weak, id, limit, clock = clock_]() -> Task<void> {
              co_await clock->sleepFor(limit);
              if (const auto table = weak.lock())
                co_await table->remove(id, End::timedOut);
            });
            pending_.emplace(id, Entry{std::move(continuation), std::move(timeout)});
          });
        },
        [weak, id] {
          spawn([weak, id]() -> Task<void> {
            if (const auto table = weak.lock())
              co_await table->remove(id, End::cancelled);
          });
        });
  }
  Task<void> answer(int id, int value) {
    if (std::optional<Entry> entry = take(id)) {
      ++ends_[End::answered];
      entry->timeout.cancel();
      std::move(entry->continuation).resume(value);
    }
    co_return;
  }
  Task<bool> isPending(int id) { co_return pending_.contains(id); }
  Task<std::map<End, int>> ends() { co_return ends_; }
  Task<std::size_t> pendingCount() { co_return pending_.size(); }

private:
  struct Entry {
    Continuation<int> continuation;
    TaskHandle<void> timeout;
  };
  Task<void> remove(int id, End end) {
    if (std::optional<Entry> entry = take(id)) {
      ++ends_[end];
      entry->timeout.cancel();
      std::move(entry->continuation).fail(CancellationError());
    }
    co_return;
  }
  std::optional<Entry> take(int id) {
    const auto place = pending_.find(id);
    if (place == pending_.end())
      return std::nullopt;
    std::optional<Entry> entry(std::move(place->second));
    pending_.erase(place);
    return entry;
  }

  std::shared_ptr<Clock> clock_;
  std::map<int, Entry> pending_;
  std::map<End, int> ends_;
};

struct Race {
  const char* name;
  bool answer;
  bool cancel;
  bool timeOut;
};
void PrintTo(const Race& race, std::ostream* stream) {
  *stream << race.name;
}

class RequestRaces : public testing::TestWithParam<Race> {};

TEST_P(RequestRaces, EndEachOfThreeHundredRequestsOnce) {
  const Race race = GetParam();
  run([race]() -> Task<void> {
    const auto clock = std::make_shared<ManualClock>();
    const auto table = std::make_shared<Table>(clock);
    int answered = 0;
    int failed = 0;
    for (int id = 0; id < 300; ++id) {
      const auto request = spawn([=] { return table->request(id, 30s); });
      // All three are let go at once, as soon as the request is in the table and its time runs.
      while (!co_await table->isPending(id) || clock->sleeperCount() == 0)
        co_await spawn([] {}).value();
      co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
        if (race.answer)
          group.add([=] { return table->answer(id, id); });
        if (race.cancel)
          group.add([=] { request.cancel(); });
        if (race.timeOut)
          group.add([=] { clock->advance(30s); });
        co_await group.waitForAll();
      });
      const Outcome<int> outcome = co_await request.outcome();
      if (outcome.hasValue()) {
        EXPECT_EQ(*outcome, id);
        ++answered;
      } else {
        EXPECT_THROW(std::rethrow_exception(outcome.error()), CancellationError);
        ++failed;
      }
      while (clock->sleeperCount() > 0) // the time limit of an answered request goes by itself
        co_await spawn([] {}).value();
    }
    std::map<End, int> ends = co_await table->ends();
    EXPECT_EQ(answered, ends[End::answered]);
    EXPECT_EQ(failed, ends[End::cancelled] + ends[End::timedOut]);
    EXPECT_EQ(answered + failed, 300);
    EXPECT_EQ(co_await table->pendingCount(), 0U);
    if (!race.answer) {
      EXPECT_EQ(answered, 0);
    }
    if (!race.cancel) {
      EXPECT_EQ(ends[End::cancelled], 0);
    }
    if (!race.timeOut) {
      EXPECT_EQ(ends[End::timedOut], 0);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(All, RequestRaces,
                         testing::Values(Race{"Answer", true, false, false},
                                         Race{"Cancel", false, true, false},
                                         Race{"TimeOut", false, false, true},
                                         Race{"AnswerAndCancel", true, true, false},
                                         Race{"AnswerAndTimeOut", true, false, true},
                                         Race{"CancelAndTimeOut", false, true, true},
                                         Race{"AllThree", true, true, true}),
                         [](const auto& row) { return std::string(row.param.name); });

// The end of the process

/// Work of every kind, under way when the process exits.
void exitInTheMiddle() {
  for (int i = 0; i < 8; ++i) {
    spawn([]() -> Task<void> {
      for (;;)
        co_await std::make_shared<Table>(std::make_shared<ManualClock>())->pendingCount();
    });
    spawn([] { return monotonicClock().sleepFor(24h); });
    spawn([]() -> Task<void> {
      for (;;)
        co_await monotonicClock().sleepFor(50us);
    });
    SerialExecutor::make("own", Lane::ownThread)->post([] {
      for (;;)
        std::this_thread::yield();
    });
  }
  run([] { return monotonicClock().sleepFor(10ms); });
  std::exit(0);
}

TEST(ProcessDeathTest, ExitsCalmlyWithWorkInFlight) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (int round = 0; round < 5; ++round)
    EXPECT_EXIT(exitInTheMiddle(), testing::ExitedWithCode(0), "^$");
}

} // namespace
} // namespace velmar
