// Starting tasks that nobody awaits at once.
//
//   TaskHandle<int> handle = spawn([path] { return countLines(path); });   // on the pool
//   spawn(mainExecutor(), [view] { view->update(); });   // plain functions will do
//   int lines = co_await handle.value();
//   handle.cancel();                                     // asks it to stop
//
// The callable is kept until the task has ended, so captures are safe. It is called on the executor
// that is named, or on the pool, never before `spawn` returns. The new task sees the task-scoped
// values of the one that spawns it, and has a cancellation flag of its own. Whoever needs its
// children to be cancelled with it uses a group.
//
// Dropping the handle doesn't stop the task. An object that starts tasks for its own purposes has a
// `TaskScope` for them, which asks them to stop when the object goes.
#pragma once

#include "VelmarPlatform/Concurrency/Forward.h"
#include "VelmarPlatform/Concurrency/RootTask.h"
#include "VelmarPlatform/Concurrency/Wait.h"

#include <concepts>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace velmar {

namespace detail {

/// What a task and its handles share.
class TaskStateBase {
public:
  TaskContext context;

  void linkTo(const std::stop_token& scope) { link_.emplace(scope, Cancel{&context}); }
  [[nodiscard]] bool isFinished() const noexcept {
    const std::scoped_lock lock(mutex_);
    return isFinished_;
  }
  /// False when the task has ended already.
  [[nodiscard]] bool park(Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    if (!isFinished_)
      waiters_.append(waiter);
    return !isFinished_;
  }
  void unpark(Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    waiters_.remove(waiter);
  }

protected:
  template <class Store>
  void finishWith(Store store) noexcept {
    link_.reset(); // may wait for a handler, so without the lock
    Waiter* waiters = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      store();
      isFinished_ = true;
      waiters = waiters_.claimAll();
    }
    answerAll(waiters);
  }

private:
  struct Cancel {
    TaskContext* context;
    void operator()() const noexcept { context->cancellation.request_stop(); }
  };

  mutable std::mutex mutex_;
  bool isFinished_ = false;
  WaiterList waiters_;
  std::optional<std::stop_callback<Cancel>> link_;
};

template <class T>
class TaskState : public TaskStateBase {
public:
  void finish(Outcome<T> outcome) noexcept {
    finishWith([&] { outcome_.emplace(std::move(outcome)); });
  }
  /// Once it is finished.
  [[nodiscard]] Outcome<T>& outcome() noexcept { return *outcome_; }

private:
  std::optional<Outcome<T>> outcome_;
};

/// A Wait's view of a task's state.
struct TaskEnd {
  TaskStateBase* state;
  [[nodiscard]] bool park(Waiter& waiter) const noexcept { return state->park(waiter); }
  void unpark(Waiter& waiter) const noexcept { state->unpark(waiter); }
};

} // namespace detail

/// A task that was started. Copies refer to the same task; a default-made handle refers to none,
/// and only asking whether it does is allowed then. Any thread.
template <class T>
class TaskHandle {
public:
  TaskHandle() = default;
  explicit TaskHandle(std::shared_ptr<detail::TaskState<T>> state) noexcept
      : state_(std::move(state)) {}

  /// Whether this refers to a task at all.
  explicit operator bool() const noexcept { return state_ != nullptr; }
  bool operator==(const TaskHandle&) const = default;

  /// Asks the task to stop; its cancellation handlers run before this returns. Nothing happens if
  /// it has ended.
  void cancel() const { state_->context.cancellation.request_stop(); }
  [[nodiscard]] bool isCancelled() const noexcept {
    return state_->context.cancellation.stop_requested();
  }
  [[nodiscard]] bool isFinished() const noexcept { return state_->isFinished(); }

