#include "VelmarPlatform/Concurrency/Turn.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/Executor.h"

#include <csignal>

namespace velmar::detail {

namespace {

/// Long enough to make the queue's cost small, short enough that a pair of objects that call each
/// other all day doesn't keep a thread from everybody else.
constexpr int turnBudget = 256;

/// Whether others want this thread, which has used up its budget. A thread of the pool goes on as
/// long as nobody waits for one.
bool isWanted(ThreadState& thread) noexcept {
  if (thread.kind != ThreadKind::pool || poolHasJobsWaiting())
    return true;
  thread.budget = turnBudget;
  return false;
}

bool isOutOfBudget(ThreadState& thread) noexcept {
  return --thread.budget <= 0 && isWanted(thread);
}

/// Moves this thread's turn to the executor of `coroutine`, or queues the coroutine there. Returns
/// what to resume here.
Coroutine* hop(ThreadState& thread, Coroutine& coroutine) noexcept {
  Executor& to = *coroutine.executor;
  if (!to.mayRunOn(thread.kind) || isOutOfBudget(thread)) {
    to.enqueue(coroutine);
    return nullptr;
  }
  if (!to.takeTurnOrEnqueue(coroutine))
    return nullptr;
  // For a moment this thread has both turns. The old one is given back, or offered to another
  // thread if more is queued.
  if (thread.executor != nullptr)
    thread.executor->leaveTurn();
  thread.executor = &to;
  return &coroutine;
}

} // namespace

[[gnu::noinline]] ThreadState& threadState() noexcept {
  static constinit thread_local ThreadState state;
  return state;
}

void resumeCoroutine(Job& job) noexcept {
  ThreadState& thread = threadState();
  auto* coroutine = static_cast<Coroutine*>(&job);
  while (coroutine != nullptr) {
    thread.coroutine = coroutine;
    thread.after = nullptr;
    coroutine->handle.resume();
    precondition(thread.after != nullptr,
                 "A task awaited something that isn't made for this layer's tasks.");
    coroutine = thread.after(thread.afterArgument);
    if (coroutine != nullptr && coroutine->executor != thread.executor)
      coroutine = hop(thread, *coroutine);
  }
  thread.coroutine = nullptr;
}

bool SharedTurn::isTurnWanted() noexcept {
  ThreadState& thread = threadState();
  return thread.executor->hasMoreInTurn() || isWanted(thread);
}

Coroutine* SharedTurn::enqueue(void* coroutine) noexcept {
  auto& suspended = *static_cast<Coroutine*>(coroutine);
  suspended.executor->enqueue(suspended);
  return nullptr;
}

void runTurn(ThreadState& thread, Executor* executor, Job* job) noexcept {
  thread.executor = executor;
  thread.budget = turnBudget;
  while (job != nullptr) {
    job->run(*job);
    // The job may have moved this thread to another executor.
    job = thread.executor->nextInTurn(!isOutOfBudget(thread));
  }
  thread.executor = nullptr;
}

void resumeHereOrEnqueue(ThreadState& thread, Coroutine& coroutine) noexcept {
  Executor& executor = *coroutine.executor;
  if (thread.executor != nullptr || !executor.mayRunOn(thread.kind))
    executor.enqueue(coroutine);
  else if (executor.takeTurnOrEnqueue(coroutine))
    runTurn(thread, &executor, &coroutine);
}

void Suspension::answer() noexcept {
  Coroutine& coroutine = *coroutine_;
  if (met_.exchange(true, std::memory_order_acq_rel))
    coroutine.executor->enqueue(coroutine);
}

void Suspension::answerHere(ThreadState& thread) noexcept {
  Coroutine& coroutine = *coroutine_;
  if (met_.exchange(true, std::memory_order_acq_rel))
    resumeHereOrEnqueue(thread, coroutine);
}

void blockSignals() noexcept {
  sigset_t signals;
  sigfillset(&signals);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF})
    sigdelset(&signals, fault);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace velmar::detail
