#include "VelmarPlatform/Concurrency/SerialExecutor.h"

#include <utility>

namespace velmar {

SerialExecutor::TurnJob::TurnJob(SerialExecutor& owner)
    : Job([](Job& job) noexcept {
        // A thread came for the turn. Its loop asks for the next job by itself.
        detail::threadState().executor = &static_cast<TurnJob&>(job).executor;
      }),
      executor(owner) {}

SerialExecutor::SerialExecutor(Private, std::string_view label, Lane lane)
    : Executor(label), lane_(lane), turnJob_(*this) {}

void SerialExecutor::enqueue(detail::Job& job) noexcept {
  if (!push(job))
    return;
  self_ = shared_from_this();
  job.next = nullptr;
  ready_ = &job;
  requestTurn();
}

bool SerialExecutor::mayRunOn(detail::ThreadKind kind) const noexcept {
  switch (lane_) {
  case Lane::pool:
    return kind == detail::ThreadKind::pool;
  case Lane::poolOrReactor:
    return kind == detail::ThreadKind::pool || kind == detail::ThreadKind::reactor;
  case Lane::ownThread:
    break;
  }
  return false;
}

bool SerialExecutor::takeTurnOrEnqueue(detail::Job& job) noexcept {
  if (!push(job))
    return false;
  self_ = shared_from_this();
  return true;
}

detail::Job* SerialExecutor::nextInTurn(bool mayGoOn) noexcept {
  if (!mayGoOn) {
    leaveTurn();
    return nullptr;
  }
  if (ready_ == nullptr && !refill())
    return nullptr;
  return std::exchange(ready_, ready_->next);
}

void SerialExecutor::leaveTurn() noexcept {
  if (ready_ != nullptr || refill())
    requestTurn();
}

/// Whether the turn was free and is the caller's now; `job` isn't queued then.
bool SerialExecutor::push(detail::Job& job) noexcept {
  detail::Job* newest = inbox_.load(std::memory_order_relaxed);
  for (;;) {
    if (newest == nullptr) {
      if (inbox_.compare_exchange_weak(newest, &turnJob_, std::memory_order_acquire,
                                       std::memory_order_relaxed))
        return true;
    } else {
      job.next = newest == &turnJob_ ? nullptr : newest;
      if (inbox_.compare_exchange_weak(newest, &job, std::memory_order_release,
                                       std::memory_order_relaxed))
        return false;
    }
  }
}

/// Fills `ready_` from what came in meanwhile, or gives the turn back if nothing did and says
/// false. The executor may be gone then.
bool SerialExecutor::refill() noexcept {
  detail::Job* newest = &turnJob_;
  // Whoever takes the turn next writes `self_`, so it is taken out before the turn is given back.
  auto self = std::move(self_);
  if (inbox_.compare_exchange_strong(newest, nullptr, std::memory_order_release,
                                     std::memory_order_relaxed))
    return false;
  self_ = std::move(self);
  newest = inbox_.exchange(&turnJob_, std::memory_order_acquire);
  while (newest != nullptr) {
    detail::Job* older = newest->next;
    newest->next = ready_;
    ready_ = newest;
    newest = older;
  }
  return true;
}

void SerialExecutor::requestTurn() noexcept {
  if (lane_ == Lane::ownThread)
    detail::submitToOwnThread(turnJob_);
  else
    poolExecutor().enqueue(turnJob_);
}

} // namespace velmar
