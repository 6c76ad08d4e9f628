// Child processes: run a program and collect what it writes, or talk to it while it runs.
//
//   auto listing = co_await Subprocess::run({.executable = Executable::name("git"),
//                                            .arguments = {"ls-files"},
//                                            .environment = co_await ShellEnvironment::userShell(),
//                                            .workingDirectory = project});
//   if (!listing.status.isSuccess())
//     throw SubprocessError(listing.status, "git");
//
//   auto ended = co_await Subprocess::run(server, {}, [&](Subprocess::Execution& child)
//                                                          -> Task<void> {
//     co_await talk(child.standardOutput(), child.standardInput());
//   });
//
// A child has a session and a process group of its own, default signal dispositions, an empty
// signal mask, and no descriptor but its three streams. Nothing of it is left when `run` ends,
// however that is: neither a process of its group, nor an open descriptor, nor an entry in the
// system's table. A program that means to stay makes a session of its own, as daemons do.
//
// The end comes in this order. The child exits. Whoever else holds its output, such as a
// grandchild in the background, has `outputGracePeriod` to finish; what is left of the group then
// is killed. Readers still get all that was written, and find the end behind it.
//
// A task that is cancelled takes the steps of `teardownSequence` (see TeardownStep.h) until the
// child has exited. The body isn't cancelled before that: it may be needed for a polite good-bye,
// and it sees the end of the output as usual. It is cancelled if it still hasn't ended when
// `outputGracePeriod` has passed after the child's end.
//
// This process must not collect the status of children that it didn't start (waiting for any
// child), nor ignore SIGCHLD.
#pragma once

#include "VelmarPlatform/Concurrency/AsyncBytes.h"
#include "VelmarPlatform/Concurrency/Spawn.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Process/InputWriter.h"
#include "VelmarPlatform/Process/SubprocessEnvironment.h"
#include "VelmarPlatform/Process/SubprocessError.h"
#include "VelmarPlatform/Process/TeardownStep.h"

#include <chrono>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

namespace detail {
class ChildProcess;
} // namespace detail

/// A namespace of what belongs to child processes; there are no objects of it.
class Subprocess {
public:
  Subprocess() = delete;

  /// Which program to run.
  class Executable {
  public:
    /// The file at `path`; a relative one starts at the child's working directory.
    [[nodiscard]] static Executable path(FilePath path) { return Executable(std::move(path)); }
    /// The first regular file of that name that may be executed, in the `PATH` of the child's own
    /// environment (or the standard one, if that has none). A name with a slash is a path.
    [[nodiscard]] static Executable name(std::string name) { return Executable(std::move(name)); }

    /// A path, or a name to look for.
    [[nodiscard]] const std::variant<FilePath, std::string>& value() const noexcept {
      return value_;
    }
    /// The name or the path, as the child's argument 0.
    [[nodiscard]] const std::string& string() const noexcept;
    bool operator==(const Executable&) const = default;

  private:
    explicit Executable(std::variant<FilePath, std::string> value) : value_(std::move(value)) {}
    std::variant<FilePath, std::string> value_;
  };

  using Environment = SubprocessEnvironment;
  /// What stands behind the program's name.
  using Arguments = std::vector<std::string>;

  struct PlatformOptions {
    std::vector<TeardownStep> teardownSequence = {
        TeardownStep::gracefulShutDown(std::chrono::seconds(5))};
    /// How long output may stay open after the child has exited.
    Clock::Duration outputGracePeriod = std::chrono::seconds(2);
    /// What all these times are measured with. Outlives the run.
    Clock* clock = &monotonicClock();
  };

  struct Configuration {
    Executable executable;
    Arguments arguments = {};
    /// All variables of the child: with none it has none.
    Environment environment = {};
    /// Absent: that of this process.
    std::optional<FilePath> workingDirectory = std::nullopt;
    PlatformOptions platformOptions = {};
  };

  // To run a program and collect what it writes.

  /// An input, or an output, that is at its end from the start.
  struct NoInput {};
  struct DiscardedOutput {};
  /// The stream of this process.
  struct Inherited {};
  struct StringInput {
    std::string text;
  };
  /// The first `limit` bytes as text: valid UTF-8, with U+FFFD for what isn't. The rest is read and
  /// dropped, so that the child isn't held up; of a character at the limit nothing is kept.
  struct StringOutput {
    std::size_t limit = std::size_t{1} << 20;
  };

