// Gets the user's environment once and keeps it: whoever asks meanwhile waits for the same answer.
#pragma once

#include "VelmarPlatform/Concurrency/Continuation.h"
#include "VelmarPlatform/Concurrency/SerialObject.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Process/SubprocessEnvironment.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <variant>

namespace velmar {

/// A failure is kept too, until it is invalidated. The fetch is a task of its own: nobody who stops
/// waiting stops it.
class UserEnvState : public SerialObject {
public:
  using Values = SubprocessEnvironment::Values;
  using Fetch = std::function<Task<Values>()>;

  explicit UserEnvState(Fetch fetch) : SerialObject("velmar.user-environment"), fetch_(fetch) {}

  /// The environment. Throws what the fetch threw, or CancellationError in a cancelled task.
  [[nodiscard]] Task<Values> environment();
  /// Has the next request fetch anew. A fetch that runs goes on: whichever of the two ends first
  /// answers everybody who waits, and what the later one gives is kept.
  [[nodiscard]] Task<void> invalidate();

private:
  struct Unfetched {};
  struct Fetching {};
  using State = std::variant<Values, std::exception_ptr, Unfetched, Fetching>;

  Task<Values> waitForFetch(std::int64_t request);
  Task<void> giveUp(std::int64_t request);
  Task<void> fetchAndAnswer();

  Fetch fetch_;
  State state_ = Unfetched();
  std::map<std::int64_t, Continuation<Values>> continuations_; // by the order of the requests
  std::int64_t requestCount_ = 0;
};

} // namespace velmar
