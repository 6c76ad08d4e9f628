// A cancellation flag with handlers, for work that isn't a task: its copies are handed to whoever
// should notice.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace velmar {

/// A flag that is set once. Copies share it. Any thread.
class CancellationToken {
public:
  using Handler = std::function<void()>;

  /// Not cancelled, without handlers.
  CancellationToken() = default;

  [[nodiscard]] bool isCancelled() const noexcept;
  /// Throws CancellationError if the token is cancelled.
  void checkCancellation() const;

  /// Cancels, calls the handlers in the order of their registration on the calling thread, and
  /// gives whether the token was cancelled already; then nothing else happens.
  bool cancel() const; // NOLINT(modernize-use-nodiscard): few want to know

  /// Has `handler` called exactly once when the token is cancelled; right away, on the calling
  /// thread, if it is. It is called without locks and may use the token.
  void onCancellation(Handler handler) const;

private:
  struct Shared {
    std::atomic<bool> isCancelled{false};
    std::mutex mutex;
    std::vector<Handler> onCancel; // guarded by `mutex`
  };
  std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

} // namespace velmar
