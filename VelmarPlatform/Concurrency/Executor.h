// Who runs where. An executor decides on which thread, and in which order, the pieces of a
// coroutine run.
//
//   poolExecutor()    a few threads, any number of jobs at once: for work that never blocks
//   SerialExecutor    one job at a time, first come first served, on a thread of the pool
//   mainExecutor()    the application's thread, which drives it (MainExecutor.h)
//
// A coroutine stays on its executor: after each `co_await` it is back there, whatever ran elsewhere
// in between. A thread that gives up one serial executor's turn takes the next one itself if that
// is idle, so a call from one object to another and back costs no wake of a thread.
//
//   auto queue = SerialExecutor::make("indexer");
//   queue->post([] { /* runs soon, alone among the jobs of this queue */ });
//   queue->isCurrent();   // false here, true inside of the job
//
// Executors of the whole process are never destroyed: their threads may still run while the process
// exits.
#pragma once

#include "VelmarPlatform/Concurrency/Turn.h"

#include <concepts>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace velmar {

/// The base of all executors. Any thread may call its public functions.
class Executor {
public:
  Executor(const Executor&) = delete;
  Executor& operator=(const Executor&) = delete;
  Executor(Executor&&) = delete;
  Executor& operator=(Executor&&) = delete;
  virtual ~Executor() = default;

  /// For people: shown by debuggers and logs, not unique.
  [[nodiscard]] const std::string& label() const noexcept { return label_; }

  /// The executor whose turn the calling thread has, or null on a thread that runs none.
  [[nodiscard]] static Executor* current() noexcept { return detail::threadState().executor; }
  /// Whether the caller runs on this executor, and so alone if it is a serial one.
  [[nodiscard]] bool isCurrent() const noexcept { return current() == this; }

  /// Queues a plain function, which must not throw. The function is destroyed on this executor too.
  template <std::invocable Function>
  void post(Function function);

  /// Runs a plain function right here if the caller is on this executor already, and queues it
  /// otherwise.
  template <std::invocable Function>
  void perform(Function function) {
    if (isCurrent())
      std::move(function)();
    else
      post(std::move(function));
  }

  // What the layer itself calls.

  /// Queues `job`. The executor must be alive; the job keeps it so.
  virtual void enqueue(detail::Job& job) noexcept = 0;
  /// Whether threads of this kind may run its jobs without being asked to by `enqueue`.
  [[nodiscard]] virtual bool mayRunOn(detail::ThreadKind kind) const noexcept = 0;
  /// Takes the turn if it is free, without queueing `job`, and gives true; else queues the job.
  [[nodiscard]] virtual bool takeTurnOrEnqueue(detail::Job& job) noexcept = 0;
  /// The next job of the turn that the caller has, or null once the turn is given back. Unless
  /// `mayGoOn`, what is left waits for a thread anew.
  [[nodiscard]] virtual detail::Job* nextInTurn(bool mayGoOn) noexcept = 0;
  /// Gives the turn back; what is queued waits for a thread anew.
  virtual void leaveTurn() noexcept = 0;
  /// Whether more of its jobs are queued behind the one that asks, which has its turn. No where
  /// jobs don't run one after the other.
  [[nodiscard]] virtual bool hasMoreInTurn() const noexcept { return false; }
  /// What a task holds so that its executor outlives it; null for those that are never destroyed.
  [[nodiscard]] virtual std::shared_ptr<const Executor> keepAlive() const noexcept = 0;

protected:
  explicit Executor(std::string_view label) : label_(label) {}

private:
  std::string label_;
};

/// The shared pool: as many threads as the machine has cores, two at least. Never block on it;
/// `runInBackground` and `Lane::ownThread` are for calls that block.
[[nodiscard]] Executor& poolExecutor() noexcept;

namespace detail {

template <class Function>
struct FunctionJob : Job {
  explicit FunctionJob(Function&& f) : Job(runAndDelete), function(std::move(f)) {}
  static void runAndDelete(Job& job) noexcept {
    const std::unique_ptr<FunctionJob> self(static_cast<FunctionJob*>(&job));
    std::move(self->function)();
  }
  Function function;
};

/// Whether jobs wait for a thread of the pool. Only a hint: it may have changed by the time it is
/// looked at.
[[nodiscard]] bool poolHasJobsWaiting() noexcept;

/// Threads that come as needed, for serial executors that may block: each is held by one executor
/// at a time, idles a while, and goes.
void submitToOwnThread(Job& job) noexcept;

} // namespace detail

template <std::invocable Function>
void Executor::post(Function function) {
  enqueue(*new detail::FunctionJob<Function>(std::move(function)));
}

} // namespace velmar
