// A sequence of values over time, from whoever has them to one task that awaits them one by one.
//
//   auto [source, stream] = makeAsyncStream<Event>();
//   watcher->onEvent = [source](Event event) { source.yield(event); };   // any thread, never waits
//   while (std::optional<Event> event = co_await stream.next())
//     show(*event);
//
// The stream ends when its source finishes it, when the last copy of the source goes, or for the
// reader when its task is cancelled. What was yielded before is read first. It is unbounded: what
// nobody reads piles up.
#pragma once

#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Concurrency/Wait.h"

#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace velmar {

namespace detail {

template <class T>
class StreamState {
public:
  void yield(T value) {
    Waiter* waiter = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      if (isFinished_)
        return;
      values_.push_back(std::move(value));
      waiter = waiters_.claimFirst();
    }
    if (waiter != nullptr)
      waiter->answer();
  }

  void finish(std::exception_ptr failure) noexcept {
    Waiter* waiters = nullptr;
    std::function<void()> onEnd;
    {
      const std::scoped_lock lock(mutex_);
      if (isFinished_)
        return;
      isFinished_ = true;
      failure_ = std::move(failure);
      waiters = waiters_.claimAll();
      onEnd = std::exchange(onEnd_, nullptr);
    }
    answerAll(waiters);
    if (onEnd)
      onEnd();
  }

  void setOnEnd(std::function<void()> onEnd) {
    {
      const std::scoped_lock lock(mutex_);
      if (!isFinished_) {
        onEnd_ = std::move(onEnd);
        return;
      }
    }
    onEnd();
  }

  /// What is there to read: a value, or the end. Throws the failure that the stream ended with,
  /// once.
  [[nodiscard]] std::optional<T> take() {
    const std::scoped_lock lock(mutex_);
    if (!values_.empty()) {
      std::optional<T> value(std::move(values_.front()));
      values_.pop_front();
      return value;
    }
    if (failure_ != nullptr)
      std::rethrow_exception(std::exchange(failure_, nullptr));
    return std::nullopt;
  }

  [[nodiscard]] bool park(Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    if (isFinished_ || !values_.empty())
      return false;
    waiters_.append(waiter);
    return true;
  }
  void unpark(Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    waiters_.remove(waiter);
  }

private:
  std::mutex mutex_;
  std::deque<T> values_;
  std::exception_ptr failure_;
  bool isFinished_ = false;
  std::function<void()> onEnd_;
  WaiterList waiters_;
};

/// Finishes the stream when it goes: every copy of a source holds the same one of these.
template <class T>
struct StreamEnd {
  explicit StreamEnd(std::shared_ptr<StreamState<T>> s) noexcept : state(std::move(s)) {}
  StreamEnd(const StreamEnd&) = delete;
  StreamEnd& operator=(const StreamEnd&) = delete;
  StreamEnd(StreamEnd&&) = delete;
  StreamEnd& operator=(StreamEnd&&) = delete;
  ~StreamEnd() { state->finish(nullptr); }
  std::shared_ptr<StreamState<T>> state;
};

} // namespace detail

/// Where the values of an AsyncStream come from. Copies feed the same stream. Any thread.
template <class T>
class AsyncStreamSource {
public:
  explicit AsyncStreamSource(std::shared_ptr<detail::StreamState<T>> state)
      : end_(std::make_shared<detail::StreamEnd<T>>(std::move(state))) {}

  /// Adds a value. Dropped if the stream has ended.
  void yield(T value) const { end_->state->yield(std::move(value)); }
  /// Ends the stream. The second end, and all after it, count for nothing.
  void finish() const noexcept { end_->state->finish(nullptr); }
  /// Ends the stream with a failure, which the reader gets after the values.
  void fail(std::exception_ptr failure) const noexcept { end_->state->finish(std::move(failure)); }
  /// Has `onEnd` called once when the stream ends, by its source or because nobody reads it any
  /// more; at once if it has. On the thread that ends it. Replaces an earlier function.
  void setOnEnd(std::function<void()> onEnd) const { end_->state->setOnEnd(std::move(onEnd)); }

private:
  std::shared_ptr<detail::StreamEnd<T>> end_;
};

/// The reading end. Move-only; one task reads at a time. Dropping it ends the stream.
template <class T>
class AsyncStream {
public:
  explicit AsyncStream(std::shared_ptr<detail::StreamState<T>> state)
      : end_(std::make_unique<detail::StreamEnd<T>>(std::move(state))) {}

  /// The next value, or absent at the end and when the task is cancelled. Throws the failure that
  /// the source ended the stream with. Values that are there are given even to a cancelled task.
  [[nodiscard]] Task<std::optional<T>> next() { return awaitNext(end_->state); }

private:
  struct NextValue {
    detail::StreamState<T>* state;
    [[nodiscard]] bool park(detail::Waiter& waiter) const noexcept { return state->park(waiter); }
    void unpark(detail::Waiter& waiter) const noexcept { state->unpark(waiter); }
  };
  static Task<std::optional<T>> awaitNext(std::shared_ptr<detail::StreamState<T>> state) {
    co_await detail::Wait(NextValue{state.get()}, detail::Cancellable::yes);
    co_return state->take();
  }

  std::unique_ptr<detail::StreamEnd<T>> end_;
};

/// Both ends of a new stream.
template <class T>
struct AsyncStreamEnds {
  AsyncStreamSource<T> source;
  AsyncStream<T> stream;
};

template <class T>
[[nodiscard]] AsyncStreamEnds<T> makeAsyncStream() {
  auto state = std::make_shared<detail::StreamState<T>>();
  return {AsyncStreamSource<T>(state), AsyncStream<T>(state)};
}

} // namespace velmar
