#include "VelmarPlatform/Process/Subprocess.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/AsyncStream.h"
#include "VelmarPlatform/Concurrency/CancellationHandler.h"
#include "VelmarPlatform/Concurrency/SerialExecutor.h"
#include "VelmarPlatform/Concurrency/Spawn.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"
#include "VelmarPlatform/Process/ChildProcess.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "VelmarPlatform/Unicode/WholeScalars.h"

#include <algorithm>
#include <csignal>

namespace velmar {

/// What the supervisor and the body of one run share.
struct Subprocess::Run {
  std::shared_ptr<detail::ChildProcess> process;
  PlatformOptions options;
  /// Tells the supervisor that a reader has found the end of an output.
  AsyncStreamEnds<Nothing> outputEnd = makeAsyncStream<Nothing>();
  Execution execution{process, [source = outputEnd.source] { source.yield({}); }};
};

namespace {

using ProcessPtr = std::shared_ptr<detail::ChildProcess>;

Task<void> cancelAfter(Clock* clock, Clock::Duration duration, TaskHandle<> task) {
  co_await clock->sleepFor(duration);
  task.cancel();
}

Task<void> waitForEnd(TaskHandle<> task) {
  static_cast<void>(co_await task.waitForEnd());
}

/// Takes one step, and waits until it has had its effect or its time.
Task<void> take(ProcessPtr process, Clock* clock, TeardownStep step) {
  TaskScope scope; // for an operation that isn't waited for
  co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
    group.add([process] { return process->waitForExit(); });
    group.add([clock, duration = step.allowedDuration()] { return clock->sleepFor(duration); });
    if (const auto* custom = std::get_if<TeardownStep::Custom>(&step.action())) {
      group.add([operation = scope.spawn(custom->operation)] { return waitForEnd(operation); });
    } else {
      process->signalGroup(std::get<TeardownStep::Signal>(step.action()).number);
      process->signalGroup(SIGCONT); // one that is stopped doesn't see it before
    }
    static_cast<void>(co_await group.nextOutcome()); // the first of them, however it ended
    group.cancelAll();
  });
}

/// Waits for the end of the body's task. When ours is cancelled, it has `patience` until its own
/// is.
Task<Outcome<void>> endOf(TaskHandle<> conversation, Clock* clock, Clock::Duration patience) {
  bool isCancelled = false;
  try {
    static_cast<void>(co_await conversation.waitForEnd());
  } catch (const CancellationError&) {
    isCancelled = true;
  }
  if (isCancelled) {
    const auto timer = spawn([=] { return cancelAfter(clock, patience, conversation); });
    static_cast<void>(co_await conversation.outcome());
    timer.cancel();
    static_cast<void>(co_await timer.outcome()); // it is through with the clock then
  }
  co_return co_await conversation.outcome();
}

/// Collects an output as it comes.
struct Collector {
  std::size_t limit = 0;
  std::string text = {};
  bool isTruncated = false;

  static Task<void> collect(Collector* self, AsyncBytes bytes) {
    Bytes buffer(AsyncBytes::chunkSize);
    while (const std::size_t count = co_await bytes.readInto(buffer)) {
      const std::size_t room = self->limit - self->text.size();
      self->text += charactersOf(buffer).substr(0, std::min(count, room));
      self->isTruncated = self->isTruncated || count > room;
    }
  }
  [[nodiscard]] std::string result() {
    if (isTruncated)
      text.resize(lengthOfWholeScalars(text));
    return isValidUTF8(text) ? std::move(text) : repairedUTF8(text);
  }
};

Task<void> writeAll(InputWriter input, std::string text) {
  try {
    co_await input.write(text);
  } catch (const SystemError&) { // NOLINT(bugprone-empty-catch): the child needn't read it
  }
  input.finish();
}

/// Writes and reads side by side, so that neither side waits for the other in a full pipe.
Task<void> exchange(Subprocess::Execution& execution, const Subprocess::Collecting& collecting,
                    Collector& output, Collector& error) {
  co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
    if (const auto* input = std::get_if<Subprocess::StringInput>(&collecting.input))
      group.add([writer = execution.standardInput(), text = input->text] {
        return writeAll(writer, text);
      });
    if (std::holds_alternative<Subprocess::StringOutput>(collecting.error))
      group.add([&error, bytes = execution.standardError()] {
        return Collector::collect(&error, bytes);
      });
    if (std::holds_alternative<Subprocess::StringOutput>(collecting.output))
      co_await Collector::collect(&output, execution.standardOutput());
    co_await group.waitForAll();
  });
}

/// What a stream is connected to where `Text` is the alternative that goes through us.
template <class Text, class Stream>
Subprocess::Connection connectionFor(const Stream& stream) {
  if (std::holds_alternative<Text>(stream))
    return Subprocess::Connection::piped;
  return std::holds_alternative<Subprocess::Inherited>(stream) ? Subprocess::Connection::inherited
                                                               : Subprocess::Connection::none;
}

std::size_t limitOf(const decltype(Subprocess::Collecting::output)& stream) {
  const auto* text = std::get_if<Subprocess::StringOutput>(&stream);
  return text == nullptr ? 0 : text->limit;
}

} // namespace

const std::string& Subprocess::Executable::string() const noexcept {
  const auto* path = std::get_if<FilePath>(&value_);
  return path != nullptr ? path->string() : *std::get_if<std::string>(&value_);
}

