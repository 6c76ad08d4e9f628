#include "VelmarCore/Environment/ShellCommand.h"

#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "tests/VelmarPlatform/Process/Support.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace velmar {
namespace {

using testing_support::TemporaryFolder;
using Words = std::vector<std::string>;

struct ParsingCase {
  const char* name;
  std::string line;
  std::optional<ShellCommand> command;
};
class ShellCommandParsing : public testing::TestWithParam<ParsingCase> {};

TEST_P(ShellCommandParsing, Gives) {
  EXPECT_EQ(ShellCommand::parsing(GetParam().line), GetParam().command);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ShellCommandParsing,
    testing::Values(ParsingCase{"Nothing", "", std::nullopt},
                    ParsingCase{"Blanks", "   ", std::nullopt},
                    ParsingCase{"PlainWords", "ls -l   /tmp", {{"ls", {"-l", "/tmp"}}}},
                    ParsingCase{"AnyWhiteSpace", "\n ls\t-l\r\n\u2003x ", {{"ls", {"-l", "x"}}}},
                    ParsingCase{"BothQuotes", R"("my tool" 'a b' c)", {{"my tool", {"a b", "c"}}}},
                    ParsingCase{"AnEscapedQuote", R"("a\"b")", {{R"(a"b)"}}},
                    ParsingCase{"AnEscapedQuoteInSingleOnes", R"('it\'s')", {{"it's"}}},
                    ParsingCase{"AnEscapedLetter", R"("\n\\\é")", {{R"(n\é)"}}},
                    ParsingCase{"TheOtherQuoteInside", R"('a"b' "it's")", {{R"(a"b)", {"it's"}}}},
                    ParsingCase{"AnOpenQuote", R"("abc d)", {{"abc d"}}},
                    ParsingCase{"ABackslashAtTheEnd", R"("abc\)", {{"abc"}}},
                    ParsingCase{"AQuoteAtTheEnd", R"(a ")", {{"a", {""}}}},
                    ParsingCase{"AnEmptyName", R"("")", {{""}}},
                    ParsingCase{"QuotesInsideOfAWord", R"(a"b c")", {{R"(a"b)", {R"(c")"}}}},
                    ParsingCase{"AWordRightBehindAQuote", R"("a"b'c')", {{"a", {"b'c'"}}}},
                    ParsingCase{"ABackslashInAWord", R"(a\ b)", {{R"(a\)", {"b"}}}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ShellCommand, ArgumentsAreQuotedAsFarAsTheyNeedIt) {
  const struct {
    std::string text;
    std::string argument;
  } cases[] = {
      {"a b(c)", R"(a\ b\(c\))"},
      {R"("a b")", R"(\"a\ b\")"},
      {" x\n", "x"},
      {"'a\"b'", R"(\'a"b\')"},
      {"it's", "it's"},
      {R"(\$;|&`)", R"(\$;|\&\`)"},
      {"\"", "\\\""},
      {"", ""},
      {"ü ü", "ü\\ ü"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(asShellArgument(row.text), row.argument) << row.text;
  EXPECT_EQ(asShellArgument(FilePath("/a b/c")), R"(/a\ b/c)");
  EXPECT_EQ(asShellArguments(Words{"a", " b ", "c d"}, ", "), R"(a, b, c\ d)");
  EXPECT_EQ(asShellArguments(Words{}, " "), "");
}

TEST(ShellCommand, DescribesItselfWithAPlainName) {
  EXPECT_EQ(ShellCommand("echo", {"a b"}).description(), R"(echo a\ b)");
  EXPECT_EQ(ShellCommand("my tool").description(), "my tool");
  EXPECT_EQ(ShellCommand("my tool", {"x"}).asShellArguments(" "), R"(my\ tool x)");
}

TEST(ShellCommand, HashesTellArgumentsFromNames) {
  const std::unordered_set<ShellCommand> set = {{"a", {"b"}}, {"a", {"b"}}, {"a"},
                                                {"ab"},       {"b", {"a"}}, {"a", {"b", ""}}};
  EXPECT_EQ(set.size(), 5U);
}

TEST(ShellCommand, ResolvesToTheFirstThatAnybodyMayExecute) {
  const TemporaryFolder first;
  const TemporaryFolder second;
  first.write("tool", "", 0644);
  const FilePath tool = second.write("tool", "", 0601);
  const FilePath other = first.write("other", "", 0755);
  second.write("other", "", 0755);
  const auto resolve = [&](std::string name) {
    return mainExecutor().run([&] {
      return ShellCommand(name).resolve(
          std::vector{first.path(), FilePath("/none"), second.path()});
    });
  };
  EXPECT_EQ(resolve("tool"), tool);
  EXPECT_EQ(resolve("other"), other);
  EXPECT_EQ(resolve(tool.string()), tool);              // absolute
  EXPECT_EQ(resolve("."), FilePath(".", first.path())); // a folder has such rights too
  EXPECT_EQ(resolve("neither"), std::nullopt);
  EXPECT_EQ(resolve(""), std::nullopt);
}

} // namespace
} // namespace velmar
