// Continuations: turning something that calls back into something that is awaited.
//
//   Task<Bytes> Session::reply(int id) {
//     co_return co_await withContinuation<Bytes>(
//         [&](Continuation<Bytes> waiter) { pending_.emplace(id, std::move(waiter)); });
//   }
//   void Session::received(int id, Bytes bytes) {
//     if (auto entry = pending_.extract(id))
//       std::move(entry.mapped()).resume(std::move(bytes));
//   }
//
// `withContinuation` suspends the caller first and then calls the function, still in the turn of
// the caller's executor: so a table of a serialised object is filled with nothing in between, and
// an answer finds its waiter there.
//
// A continuation is owed exactly one answer. One that is dropped without any would leave its task
// suspended for ever, with all that it holds, since nobody frees a frame that is suspended midway;
// so it stops the process with a message. Whoever fills a table empties it with an answer for
// everyone.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/Forward.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <concepts>
#include <coroutine>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

namespace velmar {

namespace detail {

/// Lives in the frame of the waiting coroutine until it is answered.
template <class T>
struct ContinuationState : Suspension {
  std::optional<Stored<T>> value;
  std::exception_ptr failure;
};

} // namespace detail

/// The right, and the duty, to resume a suspended task once. Move-only; any thread.
template <class T>
class [[nodiscard]] Continuation {
public:
  explicit Continuation(detail::ContinuationState<T>& state) noexcept : state_(&state) {}
  Continuation(Continuation&& other) noexcept : state_(std::exchange(other.state_, nullptr)) {}
  Continuation& operator=(Continuation&& other) noexcept {
    if (this != &other) {
      checkAnswered();
      state_ = std::exchange(other.state_, nullptr);
    }
    return *this;
  }
  Continuation(const Continuation&) = delete;
  Continuation& operator=(const Continuation&) = delete;
  ~Continuation() { checkAnswered(); }

  /// The task goes on with this value, on its own executor.
  void resume(detail::Stored<T> value = {}) && {
    detail::ContinuationState<T>& state = take();
    state.value.emplace(std::move(value));
    state.answer();
  }
  /// The task goes on with this failure. Others may hold the same one: it isn't changed any more.
  void fail(std::exception_ptr failure) && {
    precondition(failure != nullptr, "A continuation was failed without a failure.");
    detail::ContinuationState<T>& state = take();
    state.failure = std::move(failure);
    state.answer();
  }
  template <std::derived_from<std::exception> Failure>
  void fail(Failure failure) && {
    std::move(*this).fail(std::make_exception_ptr(std::move(failure)));
  }

private:
  detail::ContinuationState<T>& take() noexcept {
    precondition(state_ != nullptr, "A continuation was answered twice.");
    return *std::exchange(state_, nullptr);
  }
  void checkAnswered() const noexcept {
    precondition(state_ == nullptr,
                 "A continuation was dropped without an answer: its task would wait for ever.");
  }

  detail::ContinuationState<T>* state_;
};

namespace detail {

template <class T, class Register>
class ContinuationAwaiter {
public:
  explicit ContinuationAwaiter(Register function) : register_(std::move(function)) {}
  ContinuationAwaiter(const ContinuationAwaiter&) = delete;
  ContinuationAwaiter& operator=(const ContinuationAwaiter&) = delete;
  ContinuationAwaiter(ContinuationAwaiter&&) = delete;
  ContinuationAwaiter& operator=(ContinuationAwaiter&&) = delete;
  ~ContinuationAwaiter() = default;

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  template <std::derived_from<Coroutine> Promise>
  void await_suspend(std::coroutine_handle<Promise> handle) noexcept {
    state_.begin(handle.promise());
    afterSuspension(
        [](void* argument) noexcept {
          auto& self = *static_cast<ContinuationAwaiter*>(argument);
          self.register_(Continuation<T>(self.state_));
          return self.state_.armed();
        },
        this);
  }
  T await_resume() {
    if (state_.failure != nullptr)
      std::rethrow_exception(state_.failure);
    if constexpr (!std::is_void_v<T>)
      return std::move(*state_.value);
  }

private:
  Register register_;
  ContinuationState<T> state_;
};

} // namespace detail

/// Suspends the calling task, calls `function` with a `Continuation<T>`, and gives or throws what
/// that is answered with, be it at once, later, or on another thread. `function` runs on the
/// caller's executor and must not throw.
template <class T = void, std::invocable<Continuation<T>> Register>
[[nodiscard]] detail::ContinuationAwaiter<T, Register> withContinuation(Register function) {
  return detail::ContinuationAwaiter<T, Register>(std::move(function));
}

} // namespace velmar
