// One Boolean that two threads may touch at once and through which nothing else is published.
#pragma once

#include <atomic>

namespace velmar {

/// A relaxed atomic Boolean, for "please stop" signals: seen soon, ordering nothing. Any thread.
class AtomicFlag {
public:
  [[nodiscard]] bool load() const noexcept { return value_.load(std::memory_order_relaxed); }
  void store(bool value) noexcept { value_.store(value, std::memory_order_relaxed); }

private:
  std::atomic<bool> value_{false};
};

} // namespace velmar
