// What the tests of tasks share: driving a task from a test, gates that hold work until all is in
// place, and a value that notices when somebody treats it badly.
#pragma once

#include "VelmarPlatform/Concurrency/Continuation.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Spawn.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace velmar::testing_support {

/// Runs `operation` as a task on the main executor and gives what it gives.
template <class Operation>
TaskValueOf<Operation> run(Operation operation) {
  return mainExecutor().run(std::move(operation));
}

/// Drives the main executor until `predicate` holds, and fails the test if that takes a minute.
inline void runUntil(const std::function<bool()>& predicate) {
  ASSERT_TRUE(mainExecutor().runUntil(predicate, std::chrono::minutes(1))) << "It never happened.";
}

/// Holds everybody who comes until it is opened.
class Gate {
public:
  Task<void> pass() { return passImpl(this); }
  void open() {
    std::vector<Continuation<>> waiting;
    {
      const std::scoped_lock lock(mutex_);
      isOpen_ = true;
      waiting.swap(waiting_);
    }
    for (Continuation<>& continuation : waiting)
      std::move(continuation).resume();
  }
  [[nodiscard]] std::size_t waitingCount() const {
    const std::scoped_lock lock(mutex_);
    return waiting_.size();
  }

private:
  static Task<void> passImpl(Gate* self) {
    co_await withContinuation([self](Continuation<> continuation) {
      {
        const std::scoped_lock lock(self->mutex_);
        if (!self->isOpen_) {
          self->waiting_.push_back(std::move(continuation));
          return;
        }
      }
      std::move(continuation).resume();
    });
  }

  mutable std::mutex mutex_;
  bool isOpen_ = false;
  std::vector<Continuation<>> waiting_;
};

/// A value that counts its instances and knows where it lives: a copy of its bytes behind its back,
/// a second destruction or a use after the end is noticed.
class Counted {
public:
  explicit Counted(int value = 0) : value_(value), self_(this) { ++live; }
  Counted(const Counted& other) : value_(other.value()), self_(this) { ++live; }
  Counted(Counted&& other) noexcept : value_(other.value()), self_(this) { ++live; }
  Counted& operator=(const Counted& other) {
    check();
    value_ = other.value();
    return *this;
  }
  Counted& operator=(Counted&& other) noexcept {
    check();
    value_ = other.value();
    return *this;
  }
  ~Counted() {
    check();
    self_ = nullptr;
    --live;
  }
  [[nodiscard]] int value() const {
    check();
    return value_;
  }

  static inline std::atomic<int> live = 0;

private:
  void check() const { precondition(self_ == this, "This value isn't where it was made."); }

  int value_;
  const Counted* self_;
};

} // namespace velmar::testing_support
