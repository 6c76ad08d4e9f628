// Serialised objects: state that only one piece of code touches at a time, without locks.
//
//   class Counter : public SerialObject {
//   public:
//     Counter() : SerialObject("counter") {}
//     Task<int> add(int amount) {
//       total_ += amount;              // alone: we run on this object's executor, whoever called
//       co_await archive(total_);      // others may run here meanwhile…
//       co_return total_;              // …so this may have grown: read state anew
//     }
//   private:
//     int total_ = 0;
//   };
//
//   auto counter = std::make_shared<Counter>();
//   int total = co_await counter->add(5);
//
// A member function that returns a `Task` runs on the object's executor from its first line to its
// last, is re-entrant at its suspension points, and keeps the object alive until it has ended. So
// does any other coroutine that takes a serialised object by reference as its first parameter; one
// that takes a shared pointer runs wherever it is awaited. Plain member functions run on the thread
// that calls them, and so must not touch the state unless `executor().isCurrent()`.
#pragma once

#include "VelmarPlatform/Basics/Object.h"
#include "VelmarPlatform/Concurrency/SerialExecutor.h"

#include <memory>
#include <string_view>
#include <utility>

namespace velmar {

/// The base of serialised objects. Held by `std::shared_ptr` alone. Its destructor runs wherever
/// the last holder lets go, when no asynchronous function of it is running any more.
class SerialObject : public Object, public std::enable_shared_from_this<SerialObject> {
public:
  /// Where the object's asynchronous functions run.
  [[nodiscard]] Executor& executor() const noexcept { return *executor_; }

protected:
  /// An object with a serial executor of its own.
  explicit SerialObject(std::string_view label, Lane lane = Lane::pool)
      : ownExecutor_(SerialExecutor::make(label, lane)), executor_(ownExecutor_.get()) {}
  /// An object that shares an executor which is never destroyed, such as the main executor.
  explicit SerialObject(Executor& executor) noexcept : executor_(&executor) {}
  /// An object that shares the executor of others.
  explicit SerialObject(std::shared_ptr<SerialExecutor> executor) noexcept
      : ownExecutor_(std::move(executor)), executor_(ownExecutor_.get()) {}

  /// A shared pointer to an object of a derived class: `auto self = shared(*this);`.
  template <class Self>
  [[nodiscard]] static std::shared_ptr<Self> shared(Self& self) {
    return std::static_pointer_cast<Self>(self.shared_from_this());
  }

private:
  std::shared_ptr<SerialExecutor> ownExecutor_;
  Executor* executor_;
};

} // namespace velmar
