// The main executor: the one that the application's user-interface thread runs. Nothing runs on it
// until the application says so.
//
// An application with an event loop asks to be told when there is something to do, and does it in
// the loop's next round:
//
//   mainExecutor().setWakeHook([&] { loop.post([] { mainExecutor().runReady(); }); });
//
// A program without one waits for what it came for:
//
//   int main() { return mainExecutor().run([] { return work(); }); }   // work() gives a Task<int>
#pragma once

#include "VelmarPlatform/Concurrency/Executor.h"
#include "VelmarPlatform/Concurrency/Spawn.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <type_traits>

namespace velmar {

/// Runs jobs strictly in the order of queueing, on the thread that calls `runReady`, `runUntil` or
/// `run`. One thread at a time may do so, and not from inside of a job. Any thread may queue.
class MainExecutor final : public Executor {
public:
  /// Called whenever there is something to do that the last call of `runReady` didn't see, on the
  /// thread that queued it: the hook posts a call of `runReady` to the application's own loop, and
  /// does nothing else. An empty one is none.
  void setWakeHook(std::function<void()> hook);

  /// Runs what is queued now, and gives how many jobs that was. What is queued meanwhile comes with
  /// the next call, so that the application's loop gets its turn; the hook is called for it.
  std::size_t runReady() noexcept;

  /// Runs jobs, and waits for more, until `predicate` holds: true. Or until `limit` has passed:
  /// false, also if there are always more jobs; one is run in any case. The predicate is asked
  /// before the first job, after each, and every few milliseconds.
  [[nodiscard]] bool runUntil(const std::function<bool()>& predicate,
                              std::chrono::nanoseconds limit);

  /// Runs `operation`, which gives a `Task` or a plain value, as a task on this executor, drives
  /// the executor until it has ended, and gives what it gave or throws what it threw.
  template <class Operation>
  TaskValueOf<Operation> run(Operation operation) {
    auto handle = spawn(*this, std::move(operation));
    // The task ends in one of our own jobs, so we look at the right moment; a day is for ever.
    while (!runUntil([&] { return handle.isFinished(); }, std::chrono::hours(24))) {
    }
    return std::move(handle).takeValue();
  }

  void enqueue(detail::Job& job) noexcept override;
  [[nodiscard]] bool mayRunOn(detail::ThreadKind) const noexcept override { return false; }
  [[nodiscard]] bool takeTurnOrEnqueue(detail::Job& job) noexcept override;
  [[nodiscard]] detail::Job* nextInTurn(bool) noexcept override { return nullptr; }
  void leaveTurn() noexcept override {}
  [[nodiscard]] std::shared_ptr<const Executor> keepAlive() const noexcept override {
    return nullptr;
  }

private:
  friend MainExecutor& mainExecutor() noexcept;
  MainExecutor() : Executor("main") {}

  [[nodiscard]] detail::Job* removeFirst() noexcept;
  void runJob(detail::Job& job) noexcept;

  std::mutex mutex_;
  std::condition_variable wake_;
  detail::Job* first_ = nullptr;
  detail::Job* last_ = nullptr;
  std::function<void()> wakeHook_;
};

/// The one main executor of the process.
[[nodiscard]] MainExecutor& mainExecutor() noexcept;

} // namespace velmar
