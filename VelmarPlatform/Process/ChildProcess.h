// One child process as the system sees it: started, signalled, and collected once. For Subprocess,
// which knows when to do what.
#pragma once

#include "VelmarPlatform/Concurrency/Descriptor.h"
#include "VelmarPlatform/Process/Subprocess.h"

#include <memory>
#include <mutex>

namespace velmar::detail {

/// The child, from its start until its status has been collected. Any thread.
class ChildProcess {
public:
  /// Starts a program. Blocks until it is loaded. Throws SubprocessError.
  [[nodiscard]] static std::shared_ptr<ChildProcess>
  start(const Subprocess::Configuration& configuration, Subprocess::Connections connections);

  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  [[nodiscard]] int id() const noexcept { return id_; }

  /// Our ends of its streams; null for one that isn't piped.
  std::shared_ptr<AsyncDescriptor> input;
  std::shared_ptr<AsyncDescriptor> output;
  std::shared_ptr<AsyncDescriptor> error;

  /// Suspends until it has exited. Throws CancellationError.
  [[nodiscard]] Task<void> waitForExit() const { return exit_->waitUntilReadable(); }
  [[nodiscard]] bool hasExited() const noexcept;
  /// Whether nobody can write to the outputs any more.
  [[nodiscard]] bool isOutputClosed() const noexcept;
  void closeStreams() const noexcept;

  /// Sends a signal to its group: to whatever of that is left, once it has exited itself; to
  /// nobody, once the status has been collected.
  void signalGroup(int signal) noexcept;
  /// The status of a child that has exited, which is forgotten by the system then. Throws
  /// SubprocessError if somebody else has collected it.
  [[nodiscard]] TerminationStatus collectStatus();

private:
  ChildProcess() = default;

  int id_ = 0;
  std::shared_ptr<AsyncDescriptor> exit_; // readable once the child has exited
  std::mutex mutex_;
  bool isCollected_ = false; // the id may belong to another process then
};

} // namespace velmar::detail
