#include "VelmarCore/Environment/UserEnvState.h"

#include "VelmarPlatform/Concurrency/CancellationHandler.h"
#include "VelmarPlatform/Concurrency/Spawn.h"

#include <utility>

namespace velmar {

Task<UserEnvState::Values> UserEnvState::environment() {
  if (const auto* values = std::get_if<Values>(&state_))
    co_return *values;
  if (const auto* failure = std::get_if<std::exception_ptr>(&state_))
    std::rethrow_exception(*failure);
  if (std::holds_alternative<Unfetched>(state_)) {
    state_ = Fetching();
    spawn([self = shared(*this)] { return self->fetchAndAnswer(); });
  }
  const std::int64_t request = ++requestCount_;
  co_return co_await withTaskCancellationHandler(
      [this, request] { return waitForFetch(request); },
      [self = shared(*this), request] {
        spawn([self, request] { return self->giveUp(request); });
      });
}

Task<void> UserEnvState::invalidate() {
  state_ = Unfetched();
  co_return;
}

Task<UserEnvState::Values> UserEnvState::waitForFetch(std::int64_t request) {
  co_return co_await withContinuation<Values>([&](Continuation<Values> continuation) {
    continuations_.emplace(request, std::move(continuation));
  });
}

Task<void> UserEnvState::giveUp(std::int64_t request) {
  if (auto entry = continuations_.extract(request))
    std::move(entry.mapped()).fail(CancellationError());
  co_return;
}

Task<void> UserEnvState::fetchAndAnswer() {
  Values values;
  std::exception_ptr failure;
  try {
    values = co_await fetch_();
  } catch (...) {
    failure = std::current_exception();
  }
  for (auto& [request, continuation] : std::exchange(continuations_, {})) {
    if (failure != nullptr)
      std::move(continuation).fail(failure);
    else
      std::move(continuation).resume(values);
  }
  if (failure != nullptr)
    state_ = std::move(failure);
  else
    state_ = std::move(values);
}

} // namespace velmar
