#include "VelmarPlatform/Concurrency/Clock.h"

#include "VelmarPlatform/Basics/Precondition.h"

namespace velmar {

Clock::Instant Clock::after(Duration duration) const noexcept {
  const Instant start = now();
  return duration > Instant::max() - start ? Instant::max() : start + duration;
}

std::size_t Clock::sleeperCount() const noexcept {
  const std::scoped_lock lock(mutex_);
  return sleepers_.size();
}

std::optional<Clock::Instant> Clock::earliestDeadline() const noexcept {
  const std::scoped_lock lock(mutex_);
  if (sleepers_.empty())
    return std::nullopt;
  return sleepers_.begin()->first;
}

Task<void> Clock::sleep(Clock* clock, Instant deadline) {
  checkCancellation();
  if (!co_await detail::Wait(Sleep{clock, deadline}, detail::Cancellable::yes))
    throw CancellationError();
}

bool Clock::Sleep::park(detail::Waiter& waiter) const noexcept {
  // Asking for the time inside of the lock orders us with a hand-turned clock: it moves first and
  // then looks for sleepers.
  bool isEarliest = false;
  {
    const std::scoped_lock lock(clock->mutex_);
    if (deadline <= clock->now())
      return false;
    const auto place = clock->sleepers_.emplace(deadline, &waiter);
    isEarliest = place == clock->sleepers_.begin();
  }
  // The waiter may be woken by now, but its frame stands: it isn't armed yet.
  if (isEarliest)
    clock->deadlineMovedUp(deadline);
  return true;
}

void Clock::Sleep::unpark(detail::Waiter& waiter) const noexcept {
  const std::scoped_lock lock(clock->mutex_);
  auto [place, end] = clock->sleepers_.equal_range(deadline);
  for (; place != end; ++place)
    if (place->second == &waiter) {
      clock->sleepers_.erase(place);
      return;
    }
}

detail::Waiter* Clock::takeDue(Instant now) noexcept {
  const std::scoped_lock lock(mutex_);
  detail::Waiter* all = nullptr;
  detail::Waiter** last = &all;
  while (!sleepers_.empty() && sleepers_.begin()->first <= now) {
    detail::Waiter* waiter = sleepers_.begin()->second;
    sleepers_.erase(sleepers_.begin());
    if (!waiter->claim())
      continue; // cancelled at this moment; it wakes by itself
    waiter->next = nullptr;
    *last = waiter;
    last = &waiter->next;
  }
  return all;
}

Clock::Instant ManualClock::now() const noexcept {
  const std::scoped_lock lock(nowMutex_);
  return now_;
}

void ManualClock::advance(Duration duration) noexcept {
  precondition(duration >= Duration::zero(), "A clock can't be turned back.");
  Instant now;
  {
    const std::scoped_lock lock(nowMutex_);
    now = now_ += duration;
  }
  wakeDue(now, [](detail::Waiter& waiter) { waiter.answer(); });
}

} // namespace velmar
