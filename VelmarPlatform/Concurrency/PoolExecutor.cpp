// The shared pool and the threads that come as needed.

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/Executor.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <system_error>
#include <thread>

namespace velmar {

namespace {

/// First in, first out, linked through the jobs.
class JobQueue {
public:
  [[nodiscard]] bool isEmpty() const noexcept { return first_ == nullptr; }
  void append(detail::Job& job) noexcept {
    job.next = nullptr;
    (first_ == nullptr ? first_ : last_->next) = &job;
    last_ = &job;
  }
  [[nodiscard]] detail::Job& removeFirst() noexcept {
    detail::Job& job = *first_;
    first_ = job.next;
    return job;
  }

private:
  detail::Job* first_ = nullptr;
  detail::Job* last_ = nullptr;
};

class PoolExecutor final : public Executor {
public:
  PoolExecutor() : Executor("pool") {
    const unsigned threads = std::max(2U, std::thread::hardware_concurrency());
    for (unsigned i = 0; i < threads; ++i)
      std::thread([this] { run(); }).detach();
  }

  void enqueue(detail::Job& job) noexcept override {
    bool someoneSleeps = false;
    {
      const std::scoped_lock lock(mutex_);
      queue_.append(job);
      hasJobsWaiting_.store(true, std::memory_order_relaxed);
      someoneSleeps = sleeping_ > 0;
    }
    if (someoneSleeps)
      wake_.notify_one();
  }
  [[nodiscard]] bool mayRunOn(detail::ThreadKind kind) const noexcept override {
    return kind == detail::ThreadKind::pool;
  }
  [[nodiscard]] bool takeTurnOrEnqueue(detail::Job&) noexcept override { return true; }
  [[nodiscard]] detail::Job* nextInTurn(bool) noexcept override { return nullptr; }
  void leaveTurn() noexcept override {}
  [[nodiscard]] std::shared_ptr<const Executor> keepAlive() const noexcept override {
    return nullptr;
  }

  [[nodiscard]] bool hasJobsWaiting() const noexcept {
    return hasJobsWaiting_.load(std::memory_order_relaxed);
  }

private:
  void run() {
    detail::blockSignals();
    detail::ThreadState& thread = detail::threadState();
    thread.kind = detail::ThreadKind::pool;
    for (;;)
      detail::runTurn(thread, this, &next());
  }

  detail::Job& next() {
    std::unique_lock lock(mutex_);
    ++sleeping_;
    wake_.wait(lock, [this] { return !queue_.isEmpty(); });
    --sleeping_;
    detail::Job& job = queue_.removeFirst();
    hasJobsWaiting_.store(!queue_.isEmpty(), std::memory_order_relaxed);
    return job;
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  JobQueue queue_;
  std::atomic<bool> hasJobsWaiting_{false};
  std::size_t sleeping_ = 0;
};

PoolExecutor& sharedPool() noexcept {
  static auto& pool = *new PoolExecutor;
  return pool;
}

class OwnThreads {
public:
  void submit(detail::Job& job) noexcept {
    std::unique_lock lock(mutex_);
    queue_.append(job);
    ++waitingJobs_;
    if (waitingJobs_ <= idle_) {
      lock.unlock();
      wake_.notify_one();
      return;
    }
    ++threads_;
    lock.unlock();
    startThread();
  }

private:
  void startThread() noexcept {
    try {
      std::thread([this] { run(); }).detach();
    } catch (const std::system_error&) {
      // Out of threads. The job waits for one that is there already; with none it could wait for
      // ever.
      const std::scoped_lock lock(mutex_);
      --threads_;
      precondition(threads_ > 0, "The system gives no thread for work that blocks.");
    }
  }

  void run() {
    detail::blockSignals();
    detail::ThreadState& thread = detail::threadState();
    thread.kind = detail::ThreadKind::own;
    while (detail::Job* job = next())
      detail::runTurn(thread, nullptr, job);
  }

  /// Null when nothing came for a while: the thread ends.
  detail::Job* next() {
    std::unique_lock lock(mutex_);
    ++idle_;
    wake_.wait_for(lock, std::chrono::seconds(10), [this] { return !queue_.isEmpty(); });
    --idle_;
    if (queue_.isEmpty()) {
      --threads_;
      return nullptr;
    }
    --waitingJobs_;
    return &queue_.removeFirst();
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  JobQueue queue_;
  std::size_t waitingJobs_ = 0;
  std::size_t idle_ = 0;
  std::size_t threads_ = 0;
};

} // namespace

Executor& poolExecutor() noexcept {
  return sharedPool();
}

bool detail::poolHasJobsWaiting() noexcept {
  return sharedPool().hasJobsWaiting();
}

void detail::submitToOwnThread(Job& job) noexcept {
  static auto& threads = *new OwnThreads;
  threads.submit(job);
}

} // namespace velmar
