#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"
#include "VelmarPlatform/Files/FileDescriptor.h"
#include "VelmarPlatform/Process/Subprocess.h"
#include "tests/host/RunHost.h"
#include "tests/host/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmar::testing {
namespace {

HostResult runShell(const std::string& script, const HostInput& input = {}) {
  return runHost({"exec", "--", "sh", "-c", script}, input);
}

TEST(ExecCommand, PassesOutputOnAndSaysTheRestElsewhere) {
  const auto result = runShell("echo one; printf two");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "one\ntwo\n");
  EXPECT_TRUE(
      result.errors.starts_with("Run sh\nExec: sh -c “echo one; printf two”\nFinished after "))
      << result.errors;
}

TEST(ExecCommand, ShowsWhatIsWrittenToStandardError) {
  const auto result = runShell("echo oops >&2");
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find("\noops\n"), std::string::npos) << result.errors;
}

TEST(ExecCommand, EndsAsTheProgramDoes) {
  struct Case {
    const char* name;
    std::vector<std::string> command;
    int exitCode;
    const char* sentence;
  };
  const Case cases[] = {
      {"exit status",
       {"sh", "-c", "exit 3"},
       3,
       "velmar: The program “sh” ended with exit status 3. ("},
      {"signal",
       {"sh", "-c", "kill -KILL $$"},
       137,
       "velmar: The program “sh” was ended by signal KILL"},
      {"missing",
       {"velmar-no-such-program"},
       127,
       "velmar: The program “velmar-no-such-program” wasn't found"},
      {"a folder", {"/"}, 126, "velmar: "},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    std::vector<std::string> words = {"exec", "--"};
    words.insert(words.end(), row.command.begin(), row.command.end());
    const auto result = runHost(words);
    EXPECT_EQ(result.exitCode, row.exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find(row.sentence), std::string::npos) << result.errors;
  }
}

TEST(ExecCommand, ATerminalHasALiveLineThatGoes) {
  // The program goes on when the live line has been seen.
  const TemporaryFolder folder;
  const std::string gate = folder.path + "/gate";
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  const FileDescriptor opener(::open(gate.c_str(), O_RDWR | O_CLOEXEC));
  const auto openOnceSeen = [&](const std::string& output) {
    if (output.find("Run sh, 1 lines") != std::string::npos)
      EXPECT_GT(::write(opener.number(), "\n", 1), 0);
  };
  const auto result = runShell("echo one; read go <'" + gate + "'; echo oops >&2",
                               {.isTerminal = true, .onOutput = openOnceSeen});
  EXPECT_EQ(result.exitCode, 0);
  const std::size_t live = result.output.find("\x1b[?7l");
  ASSERT_NE(live, std::string::npos);
  EXPECT_NE(result.output.find("Run sh, 1 lines", live), std::string::npos);
  EXPECT_NE(result.output.find("\r\x1b[K", live), std::string::npos);
  EXPECT_TRUE(result.output.ends_with("oops\n\x1b[0m")) << result.output;
  EXPECT_TRUE(result.errors.starts_with("\x1b[1mFinished after ")) << result.errors;
}

// Signals, to the program itself.

struct SignalCase {
  const char* name;
  const char* script; // writes "ready" when it is
  int signal;
  bool isSentTwice;
  const char* output; // behind that
};
class ExecSignals : public ::testing::TestWithParam<SignalCase> {};

TEST_P(ExecSignals, EndTheCommand) {
  const SignalCase& row = GetParam();
  std::string output;
  std::string errors;
  const auto pump = [&](AsyncBytes bytes, std::string& text, std::string mark,
                        std::function<void()> onMark) -> Task<void> {
    while (const auto chunk = co_await bytes.next()) {
      const bool hadMark = text.find(mark) != std::string::npos;
      if (text.size() < 100'000)
        text += charactersOf(*chunk);
      if (!hadMark && text.find(mark) != std::string::npos)
        onMark();
    }
  };
  const auto ended = mainExecutor().run([&] {
    return Subprocess::run(
        {.executable = Subprocess::Executable::path(FilePath(VELMAR_PROGRAM)),
         .arguments = {"exec", "--", "sh", "-c", row.script},
         .environment = SubprocessEnvironment::inherited()},
        {.input = Subprocess::Connection::none}, [&](Subprocess::Execution& child) -> Task<void> {
          const auto send = [&] { child.sendSignal(row.signal); };
          const auto sendAgain = [&] {
            if (row.isSentTwice)
              child.sendSignal(row.signal);
          };
          co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
            group.add(mainExecutor(),
                      [&] { return pump(child.standardOutput(), output, "ready\n", send); });
            group.add(mainExecutor(), [&] {
              return pump(child.standardError(), errors, "asked to end", sendAgain);
            });
            co_await group.waitForAll();
          });
        });
  });
  EXPECT_EQ(ended.status, TerminationStatus::exited(128 + row.signal));
  EXPECT_TRUE(output.starts_with(std::string("ready\n") + row.output)) << output;
  EXPECT_NE(errors.find("velmar: The operation was cancelled. ("), std::string::npos) << errors;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ExecSignals,
    ::testing::Values(
        SignalCase{"ProgramsMaySayGoodBye",
                   "trap 'echo bye; exit 7' TERM; echo ready; while :; do sleep 1; done", SIGINT,
                   false, "bye\n"},
        SignalCase{"HangUp", "echo ready; sleep 1000", SIGHUP, false, ""},
        SignalCase{"Termination", "echo ready; sleep 1000", SIGTERM, false, ""},
        SignalCase{"OneThatNeverStopsWriting", "yes ready", SIGINT, false, "ready\nready\n"},
        SignalCase{"TheSecondKills", "trap '' TERM; echo ready; while :; do sleep 1; done", SIGINT,
                   true, ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExecCommand, EndsWithItsReaderThoughTheCommandNeverStopsWriting) {
  const auto result = mainExecutor().run([] {
    return Subprocess::run({.executable = Subprocess::Executable::name("sh"),
                            .arguments = {"-c", "\"$0\" exec -- yes | head -n 1", VELMAR_PROGRAM},
                            .environment = SubprocessEnvironment::inherited()});
  });
  EXPECT_EQ(result.standardOutput, "y\n");
  EXPECT_EQ(result.standardError, "Run yes\nExec: yes\n");
}

TEST(ExecCommand, NeedsACommand) {
  const auto result = runHost({"exec"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_TRUE(result.errors.starts_with("velmar: “velmar exec” needs a command")) << result.errors;
}

} // namespace
} // namespace velmar::testing
