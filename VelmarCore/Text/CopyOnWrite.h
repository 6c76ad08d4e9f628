// A value behind a counted reference: copying is one increment, and the first change after that
// makes a copy.
//
// For the collections that an editor hands to readers, other threads among them, while it goes on
// changing its own.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace velmar {

/// Shares a `Value` among copies until one of them writes.
///
/// Different objects may be used on different threads at once, also if they share a value; one
/// object has one owner at a time, as an int has. A moved-from or new object reads as a default
/// `Value` and holds no memory.
template <class Value>
class CopyOnWrite {
public:
  CopyOnWrite() noexcept = default;
  CopyOnWrite(const CopyOnWrite& other) noexcept : box_(other.box_) {
    if (box_ != nullptr)
      box_->owners.fetch_add(1, std::memory_order_relaxed);
  }
  CopyOnWrite(CopyOnWrite&& other) noexcept : box_(std::exchange(other.box_, nullptr)) {}
  CopyOnWrite& operator=(const CopyOnWrite& other) noexcept {
    if (this != &other)
      *this = CopyOnWrite(other);
    return *this;
  }
  CopyOnWrite& operator=(CopyOnWrite&& other) noexcept {
    std::swap(box_, other.box_);
    return *this;
  }
  ~CopyOnWrite() { release(); }

  /// The value. Valid until this object is written, assigned or destroyed.
  [[nodiscard]] const Value& read() const noexcept {
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the analyzer doesn't count owners
    return box_ != nullptr ? box_->value : empty();
  }

  /// The value, to change: a copy of its own if it is shared. Valid as long as that of `read`, and
  /// until the next copy of this object is made.
  [[nodiscard]] Value& write() {
    if (box_ == nullptr) {
      box_ = new Box{};
    } else if (isShared()) {
      Box* const own = new Box{.value = box_->value};
      release();
      box_ = own;
    }
    return box_->value;
  }

  /// Whether another object holds the same value at this moment.
  [[nodiscard]] bool isShared() const noexcept {
    // Acquire: what another owner read before it let go must be over before we change the value.
    return box_ != nullptr && box_->owners.load(std::memory_order_acquire) != 1;
  }

private:
  struct Box {
    std::atomic<std::size_t> owners{1};
    Value value{};
  };

  void release() noexcept {
    if (box_ != nullptr && box_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
      delete box_;
  }

  // Never destroyed, so that threads which outlive `main` may go on reading.
  static const Value& empty() noexcept {
    alignas(Value) static std::byte memory[sizeof(Value)];
    static const Value* const value = std::construct_at(reinterpret_cast<Value*>(memory));
    return *value;
  }

  Box* box_ = nullptr;
};

} // namespace velmar
