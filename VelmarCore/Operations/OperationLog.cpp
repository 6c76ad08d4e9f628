#include "VelmarCore/Operations/OperationLog.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/Continuation.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

namespace velmar {

namespace {

void requireMainExecutor() {
  precondition(mainExecutor().isCurrent(), "A step was written outside of the main executor.");
}

} // namespace

OperationLogStream::OperationLogStream(std::shared_ptr<const OperationLogContext> context,
                                       std::size_t maximumItems)
    : context_(std::move(context)), maximumItems_(maximumItems) {
  precondition(context_ != nullptr, "A log stream needs a context.");
  precondition(maximumItems >= 1, "A log stream keeps at least one item.");
}

void OperationLogStream::append(OperationLogMessage message, OperationLogStreamSource source) {
  mainExecutor().post([self = shared_from_this(), message = std::move(message),
                       source = std::move(source)]() mutable {
    const std::string text = message.resolveFor(*self->context_);
    Element element{std::string(withoutTrailingLineBreaks(text)), std::move(source)};
    self->registrar_.withMutation(*self, itemsKey, [&] { self->add(std::move(element)); });
  });
}

Task<void> OperationLogStream::appended() {
  co_await withContinuation<void>([](Continuation<void> continuation) {
    mainExecutor().post(
        [continuation = std::move(continuation)]() mutable { std::move(continuation).resume(); });
  });
}

void OperationLogStream::add(Element element) {
  items_.push_back(std::move(element));
  // Half of them at once, so that each moves once on average.
  if (items_.size() / 2 < maximumItems_)
    return;
  const std::size_t tooMany = items_.size() - maximumItems_;
  items_.erase(items_.begin(), items_.begin() + static_cast<std::ptrdiff_t>(tooMany));
  droppedCount_ += tooMany;
}

void OperationStep::update(std::function<void(OperationStep&)> body) {
  mainExecutor().post([self = shared_from_this(), body = std::move(body)] { body(*self); });
}

void OperationStep::appendOutput(OperationLogItem item) {
  requireMainExecutor();
  registrar_.withMutation(*this, outputKey, [&] { output_.push_back(std::move(item)); });
}

void OperationStep::setFinished() {
  requireMainExecutor();
  registrar_.set(*this, isFinishedKey, isFinished_, true);
}

void OperationStep::setError(std::shared_ptr<const OperationError> error) {
  requireMainExecutor();
  registrar_.set(*this, errorKey, error_, std::move(error));
}

} // namespace velmar
