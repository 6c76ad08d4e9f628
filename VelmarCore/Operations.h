// Telling the user what a long-running job does, from anywhere inside of it.
//
//   co_await Operations::withCurrent(operation, [&]() -> Task<void> {
//     co_await Operations::withStep("Download assets", [&]() -> Task<void> {
//       Operations::log("Download", OperationLogMessage("Fetching ", url), kind, context);
//       …
//     });
//   });
//
// Code deep inside of a job has no reference to it: it calls the functions of `Operations`, which
// find the current job and its current step through task-scoped values. Outside of any job they do
// nothing, and the code runs all the same. Logging never fails and never waits.
#pragma once

#include "VelmarCore/Operations/Operation.h"
#include "VelmarPlatform/Concurrency/TaskLocal.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace velmar {

/// A namespace of functions; there are no objects of it. Any thread.
class Operations {
public:
  Operations() = delete;

  /// The job and the step that the calling task is in; null outside.
  [[nodiscard]] static std::shared_ptr<OperationProtocol> current() { return current_.get(); }
  [[nodiscard]] static std::shared_ptr<OperationStep> currentStep() { return currentStep_.get(); }

  /// Awaits what `body` gives, a `Task` or a plain value, with `operation` as the current job. What
  /// it throws passes through.
  template <class Body>
  [[nodiscard]] static Task<TaskValueOf<Body>>
  withCurrent(std::shared_ptr<OperationProtocol> operation, Body body) {
    return current_.withValue(std::move(operation), std::move(body));
  }

  /// Adds a step to the current job, if there is one, and awaits what `body` gives with that as the
  /// current step. When it has ended the step is finished, with what `body` threw, wrapped, as its
  /// error. That itself passes through.
  template <class Body>
  [[nodiscard]] static Task<TaskValueOf<Body>> withStep(std::string name, Body body) {
    const auto step = std::make_shared<OperationStep>(std::move(name));
    if (const auto operation = current())
      operation->addStep(step);
    try {
      auto task = currentStep_.withValue(step, std::move(body));
      if constexpr (std::is_void_v<TaskValueOf<Body>>) {
        co_await std::move(task);
        finish(step, nullptr);
      } else {
        auto value = co_await std::move(task);
        finish(step, nullptr);
        co_return value;
      }
    } catch (...) { // whatever it is: it goes on
      finish(step, std::current_exception());
      throw;
    }
  }

  /// Logs a line to the current step, else to the current job, else nowhere. The message is
  /// resolved for `context` at once; line breaks at its end are dropped.
  static void log(std::string event, const OperationLogMessage& message,
                  OperationLogItem::Kind kind, const OperationLogContext& context);

private:
  static void finish(const std::shared_ptr<OperationStep>& step, std::exception_ptr failure);

  static const TaskLocal<std::shared_ptr<OperationProtocol>> current_;
  static const TaskLocal<std::shared_ptr<OperationStep>> currentStep_;
};

/// A job that is a task on the main executor, with a value.
///
///   auto operation = Operation<Receipt>::start([] { return install(); });
///   Receipt receipt = co_await operation->value();
template <class Success>
class Operation : public ObservableOperation {
public:
  /// Starts `body`, which gives a `Task` or a plain value, with the new object as the current job.
  template <class Body>
  [[nodiscard]] static std::shared_ptr<Operation> start(Body body) {
    auto operation = std::make_shared<Operation>();
    operation->begin(std::move(body));
    return operation;
  }

  void cancel() override {
    if (task_)
      task_.cancel();
  }

  /// Waits for the end; the value, or what `body` threw. May be asked several times. Any thread.
  [[nodiscard]] Task<Success> value() const {
    precondition(bool(task_), "The operation wasn't started.");
    return task_.value();
  }

protected:
  /// For classes that are a job: to be called once, by whoever makes the object.
  template <class Body>
  void begin(Body body) {
    precondition(!task_, "An operation was started twice.");
    auto self = std::static_pointer_cast<Operation>(this->shared_from_this());
    task_ = spawn(mainExecutor(),
                  [self, body = std::move(body)]() mutable { return run(self, std::move(body)); });
  }

private:
  template <class Body>
  static Task<Success> run(std::shared_ptr<Operation> self, Body body) {
    std::optional<detail::Stored<Success>> value;
    std::exception_ptr failure;
    try {
      auto task = Operations::withCurrent(self, std::move(body));
      if constexpr (std::is_void_v<Success>)
        co_await std::move(task);
      else
        value.emplace(co_await std::move(task));
    } catch (...) { // whatever it is: it goes on once the job is finished
      failure = std::current_exception();
    }
    co_await detail::letQueuedUpdatesRun();
    self->finish(failure == nullptr ? nullptr : OperationError::wrapping(failure));
    if (failure != nullptr)
      std::rethrow_exception(failure);
    if constexpr (!std::is_void_v<Success>)
      co_return std::move(*value);
  }

  TaskHandle<Success> task_;
};

} // namespace velmar
