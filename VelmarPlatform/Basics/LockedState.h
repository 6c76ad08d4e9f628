// A value that is only reached under its lock.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace velmar {

/// A reference to one locked value: copies share the value and its lock. Any thread.
///
///     LockedState<std::vector<int>> list;
///     list.withLock([](std::vector<int>& values) { values.push_back(1); });
template <class T>
class LockedState {
public:
  LockedState() : LockedState(T()) {}
  explicit LockedState(T value) : cell_(std::make_shared<Cell>(std::move(value))) {}

  /// Calls `body` with the value while holding the lock, and gives what it gives. `body` must not
  /// come back to the same state. What it throws passes through, with the lock released.
  template <class Body>
  decltype(auto) withLock(Body&& body) const {
    const std::scoped_lock lock(cell_->mutex);
    return std::forward<Body>(body)(cell_->value);
  }

private:
  struct Cell {
    explicit Cell(T initial) : value(std::move(initial)) {}
    std::mutex mutex;
    T value;
  };
  std::shared_ptr<Cell> cell_;
};

} // namespace velmar
