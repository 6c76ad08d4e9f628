// Task<T>: asynchronous work that can suspend and gives a T or throws.
//
//   Task<Config> load(FilePath path) {          // by value: the caller may be gone when this runs
//     std::string text = co_await read(path);   // the thread does something else meanwhile
//     co_return parse(text);                    // back on our executor
//   }
//
// A Task is lazy: calling `load` only makes it, awaiting it runs it, once. Dropped without being
// awaited it never ran. It runs on the executor of whoever awaits it, and as part of the same task:
// it sees the same cancellation and the same task-scoped values. Nothing runs in parallel by
// awaiting; `spawn` (Spawn.h) and groups (TaskGroup.h) start tasks of their own.
//
// A coroutine whose first parameter is a serialised object, `this` included, is another matter: it
// runs on that object's executor and keeps the object alive until it has ended (SerialObject.h).
// Its caller gets back to its own executor.
//
// The frame of a coroutine is freed by whoever awaits it, when the answer has been taken. Nobody
// frees a frame that is suspended midway: cancelling a task asks it to stop (Cancellation.h), and
// it ends by itself.
//
// What goes wrong quietly, so don't: a lambda with captures that is itself the coroutine, and then
// dropped (the captures die with the closure; hand the callable to `spawn`, a group, or
// `withTaskCancellationHandler`, which keep it), and parameters that are references or views of
// what the caller may drop.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Result.h"
#include "VelmarPlatform/Concurrency/Forward.h"
#include "VelmarPlatform/Concurrency/SerialObject.h"
#include "VelmarPlatform/Concurrency/Turn.h"

#include <concepts>
#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace velmar {

/// What stands for the value of a task that gives none, where a value has to be kept.
using Nothing = std::monostate;

namespace detail {

template <class T>
using Stored = std::conditional_t<std::is_void_v<T>, Nothing, T>;

template <class Operation, class Receiver>
class RootTask;

} // namespace detail

/// How a task ended: with its value (`Nothing` for one that gives none) or with what it threw.
template <class T>
using Outcome = Result<detail::Stored<T>, std::exception_ptr>;

namespace detail {

struct FinalAwaiter {
  [[nodiscard]] bool await_ready() const noexcept { return false; }
  template <std::derived_from<Coroutine> Promise>
  void await_suspend(std::coroutine_handle<Promise> self) const noexcept {
    afterSuspension(
        [](void* argument) noexcept {
          auto& finished = *static_cast<Coroutine*>(argument);
          return finished.finished(finished);
        },
        static_cast<Coroutine*>(&self.promise()));
  }
  void await_resume() const noexcept {}
};

class TaskPromiseBase : public Coroutine {
public:
  TaskPromiseBase() noexcept = default;
  explicit TaskPromiseBase(const SerialObject& object) noexcept
      : object_(object.weak_from_this().lock()) {
    precondition(object_ != nullptr, "An asynchronous function of a serialised object was called "
                                     "while no shared pointer owned the object.");
    executor = &object.executor();
  }

  [[nodiscard]] std::suspend_always initial_suspend() const noexcept { return {}; }
  [[nodiscard]] FinalAwaiter final_suspend() const noexcept { return {}; }
  void unhandled_exception() noexcept { failure_ = std::current_exception(); }

protected:
  [[nodiscard]] const std::exception_ptr& failure() const noexcept { return failure_; }
  void rethrowFailure() const {
    if (failure_ != nullptr)
      std::rethrow_exception(failure_);
  }

private:
  std::exception_ptr failure_;
  std::shared_ptr<const SerialObject> object_; ///< Kept alive as long as its coroutine.
};

template <class T>
class TaskPromise : public TaskPromiseBase {
public:
  using TaskPromiseBase::TaskPromiseBase;

  template <class U = T>
    requires std::constructible_from<T, U&&>
  void return_value(U&& value) {
    value_.emplace(std::forward<U>(value));
  }
  [[nodiscard]] T take() {
    rethrowFailure();
    return std::move(*value_);
  }
  [[nodiscard]] Outcome<T> takeOutcome() noexcept {
    if (failure() != nullptr)
      return Failure(failure());
    return std::move(*value_);
  }

private:
  std::optional<T> value_;
};

template <>
class TaskPromise<void> : public TaskPromiseBase {
public:
  using TaskPromiseBase::TaskPromiseBase;

