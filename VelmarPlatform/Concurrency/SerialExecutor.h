// One job at a time, first come first served: the executor under every serialised object, and what
// other systems call a serial queue.
#pragma once

#include "VelmarPlatform/Concurrency/Executor.h"

#include <atomic>
#include <memory>
#include <string_view>

namespace velmar {

/// Which threads may run a serial executor's jobs.
enum class Lane {
  pool,          ///< Those of the pool. The jobs never block.
  poolOrReactor, ///< Also the thread on which descriptors and timers become ready, so that a
                 ///< message needs one wake and no hop. For objects of the engine whose jobs are
                 ///< short; handlers of users run elsewhere.
  ownThread,     ///< One that it has for itself as long as anything is queued. The jobs may block.
};

/// Runs jobs one after the other, in the order of queueing, each with all that the ones before it
/// wrote visible. It has no thread of its own (but see `Lane`), and costs nothing while idle. Any
/// thread.
///
/// Once the last reference goes, jobs that are queued still run.
class SerialExecutor final : public Executor, public std::enable_shared_from_this<SerialExecutor> {
  struct Private {};

public:
  [[nodiscard]] static std::shared_ptr<SerialExecutor> make(std::string_view label,
                                                            Lane lane = Lane::pool) {
    return std::make_shared<SerialExecutor>(Private(), label, lane);
  }
  SerialExecutor(Private, std::string_view label, Lane lane);

  void enqueue(detail::Job& job) noexcept override;
  [[nodiscard]] bool mayRunOn(detail::ThreadKind kind) const noexcept override;
  [[nodiscard]] bool takeTurnOrEnqueue(detail::Job& job) noexcept override;
  [[nodiscard]] detail::Job* nextInTurn(bool mayGoOn) noexcept override;
  void leaveTurn() noexcept override;
  [[nodiscard]] bool hasMoreInTurn() const noexcept override {
    return ready_ != nullptr || inbox_.load(std::memory_order_relaxed) != &turnJob_;
  }
  [[nodiscard]] std::shared_ptr<const Executor> keepAlive() const noexcept override {
    return shared_from_this();
  }

private:
  struct TurnJob : detail::Job {
    explicit TurnJob(SerialExecutor& owner);
    SerialExecutor& executor;
  };

  [[nodiscard]] bool push(detail::Job& job) noexcept;
  [[nodiscard]] bool refill() noexcept;
  void requestTurn() noexcept;

  const Lane lane_;
  TurnJob turnJob_;
  /// Null while idle; the address of `turnJob_` while some thread has the turn and nothing new is
  /// queued; else what was queued meanwhile, newest first. Whoever changes null to something has
  /// the turn.
  std::atomic<detail::Job*> inbox_{nullptr};
  // The rest belongs to the turn.
  detail::Job* ready_ = nullptr;         ///< Oldest first.
  std::shared_ptr<SerialExecutor> self_; ///< A turn keeps its executor alive.
};

} // namespace velmar
