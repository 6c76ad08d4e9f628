// The engine room: how a thread runs coroutines. Users of tasks need none of this; it is what
// Task.h, Continuation.h and the executors are made of.
//
// An executor hands *turns* to threads. Within a turn a thread resumes one coroutine after the
// other in a plain loop, the trampoline. A coroutine that suspends never resumes another one
// itself: it leaves a note in the thread's state, what to do `after`, and returns to the loop. Two
// things follow. The stack doesn't grow with the length of a chain or with the number of awaits
// that complete at once. And when the note is read the coroutine is really suspended, so it can be
// published to other threads, and its frame can be freed, without anybody still standing in it.
#pragma once

#include <atomic>
#include <concepts>
#include <coroutine>
#include <memory>
#include <stop_token>

namespace velmar {

class Executor;

namespace detail {

struct TaskLocalBinding;

/// One entry of an executor's queue. It stands in at most one queue at a time, so it carries the
/// link itself.
struct Job {
  using Run = void (*)(Job&) noexcept;
  explicit Job(Run function) noexcept : run(function) {}

  Run run; ///< Called in the executor's turn. May free the job.
  Job* next = nullptr;
};

/// What is common to all coroutines of one task: the flag that asks it to stop.
struct TaskContext {
  std::stop_source cancellation;
};

/// Resumes a coroutine and whatever it leads to, until nothing more is to do in this turn.
void resumeCoroutine(Job& job) noexcept;

/// The part of a coroutine's promise that the trampoline knows.
struct Coroutine : Job {
  Coroutine() noexcept : Job(resumeCoroutine) {}

  std::coroutine_handle<> handle;
  Executor* executor = nullptr; ///< Where every piece of it runs. Set at the latest when it starts.
  const TaskContext* task = nullptr; ///< Whose flag it looks at. Outlives the coroutine.
  const TaskLocalBinding* bindings =
      nullptr; ///< The task-scoped values that it sees, innermost first.
  /// Called once it has run to its end: what to go on with in this turn, if anything.
  Coroutine* (*finished)(Coroutine& self) noexcept = nullptr;
  void* owner =
      nullptr; ///< For `finished`: the coroutine that awaits this one, or the record of the task.
};

enum class ThreadKind { foreign, pool, reactor, own, main };

/// What the layer knows of the thread that it runs on.
struct ThreadState {
  using After = Coroutine* (*)(void* argument) noexcept;

  ThreadKind kind = ThreadKind::foreign;
  Executor* executor = nullptr;   ///< Whose turn this thread has.
  Coroutine* coroutine = nullptr; ///< Which coroutine it runs; also while its `after` runs.
  After after = nullptr;          ///< The note of the coroutine that suspended last.
  void* afterArgument = nullptr;
  int budget = 0; ///< How many more jobs, hops and shared turns before others get a chance.
};

/// The calling thread's state. Never inlined: a coroutine may be resumed on another thread, and a
/// compiler that sees the definition keeps the address of a thread-local variable across the
/// suspension.
[[nodiscard]] ThreadState& threadState() noexcept;

/// Called from `await_suspend`: has `run(argument)` called when the coroutine is suspended. What it
/// returns is resumed next, on its own executor.
inline void afterSuspension(ThreadState::After run, void* argument) noexcept {
  ThreadState& thread = threadState();
  thread.after = run;
  thread.afterArgument = argument;
}

/// Called from `await_suspend`: goes on with `next`, on its own executor.
inline void continueWith(Coroutine& next) noexcept {
  afterSuspension([](void* argument) noexcept { return static_cast<Coroutine*>(argument); }, &next);
}

/// Awaited before work that could have had to wait and doesn't, such as a read of bytes that are
/// there already. Every so often it queues the coroutine behind all that its executor has to do, so
/// that a peer which is always ready doesn't keep the turn from others. Look at the cancellation
/// behind it.
class SharedTurn {
public:
  [[nodiscard]] bool await_ready() const noexcept {
    return --threadState().budget > 0 || !isTurnWanted();
  }
  template <std::derived_from<Coroutine> Promise>
  void await_suspend(std::coroutine_handle<Promise> self) const noexcept {
    afterSuspension(enqueue, static_cast<Coroutine*>(&self.promise()));
  }
  void await_resume() const noexcept {}

private:
  [[nodiscard]] static bool isTurnWanted() noexcept;
  static Coroutine* enqueue(void* coroutine) noexcept;
};

/// Runs a turn of `executor`, which the caller has taken: `job` first, then all that is queued,
/// until the turn is given back. A turn may move on to other executors on the way.
void runTurn(ThreadState& thread, Executor* executor, Job* job) noexcept;

/// Resumes `coroutine` from outside of any turn: here if this thread may run its executor and that
/// is idle, else by queueing it.
void resumeHereOrEnqueue(ThreadState& thread, Coroutine& coroutine) noexcept;

/// Keeps signals that aren't about the thread's own faults away from the calling thread: they
/// belong to the application's threads. SIGPIPE is among them.
void blockSignals() noexcept;

/// A coroutine's side of a wait whose answer may come at once, from any thread, and even before the
/// wait is set up. Whoever is second, the answer or the end of the set-up, has the coroutine go on.
class Suspension {
public:
  /// The end of the set-up: the coroutine if the answer is there already, to go on in this turn. If
  /// it gives null, the coroutine may be running elsewhere and its frame may be gone.
  [[nodiscard]] Coroutine* armed() noexcept {
    return met_.exchange(true, std::memory_order_acq_rel) ? coroutine_ : nullptr;
  }
  /// The answer: queues the coroutine on its executor once it is set up. Called once. Nothing of
  /// the wait may be touched afterwards.
  void answer() noexcept;
  /// The same from a thread that may run the coroutine right here.
  void answerHere(ThreadState& thread) noexcept;

  void begin(Coroutine& coroutine) noexcept { coroutine_ = &coroutine; }
  [[nodiscard]] Coroutine& coroutine() const noexcept { return *coroutine_; }

private:
  Coroutine* coroutine_ = nullptr;
  std::atomic<bool> met_{false};
};

} // namespace detail
} // namespace velmar
