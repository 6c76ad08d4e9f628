#include "host/RPCCommand.h"

#include "VelmarCore/Concurrency/Background.h"
#include "VelmarCore/Network/NetworkConnection.h"
#include "VelmarCore/Network/StreamRecord.h"
#include "VelmarPlatform/Basics/DecimalText.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Process/Subprocess.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/RPCConversation.h"

#include <algorithm>
#include <csignal>
#include <fmt/format.h>
#include <fstream>
#include <mutex>

namespace velmar::host {

namespace {

constexpr std::int64_t largestInput = std::int64_t{1} << 30;
constexpr int requestsInFlight = 32;

/// Lines of both outputs, from any thread.
class Printer {
public:
  explicit Printer(Streams& streams) : streams_(streams) {}
  void print(const std::string& line) { write(streams_.output, line); }
  void complain(const std::string& line) { write(streams_.errors, line); }

private:
  void write(Output& output, const std::string& line) {
    const std::scoped_lock lock(mutex_);
    output.write(line + "\n");
    output.flush();
  }

  std::mutex mutex_;
  Streams& streams_;
};

/// Writes what goes over `stream` to the file as it comes, so that nothing is lost if we are
/// killed.
std::shared_ptr<StreamingIO> recordTo(const std::string& path,
                                      std::shared_ptr<StreamingIO> stream) {
  struct File {
    std::ofstream stream;
    std::mutex mutex;
  };
  const auto file = std::make_shared<File>();
  file->stream.open(path, std::ios::binary | std::ios::trunc);
  if (!file->stream)
    throw SystemError(fmt::format("“{}” can’t be written.", path), errno);
  return std::make_shared<RecordingStreamingIO>(std::move(stream),
                                                [file](const StreamChunk& chunk) {
                                                  const std::scoped_lock lock(file->mutex);
                                                  file->stream << lineOf(chunk) << std::flush;
                                                });
}

/// Lines of standard input, as they are typed where that can be had.
std::function<Task<std::optional<std::string>>()> linesOf(Streams& streams) {
  if (streams.readLine)
    return [&streams] { return runInBackground([&streams] { return streams.readLine(); }); };
  struct Rest {
    Bytes bytes;
    std::size_t start = 0;
  };
  const auto rest = std::make_shared<Rest>(streams.readInput(largestInput));
  return [rest]() -> Task<std::optional<std::string>> {
    const std::string_view text = charactersOf(rest->bytes).substr(rest->start);
    if (text.empty())
      co_return std::nullopt;
    const std::string line(text.substr(0, text.find('\n')));
    rest->start += std::min(text.size(), line.size() + 1);
    co_return line;
  };
}

template <class Number>
std::optional<Number> numberOf(const Arguments& arguments, std::string_view option) {
  const auto text = arguments.valueOf(option);
  if (!text)
    return std::nullopt;
  const auto number = parseDecimal<Number>(*text);
  if (!number || *number < 1)
    throw UsageError(fmt::format("“{}” needs a number from 1 on, not “{}”.", option, *text));
  return number;
}

/// Ends a peer that stays though nobody talks to it any more.
Task<void> tellToGo(Subprocess::Execution child, std::chrono::seconds patience) {
  for (const int signal : {SIGTERM, SIGKILL}) {
    co_await monotonicClock().sleepFor(patience);
    child.sendSignal(signal);
  }
}

/// Calls `talk(stream)`, which gives a Task<bool>, with a stream to the peer that the command line
/// names. A program has `patience` to end behind that, and to end when it is told to.
template <class Talk>
Task<bool> withPeer(const Arguments* arguments, std::chrono::seconds patience, Talk talk) {
  if (const auto place = arguments->valueOf("--connect")) {
    auto connection = co_await connectTo(endpointFromText(*place));
    const bool isFine = co_await talk(connection);
    connection->cancel();
    co_return isFine;
  }
  const std::vector<std::string>& words = arguments->operands;
  TaskScope scope;
  const auto ended = co_await Subprocess::run(
      {.executable = Subprocess::Executable::name(words.front()),
       .arguments = {words.begin() + 1, words.end()},
       .environment = SubprocessEnvironment::inherited()},
      {.error = Subprocess::Connection::inherited},
      [&](Subprocess::Execution& child) -> Task<bool> {
        const bool isFine =
            co_await talk(StreamingIO::subprocess(child.standardOutput(), child.standardInput()));
        child.standardInput().finish();
        scope.spawn([child, patience] { return tellToGo(child, patience); });
        co_return isFine;
      });
  co_return ended.value;
}

Task<bool> floodAndReport(std::shared_ptr<StreamingIO> stream, std::int64_t count,
                          Printer* printer) {
  const auto start = std::chrono::steady_clock::now();
  const FloodResult result = co_await flood(std::move(stream), count, requestsInFlight);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  printer->print(fmt::format(
      "{} of {} requests answered, {} wrong or lost; {:.1f} s, {:.0f} a second", result.answered,
      count, result.wrong, time.count(), static_cast<double>(result.answered) / time.count()));
  co_return result.answered == count;
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.has("--connect") == arguments.has("--stdio"))
    throw UsageError("“velmar rpc” needs either “--stdio COMMAND …” or “--connect PLACE”.");
  if (arguments.has("--stdio") == arguments.operands.empty())
    throw UsageError(arguments.has("--stdio") ? "“--stdio” needs a command."
                                              : "“--connect” takes no command.");
  const std::chrono::seconds timeout(numberOf<std::int64_t>(arguments, "--timeout").value_or(30));
  const auto count = numberOf<std::int64_t>(arguments, "--flood");
  const auto record = arguments.valueOf("--record");
  Printer printer(streams);
  RPCConversation conversation{.nextLine = count ? nullptr : linesOf(streams),
                               .print = [&](const std::string& line) { printer.print(line); },
                               .complain = [&](const std::string& line) { printer.complain(line); },
                               .timeout = timeout};
  const auto talk = [&](std::shared_ptr<StreamingIO> stream) -> Task<bool> {
    if (record)
      stream = recordTo(std::string(*record), std::move(stream));
    return count ? floodAndReport(std::move(stream), *count, &printer)
                 : converse(std::move(stream), conversation);
  };
  const auto patience = std::min(timeout, std::chrono::seconds(5));
  if (!mainExecutor().run([&] { return withPeer(&arguments, patience, talk); }))
    throw ProgramExit{static_cast<int>(ExitCode::unusableInput)};
}

} // namespace

