// Ctrl-C and SIGTERM as something that is read, instead of the end of the process.
#pragma once

#include "VelmarPlatform/Concurrency/Descriptor.h"

#include <csignal>
#include <functional>
#include <memory>

namespace velmar::host {

/// As long as one exists, these signals don't end the process. It must be made and destroyed on one
/// thread, and made before other threads are, which inherit that.
class Interruptions {
public:
  /// Throws SystemError.
  Interruptions();
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions();

  /// The next one: the signal's number. Throws like AsyncDescriptor.
  [[nodiscard]] Task<int> next() const { return nextImpl(signals_); }

private:
  static Task<int> nextImpl(std::shared_ptr<AsyncDescriptor> signals);

  sigset_t before_;
  std::shared_ptr<AsyncDescriptor> signals_;
};

} // namespace velmar::host
