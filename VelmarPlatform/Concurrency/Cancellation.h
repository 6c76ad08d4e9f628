// Cancellation: asking a task to stop, and noticing that one was asked.
//
// There is one flag per task, and the tasks of its groups see it too. Setting it stops nothing by
// itself. The task notices at its next check, explicit or inside of what it awaits: `sleep`, reads
// of descriptors and streams and the like end at once when their task is cancelled. The usual
// answer is to throw `CancellationError`, so that the frames unwind like for any failure.
//
//   for (const Row& row : rows) {
//     checkCancellation();          // throws CancellationError in a cancelled task
//     co_await store(row);
//   }
//
// A request to stop races with the work's end: be ready for a result after it, and never count on
// being stopped. Code that catches everything (`catch (...)`) must let a CancellationError pass.
//
// To pass a request on to something that isn't a task, say how:
//
//   co_await withTaskCancellationHandler(
//       [&] { return readReply(id); },
//       [session = weak_from_this(), id] { /* any thread, at most once: only post something */ });
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/Turn.h"

#include <concepts>
#include <stop_token>
#include <utility>

namespace velmar {

/// What a cancelled task sees.
class CancellationError : public Error {
public:
  CancellationError() : Error("The operation was cancelled.") {}
};

/// Whether the task that calls this was asked to stop; false outside of tasks.
[[nodiscard]] bool isTaskCancelled() noexcept;

/// Throws CancellationError if the task that calls this was asked to stop.
void checkCancellation();

namespace detail {

/// The flag of the calling task; outside of tasks one that is never set.
[[nodiscard]] std::stop_token currentCancellation() noexcept;

} // namespace detail
} // namespace velmar
