// What everything that a task can wait for has in common: timers, streams, descriptors, the ends of
// other tasks. For the layer's own use.
//
// A wait has two possible ends, what it is for and the cancellation of its task, and they race.
// Whoever *claims* the waiter first ends the wait; the other finds it claimed and leaves it alone.
// A claimed waiter stands in its frame until it is answered. A source touches the waiters in its
// list under its own lock only, and a waiter that was cancelled takes itself out of the list, under
// the same lock, before its frame goes.
#pragma once

#include "VelmarPlatform/Concurrency/Cancellation.h"
#include "VelmarPlatform/Concurrency/Turn.h"

#include <atomic>
#include <concepts>
#include <coroutine>
#include <optional>
#include <stop_token>

namespace velmar::detail {

class Waiter : public Suspension {
public:
  /// Whether the caller ends this wait, by calling `answer`.
  [[nodiscard]] bool claim() noexcept {
    return !claimed_.exchange(true, std::memory_order_acq_rel);
  }

  Waiter* next = nullptr; ///< For the source's list.

private:
  std::atomic<bool> claimed_{false};
};

/// Waiters in the order of their coming. Guarded by its owner's lock.
class WaiterList {
public:
  void append(Waiter& waiter) noexcept {
    Waiter** link = &first_;
    while (*link != nullptr)
      link = &(*link)->next;
    waiter.next = nullptr;
    *link = &waiter;
  }
  /// Takes out a waiter if it is there.
  void remove(Waiter& waiter) noexcept {
    for (Waiter** link = &first_; *link != nullptr; link = &(*link)->next)
      if (*link == &waiter) {
        *link = waiter.next;
        return;
      }
  }
  /// Takes out the first waiter that isn't claimed by somebody else, and claims it; null if there
  /// is none.
  [[nodiscard]] Waiter* claimFirst() noexcept {
    while (Waiter* waiter = first_) {
      first_ = waiter->next;
      if (waiter->claim())
        return waiter;
    }
    return nullptr;
  }
  /// Takes out and claims all that can be had, linked through `next`.
  [[nodiscard]] Waiter* claimAll() noexcept {
    Waiter* all = nullptr;
    Waiter** last = &all;
    while (Waiter* waiter = claimFirst()) {
      waiter->next = nullptr;
      *last = waiter;
      last = &waiter->next;
    }
    return all;
  }

private:
  Waiter* first_ = nullptr;
};

/// Answers a list of claimed waiters. Called without locks.
inline void answerAll(Waiter* waiters) noexcept {
  while (waiters != nullptr) {
    Waiter* next = waiters->next; // the waiter is gone once it is answered
    waiters->answer();
    waiters = next;
  }
}

enum class Cancellable { no, yes };

/// Awaits a source: `park(waiter)` puts the waiter into its list, or says false if there is nothing
/// to wait for; `unpark(waiter)` takes it out if it still is there. Gives whether the wait ran to
/// its end; false if cancellation cut it short.
template <class Source>
class Wait {
public:
  Wait(Source source, Cancellable cancellable) noexcept
      : source_(source), cancellable_(cancellable) {}
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;
  Wait(Wait&&) = delete;
  Wait& operator=(Wait&&) = delete;
  ~Wait() = default;

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  template <std::derived_from<Coroutine> Promise>
  void await_suspend(std::coroutine_handle<Promise> handle) noexcept {
    waiter_.begin(handle.promise());
    afterSuspension([](void* argument) noexcept { return static_cast<Wait*>(argument)->arm(); },
                    this);
  }
  bool await_resume() noexcept {
    onCancel_.reset(); // waits for a handler that runs right now; it only queues us
    if (wasCancelled_)
      source_.unpark(waiter_);
    return !wasCancelled_;
  }

private:
  struct Cancel {
    Wait* wait;
    void operator()() const noexcept {
      if (!wait->waiter_.claim())
        return;
      wait->wasCancelled_ = true;
      wait->waiter_.answer();
    }
  };

  Coroutine* arm() noexcept {
    if (cancellable_ == Cancellable::yes)
      onCancel_.emplace(waiter_.coroutine().task->cancellation.get_token(), Cancel{this});
    if (!source_.park(waiter_) && waiter_.claim())
      waiter_.answer();
    return waiter_.armed();
  }

  Source source_;
  Cancellable cancellable_;
  bool wasCancelled_ = false;
  Waiter waiter_;
  std::optional<std::stop_callback<Cancel>> onCancel_;
};

} // namespace velmar::detail
