#include "host/CommandLine.h"

#include "host/PeerFaults.h"
#include "tests/host/RunHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using velmar::testing::runHost;
using velmar::testing::wordsOf;

TEST(CommandLine, WithoutACommandItShowsWhatItCanDoAndASamplePage) {
  const auto result = runHost({});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, HasSubstr("velmar tree FILE [--language ID] [--json]"));
  EXPECT_THAT(result.output, HasSubstr("velmar languages"));
  EXPECT_THAT(result.output, HasSubstr("velmar show FILE"));
  EXPECT_THAT(result.output, HasSubstr("\n  javascript  7:9-14:1\n    jsdoc "));
  EXPECT_THAT(result.output, HasSubstr("    return `Hello, ${word.toUpperCase()}!`; // script"));
}

TEST(CommandLine, TheSamplePageHasColoursOnATerminal) {
  const auto result =
      runHost({}, {.isTerminal = true, .environment = {{"COLORTERM", "truecolor"}}});
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, HasSubstr(";38;2;"));
}

TEST(CommandLine, PrintsItsVersion) {
  const auto result = runHost({"--version"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output,
              ::testing::MatchesRegex("velmar [0-9.]+ \\(grammars of ABI 13 to 15\\)\n"));
}

TEST(CommandLine, TheEngineIsToldWhereItsDataAre) {
  const AppBundleFacts facts = applicationFacts();
  ASSERT_TRUE(facts.resourcesPath);
  EXPECT_TRUE(facts.resourcesPath->isAbsolute());
  EXPECT_TRUE(std::filesystem::exists(facts.resourcesPath->appending("packs/cpp").string()));
}

TEST(CommandLine, EveryCommandHasHelpWithExamplesAndExitCodes) {
  for (const Command& command : commands()) {
    const auto asked = runHost({"help", std::string(command.name)});
    EXPECT_EQ(asked.exitCode, 0);
    EXPECT_THAT(asked.output, HasSubstr("Usage: velmar " + std::string(command.usage)));
    EXPECT_THAT(asked.output, HasSubstr("\nExamples:\n"));
    EXPECT_THAT(asked.output, HasSubstr("Exit codes: 0 done, 1 "));
    for (const Option& option : command.options)
      EXPECT_THAT(asked.output, HasSubstr(option.name));
    EXPECT_EQ(runHost({std::string(command.name), "--help"}).output, asked.output);
    EXPECT_EQ(runHost({std::string(command.name), "x", "-h"}).output, asked.output);
  }
}

TEST(CommandLine, ADoubleDashMakesAllThatFollowsOperands) {
  const auto result = runHost({"tree", "--", "--help"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "velmar: Could not open “--help”: No such file or directory.\n");
}

struct UsageCase {
  const char* name;
  const char* words; ///< A blank between them.
  std::string error;
};
class CommandLineUsage : public ::testing::TestWithParam<UsageCase> {};

TEST_P(CommandLineUsage, GetsASentenceAndExitCodeTwo) {
  const auto result = runHost(wordsOf(GetParam().words));
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "velmar: " + GetParam().error + "\nSee “velmar help”.\n");
}
INSTANTIATE_TEST_SUITE_P(
    Cases, CommandLineUsage,
    ::testing::Values(
        UsageCase{"NearCommand", "tre", "There is no command “tre”; did you mean “tree”?"},
        UsageCase{"SwappedLetters", "langauges",
                  "There is no command “langauges”; did you mean “languages”?"},
        UsageCase{"FarCommand", "sonnet", "There is no command “sonnet”."},
        UsageCase{"EmptyCommand", "", "There is no command “”."},
        UsageCase{"HelpOnNothing", "help treee",
                  "There is no command “treee”; did you mean “tree”?"},
        UsageCase{"HelpOnTwo", "help tree languages", "Help is given on one command at a time."},
        UsageCase{"NearGlobalOption", "--verison",
                  "Unknown option “--verison”; did you mean “--version”?"},
        UsageCase{"NearOption", "tree --jsn x", "Unknown option “--jsn”; did you mean “--json”?"},
        UsageCase{"ShortenedOption", "tree --lang=c x",
                  "Unknown option “--lang”; did you mean “--language”?"},
        UsageCase{"FarOption", "tree -q x", "Unknown option “-q”."},
        UsageCase{"NoValue", "tree x --language", "The option “--language” needs a value."},
        UsageCase{"SuperfluousValue", "tree --json=yes", "The option “--json” takes no value."},
        UsageCase{"NoFile", "tree", "“velmar tree” needs a file, or “-” for standard input."},
        UsageCase{"TwoFiles", "tree a b", "“velmar tree” takes one file at a time."},
        UsageCase{"UnknownLanguage", "tree - --language pyhton",
                  "There is no language “pyhton”; did you mean “python”?"},
        UsageCase{"BadUTF8", "\xFF", "There is no command “\uFFFD”."},
        UsageCase{"OperandOfLanguages", "languages c", "“velmar languages” takes no operands."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Arguments, TakeAnOptionsValueBehindItOrBehindAnEqualsSign) {
  const Command& tree = commands().front();
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"--language", "a=b", "-"}, {"-", "--language=a=b"}}) {
    const Arguments arguments = parseArguments(tree, words);
    EXPECT_EQ(arguments.valueOf("--language"), "a=b");
    EXPECT_EQ(arguments.operands, std::vector<std::string>{"-"});
    EXPECT_FALSE(arguments.has("--json"));
  }
}

