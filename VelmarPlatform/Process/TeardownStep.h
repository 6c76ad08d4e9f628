// How a child is brought to its end: one step after the other, each with the time that it has to
// take effect, until the child has gone. Behind the last step it is killed.
#pragma once

#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <functional>
#include <utility>
#include <variant>

namespace velmar {

/// One step. Signals go to the child's whole process group.
class TeardownStep {
public:
  /// Runs `operation`, such as asking the child over its own protocol to end. The next step comes
  /// when the operation has ended, however that is, when the time has passed, or when the child has
  /// gone; an operation that still runs then is cancelled and not waited for, so it owns what it
  /// uses.
  [[nodiscard]] static TeardownStep custom(std::function<Task<void>()> operation,
                                           Clock::Duration allowedDuration) {
    return TeardownStep(Custom{std::move(operation)}, allowedDuration);
  }
  /// Sends SIGTERM and waits at most that long.
  [[nodiscard]] static TeardownStep gracefulShutDown(Clock::Duration allowedDurationToNextStep);
  /// Sends another signal and waits at most that long.
  [[nodiscard]] static TeardownStep sendSignal(int signal,
                                               Clock::Duration allowedDurationToNextStep) {
    return TeardownStep(Signal{signal}, allowedDurationToNextStep);
  }

  struct Custom {
    std::function<Task<void>()> operation;
  };
  struct Signal {
    int number;
  };

  [[nodiscard]] const std::variant<Custom, Signal>& action() const noexcept { return action_; }
  [[nodiscard]] Clock::Duration allowedDuration() const noexcept { return allowedDuration_; }

private:
  TeardownStep(std::variant<Custom, Signal> action, Clock::Duration allowedDuration)
      : action_(std::move(action)), allowedDuration_(allowedDuration) {}

  std::variant<Custom, Signal> action_;
  Clock::Duration allowedDuration_;
};

} // namespace velmar
