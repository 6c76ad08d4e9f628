// A task of its own: where a chain of awaits begins. What `spawn` and groups are made of.
#pragma once

#include "VelmarPlatform/Concurrency/Executor.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Concurrency/TaskLocal.h"

#include <exception>
#include <memory>
#include <utility>

namespace velmar::detail {

/// Keeps `Operation`, runs it as a task, and tells `Receiver` the outcome, on the task's executor.
/// By then all that the task held is gone: whoever learns of the end finds nothing of it left.
/// Frees itself.
template <class Operation, class Receiver>
class RootTask {
public:
  using Value = TaskValueOf<Operation>;

  /// `context` lives at least until `receiver` has been called.
  static void start(Executor& executor, const TaskContext& context, Operation operation,
                    Receiver receiver) {
    auto* root = new RootTask(executor, std::move(operation), std::move(receiver));
    Coroutine& coroutine = root->task_.handle_.promise();
    coroutine.executor = &executor;
    coroutine.task = &context;
    coroutine.bindings = root->bindings_.get();
    coroutine.owner = root;
    coroutine.finished = finished;
    executor.enqueue(coroutine);
  }

private:
  RootTask(const Executor& executor, Operation operation, Receiver receiver)
      : executor_(executor.keepAlive()), bindings_(currentBindings()),
        receiver_(std::move(receiver)), operation_(std::move(operation)),
        task_(invokeAsTask(operation_)) {}

  static Coroutine* finished(Coroutine& coroutine) noexcept {
    std::unique_ptr<RootTask> self(static_cast<RootTask*>(coroutine.owner));
    threadState().coroutine = nullptr; // what we free may ask for the current task, which is over
    Outcome<Value> outcome = self->task_.handle_.promise().takeOutcome();
    Receiver receiver = std::move(self->receiver_);
    self.reset();
    std::move(receiver)(std::move(outcome));
    return nullptr;
  }

  // The frame goes first, then what it refers to.
  std::shared_ptr<const Executor> executor_;
  std::shared_ptr<const TaskLocalBinding> bindings_;
  Receiver receiver_;
  Operation operation_;
  Task<Value> task_;
};

/// Starts `operation` as a task of its own, on `executor`.
template <class Operation, class Receiver>
void startRootTask(Executor& executor, const TaskContext& context, Operation operation,
                   Receiver receiver) {
  RootTask<Operation, Receiver>::start(executor, context, std::move(operation),
                                       std::move(receiver));
}

} // namespace velmar::detail