Subprocess::Execution::Execution(std::shared_ptr<detail::ChildProcess> process,
                                 std::function<void()> onOutputEnd)
    : process_(std::move(process)) {
  if (process_->input != nullptr)
    input_.emplace(process_->input);
  if (process_->output != nullptr)
    output_.emplace(process_->output, onOutputEnd);
  if (process_->error != nullptr)
    error_.emplace(process_->error, std::move(onOutputEnd));
}

int Subprocess::Execution::processID() const noexcept {
  return process_->id();
}
const InputWriter& Subprocess::Execution::standardInput() const {
  precondition(input_.has_value(), "The child's standard input isn't piped.");
  return *input_;
}
const AsyncBytes& Subprocess::Execution::standardOutput() const {
  precondition(output_.has_value(), "The child's standard output isn't piped.");
  return *output_;
}
const AsyncBytes& Subprocess::Execution::standardError() const {
  precondition(error_.has_value(), "The child's standard error isn't piped.");
  return *error_;
}
void Subprocess::Execution::sendSignal(int signal) const noexcept {
  process_->signalGroup(signal);
}

Task<Subprocess::Ended> Subprocess::runImpl(Configuration configuration, Connections connections,
                                            std::function<Task<void>(Execution&)> body) {
  checkCancellation();
  PlatformOptions options = configuration.platformOptions;
  // The system holds us up until the program is loaded, from a slow disk perhaps.
  auto starting = spawn(*SerialExecutor::make("velmar.subprocess", Lane::ownThread),
                        [configuration = std::move(configuration), connections] {
                          return detail::ChildProcess::start(configuration, connections);
                        });
  static_cast<void>(co_await starting.outcome());
  ProcessPtr process = std::move(starting).takeValue(); // nobody else holds a failure then
  const auto run = std::make_shared<Run>(std::move(process), std::move(options));

  const auto supervisor = spawn([run] { return supervise(run); });
  const auto conversation = spawn(*Executor::current(), [run, supervisor, body = std::move(body)] {
    return converse(run, supervisor, body);
  });
  const Outcome<Ended> ended = co_await withTaskCancellationHandler(
      [supervisor] { return supervisor.outcome(); }, [supervisor] { supervisor.cancel(); });
  // A body that the teardown leaves without its child reads to the end and is through. One that
  // waits for something else needs to be told.
  const bool wasTornDown = !ended || ended->wasTornDown;
  const Outcome<void> conversed =
      co_await endOf(conversation, run->options.clock,
                     wasTornDown ? run->options.outputGracePeriod : Clock::Duration::zero());
  if (!conversed)
    std::rethrow_exception(conversed.error());
  if (!ended)
    std::rethrow_exception(ended.error());
  co_return *ended;
}

/// Sees the child to its end. Cancelling this task is what starts the teardown.
Task<Subprocess::Ended> Subprocess::supervise(std::shared_ptr<Run> run) {
  bool wasTornDown = false;
  try {
    co_await run->process->waitForExit();
  } catch (const CancellationError&) {
    wasTornDown = true;
  }
  if (wasTornDown) // in another task, as everything that waits in this one is cut short
    static_cast<void>(co_await spawn([run] { return tearDown(run); }).outcome());
  else if (!run->process->isOutputClosed())
    co_await letOutputEnd(run);

  // The child is still in the system's table, so its id and its group's are nobody else's.
  run->process->signalGroup(SIGKILL);
  for (const auto& output : {run->process->output, run->process->error})
    if (output != nullptr)
      output->endReading();
  if (run->process->input != nullptr)
    run->process->input->close();
  co_return Ended{run->process->collectStatus(), wasTornDown};
}

/// Runs the body, with the child's streams open as long as that takes.
Task<void> Subprocess::converse(std::shared_ptr<Run> run, TaskHandle<Ended> supervisor,
                                std::function<Task<void>(Execution&)> body) {
  std::exception_ptr failure;
  try {
    co_await body(run->execution);
  } catch (...) {
    failure = std::current_exception();
  }
  run->process->closeStreams();
  if (failure != nullptr) {
    supervisor.cancel();
    std::rethrow_exception(failure);
  }
}

Task<void> Subprocess::tearDown(std::shared_ptr<Run> run) {
  for (const TeardownStep& step : run->options.teardownSequence) {
    if (run->process->hasExited())
      co_return;
    co_await take(run->process, run->options.clock, step);
  }
  run->process->signalGroup(SIGKILL);
  co_await run->process->waitForExit();
}

Task<void> Subprocess::letOutputEnd(std::shared_ptr<Run> run) {
  co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
    group.add([run]() -> Task<void> {
      co_await run->options.clock->sleepFor(run->options.outputGracePeriod);
      run->outputEnd.source.finish();
    });
    while (!run->process->isOutputClosed() && co_await run->outputEnd.stream.next()) {
    }
    group.cancelAll();
  });
}

Task<Subprocess::CollectedResult> Subprocess::run(Configuration configuration,
                                                  Collecting collecting) {
  Collector output{limitOf(collecting.output)};
  Collector error{limitOf(collecting.error)};
  const Connections connections{.input = connectionFor<StringInput>(collecting.input),
                                .output = connectionFor<StringOutput>(collecting.output),
                                .error = connectionFor<StringOutput>(collecting.error)};
  const Ended ended =
      co_await runImpl(std::move(configuration), connections, [&](Execution& execution) {
        return exchange(execution, collecting, output, error);
      });
  if (ended.wasTornDown)
    throw CancellationError();
  co_return CollectedResult{ended.status, output.result(), error.result(), output.isTruncated,
                            error.isTruncated};
}

} // namespace velmar
