// Blocking work, away from the threads that everybody shares.
#pragma once

#include "VelmarPlatform/Concurrency/SerialObject.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <concepts>
#include <memory>
#include <utility>

namespace velmar {

namespace detail {

/// A queue of its own for one piece of work.
class SerialActor : public SerialObject {
public:
  SerialActor() : SerialObject("com.tolbek.orvell.serial-executor", Lane::ownThread) {}

  template <class Body>
  Task<TaskValueOf<Body>> run(Body body) {
    co_return co_await invokeAsTask(body);
  }
};

} // namespace detail

/// Awaits what `body` gives, a `Task` or a plain value, on a serial executor with a thread of its
/// own: it may block. It belongs to the calling task, and so sees its cancellation and its
/// task-scoped values. Costs a wake of a thread, there and back.
template <std::invocable Body>
Task<TaskValueOf<Body>> runInBackground(Body body) {
  return std::make_shared<detail::SerialActor>()->run(std::move(body));
}

} // namespace velmar
