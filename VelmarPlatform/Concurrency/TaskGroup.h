// Groups: child tasks that run in parallel and end before the group does.
//
//   Task<int> total(std::vector<FilePath> paths) {
//     co_return co_await withTaskGroup<int>([&](TaskGroup<int>& group) -> Task<int> {
//       for (const FilePath& path : paths)
//         group.add([path] { return countLines(path); });      // on the pool, all at once
//       int sum = 0;
//       while (std::optional<int> lines = co_await group.next())   // in the order of their ends
//         sum += *lines;
//       co_return sum;
//     });
//   }
//
// Children are cancelled when the parent's task is, and when the body throws. Either way the group
// waits for all of them, so they may refer to what lives in the parent's frame. They see the
// parent's task-scoped values.
//
// (The body above is a capturing lambda that is itself a coroutine, and safe: `withTaskGroup` keeps
// it until it has ended.)
#pragma once

#include "VelmarPlatform/Concurrency/Forward.h"
#include "VelmarPlatform/Concurrency/RootTask.h"
#include "VelmarPlatform/Concurrency/Wait.h"

#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace velmar {

namespace detail {

/// What a group and its children share. Only the parent waits in it.
template <class T>
class TaskGroupState {
public:
  TaskContext context; ///< One flag for all children.

  void childStarts() noexcept {
    const std::scoped_lock lock(mutex_);
    ++running_;
  }
  void childEnded(Outcome<T> outcome) noexcept {
    Waiter* waiter = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      ended_.push_back(std::move(outcome));
      --running_;
      waiter = waiters_.claimFirst();
    }
    if (waiter != nullptr)
      waiter->answer();
  }
  /// False if there is an outcome to take, or none will come.
  [[nodiscard]] bool park(Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    const bool mustWait = ended_.empty() && running_ > 0;
    if (mustWait)
      waiters_.append(waiter);
    return mustWait;
  }
  void unpark(Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    waiters_.remove(waiter);
  }
  [[nodiscard]] std::optional<Outcome<T>> takeFirst() {
    const std::scoped_lock lock(mutex_);
    if (ended_.empty())
      return std::nullopt;
    std::optional<Outcome<T>> first(std::move(ended_.front()));
    ended_.pop_front();
    return first;
  }
  [[nodiscard]] bool isEmpty() const noexcept {
    const std::scoped_lock lock(mutex_);
    return ended_.empty() && running_ == 0;
  }

private:
  mutable std::mutex mutex_;
  std::deque<Outcome<T>> ended_;
  std::size_t running_ = 0;
  WaiterList waiters_;
};

template <class T>
struct GroupEnd {
  TaskGroupState<T>* state;
  [[nodiscard]] bool park(Waiter& waiter) const noexcept { return state->park(waiter); }
  void unpark(Waiter& waiter) const noexcept { state->unpark(waiter); }
};

} // namespace detail

/// The children of one `withTaskGroup`, each giving a T. Used by the body and what it awaits, on
/// the parent's executor.
template <class T>
class TaskGroup {
public:
  TaskGroup() : parent_(detail::currentCancellation(), Cancel{&state_->context}) {}
  TaskGroup(const TaskGroup&) = delete;
  TaskGroup& operator=(const TaskGroup&) = delete;
  TaskGroup(TaskGroup&&) = delete;
  TaskGroup& operator=(TaskGroup&&) = delete;
  ~TaskGroup() = default;

  /// Starts a child on `executor`. The callable gives a `Task<T>` or a plain T and is kept until
  /// the child has ended.
  template <std::invocable Operation>
  void add(Executor& executor, Operation operation) {
    state_->childStarts();
    detail::startRootTask(
        executor, state_->context, std::move(operation),
        [state = state_](Outcome<T> outcome) noexcept { state->childEnded(std::move(outcome)); });
  }
  /// Starts a child on the pool.
  template <std::invocable Operation>
  void add(Operation operation) {
    add(poolExecutor(), std::move(operation));
  }

  /// Waits for the next child to end: its value (`Nothing` for those that give none), or absent
  /// when all ends have been told. Throws what the child threw; the others go on until the body
  /// itself throws. Cancellation doesn't cut this short, as it reaches the children.
  [[nodiscard]] Task<std::optional<detail::Stored<T>>> next() { return awaitNext(state_); }
  /// The same with a child's failure as a value.
  [[nodiscard]] Task<std::optional<Outcome<T>>> nextOutcome() { return awaitNextOutcome(state_); }
  /// Waits for all children whose end hasn't been told, and throws the first failure among them
  /// once all have ended.
  [[nodiscard]] Task<void> waitForAll() { return awaitAll(state_); }

  /// Asks all children to stop, those of the future included.
  void cancelAll() noexcept { state_->context.cancellation.request_stop(); }
  [[nodiscard]] bool isCancelled() const noexcept {
    return state_->context.cancellation.stop_requested();
  }
  /// Whether no child runs and no end is left to tell.
  [[nodiscard]] bool isEmpty() const noexcept { return state_->isEmpty(); }

private:
  using State = std::shared_ptr<detail::TaskGroupState<T>>;
  struct Cancel {
    detail::TaskContext* context;
    void operator()() const noexcept { context->cancellation.request_stop(); }
  };

  static Task<std::optional<Outcome<T>>> awaitNextOutcome(State state) {
    co_await detail::Wait(detail::GroupEnd<T>{state.get()}, detail::Cancellable::no);
    co_return state->takeFirst();
  }
  static Task<std::optional<detail::Stored<T>>> awaitNext(State state) {
    std::optional<Outcome<T>> outcome = co_await awaitNextOutcome(std::move(state));
    if (!outcome)
      co_return std::nullopt;
    if (!*outcome)
      std::rethrow_exception(outcome->error());
    co_return std::move(**outcome);
  }
  static Task<void> awaitAll(State state) {
    std::exception_ptr failure;
    while (std::optional<Outcome<T>> outcome = co_await awaitNextOutcome(state))
      if (!*outcome && failure == nullptr)
        failure = outcome->error();
    if (failure != nullptr)
      std::rethrow_exception(failure);
  }

  State state_ = std::make_shared<detail::TaskGroupState<T>>();
  std::stop_callback<Cancel> parent_;
};

/// Runs `body` with a new group, waits for all children, and gives what the body gave. If the body
/// throws, the children are cancelled and waited for, and its failure is passed on. Failures of
/// children that the body didn't ask for are dropped.
template <class T, std::invocable<TaskGroup<T>&> Body>
Task<TaskValueOf<Body, TaskGroup<T>&>> withTaskGroup(Body body) {
  using Value = TaskValueOf<Body, TaskGroup<T>&>;
  TaskGroup<T> group;
  std::optional<detail::Stored<Value>> value;
  std::exception_ptr failure;
  try {
    if constexpr (std::is_void_v<Value>)
      co_await detail::invokeAsTask<Body, TaskGroup<T>&>(body, group);
    else
      value.emplace(co_await detail::invokeAsTask<Body, TaskGroup<T>&>(body, group));
  } catch (...) {
    failure = std::current_exception();
    group.cancelAll();
  }
  while (co_await group.nextOutcome()) {
  }
  if (failure != nullptr)
    std::rethrow_exception(failure);
  if constexpr (!std::is_void_v<Value>)
    co_return std::move(*value);
}

} // namespace velmar