  void return_void() const noexcept {}
  void take() const { rethrowFailure(); }
  [[nodiscard]] Outcome<void> takeOutcome() noexcept {
    if (failure() != nullptr)
      return Failure(failure());
    return Nothing();
  }
};

} // namespace detail

/// A coroutine that was called and hasn't run yet. Move-only. Belongs to one thread until it is
/// awaited or handed to `spawn` or a group.
template <class T>
class [[nodiscard]] Task {
  static_assert(!std::is_reference_v<T>,
                "A task gives values: a reference could outlive what it refers to.");

public:
  using Value = T;

  class promise_type : public detail::TaskPromise<T> {
  public:
    promise_type() noexcept { this->handle = Handle::from_promise(*this); }
    /// Chosen by the compiler for member functions of serialised objects, and others whose first
    /// parameter is one.
    template <std::derived_from<SerialObject> Self, class... Arguments>
    explicit promise_type(const Self& self, const Arguments&...) noexcept
        : detail::TaskPromise<T>(static_cast<const SerialObject&>(self)) {
      this->handle = Handle::from_promise(*this);
    }
    [[nodiscard]] Task get_return_object() noexcept { return Task(Handle::from_promise(*this)); }
  };

  Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    if (this != &other) {
      destroy();
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  ~Task() { destroy(); }

  class Awaiter;
  /// Runs the task and gives its value, or throws what it threw. Stops the process when there is
  /// nothing to await: a task is awaited once.
  [[nodiscard]] Awaiter operator co_await() && noexcept {
    precondition(handle_ != nullptr, "A task was awaited after it had been moved or awaited.");
    return Awaiter(std::exchange(handle_, nullptr));
  }

private:
  using Handle = std::coroutine_handle<promise_type>;
  template <class, class>
  friend class detail::RootTask;

  explicit Task(Handle handle) noexcept : handle_(handle) {}
  void destroy() noexcept {
    if (handle_ != nullptr)
      handle_.destroy();
  }

  Handle handle_;
};

template <class T>
class Task<T>::Awaiter {
public:
  explicit Awaiter(Handle child) noexcept : child_(child) {}
  Awaiter(const Awaiter&) = delete;
  Awaiter& operator=(const Awaiter&) = delete;
  Awaiter(Awaiter&&) = delete;
  Awaiter& operator=(Awaiter&&) = delete;
  ~Awaiter() { child_.destroy(); }

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  template <std::derived_from<detail::Coroutine> Promise>
  void await_suspend(std::coroutine_handle<Promise> parentHandle) const noexcept {
    detail::Coroutine& parent = parentHandle.promise();
    detail::Coroutine& child = child_.promise();
    if (child.executor == nullptr)
      child.executor = parent.executor;
    child.task = parent.task;
    child.bindings = bindings_ != nullptr ? bindings_ : parent.bindings;
    child.owner = &parent;
    child.finished = [](detail::Coroutine& self) noexcept {
      return static_cast<detail::Coroutine*>(self.owner);
    };
    detail::continueWith(child);
  }
  T await_resume() { return child_.promise().take(); }

  /// Lets the child see these task-scoped values instead of its parent's. They must outlive it.
  void setBindings(const detail::TaskLocalBinding* bindings) noexcept { bindings_ = bindings; }

private:
  Handle child_;
  const detail::TaskLocalBinding* bindings_ = nullptr;
};

namespace detail {

template <class Result>
struct TaskValue {
  using Type = Result;
};
template <class T>
struct TaskValue<Task<T>> {
  using Type = T;
};

} // namespace detail

/// What a callable gives in the end: the value of the `Task` that it returns, or what it returns
/// itself.
template <class Operation, class... Arguments>
using TaskValueOf = typename detail::TaskValue<
    std::remove_cvref_t<std::invoke_result_t<Operation&, Arguments...>>>::Type;

namespace detail {

/// Calls `operation`, which the caller keeps alive, and awaits what it gives if that is a task.
template <class Operation, class... Arguments>
Task<TaskValueOf<Operation, Arguments...>> invokeAsTask(Operation& operation,
                                                        Arguments... arguments) {
  using Result = std::invoke_result_t<Operation&, Arguments...>;
  using Value = TaskValueOf<Operation, Arguments...>;
  if constexpr (std::same_as<std::remove_cvref_t<Result>, Task<Value>>)
    co_return co_await std::invoke(operation, std::forward<Arguments>(arguments)...);
  else
    co_return std::invoke(operation, std::forward<Arguments>(arguments)...);
}

} // namespace detail
} // namespace velmar