  struct Collecting {
    std::variant<NoInput, StringInput, Inherited> input = NoInput();
    std::variant<StringOutput, DiscardedOutput, Inherited> output = StringOutput();
    std::variant<StringOutput, DiscardedOutput, Inherited> error = StringOutput();
  };

  struct CollectedResult {
    TerminationStatus status;
    std::string standardOutput = {}; ///< Empty unless it was collected, and so is the next.
    std::string standardError = {};
    bool isOutputTruncated = false; ///< Whether there was more than the limit.
    bool isErrorTruncated = false;
  };

  /// Runs a program to its end, whatever its exit status. Throws SubprocessError if it can't be
  /// started; CancellationError if the task was cancelled before the end, once the child is gone.
  /// A child that doesn't read its input is no failure.
  [[nodiscard]] static Task<CollectedResult> run(Configuration configuration,
                                                 Collecting collecting);
  [[nodiscard]] static Task<CollectedResult> run(Configuration configuration) {
    return run(std::move(configuration), Collecting());
  }

  // To talk to a program while it runs.

  /// What a stream of the child is connected to: nothing, the body, or the stream of this process.
  enum class Connection { none, piped, inherited };

  struct Connections {
    Connection input = Connection::piped;
    Connection output = Connection::piped;
    Connection error = Connection::piped;
  };

  /// A child while it runs. Any thread. Asking for a stream that isn't piped stops the process.
  class Execution {
  public:
    Execution(std::shared_ptr<detail::ChildProcess> process, std::function<void()> onOutputEnd);
    /// The number by which the system knows it, and its process group.
    [[nodiscard]] int processID() const noexcept;
    [[nodiscard]] const InputWriter& standardInput() const;
    [[nodiscard]] const AsyncBytes& standardOutput() const;
    [[nodiscard]] const AsyncBytes& standardError() const;
    /// Sends a signal to the child's process group; nothing happens once it is gone.
    void sendSignal(int signal) const noexcept;

  private:
    std::shared_ptr<detail::ChildProcess> process_;
    std::optional<InputWriter> input_;
    std::optional<AsyncBytes> output_;
    std::optional<AsyncBytes> error_;
  };

  template <class T>
  struct ExecutionResult {
    TerminationStatus status;
    /// Whether the steps of teardown were taken, because the task was cancelled.
    bool wasTornDown = false;
    T value = {}; ///< What the body gave; `Nothing` for one that gives nothing.
  };

  /// Runs a program and awaits `body(execution)`, on the caller's executor, and the child's end.
  /// When the body has ended, the pipes are closed: a child that still writes gets SIGPIPE.
  ///
  /// Throws SubprocessError if the child can't be started. What the body throws is passed on, after
  /// the child has been torn down. Cancellation by itself is no failure here, as the body ends in
  /// its own way: see `wasTornDown`.
  template <std::invocable<Execution&> Body>
  [[nodiscard]] static Task<ExecutionResult<detail::Stored<TaskValueOf<Body, Execution&>>>>
  run(Configuration configuration, Connections connections, Body body) {
    using Value = TaskValueOf<Body, Execution&>;
    using Result = ExecutionResult<detail::Stored<Value>>;
    std::optional<detail::Stored<Value>> value;
    const Ended ended = co_await runImpl(
        std::move(configuration), connections,
        [&](Execution& execution) -> Task<void> { return keep<Value>(body, execution, value); });
    co_return Result{ended.status, ended.wasTornDown, std::move(*value)};
  }

private:
  struct Run;
  struct Ended {
    TerminationStatus status;
    bool wasTornDown = false;
  };

  template <class Value, class Body>
  static Task<void> keep(Body& body, Execution& execution,
                         std::optional<detail::Stored<Value>>& value) {
    if constexpr (std::is_void_v<Value>) {
      co_await detail::invokeAsTask<Body, Execution&>(body, execution);
      value.emplace();
    } else {
      value.emplace(co_await detail::invokeAsTask<Body, Execution&>(body, execution));
    }
  }
  static Task<Ended> runImpl(Configuration configuration, Connections connections,
                             std::function<Task<void>(Execution&)> body);
  static Task<Ended> supervise(std::shared_ptr<Run> run);
  static Task<void> converse(std::shared_ptr<Run> run, TaskHandle<Ended> supervisor,
                             std::function<Task<void>(Execution&)> body);
  static Task<void> tearDown(std::shared_ptr<Run> run);
  static Task<void> letOutputEnd(std::shared_ptr<Run> run);
};

} // namespace velmar
