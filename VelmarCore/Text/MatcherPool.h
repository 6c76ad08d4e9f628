// Matchers of one pattern that wait for the next search. Private to CompiledPattern.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

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
    const std::size_t home = homeSlot();
    if (Item* item = slots_[home % slotCount].exchange(nullptr, std::memory_order_acquire))
        [[likely]]
      return std::unique_ptr<Item>(item);
    return takeElsewhere(home);
  }

  /// Keeps `item` for later, or frees it if enough lie here already.
  void giveBack(std::unique_ptr<Item> item) noexcept {
    const std::size_t home = homeSlot();
    if (put(home, item.get())) [[likely]]
      item.release();
    else
      giveBackElsewhere(home, std::move(item));
  }

private:
  static constexpr std::size_t slotCount = 8;

  [[gnu::noinline]] std::unique_ptr<Item> takeElsewhere(std::size_t home) noexcept {
    for (std::size_t i = 1; i < slotCount; ++i) {
      std::atomic<Item*>& slot = slots_[(home + i) % slotCount];
      // Looking first spares the exchange, which is dear, where there is nothing.
      if (slot.load(std::memory_order_relaxed) == nullptr)
        continue;
      if (Item* item = slot.exchange(nullptr, std::memory_order_acquire))
        return std::unique_ptr<Item>(item);
    }
    return nullptr;
  }

  [[gnu::noinline]] void giveBackElsewhere(std::size_t home, std::unique_ptr<Item> item) noexcept {
    for (std::size_t i = 1; i < slotCount; ++i) {
      if (put(home + i, item.get())) {
        item.release();
        return;
      }
    }
  }

  [[nodiscard]] bool put(std::size_t slot, Item* item) noexcept {
    Item* empty = nullptr;
    return slots_[slot % slotCount].compare_exchange_strong(empty, item, std::memory_order_release,
                                                            std::memory_order_relaxed);
  }

  /// The slot where this thread looks first. Threads are numbered from 1 as they come.
  [[nodiscard]] static std::size_t homeSlot() noexcept {
    static constinit std::atomic<std::size_t> threads{0};
    static constinit thread_local std::size_t home = 0;
    if (home == 0)
      home = threads.fetch_add(1, std::memory_order_relaxed) + 1;
    return home;
  }

  std::array<std::atomic<Item*>, slotCount> slots_{};
};

} // namespace velmar
