#include "host/ExecCommand.h"

#include "VelmarCore/Operations.h"
#include "VelmarPlatform/Basics/LockedState.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"
#include "VelmarPlatform/Process/Subprocess.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/Interruptions.h"
#include "host/OperationView.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace velmar::host {

namespace {

/// What shells answer with.
constexpr int programNotUsable = 126;
constexpr int programNotFound = 127;
constexpr int endedBySignal = 128; // and the signal's number added

/// How often the live line is written.
constexpr std::chrono::milliseconds period(100);

/// Lines of the output that are kept in memory: the view has shown them by then.
constexpr std::size_t keptLines = 10'000;

/// The command for people: its words, those with blanks in quotation marks.
std::string descriptionOfCommand(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += text.empty() ? "" : " ";
    const bool isPlain = !word.empty() && word.find_first_of(" \t\r\n'\"") == std::string::npos;
    text += isPlain ? repairedUTF8(word) : "“" + repairedUTF8(word) + "”";
  }
  return text;
}

Task<void> pump(AsyncBytes bytes, std::shared_ptr<OperationLogStream> stream,
                OperationLogStreamSource source) {
  AsyncLines lines = bytes.lines({.lineFeeds = LineFeeds::drop});
  for (;;) {
    std::vector<std::string> batch = co_await lines.nextBatch();
    if (batch.empty())
      co_return;
    for (std::string& line : batch)
      stream->append(std::move(line), source);
    co_await OperationLogStream::appended(); // so that no more is read than is shown
  }
}

/// Both outputs at once.
Task<void> pumpBoth(Subprocess::Execution& child, std::shared_ptr<OperationLogStream> stream) {
  co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
    group.add(mainExecutor(), [&] {
      return pump(child.standardOutput(), stream, OperationLogStreamSource::standardOutput());
    });
    group.add(mainExecutor(), [&] {
      return pump(child.standardError(), stream, OperationLogStreamSource::standardError());
    });
    co_await group.waitForAll();
  });
}

/// `kill` becomes what kills the command.
Task<void> runCommand(std::vector<std::string> words, LockedState<std::function<void()>> kill) {
  const std::string description = descriptionOfCommand(words);
  const auto context = std::make_shared<FixedLogContext>();
  const auto stream = std::make_shared<OperationLogStream>(context, keptLines);
  Operations::log("Exec", description, stream, *context);
  const std::string program = words.front();
  const auto ended = co_await Subprocess::run(
      {.executable = Subprocess::Executable::name(program),
       .arguments = {words.begin() + 1, words.end()},
       .environment = SubprocessEnvironment::inherited()},
      {.input = Subprocess::Connection::inherited}, [stream, kill](Subprocess::Execution& child) {
        kill.withLock([&](auto& body) { body = [child] { child.sendSignal(SIGKILL); }; });
        return pumpBoth(child, stream);
      });
  if (ended.wasTornDown)
    throw CancellationError();
  if (!ended.status.isSuccess())
    throw SubprocessError(ended.status, program);
}

int exitCodeOf(const SubprocessError& error) {
  if (const auto status = error.status())
    return status->kind == TerminationStatus::Kind::exited ? status->value
                                                           : endedBySignal + status->value;
  return error.kind() == SubprocessError::Kind::programNotFound ? programNotFound
                                                                : programNotUsable;
}

/// The exit code that tells how the command ended. `signal` is the one that interrupted it, or 0.
int exitCodeOf(const Operation<void>& operation, int signal) {
  const auto error = operation.error();
  if (error == nullptr)
    return 0;
  if (signal != 0)
    return endedBySignal + signal;
  try {
    std::rethrow_exception(error->underlyingError());
  } catch (const SubprocessError& failure) {
    return exitCodeOf(failure);
  } catch (const Error&) {
    return static_cast<int>(ExitCode::unusableInput);
  }
}

/// What a signal does to the command.
struct Interruption {
  /// The last signal that has come, or 0.
  std::atomic<int> signal = 0;
  /// Kills the command and all that it started; empty as long as it doesn't run.
  LockedState<std::function<void()>> kill;
};

/// Asks the command to end when the first signal comes, and kills it when the second does.
Task<void> obey(Task<int> first, Task<int> second, std::shared_ptr<Operation<void>> operation,
                std::shared_ptr<Interruption> interruption) {
  interruption->signal = co_await std::move(first);
  operation->cancel();
  interruption->signal = co_await std::move(second);
  if (const auto kill = interruption->kill.withLock([](const auto& body) { return body; }))
    kill();
}

/// Runs the main executor for a period, or until the operation has ended: true.
bool runForPeriod(const ObservableOperation& operation) {
  return mainExecutor().runUntil([&] { return operation.isFinished(); }, period);
}

/// Shows the operation until it has ended. If nobody looks any more, it is cancelled.
void show(const std::shared_ptr<Operation<void>>& operation, const Interruption& interruption,
          Streams& streams) {
  try {
    OperationView view(operation, streams);
    bool isToldToEnd = false;
    while (!runForPeriod(*operation)) {
      if (interruption.signal != 0 && !std::exchange(isToldToEnd, true))
        view.addNote("The program was asked to end; the next signal kills it.");
      view.deliver();
    }
    view.finish();
  } catch (...) { // writing failed, whatever way: it goes on when nothing is left behind
    operation->cancel();
    while (!runForPeriod(*operation)) {
    }
    throw;
  }
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.empty())
    throw UsageError("“velmar exec” needs a command behind “--”.");
  const Interruptions interruptions;
  const auto interruption = std::make_shared<Interruption>();
  const auto operation = Operation<void>::start([words = arguments.operands, interruption] {
    return Operations::withStep("Run " + words.front(), [words, interruption] {
      return runCommand(words, interruption->kill);
    });
  });
  TaskScope scope;
  scope.spawn([first = interruptions.next(), second = interruptions.next(), operation,
               interruption]() mutable {
    return obey(std::move(first), std::move(second), operation, interruption);
  });
  show(operation, *interruption, streams);
  if (const int code = exitCodeOf(*operation, interruption->signal); code != 0)
    throw ProgramExit{code};
}

} // namespace

Command execCommand() {
  return {
      .name = "exec",
      .summary = "Run a program and show how it goes.",
      .usage = "exec -- COMMAND [ARGUMENT …]",
      .details = "Looks for the program in PATH and runs it as an operation, as the engine does "
                 "with installers. On a terminal the last line tells how long it has taken. "
                 "Otherwise what the program writes to standard output goes there, and all else to "
                 "standard error. Ctrl-C, SIGTERM and a terminal that hangs up ask the program to "
                 "end, with all that it started; the second time, or five seconds later, it is "
                 "killed. Ctrl-Z stops velmar alone: the program has a session of its own, and "
                 "goes on. The exit code is the program’s own; 128 and the signal’s number if a "
                 "signal ended it; 127 if it wasn’t found and 126 if it can’t be run.",
      .options = {},
      .examples = {{"velmar exec -- make -j2", "Build with a live view."},
                   {"velmar exec -- sh -c 'ls; exit 3'", "Ends with the exit code 3."}},
      .run = run,
  };
}

} // namespace velmar::host
