// Pipes, sockets, terminals and whatever else has a descriptor, for tasks: reads and writes that
// suspend where a blocking call would wait.
//
//   auto input = AsyncDescriptor::adopt(pipeEnd);
//   while (std::optional<Bytes> chunk = co_await input->read(65536))
//     consume(*chunk);
//
// A read that is cancelled takes nothing from the descriptor: the bytes are there for the next one.
// A write that is cancelled may have written a part.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Concurrency/Reactor.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Concurrency/Wait.h"
#include "VelmarPlatform/Files/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace velmar {

/// Owns a descriptor and closes it with its last reference. Any thread; a read and a write may wait
/// side by side, and several of a kind take what comes in no particular order. Operations run on
/// their caller's executor and keep the object alive. Where the other side is always ready they let
/// others have the turn every few hundred times.
class AsyncDescriptor : public std::enable_shared_from_this<AsyncDescriptor> {
  struct Private {};

public:
  /// Takes over `descriptor`, which becomes non-blocking and closes when a program is executed.
  /// Throws SystemError, with the descriptor closed, if it isn't one.
  [[nodiscard]] static std::shared_ptr<AsyncDescriptor> adopt(int descriptor);
  /// The same for one that has an owner, who has none afterwards, whatever happens.
  [[nodiscard]] static std::shared_ptr<AsyncDescriptor> adopt(FileDescriptor descriptor);
  AsyncDescriptor(Private, int descriptor, bool isSocket);
  AsyncDescriptor(const AsyncDescriptor&) = delete;
  AsyncDescriptor& operator=(const AsyncDescriptor&) = delete;
  AsyncDescriptor(AsyncDescriptor&&) = delete;
  AsyncDescriptor& operator=(AsyncDescriptor&&) = delete;
  ~AsyncDescriptor();

  /// The next bytes, at least one and at most `maximum`, or absent at the end. Throws SystemError,
  /// or CancellationError in a cancelled task.
  [[nodiscard]] Task<std::optional<Bytes>> read(std::size_t maximum);
  /// The same into the caller's memory, which must stay until then: how many bytes came, 0 at the
  /// end.
  [[nodiscard]] Task<std::size_t> readInto(std::span<std::byte> buffer);
  /// Writes all of `bytes`. Throws SystemError, or CancellationError in a cancelled task. Never
  /// raises SIGPIPE.
  [[nodiscard]] Task<void> write(Bytes bytes);
  /// The same from the caller's memory, which must stay until then.
  [[nodiscard]] Task<void> writeFrom(std::span<const std::byte> bytes);

  /// Suspend until a read, or a write, wouldn't wait, be it because it would fail; for descriptors
  /// that aren't read like files. Throw like the above.
  [[nodiscard]] Task<void> waitUntilReadable();
  [[nodiscard]] Task<void> waitUntilWritable();

  /// Calls `attempt(descriptor)` whenever it may not have to wait, until it gives something else
  /// than a negative number with EAGAIN or EINTR in `errno`: accepting a connection, reading an
  /// event queue. Gives that, and throws SystemError, with `failure` in its text, if it is
  /// negative.
  [[nodiscard]] Task<std::int64_t> perform(detail::Direction direction, std::string failure,
                                           std::function<std::int64_t(int)> attempt);

  /// From now on a read takes what is there and, where it would have to wait, finds the end
  /// instead; one that waits at the moment finds it too. For the end of a conversation whose other
  /// side may be kept open by somebody who has nothing to say.
  void endReading() noexcept;

  /// Whether nobody holds the other end of a pipe or a socket any more, or this one is closed. What
  /// was written before may still be there to read.
  [[nodiscard]] bool isHungUp() const noexcept;

  /// Closes the descriptor as soon as no operation is inside of it. Those that wait throw
  /// SystemError with ECANCELED, as do all that come later.
  void close() noexcept;

  /// The number, for system calls that have no place here. Valid until `close`.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

private:
  class State;
  class Use;
  struct Readiness;

  static Task<std::size_t> readIntoImpl(std::shared_ptr<AsyncDescriptor> self,
                                        std::span<std::byte> buffer);
  static Task<std::optional<Bytes>> readImpl(std::shared_ptr<AsyncDescriptor> self,
                                             std::size_t maximum);
  static Task<void> writeFromImpl(std::shared_ptr<AsyncDescriptor> self,
                                  std::span<const std::byte> bytes);
  static Task<void> writeImpl(std::shared_ptr<AsyncDescriptor> self, Bytes bytes);
  static Task<std::int64_t> performImpl(std::shared_ptr<AsyncDescriptor> self,
                                        detail::Direction direction, std::string failure,
                                        std::function<std::int64_t(int)> attempt);
  /// May come back without a reason: for those who try again.
  static Task<void> waitImpl(std::shared_ptr<AsyncDescriptor> self, detail::Direction direction);
  static Task<void> waitUntilReady(std::shared_ptr<AsyncDescriptor> self,
                                   detail::Direction direction);
  [[nodiscard]] bool isReady(detail::Direction direction) const noexcept;

  const int descriptor_;
  const bool isSocket_;
  std::shared_ptr<State> state_;
};

} // namespace velmar
