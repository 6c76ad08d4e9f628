#include "VelmarCore/Operations/Operation.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/Continuation.h"

namespace velmar {

void ObservableOperation::addStep(std::shared_ptr<OperationStep> step) {
  mainExecutor().post([self = shared_from_this(), step = std::move(step)]() mutable {
    self->registrar_.withMutation(*self, stepsKey,
                                  [&] { self->steps_.push_back(std::move(step)); });
  });
}

void ObservableOperation::appendOutput(OperationLogItem item) {
  mainExecutor().post([self = shared_from_this(), item = std::move(item)]() mutable {
    self->registrar_.withMutation(*self, outputKey,
                                  [&] { self->output_.push_back(std::move(item)); });
  });
}

void ObservableOperation::finish(std::shared_ptr<const OperationError> error) {
  precondition(mainExecutor().isCurrent(), "A job was finished outside of the main executor.");
  if (error != nullptr)
    registrar_.set(*this, errorKey, error_, std::move(error));
  registrar_.set(*this, isFinishedKey, isFinished_, true);
}

Task<void> detail::letQueuedUpdatesRun() {
  co_await withContinuation([](Continuation<> continuation) {
    mainExecutor().post(
        [continuation = std::move(continuation)]() mutable { std::move(continuation).resume(); });
  });
}

} // namespace velmar