  /// Waits for the end, and gives a copy of the value or throws what the task threw: the same
  /// object to everybody who waits. The wait itself isn't cut short by cancellation, and cancels
  /// nothing.
  [[nodiscard]] Task<T> value() const { return awaitValue(*this); }
  /// Waits for the end and gives it as a value.
  [[nodiscard]] Task<Outcome<T>> outcome() const { return awaitOutcome(*this); }
  /// Waits for the end, and gives what the task threw, or null. Throws CancellationError as soon as
  /// the caller's own task is cancelled; the task that is waited for goes on then.
  [[nodiscard]] Task<std::exception_ptr> waitForEnd() const { return awaitEnd(*this); }

  /// Takes the value out of a task that has ended, or throws what it threw. For the one who is
  /// known to be the last.
  [[nodiscard]] T takeValue() && {
    precondition(isFinished(), "The value of a task was taken before the task had ended.");
    const auto state = std::move(state_);
    return valueOf(std::move(state->outcome()));
  }

private:
  static T valueOf(Outcome<T> outcome) {
    if (!outcome)
      std::rethrow_exception(outcome.error());
    if constexpr (!std::is_void_v<T>)
      return std::move(*outcome);
  }
  static Task<T> awaitValue(TaskHandle handle) {
    co_await detail::Wait(detail::TaskEnd{handle.state_.get()}, detail::Cancellable::no);
    co_return valueOf(handle.state_->outcome());
  }
  static Task<Outcome<T>> awaitOutcome(TaskHandle handle) {
    co_await detail::Wait(detail::TaskEnd{handle.state_.get()}, detail::Cancellable::no);
    co_return handle.state_->outcome();
  }
  static Task<std::exception_ptr> awaitEnd(TaskHandle handle) {
    if (!co_await detail::Wait(detail::TaskEnd{handle.state_.get()}, detail::Cancellable::yes))
      throw CancellationError();
    const Outcome<T>& outcome = handle.state_->outcome();
    co_return outcome ? nullptr : outcome.error();
  }

  std::shared_ptr<detail::TaskState<T>> state_;
};

namespace detail {

template <class Operation>
TaskHandle<TaskValueOf<Operation>> spawnLinked(Executor& executor, Operation operation,
                                               const std::stop_token& scope) {
  using Value = TaskValueOf<Operation>;
  auto state = std::make_shared<TaskState<Value>>();
  if (scope.stop_possible())
    state->linkTo(scope);
  startRootTask(executor, state->context, std::move(operation),
                [state](Outcome<Value> outcome) noexcept { state->finish(std::move(outcome)); });
  return TaskHandle<Value>(std::move(state));
}

} // namespace detail

/// Starts `operation`, which gives a `Task` or a plain value, on `executor`.
template <std::invocable Operation>
TaskHandle<TaskValueOf<Operation>> spawn(Executor& executor, Operation operation) {
  return detail::spawnLinked(executor, std::move(operation), {});
}
/// Starts `operation` on the pool.
template <std::invocable Operation>
TaskHandle<TaskValueOf<Operation>> spawn(Operation operation) {
  return spawn(poolExecutor(), std::move(operation));
}

/// The tasks that an object started for its own purposes. When the scope goes, they are asked to
/// stop; nobody waits for them, so they hold what they need, and the object itself weakly if it is
/// to go before them. Any thread.
class TaskScope {
public:
  TaskScope() = default;
  TaskScope(const TaskScope&) = delete;
  TaskScope& operator=(const TaskScope&) = delete;
  TaskScope(TaskScope&&) = delete;
  TaskScope& operator=(TaskScope&&) = delete;
  ~TaskScope() { cancelAll(); }

  /// Like the free `spawn`. A task that is started after `cancelAll` is cancelled from the start.
  template <std::invocable Operation>
  TaskHandle<TaskValueOf<Operation>> spawn(Executor& executor, Operation operation) {
    return detail::spawnLinked(executor, std::move(operation), cancellation_.get_token());
  }
  template <std::invocable Operation>
  TaskHandle<TaskValueOf<Operation>> spawn(Operation operation) {
    return spawn(poolExecutor(), std::move(operation));
  }

  /// Asks all tasks to stop, those of the future included.
  void cancelAll() noexcept { cancellation_.request_stop(); }

private:
  std::stop_source cancellation_;
};

} // namespace velmar
