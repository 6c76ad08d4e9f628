// The one thread that waits for the outside world: for descriptors to become ready and for
// deadlines to come. Everything that sleeps or reads stands on it; for the layer's own use (see
// Descriptor.h and Clock.h).
//
// The reactor's thread runs nothing of the users'. What it may run, right when something becomes
// ready, are the turns of serial executors in `Lane::poolOrReactor`: so a message from a peer costs
// one wake of a thread, this one's.
#pragma once

#include <memory>

namespace velmar::detail {

enum class Direction { reading, writing };

/// Gets told by the reactor, on its thread.
class DescriptorListener {
public:
  DescriptorListener() = default;
  DescriptorListener(const DescriptorListener&) = delete;
  DescriptorListener& operator=(const DescriptorListener&) = delete;
  DescriptorListener(DescriptorListener&&) = delete;
  DescriptorListener& operator=(DescriptorListener&&) = delete;
  virtual ~DescriptorListener() = default;

  /// A request was answered: the descriptor is ready, at its end, broken, or closed. Trying is how
  /// to find out which.
  virtual void ready(Direction direction) noexcept = 0;
};

/// The reactor's side of one descriptor, which it owns. Its user calls it from one thread at a
/// time.
class DescriptorWatch {
public:
  DescriptorWatch() = default;
  DescriptorWatch(const DescriptorWatch&) = delete;
  DescriptorWatch& operator=(const DescriptorWatch&) = delete;
  DescriptorWatch(DescriptorWatch&&) = delete;
  DescriptorWatch& operator=(DescriptorWatch&&) = delete;
  virtual ~DescriptorWatch() = default;

  /// Asks for one call of `listener.ready(direction)`, at once if the descriptor is ready now. At
  /// most one request per direction at a time. The listener is kept alive until it has been called.
  virtual void request(Direction direction, std::shared_ptr<DescriptorListener> listener) = 0;
  /// Closes the descriptor; requests are answered. Nothing may be requested afterwards.
  virtual void close() noexcept = 0;
};

/// Hands a descriptor over to the reactor. Throws SystemError, and leaves the descriptor alone, if
/// the system refuses it.
[[nodiscard]] std::unique_ptr<DescriptorWatch> watchDescriptor(int descriptor);

} // namespace velmar::detail
