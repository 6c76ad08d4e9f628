#include "VelmarPlatform/Process/Subprocess.h"

#include "../Concurrency/Support.h"
#include "Support.h"
#include "VelmarPlatform/Basics/LockedState.h"
#include "VelmarPlatform/Concurrency/AsyncStream.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fcntl.h>

namespace velmar {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using testing_support::run;
using testing_support::shell;
using testing_support::TemporaryFolder;

using Result = Subprocess::CollectedResult;
using Collecting = Subprocess::Collecting;
using Connection = Subprocess::Connection;
using Execution = Subprocess::Execution;
using Kind = SubprocessError::Kind;

Result collect(const Subprocess::Configuration& configuration,
               const Collecting& collecting = Collecting()) {
  return run([&] { return Subprocess::run(configuration, collecting); });
}
std::string outputOf(const Subprocess::Configuration& configuration) {
  return collect(configuration).standardOutput;
}
Subprocess::Configuration program(std::string name, Subprocess::Arguments arguments = {}) {
  return {.executable = Subprocess::Executable::name(std::move(name)),
          .arguments = std::move(arguments)};
}

// Collecting

TEST(Subprocess, BothStreamsAndTheStatusAreCollected) {
  const Result result = collect(shell("echo out; echo err >&2; exit 3"));
  EXPECT_EQ(result.status, TerminationStatus::exited(3));
  EXPECT_EQ(result.standardOutput, "out\n");
  EXPECT_EQ(result.standardError, "err\n");
}

TEST(Subprocess, ASignalIsTold) {
  EXPECT_EQ(collect(shell("kill -KILL $$")).status, TerminationStatus::signalled(SIGKILL));
}

TEST(Subprocess, TheEnvironmentIsCompleteAndTheArgumentsArriveAsTheyAre) {
  auto configuration = program("env");
  configuration.environment = {{"PATH", "/usr/bin:/bin"}, {"A", "x=y\nz"}, {"B", ""}};
  EXPECT_EQ(outputOf(configuration), "A=x=y\nz\nB=\nPATH=/usr/bin:/bin\n");
  EXPECT_EQ(outputOf(program("env")), ""); // found in the standard path
  EXPECT_EQ(outputOf(program("printf", {"%s|", "a b", "", "“ü”\n$x"})), "a b||“ü”\n$x|");
}

TEST(Subprocess, TheWorkingDirectoryIsTheChildsAlone) {
  const TemporaryFolder folder;
  folder.write("tool", "#!/bin/sh\npwd -P\n", 0755);
  const std::string there = std::filesystem::canonical(folder.path().string()).string();
  auto configuration = shell("pwd -P");
  configuration.workingDirectory = folder.path();
  EXPECT_EQ(outputOf(configuration), there + "\n");
  configuration.executable = Subprocess::Executable::path(FilePath("./tool"));
  EXPECT_EQ(outputOf(configuration), there + "\n");
  configuration.executable = Subprocess::Executable::name("tool");
  configuration.environment = {{"PATH", "."}};
  EXPECT_EQ(outputOf(configuration), there + "\n");
}

TEST(Subprocess, InputIsWrittenReadAndNeedNotBeRead) {
  const std::string large(std::size_t{1} << 20, 'x');
  const Collecting input{.input = Subprocess::StringInput{large}};
  EXPECT_EQ(collect(shell("wc -c"), input).standardOutput, "1048576\n");
  EXPECT_EQ(collect(shell("exit 4"), input).status, TerminationStatus::exited(4));
  EXPECT_EQ(collect(shell("cat")).standardOutput, ""); // no input is at its end
}

TEST(Subprocess, OutputIsCutAtTheLimitAndBetweenCharacters) {
  const Result result =
      collect(shell("printf 'äöü€'; printf '\\377ab' >&2"),
              {.output = Subprocess::StringOutput{8}, .error = Subprocess::StringOutput{3}});
  EXPECT_EQ(result.standardOutput, "äöü");
  EXPECT_TRUE(result.isOutputTruncated);
  EXPECT_EQ(result.standardError, "\uFFFDab");
  EXPECT_FALSE(result.isErrorTruncated);
}

TEST(Subprocess, SixtyFourMegabytesInBothStreamsAtOnce) {
  constexpr std::size_t size = std::size_t{64} << 20;
  const Result result =
      collect(shell("head -c 67108864 /dev/zero | tr '\\0' a & "
                    "head -c 67108864 /dev/zero | tr '\\0' b >&2; wait"),
              {.output = Subprocess::StringOutput{size}, .error = Subprocess::StringOutput{1000}});
  EXPECT_EQ(result.standardOutput.size(), size);
  EXPECT_EQ(result.standardOutput.find_first_not_of('a'), std::string::npos);
  EXPECT_FALSE(result.isOutputTruncated);
  EXPECT_EQ(result.standardError, std::string(1000, 'b'));
  EXPECT_TRUE(result.isErrorTruncated);
}

// What a child gets from us

TEST(Subprocess, TheChildHasNoDescriptorButItsStreamsAndNoSignalIsIgnoredOrBlocked) {
  const int stray = ::open("/dev/null", O_RDONLY); // without close-on-exec
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  const Result result =
      collect(shell("ls /proc/self/fd; grep -E 'Sig(Blk|Ign)' /proc/self/status"));
  std::signal(SIGPIPE, before);
  ::close(stray);
  EXPECT_EQ(result.standardOutput.substr(0, 8), "0\n1\n2\n3\n"); // 3 is the listed folder itself
  EXPECT_THAT(result.standardOutput, HasSubstr("SigBlk:\t0000000000000000"));
  const std::size_t ignored = result.standardOutput.find("SigIgn:\t") + 8;
  ASSERT_LT(ignored, result.standardOutput.size());
  // The C library has two signals above 31 for itself.
  EXPECT_EQ(std::stoull(result.standardOutput.substr(ignored, 16), nullptr, 16) & 0x7FFFFFFF, 0U);
}

// What can't be started

struct RefusedCase {
  const char* name;
  Subprocess::Configuration configuration;
  Kind kind;
  std::string message;
};

TEST(Subprocess, EachReasonAgainstAStartIsToldApart) {
  const TemporaryFolder folder;
  const std::string base = folder.path().string();
  folder.write("plain", "text", 0644);
  folder.write("garbage", "\x01\x02", 0755);
  folder.write("orphan", "#!/nowhere/interpreter\n", 0755);
  const auto at = [&](std::string_view name) {
    return Subprocess::Configuration{
        .executable = Subprocess::Executable::path(folder.path().appending(name))};
  };
  auto inPath = program("plain");
  inPath.environment = {{"PATH", "/nowhere:" + base}};
  auto missing = program("plain");
  missing.environment = {{"PATH", "/nowhere::/neither"}};
  auto noPath = program("env");
  noPath.environment = {{"PATH", ""}};
  auto nowhere = shell("true");
  nowhere.workingDirectory = FilePath("/nowhere");
  auto inFile = shell("true");
  inFile.workingDirectory = folder.path().appending("plain");
  auto name = shell("true");
  name.environment = {{"A=B", "c"}};

  const RefusedCase cases[] = {
      {"missing file", at("none"), Kind::programNotFound,
       "The program “" + base + "/none” doesn't exist."},
      {"missing name", missing, Kind::programNotFound,
       "The program “plain” wasn't found in /nowhere, /neither."},
      {"empty path", noPath, Kind::programNotFound,
       "The program “env” wasn't found: the search path is empty."},
      {"empty name", program(""), Kind::programNotFound,
       "The program “” wasn't found in /usr/bin, /bin, /usr/sbin, /sbin."},
      {"no permission", at("plain"), Kind::programNotUsable,
       "The program “" + base + "/plain” can't be run: Permission denied."},
      {"no permission, by name", inPath, Kind::programNotUsable,
       "The program “" + base + "/plain” can't be run: Permission denied."},
      {"folder", at(""), Kind::programNotUsable,
       "The program “" + base + "” can't be run: it is a folder."},
      {"no program", at("garbage"), Kind::programNotUsable,
       "The program “" + base +
           "/garbage” can't be run: it is no program that this system can run."},
      {"no interpreter", at("orphan"), Kind::programNotUsable,
       "The program “" + base +
           "/orphan” can't be run: the interpreter that it asks for doesn't exist."},
      {"missing directory", nowhere, Kind::workingDirectoryNotUsable,
       "The working directory “/nowhere” can't be used: No such file or directory."},
      {"directory that is a file", inFile, Kind::workingDirectoryNotUsable,
       "The working directory “" + base + "/plain” can't be used: Not a directory."},
      {"too long", shell(std::string(std::size_t{4} << 20, 'x')), Kind::notStarted,
       "The program “/bin/sh” can't be started: Argument list too long."},
      {"NUL", shell(std::string("a\0b", 3)), Kind::invalidArgument,
       "An argument of a program can't hold a NUL."},
      {"name with =", name, Kind::invalidArgument,
       "A variable of the environment can't hold a NUL, nor its name “=”."},
  };
  const std::size_t descriptors = testing_support::openDescriptorCount();
  for (const RefusedCase& row : cases) {
    SCOPED_TRACE(row.name);
    try {
      static_cast<void>(collect(row.configuration));
      ADD_FAILURE() << "It was started.";
    } catch (const SubprocessError& error) {
      EXPECT_EQ(error.kind(), row.kind);
      EXPECT_EQ(error.message(), row.message);
    }
  }
  EXPECT_EQ(testing_support::openDescriptorCount(), descriptors);
  EXPECT_FALSE(testing_support::hasChildren());
}

TEST(SubprocessError, TellsHowAProgramEnded) {
  EXPECT_EQ(SubprocessError(TerminationStatus::exited(1), "npm").message(),
            "The program “npm” ended with exit status 1.");
  const SubprocessError error(TerminationStatus::signalled(SIGSEGV));
  EXPECT_EQ(error.message(), "The command was ended by signal SEGV (Segmentation fault).");
  EXPECT_EQ(error.kind(), Kind::signal);
  EXPECT_EQ(error.status(), TerminationStatus::signalled(SIGSEGV));
  EXPECT_EQ(signalDescription(99), "99");
}

// Talking

TEST(Subprocess, ABodyTalksWithTheChild) {
  const auto result = run([] {
    return Subprocess::run(shell("while read line; do echo \"<$line>\"; done; echo bye >&2"), {},
                           [](Execution& child) -> Task<std::string> {
                             AsyncLines lines = child.standardOutput().lines();
                             std::string heard;
                             for (const char* word : {"one\n", "two\n"}) {
                               co_await child.standardInput().write(word);
                               heard += (co_await lines.next()).value_or("(end)");
                             }
                             child.standardInput().finish();
                             AsyncLines errors = child.standardError().lines();
                             heard += (co_await errors.next()).value_or("(end)");
                             heard += (co_await lines.next()).value_or("(end)");
                             co_return heard;
                           });
  });
  EXPECT_EQ(result.value, "<one>\n<two>\nbye\n(end)");
  EXPECT_EQ(result.status, TerminationStatus::exited(0));
  EXPECT_FALSE(result.wasTornDown);
}

TEST(Subprocess, ABodyThatHasHeardEnoughClosesThePipes) {
  const auto result = run([] {
    return Subprocess::run(shell("exec yes"),
                           {.input = Connection::none, .error = Connection::none},
                           [](Execution& child) -> Task<std::string> {
                             AsyncLines lines = child.standardOutput().lines();
                             co_return (co_await lines.next()).value_or("(end)");
                           });
  });
  EXPECT_EQ(result.value, "y\n");
  EXPECT_EQ(result.status, TerminationStatus::signalled(SIGPIPE));
}

TEST(Subprocess, AFailureOfTheBodyTearsTheChildDownAndIsPassedOn) {
  pid_t id = 0;
  const auto attempt = [&] {
    return Subprocess::run(shell("sleep 1000"), {}, [&](Execution& child) -> Task<void> {
      id = child.processID();
      throw Error("Enough.");
      co_return;
    });
  };
  EXPECT_THROW(static_cast<void>(run(attempt)), Error);
  EXPECT_FALSE(testing_support::isAlive(id));
}

TEST(Subprocess, MessagesOfSeveralTasksComeOutWhole) {
  constexpr int count = 20;
  const auto result = run([] {
    return Subprocess::run(
        shell("cat"), {.error = Connection::none}, [](Execution& child) -> Task<std::string> {
          std::string heard;
          co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
            for (int i = 0; i < count; ++i)
              group.add([input = child.standardInput(), letter = static_cast<char>('a' + i)] {
                return input.write(std::string(100'000, letter)); // more than a pipe holds
              });
            while (heard.size() < 100'000 * count) {
              const auto chunk = co_await child.standardOutput().next();
              heard += charactersOf(chunk.value());
            }
          });
          co_return heard;
        });
  });
  ASSERT_EQ(result.value.size(), 100'000U * count);
  for (std::size_t at = 0; at < result.value.size(); at += 100'000)
    EXPECT_EQ(result.value.substr(at, 100'000), std::string(100'000, result.value[at])) << at;
}

// Ends

/// Starts `configuration`, waits for its first line, cancels, and gives how it ended.
struct Stopped {
  std::vector<std::string> lines;
  Subprocess::ExecutionResult<Nothing> result;
};
Stopped stop(
    Subprocess::Configuration configuration, const std::function<void()>& afterCancelling = [] {}) {
  LockedState<std::vector<std::string>> heard;
  auto handle = spawn([configuration = std::move(configuration), heard] {
    return Subprocess::run(configuration, {.error = Connection::none},
                           [heard](Execution& child) -> Task<void> {
                             AsyncLines lines = child.standardOutput().lines();
                             while (auto line = co_await lines.next())
                               heard.withLock([&](auto& list) { list.push_back(*line); });
                           });
  });
  testing_support::runUntil([&] {
    return handle.isFinished() || heard.withLock([](auto& lines) { return !lines.empty(); });
  });
  handle.cancel();
  afterCancelling();
  testing_support::runUntil([&] { return handle.isFinished(); });
  auto result = std::move(handle).takeValue();
  return {heard.withLock([](auto& lines) { return lines; }), result};
}

TEST(Subprocess, CancellingAsksPolitelyFirstAndTheBodyHearsTheLastWords) {
  const Stopped stopped =
      stop(shell("trap 'echo bye; exit 7' TERM; echo up; while :; do sleep 0.01; done"));
  EXPECT_THAT(stopped.lines, ::testing::ElementsAre("up\n", "bye\n"));
  EXPECT_EQ(stopped.result.status, TerminationStatus::exited(7));
  EXPECT_TRUE(stopped.result.wasTornDown);
}

TEST(Subprocess, AChildThatIsStoppedIsWokenToEnd) {
  EXPECT_EQ(stop(shell("echo up; kill -STOP $$")).result.status,
            TerminationStatus::signalled(SIGTERM));
}

TEST(Subprocess, StepsRunInOrderEachForItsTime) {
  ManualClock clock;
  LockedState<std::vector<std::string>> taken;
  auto configuration = shell("trap '' TERM; echo up; while :; do sleep 0.01; done");
  const auto step = [&](std::string name, bool isSlow) {
    return TeardownStep::custom(
        [&clock, taken, name, isSlow]() -> Task<void> {
          taken.withLock([&](auto& list) { list.push_back(name); });
          try {
            if (isSlow)
              co_await clock.sleepFor(1h);
          } catch (const CancellationError&) {
            taken.withLock([&](auto& list) { list.push_back("cancelled"); });
          }
          throw Error("The step has failed.");
        },
        10s);
  };
  configuration.platformOptions = {.teardownSequence = {step("quick", false), step("slow", true),
                                                        TeardownStep::gracefulShutDown(5s),
                                                        step("last", false)},
                                   .clock = &clock};
  const auto count = [&] { return taken.withLock([](auto& list) { return list.size(); }); };
  const Stopped stopped = stop(configuration, [&] {
    testing_support::runUntil([&] { return count() == 2 && clock.sleeperCount() == 2; });
    clock.advance(9999ms);
    EXPECT_EQ(clock.sleeperCount(), 2U);
    clock.advance(1ms); // the slow step's time is up, and it is cancelled
    testing_support::runUntil([&] { return count() == 3 && clock.sleeperCount() == 1; });
    clock.advance(5s); // the signal had no effect
  });
  EXPECT_THAT(taken.withLock([](auto& list) { return list; }),
              ::testing::ElementsAre("quick", "slow", "cancelled", "last"));
  EXPECT_EQ(stopped.result.status, TerminationStatus::signalled(SIGKILL));
}

TEST(Subprocess, AStepMayTalkToTheChildSinceTheBodyGoesOn) {
  auto configuration = shell("echo up; read word; echo \"$word\"; exit 5");
  InputWriter* input = nullptr;
  configuration.platformOptions.teardownSequence = {TeardownStep::custom(
      [&input]() -> Task<void> {
        co_await input->write("quit\n");
        co_await monotonicClock().sleepFor(1h); // the exit comes first
      },
      1h)};
  LockedState<std::vector<std::string>> heard;
  auto handle = spawn([&] {
    return Subprocess::run(configuration, {}, [&](Execution& child) -> Task<void> {
      InputWriter writer = child.standardInput();
      input = &writer;
      AsyncLines lines = child.standardOutput().lines();
      while (auto line = co_await lines.next())
        heard.withLock([&](auto& list) { list.push_back(*line); });
      EXPECT_FALSE(isTaskCancelled());
    });
  });
  testing_support::runUntil(
      [&] { return heard.withLock([](auto& list) { return !list.empty(); }); });
  handle.cancel();
  testing_support::runUntil([&] { return handle.isFinished(); });
  EXPECT_EQ(std::move(handle).takeValue().status, TerminationStatus::exited(5));
  EXPECT_THAT(heard.withLock([](auto& list) { return list; }),
              ::testing::ElementsAre("up\n", "quit\n"));
}

TEST(Subprocess, AChildThatIgnoresTheSignalAndItsGrandchildThatHoldsThePipeAreKilled) {
  auto configuration = shell("trap '' TERM; (trap '' TERM; sleep 1000) & echo $!; wait");
  configuration.platformOptions.teardownSequence = {TeardownStep::gracefulShutDown(50ms)};
  const Stopped stopped = stop(configuration);
  EXPECT_EQ(stopped.result.status, TerminationStatus::signalled(SIGKILL));
  const pid_t grandchild = std::stoi(stopped.lines.at(0));
  testing_support::runUntil([&] { return !testing_support::isAlive(grandchild); });
}

TEST(Subprocess, OutputOfAGrandchildIsReadForABoundedTimeAndItIsKilledThen) {
  ManualClock clock;
  auto configuration = shell("(sleep 0.05; echo late; sleep 1000) & echo $!");
  configuration.platformOptions.clock = &clock;
  LockedState<std::vector<std::string>> heard;
  auto handle = spawn([&] {
    return Subprocess::run(configuration, {.error = Connection::none},
                           [&](Execution& child) -> Task<void> {
                             AsyncLines lines = child.standardOutput().lines();
                             while (auto line = co_await lines.next())
                               heard.withLock([&](auto& list) { list.push_back(*line); });
                           });
  });
  const auto count = [&] { return heard.withLock([](auto& list) { return list.size(); }); };
  testing_support::runUntil([&] { return count() == 2 && clock.sleeperCount() == 1; });
  EXPECT_FALSE(handle.isFinished());
  clock.advance(2s);
  testing_support::runUntil([&] { return handle.isFinished(); });
  EXPECT_EQ(std::move(handle).takeValue().status, TerminationStatus::exited(0));
  const pid_t grandchild = heard.withLock([](auto& list) { return std::stoi(list.at(0)); });
  testing_support::runUntil([&] { return !testing_support::isAlive(grandchild); });
}

TEST(Subprocess, NobodyWhoIsCancelledWaitsForTheOutputOfAGrandchild) {
  ManualClock clock;
  auto configuration = shell("sleep 1000 & echo $!");
  configuration.platformOptions.clock = &clock;
  std::atomic<pid_t> grandchild = 0;
  auto handle = spawn([&] {
    return Subprocess::run(configuration, {}, [&](Execution& child) -> Task<void> {
      AsyncLines lines = child.standardOutput().lines();
      while (auto line = co_await lines.next())
        grandchild = std::stoi(*line);
    });
  });
  testing_support::runUntil([&] { return grandchild != 0 && clock.sleeperCount() == 1; });
  handle.cancel();
  testing_support::runUntil([&] { return handle.isFinished(); });
  testing_support::runUntil([&] { return !testing_support::isAlive(grandchild); });
}

TEST(Subprocess, AProcessOfASessionOfItsOwnThatHoldsThePipeHoldsUpNobody) {
  ManualClock clock;
  const TemporaryFolder folder;
  auto configuration = shell("setsid sh -c 'echo $$; : > mark; exec sleep 1000' & "
                             "until [ -e mark ]; do sleep 0.01; done");
  configuration.workingDirectory = folder.path();
  configuration.platformOptions.clock = &clock;
  auto handle = spawn([&] { return Subprocess::run(configuration); });
  testing_support::runUntil([&] { return clock.sleeperCount() == 1; });
  clock.advance(2s);
  testing_support::runUntil([&] { return handle.isFinished(); });
  const Result result = std::move(handle).takeValue();
  EXPECT_EQ(result.status, TerminationStatus::exited(0));
  const pid_t daemon = std::stoi(result.standardOutput);
  EXPECT_TRUE(testing_support::isAlive(daemon));
  ::kill(daemon, SIGKILL);
}

TEST(Subprocess, ABodyThatStaysAfterTheTeardownIsCancelledInTheEnd) {
  ManualClock clock;
  auto configuration = shell("sleep 1000");
  configuration.platformOptions.clock = &clock;
  std::atomic<bool> isRunning = false;
  auto handle = spawn([&] {
    return Subprocess::run(configuration, {}, [&](Execution&) -> Task<void> {
      isRunning = true;
      co_await monotonicClock().sleepFor(1h);
    });
  });
  testing_support::runUntil([&] { return isRunning.load(); });
  handle.cancel();
  testing_support::runUntil([&] { return !testing_support::hasChildren(); });
  testing_support::runUntil([&] { return clock.sleeperCount() == 1; });
  EXPECT_FALSE(handle.isFinished());
  clock.advance(2s);
  testing_support::runUntil([&] { return handle.isFinished(); });
  EXPECT_THROW(static_cast<void>(std::move(handle).takeValue()), CancellationError);
}

TEST(Subprocess, ACancelledTaskStartsNothingAndCollectingThrows) {
  const TemporaryFolder folder;
  const std::string mark = folder.path().appending("mark").string();
  testing_support::Gate gate;
  auto early = spawn([&]() -> Task<Result> {
    co_await gate.pass();
    co_return co_await Subprocess::run(shell("echo > '" + mark + "'"));
  });
  early.cancel();
  gate.open();
  auto late =
      spawn([&] { return Subprocess::run(shell("echo > '" + mark + ".late'; sleep 1000")); });
  testing_support::runUntil([&] { return std::filesystem::exists(mark + ".late"); });
  late.cancel();
  for (auto* handle : {&early, &late}) {
    testing_support::runUntil([&] { return handle->isFinished(); });
    EXPECT_THROW(static_cast<void>(std::move(*handle).takeValue()), CancellationError);
  }
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST(Subprocess, AThousandStartsAndStopsLeaveNothingBehind) {
  static_cast<void>(collect(shell("true"))); // what lasts as long as the process is there now
  const std::size_t descriptors = testing_support::openDescriptorCount();
  std::atomic<int> torn = 0;
  // A third ends by itself, a third is cancelled at once, a third while it runs with a grandchild.
  const auto startAndStop = [&torn](int number) -> Task<void> {
    auto ends = makeAsyncStream<Nothing>();
    auto handle = spawn([&torn, number, started = ends.source]() -> Task<void> {
      auto configuration = shell(number % 3 == 0 ? "exit 3" : "sleep 1000 & wait");
      configuration.platformOptions.teardownSequence = {
          TeardownStep::gracefulShutDown(number % 2 == 0 ? 0ms : 5s)};
      const auto result =
          co_await Subprocess::run(configuration, {}, [started](Execution& child) -> Task<void> {
            started.yield({});
            while (co_await child.standardOutput().next()) {
            }
          });
      torn += result.wasTornDown ? 1 : 0;
    });
    if (number % 3 == 2)
      static_cast<void>(co_await ends.stream.next());
    if (number % 3 != 0)
      handle.cancel();
    static_cast<void>(co_await handle.outcome());
  };
  run([&]() -> Task<void> {
    co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
      for (int worker = 0; worker < 4; ++worker)
        group.add([&, worker]() -> Task<void> {
          for (int i = 0; i < 250; ++i)
            co_await startAndStop(4 * i + worker);
        });
      co_await group.waitForAll();
    });
  });
  EXPECT_GE(torn, 333);
  EXPECT_FALSE(testing_support::hasChildren());
  testing_support::runUntil([&] { return testing_support::openDescriptorCount() == descriptors; });
}

} // namespace
} // namespace velmar
