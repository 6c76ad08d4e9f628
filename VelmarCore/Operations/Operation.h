// Long-running jobs that a user interface can show and cancel.
#pragma once

#include "VelmarCore/Operations/OperationLog.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Spawn.h"

#include <concepts>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace velmar {

/// A job as code sees it that knows nothing else of it. Its identity is its address. `addStep`,
/// `appendOutput` and `cancel` may be called on any thread, the rest on the main executor's.
class OperationProtocol : public Object {
public:
  [[nodiscard]] virtual const std::vector<std::shared_ptr<OperationStep>>& steps() const = 0;
  virtual void addStep(std::shared_ptr<OperationStep> step) = 0;
  /// What was logged outside of steps.
  [[nodiscard]] virtual const std::vector<OperationLogItem>& output() const = 0;
  virtual void appendOutput(OperationLogItem item) = 0;
  [[nodiscard]] virtual bool isFinished() const = 0;
  /// Null unless the job failed.
  [[nodiscard]] virtual std::shared_ptr<const OperationError> error() const = 0;
  /// Asks the job to stop. It is finished only when it has noticed.
  virtual void cancel() = 0;
};

/// A job that keeps what it is told, for observers. Held by `std::shared_ptr`. Properties are
/// written on the main executor; `addStep` and `appendOutput` queue there.
class ObservableOperation : public OperationProtocol,
                            public std::enable_shared_from_this<ObservableOperation> {
public:
  static constexpr PropertyKey stepsKey{"steps"};
  static constexpr PropertyKey outputKey{"output"};
  static constexpr PropertyKey isFinishedKey{"isFinished"};
  static constexpr PropertyKey errorKey{"error"};

  [[nodiscard]] const std::vector<std::shared_ptr<OperationStep>>& steps() const override {
    return steps_;
  }
  void addStep(std::shared_ptr<OperationStep> step) override;
  [[nodiscard]] const std::vector<OperationLogItem>& output() const override { return output_; }
  void appendOutput(OperationLogItem item) override;
  [[nodiscard]] bool isFinished() const override { return isFinished_; }
  [[nodiscard]] std::shared_ptr<const OperationError> error() const override { return error_; }

  [[nodiscard]] Observation observe(PropertyObserver observer) {
    return registrar_.add(std::move(observer));
  }

protected:
  /// The end of the job, on the main executor: `error` first, if there is one.
  void finish(std::shared_ptr<const OperationError> error);

private:
  std::vector<std::shared_ptr<OperationStep>> steps_;
  std::vector<OperationLogItem> output_;
  bool isFinished_ = false;
  std::shared_ptr<const OperationError> error_;
  ObservationRegistrar registrar_;
};

namespace detail {

/// Suspends until the main executor has done what is queued now: a job isn't finished before all
/// that it told is there.
[[nodiscard]] Task<void> letQueuedUpdatesRun();

} // namespace detail
} // namespace velmar
