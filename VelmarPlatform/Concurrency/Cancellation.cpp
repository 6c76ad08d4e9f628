#include "VelmarPlatform/Concurrency/Cancellation.h"

namespace velmar {

namespace {

const detail::TaskContext* currentTask() noexcept {
  const detail::Coroutine* coroutine = detail::threadState().coroutine;
  return coroutine == nullptr ? nullptr : coroutine->task;
}

} // namespace

bool isTaskCancelled() noexcept {
  const detail::TaskContext* task = currentTask();
  return task != nullptr && task->cancellation.stop_requested();
}

void checkCancellation() {
  if (isTaskCancelled())
    throw CancellationError();
}

std::stop_token detail::currentCancellation() noexcept {
  const TaskContext* task = currentTask();
  return task == nullptr ? std::stop_token() : task->cancellation.get_token();
}

} // namespace velmar
