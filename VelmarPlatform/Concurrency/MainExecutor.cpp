#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <algorithm>
#include <utility>

namespace velmar {

namespace {

/// How long a predicate that depends on something else than our jobs may go unasked.
constexpr auto predicateInterval = std::chrono::milliseconds(5);

} // namespace

MainExecutor& mainExecutor() noexcept {
  static auto& executor = *new MainExecutor;
  return executor;
}

void MainExecutor::setWakeHook(std::function<void()> hook) {
  bool mustWake = false;
  {
    const std::scoped_lock lock(mutex_);
    wakeHook_ = hook;
    mustWake = first_ != nullptr;
  }
  if (mustWake && hook)
    hook();
}

void MainExecutor::enqueue(detail::Job& job) noexcept {
  std::function<void()> hook;
  {
    const std::scoped_lock lock(mutex_);
    job.next = nullptr;
    if (first_ == nullptr && wakeHook_)
      hook = wakeHook_;
    (first_ == nullptr ? first_ : last_->next) = &job;
    last_ = &job;
  }
  wake_.notify_one();
  if (hook)
    hook();
}

bool MainExecutor::takeTurnOrEnqueue(detail::Job& job) noexcept {
  enqueue(job); // only its own thread may run it, when asked to
  return false;
}

std::size_t MainExecutor::runReady() noexcept {
  detail::Job* last = nullptr;
  {
    const std::scoped_lock lock(mutex_);
    last = first_ == nullptr ? nullptr : last_;
  }
  std::size_t count = 0;
  for (bool more = last != nullptr; more; ++count) {
    detail::Job& job = *removeFirst();
    more = &job != last;
    runJob(job);
  }
  // What came meanwhile may have found a queue that wasn't empty, so nobody was told of it yet.
  std::function<void()> hook;
  {
    const std::scoped_lock lock(mutex_);
    if (first_ != nullptr)
      hook = wakeHook_;
  }
  if (hook)
    hook();
  return count;
}

bool MainExecutor::runUntil(const std::function<bool()>& predicate,
                            std::chrono::nanoseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    if (predicate())
      return true;
    detail::Job* const job = removeFirst();
    if (job != nullptr)
      runJob(*job);
    const auto now = std::chrono::steady_clock::now();
    if (now >= deadline)
      return predicate();
    if (job != nullptr)
      continue;
    std::unique_lock lock(mutex_);
    wake_.wait_until(
        lock, std::min<std::chrono::steady_clock::time_point>(deadline, now + predicateInterval),
        [this] { return first_ != nullptr; });
  }
}

detail::Job* MainExecutor::removeFirst() noexcept {
  const std::scoped_lock lock(mutex_);
  detail::Job* job = first_;
  if (job != nullptr)
    first_ = job->next;
  return job;
}

void MainExecutor::runJob(detail::Job& job) noexcept {
  detail::ThreadState& thread = detail::threadState();
  precondition(thread.executor == nullptr,
               "The main executor was driven from inside of a job or another executor's turn.");
  const detail::ThreadKind kind = std::exchange(thread.kind, detail::ThreadKind::main);
  detail::runTurn(thread, this, &job);
  thread.kind = kind;
}

} // namespace velmar