TEST(NearestName, IsAbsentForWordsThatAreFarFromAll) {
  const std::vector<std::string_view> names = {"tree", "languages", "help"};
  EXPECT_EQ(nearestName("tee", names), "tree");
  EXPECT_EQ(nearestName("lang", names), "languages");
  EXPECT_EQ(nearestName("xyz", names), std::nullopt);
  EXPECT_EQ(nearestName(std::string(1'000'000, 't'), names), std::nullopt);
}

/// Stands for a pipe whose reader has gone.
class ClosedOutput final : public Output {
public:
  ClosedOutput() : Output(false) {}

protected:
  void deliver(std::string_view) override { throw BrokenPipe(); }
};

TEST(CommandLine, ABrokenPipeEndsQuietly) {
  ClosedOutput output;
  StringOutput errors;
  Streams streams{.readInput = {}, .output = output, .errors = errors, .now = [] {
                    return std::chrono::nanoseconds(0);
                  }};
  const std::vector<std::string> words = {"languages"};
  EXPECT_EQ(runCommandLine(words, streams), ExitCode::done);
  EXPECT_EQ(errors.text(), "");
}

TEST(CommandLine, AFullDiskIsAnError) {
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  FileOutput output(full);
  StringOutput errors;
  Streams streams{.readInput = {}, .output = output, .errors = errors, .now = [] {
                    return std::chrono::nanoseconds(0);
                  }};
  const std::vector<std::string> words = {"languages"};
  EXPECT_EQ(runCommandLine(words, streams), ExitCode::unusableInput);
  EXPECT_EQ(errors.text(), "velmar: Could not write the output: No space left on device.\n");
  ::close(full);
}

TEST(Output, StylesReachATerminalAlone) {
  StringOutput plain(false);
  plain.write("x", Style::error);
  EXPECT_EQ(plain.text(), "x");
  StringOutput styled(true);
  styled.write("x", Style::error);
  styled.write("y", Style::plain);
  EXPECT_EQ(styled.text(), "\x1b[1;31mx\x1b[0my");
}

TEST(PeerCommand, NamesItsFaults) {
  const auto list = runHost({"peer", "--list"});
  EXPECT_EQ(list.exitCode, 0);
  for (const host::PeerFault& fault : host::peerFaults())
    EXPECT_THAT(list.output, HasSubstr(fault.name));
  EXPECT_THAT(runHost({"peer", "slience"}).errors, HasSubstr("did you mean “silence”?"));
}

} // namespace
} // namespace velmar::host
