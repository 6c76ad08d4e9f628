// Doing something the moment a task is asked to stop (see Cancellation.h for what that means).
#pragma once

#include "VelmarPlatform/Concurrency/Cancellation.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <concepts>
#include <stop_token>
#include <utility>

namespace velmar {

/// Awaits what `operation` gives, and calls `onCancel` if the task is cancelled meanwhile, or was
/// before; then it is called first. It is called at most once, on the thread that cancels, while
/// the operation goes on.
///
/// The end of this function waits for a handler that is running on another thread. So a handler
/// only posts: it takes no lock that the operation's end might hold, and it doesn't throw.
template <class Operation, std::invocable Handler>
Task<TaskValueOf<Operation>> withTaskCancellationHandler(Operation operation, Handler onCancel) {
  const std::stop_callback registration(detail::currentCancellation(), std::move(onCancel));
  co_return co_await detail::invokeAsTask(operation);
}

} // namespace velmar
