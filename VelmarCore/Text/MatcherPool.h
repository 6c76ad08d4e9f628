// Matchers of one pattern that wait for the next search. Private to CompiledPattern.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace velmar {

/// A lock-free set of at most eight idle objects, each owned by the pool while it lies there.
///
/// A thread begins at a slot of its own, so that threads seldom meet and a matcher stays warm in
/// its thread's cache. Slots are only ever swapped whole, so a slot that was emptied and filled
/// again in between can't be mistaken for the old one. Any thread.
template <class Item>
class MatcherPool {
public:
  MatcherPool() = default;
  MatcherPool(const MatcherPool&) = delete;
  MatcherPool& operator=(const MatcherPool&) = delete;
  ~MatcherPool() {
    for (std::atomic<Item*>& slot : slots_)
      delete slot.load(std::memory_order_acquire);
  }

  /// An idle object, or null if all are in use.
  [[nodiscard]] std::unique_ptr<Item> take() noexcept {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      std::atomic<Item*>& slot = slots_[(homeSlot() + i) % slots_.size()];
      if (slot.load(std::memory_order_relaxed) == nullptr)
        continue;
      if (Item* item = slot.exchange(nullptr, std::memory_order_acquire))
        return std::unique_ptr<Item>(item);
    }
    return nullptr;
  }

  /// Keeps `item` for later, or frees it if enough lie here already.
  void giveBack(std::unique_ptr<Item> item) noexcept {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      std::atomic<Item*>& slot = slots_[(homeSlot() + i) % slots_.size()];
      Item* empty = nullptr;
      if (slot.compare_exchange_strong(empty, item.get(), std::memory_order_release,
                                       std::memory_order_relaxed)) {
        item.release();
        return;
      }
    }
  }

private:
  [[nodiscard]] static std::size_t homeSlot() noexcept {
    static constinit std::atomic<std::size_t> threads{0};
    thread_local const std::size_t home = threads.fetch_add(1, std::memory_order_relaxed);
    return home;
  }

  std::array<std::atomic<Item*>, 8> slots_{};
};

} // namespace velmar