Command rpcCommand() {
  return {
      .name = "rpc",
      .summary = "Talk JSON-RPC with a program or a server.",
      .usage = "rpc --stdio COMMAND|--connect PLACE",
      .details =
          "Reads lines from standard input. A line is a method and, behind a blank, parameters in "
          "JSON; it is sent as a request, or as a notification if it starts with “!”. The next one "
          "follows when the response is there. Results are printed as JSON, a line each, what the "
          "peer notifies of behind “←”. Messages are framed as language servers do. A PLACE is "
          "unix:PATH or HOST:PORT. If the session ends on something that can’t be read, the bytes "
          "around it are shown, and the exit code is 1, as it is for a request that failed. A "
          "program that stays when its input has ended is told to go five seconds later.",
      .options = {{"--stdio", "", "Start COMMAND and talk over its standard input and output."},
                  {"--connect", "PLACE", "Connect to a socket."},
                  {"--record", "FILE", "Write what goes over the wire to FILE, for “velmar play”."},
                  {"--timeout", "SECONDS", "How long to wait for a response; 30."},
                  {"--flood", "N", "Send N requests “echo” instead, 32 at a time, and count."}},
      .examples = {{"velmar rpc --stdio -- velmar peer echo", "A peer that repeats."},
                   {"velmar rpc --stdio -- velmar peer bad-utf8", "See where it goes wrong."},
                   {"velmar rpc --connect unix:/tmp/s --flood 9", "With a listening “peer echo”."}},
      .run = run,
  };
}

} // namespace velmar::host
