#include "RunHost.h"

#include <gtest/gtest.h>

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
  const auto result = runShell("echo one; sleep 0.3; echo oops >&2", {.isTerminal = true});
  EXPECT_EQ(result.exitCode, 0);
  const std::size_t live = result.output.find("\x1b[?7l");
  ASSERT_NE(live, std::string::npos);
  EXPECT_NE(result.output.find("Run sh, 1 lines", live), std::string::npos);
  EXPECT_NE(result.output.find("\r\x1b[K", live), std::string::npos);
  EXPECT_TRUE(result.output.ends_with("oops\n\x1b[0m")) << result.output;
  EXPECT_TRUE(result.errors.starts_with("\x1b[1mFinished after ")) << result.errors;
}

TEST(ExecCommand, NeedsACommand) {
  const auto result = runHost({"exec"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_TRUE(result.errors.starts_with("velmar: “velmar exec” needs a command")) << result.errors;
}

} // namespace
} // namespace velmar::testing
