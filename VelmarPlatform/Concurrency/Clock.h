// Time as something that is passed in: a clock tells it and lets tasks sleep. The real one is
// monotonic, so nobody's time limit moves when the date is set; the one of tests is turned by hand.
//
//   co_await monotonicClock().sleepFor(250ms);   // throws CancellationError when it is cancelled
//
//   ManualClock clock;                           // in a test
//   auto handle = spawn([&] { return poll(clock); });
//   …until clock.sleeperCount() == 1…
//   clock.advance(30s);                          // who is due wakes, in the order of deadlines
#pragma once

#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Concurrency/Wait.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>

namespace velmar {

/// A source of time. Any thread. Outlives all who sleep on it.
class Clock {
public:
  using Duration = std::chrono::nanoseconds;
  using Instant = std::chrono::time_point<std::chrono::steady_clock, Duration>;

  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  Clock(Clock&&) = delete;
  Clock& operator=(Clock&&) = delete;
  virtual ~Clock() = default;

  /// Time since a start that means nothing; it never goes back.
  [[nodiscard]] virtual Instant now() const noexcept = 0;

  /// Suspends the calling task until `deadline`, never less and as little more as the system
  /// allows. Throws CancellationError as soon as the task is cancelled, also if the deadline has
  /// passed.
  [[nodiscard]] Task<void> sleepUntil(Instant deadline) { return sleep(this, deadline); }
  /// The same for a time from the moment of the call. A length that would pass the end of time
  /// means the end of time.
  [[nodiscard]] Task<void> sleepFor(Duration duration) { return sleep(this, after(duration)); }
  /// `duration` from now, or the end of time.
  [[nodiscard]] Instant after(Duration duration) const noexcept;

  /// How many tasks sleep on this clock.
  [[nodiscard]] std::size_t sleeperCount() const noexcept;

protected:
  /// Wakes everybody whose deadline isn't after `now`, in the order of deadlines, and among equals
  /// of their going to sleep. `answer(waiter)` is called without locks.
  template <class Answer>
  void wakeDue(Instant now, Answer answer) noexcept {
    detail::Waiter* due = takeDue(now);
    while (due != nullptr) {
      detail::Waiter* next = due->next;
      answer(*due);
      due = next;
    }
  }
  [[nodiscard]] std::optional<Instant> earliestDeadline() const noexcept;
  /// Somebody will have to be woken earlier than anybody so far. Called without locks.
  virtual void deadlineMovedUp(Instant) noexcept {}

private:
  struct Sleep {
    Clock* clock;
    Instant deadline;
    [[nodiscard]] bool park(detail::Waiter& waiter) const noexcept;
    void unpark(detail::Waiter& waiter) const noexcept;
  };
  static Task<void> sleep(Clock* clock, Instant deadline);
  [[nodiscard]] detail::Waiter* takeDue(Instant now) noexcept;

  mutable std::mutex mutex_;
  std::multimap<Instant, detail::Waiter*> sleepers_;
};

/// The system's monotonic clock. Sleepers wake on the reactor's thread or their executor.
[[nodiscard]] Clock& monotonicClock() noexcept;

/// A clock that stands still until it is turned.
class ManualClock final : public Clock {
public:
  [[nodiscard]] Instant now() const noexcept override;
  /// Turns the clock on and wakes who is due. Those go on on their executors, after this has
  /// returned or meanwhile.
  void advance(Duration duration) noexcept;
  /// When the first who sleeps is due; absent if nobody sleeps.
  using Clock::earliestDeadline;

private:
  mutable std::mutex nowMutex_;
  Instant now_{};
};

} // namespace velmar
