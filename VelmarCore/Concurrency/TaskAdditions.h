// What can be hung on a task that was spawned: work for after its end, and waits that end early.
//
//   auto copy = then(copyFiles(), [](int count) { log(count); });   // a task with the same value
//   co_await waitUnlessCancelled(copy);
#pragma once

#include "VelmarPlatform/Concurrency/Spawn.h"

#include <concepts>
#include <exception>
#include <type_traits>
#include <utility>

namespace velmar {

namespace detail {

/// Ends a task like the one that it followed.
template <class T>
T passOn(Outcome<T> outcome) {
  if (!outcome)
    std::rethrow_exception(outcome.error());
  if constexpr (!std::is_void_v<T>)
    return std::move(*outcome);
}

template <class T, class Body>
Task<T> runThen(TaskHandle<T> task, Body& body) {
  if constexpr (std::is_void_v<T>) {
    co_await task.value();
    co_await invokeAsTask(body);
  } else {
    T value = co_await task.value();
    co_await invokeAsTask<Body, T>(body, value);
    co_return value;
  }
}

template <class T, class Body>
Task<T> runCatch(TaskHandle<T> task, Body& body) {
  Outcome<T> outcome = co_await task.outcome();
  if (!outcome)
    co_await invokeAsTask<Body, std::exception_ptr>(body, outcome.error());
  co_return passOn<T>(std::move(outcome));
}

template <class T, class Body>
Task<T> runFinally(TaskHandle<T> task, Body& body) {
  Outcome<T> outcome = co_await task.outcome();
  co_await invokeAsTask(body);
  co_return passOn<T>(std::move(outcome));
}

} // namespace detail

/// A new task on the pool that waits for `task`, awaits `body(value)`, or `body()` for a task
/// without a value, and gives the same value. If `task` fails, so does this one, and `body` doesn't
/// run. A failure of `body` is the new task's.
template <class T, class Body>
TaskHandle<T> then(TaskHandle<T> task, Body body) {
  return spawn([task = std::move(task), body = std::move(body)]() mutable {
    return detail::runThen<T>(task, body);
  });
}

/// The same for the other end: awaits `body(failure)`, with a `std::exception_ptr`, if `task`
/// fails, and fails alike.
template <class T, std::invocable<std::exception_ptr> Body>
TaskHandle<T> catchWith(TaskHandle<T> task, Body body) {
  return spawn([task = std::move(task), body = std::move(body)]() mutable {
    return detail::runCatch<T>(task, body);
  });
}

/// The same for either end: awaits `body()`, and ends like `task`.
template <class T, std::invocable Body>
TaskHandle<T> finally(TaskHandle<T> task, Body body) {
  return spawn([task = std::move(task), body = std::move(body)]() mutable {
    return detail::runFinally<T>(task, body);
  });
}

/// Waits until `task` ends, and throws what it threw; its value is dropped. Throws
/// CancellationError as soon as the caller's own task is cancelled, and then `task` goes on.
template <class T>
Task<void> waitUnlessCancelled(TaskHandle<T> task) {
  if (const std::exception_ptr failure = co_await task.waitForEnd())
    std::rethrow_exception(failure);
}

} // namespace velmar
