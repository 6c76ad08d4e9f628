#include "VelmarParser/Grammar/Grammar.h"
#include "host/SourceText.h"
#include "tests/host/RunHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace velmar::host {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using velmar::testing::runHost;

/// A folder that goes with the test.
class TreeCommand : public ::testing::Test {
protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmar-host-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  [[nodiscard]] std::string fileWith(const std::string& name, std::string_view content) const {
    const std::string path = folder + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  std::string folder;
};

TEST_F(TreeCommand, PrintsFieldsRangesAndText) {
  const auto result = runHost({"tree", fileWith("a.json", "{\"ä\":\n[1]}")});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, R"(document 0..<10 1:1-2:5
  object 0..<10 1:1-2:5
    "{" 0..<1 1:1-1:2
    pair 1..<9 1:2-2:4
      key: string 1..<4 1:2-1:5
        "\"" 1..<2 1:2-1:3
        string_content 2..<3 1:3-1:4 ä
        "\"" 3..<4 1:4-1:5
      ":" 4..<5 1:5-1:6
      value: array 6..<9 2:1-2:4
        "[" 6..<7 2:1-2:2
        number 7..<8 2:2-2:3 1
        "]" 8..<9 2:3-2:4
    "}" 9..<10 2:4-2:5
json: 10 units, 2 lines, 14 nodes, 1.50 ms
)");
}

TEST_F(TreeCommand, MarksErrorsAndWhatIsMissing) {
  const auto missing = runHost({"tree", "-", "--language", "json"}, {.standardInput = "[1"});
  EXPECT_THAT(missing.output, HasSubstr("    MISSING \"]\" 2..<2 1:3-1:3\n"));
  EXPECT_THAT(missing.output, EndsWith("5 nodes, 1 missing, 1.50 ms\n"));
  const auto error =
      runHost({"tree", "-", "--language", "json"}, {.standardInput = "[1}]", .isTerminal = true});
  EXPECT_THAT(error.output, HasSubstr("\x1b[1;31mERROR\x1b[0m"));
  EXPECT_THAT(error.output, HasSubstr("\x1b[1;31m1 error, \x1b[0m"));
  EXPECT_EQ(error.exitCode, 0);
}

TEST_F(TreeCommand, PrintsNestedJSON) {
  const auto result =
      runHost({"tree", "-", "--language=json", "--json"}, {.standardInput = "[\"\x01\""});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(
      result.output,
      R"({"language":"json","units":4,"lines":1,"parseMicroseconds":1500,"tree":)"
      R"({"type":"document","named":true,"range":[0,4],"start":[0,0],"end":[0,4],"children":[)"
      R"({"type":"array","named":true,"range":[0,4],"start":[0,0],"end":[0,4],"children":[)"
      R"({"type":"[","named":false,"range":[0,1],"start":[0,0],"end":[0,1],"children":[]},)"
      R"({"type":"string","named":true,"range":[1,4],"start":[0,1],"end":[0,4],"children":[)"
      R"({"type":"\"","named":false,"range":[1,2],"start":[0,1],"end":[0,2],"children":[]},)"
      R"({"type":"string_content","named":true,"range":[2,3],"start":[0,2],"end":[0,3],"children":[]},)"
      R"({"type":"\"","named":false,"range":[3,4],"start":[0,3],"end":[0,4],"children":[]}]},)"
      R"({"type":"]","named":false,"missing":true,"range":[4,4],"start":[0,4],"end":[0,4],"children":[]}]}]},)"
      R"("nodes":8,"errors":0,"missing":1})"
      "\n");
}

TEST_F(TreeCommand, TreesAsDeepAsTheirTextIsLongArePrinted) {
  const std::string deep = std::string(30'000, '[') + std::string(30'000, ']');
  const std::string path = fileWith("deep.json", deep);
  const auto text = runHost({"tree", path});
  EXPECT_EQ(text.exitCode, 0);
  EXPECT_THAT(text.output,
              HasSubstr("\n" + std::string(120, ' ') + "[30000] array 29999..<30001 "));
  EXPECT_LT(text.output.size(), 25'000'000U);
  const auto json = runHost({"tree", path, "--json"});
  EXPECT_THAT(json.output, EndsWith(R"("nodes":90001,"errors":0,"missing":0})"
                                    "\n"));
}

TEST_F(TreeCommand, NodesWithVeryManyChildrenKeepTheirFields) {
  std::string source = "class Big {\n";
  for (int member = 0; member < 1200; ++member)
    source += "  m() {}\n";
  const auto result = runHost({"tree", fileWith("big.js", source + "}\n")});
  std::int64_t members = 0;
  for (std::size_t at = result.output.find(" member: "); at != std::string::npos;
       at = result.output.find(" member: ", at + 1))
    ++members;
  EXPECT_EQ(members, 1200);
}

struct BadInput {
  const char* name;
  /// Written to a file of this name, unless that is empty.
  std::string filename;
  std::string content;
  /// With "%" for the path in quotation marks.
  std::string errors;
  int exitCode = 0;
  std::vector<std::string> options = {};
};
class TreeCommandInput : public TreeCommand, public ::testing::WithParamInterface<BadInput> {};

TEST_P(TreeCommandInput, GetsASentenceAndAnExitCode) {
  const std::string path = fileWith(GetParam().filename, GetParam().content);
  std::vector<std::string> words = {"tree", path};
  words.insert(words.end(), GetParam().options.begin(), GetParam().options.end());
  const auto result = runHost(words);
  EXPECT_EQ(result.exitCode, GetParam().exitCode);
  EXPECT_EQ(result.output.empty(), GetParam().exitCode != 0);
  std::string expected = GetParam().errors;
  if (const std::size_t at = expected.find('%'); at != std::string::npos)
    expected.replace(at, 1, "“" + path + "”");
  EXPECT_EQ(result.errors, expected);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, TreeCommandInput,
    ::testing::Values(
        BadInput{"Empty", "a.json", "", ""},
        BadInput{"OneBadByte", "a.json", "[\"\xFF\"]",
                 "velmar: Repaired %: 1 piece that isn’t UTF-8 became U+FFFD.\n"},
        BadInput{"BadBytes", "a.json", "\xC3\x28 \xE2\x82",
                 "velmar: Repaired %: 2 pieces that aren’t UTF-8 became U+FFFD.\n"},
        BadInput{"NUL", "a.json", std::string("[1,\0\0 2]", 8),
                 "velmar: Found 2 NUL characters in %; is it text?\n"},
        BadInput{"UnknownExtension", "a.sonnet", "x",
                 "velmar: Could not tell the language of %; name it with --language.\n", 1},
        BadInput{"NoExtension", "sonnet", "x",
                 "velmar: Could not tell the language of %; name it with --language.\n", 1},
        BadInput{"NoGrammarForTheLanguage", "a.txt", "x",
                 "velmar: There is no grammar for the language “plain-text”.\n", 1},
        BadInput{"OptionBeforeName",
                 "a.json",
                 "x",
                 "velmar: There is no grammar for the language “less”.\n",
                 1,
                 {"--language", "less"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(TreeCommand, AFileThatIsNotThere) {
  const auto result = runHost({"tree", folder + "/x.c"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "velmar: Could not open “" + folder + "/x.c”: No such file or directory.\n");
}

TEST_F(TreeCommand, AFolder) {
  const auto result = runHost({"tree", folder});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "velmar: Could not read “" + folder + "”: It is a folder.\n");
}

TEST_F(TreeCommand, AGrammarThatThisBuildLacks) {
  for (const Grammar::BuiltIn builtIn : Grammar::allBuiltIns()) {
    if (Grammar::isAvailable(builtIn))
      continue;
    const std::string id(Grammar::rawValueOf(builtIn));
    const auto result = runHost({"tree", "-", "--language", id}, {.standardInput = "x"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "velmar: The grammar “" + id + "” isn’t part of this build.\n");
  }
}

TEST_F(TreeCommand, AFileThatNoTextCanHold) {
  const std::string path = folder + "/huge.json";
  std::ofstream(path).put('[');
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40); // takes no room on the disk
  const auto result = runHost({"tree", path});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "velmar: Could not read “" + path + "”: It is larger than 3221225469 bytes.\n");
}

/// Reads `content` as standard input with room for `limit` code units.
SourceText readWithLimit(const std::string& content, std::int64_t limit) {
  StringOutput output;
  StringOutput errors;
  const Streams streams{.readInput =
                            [&](std::int64_t) {
                              const auto bytes = bytesOf(content);
                              return Bytes(bytes.begin(), bytes.end());
                            },
                        .output = output,
                        .errors = errors,
                        .now = {}};
  return readSource("-", streams, limit);
}

struct LimitCase {
  const char* name;
  std::string content;
  std::int64_t units;
};
class SourceTextLimit : public ::testing::TestWithParam<LimitCase> {};

TEST_P(SourceTextLimit, CountsCodeUnits) {
  const auto& [name, content, units] = GetParam();
  EXPECT_EQ(readWithLimit(content, units).text->count(), units);
  try {
    (void)readWithLimit(content, units - 1);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.message(), "Could not take in standard input: a text can have " +
                                   std::to_string(units - 1) + " code units at most.");
  }
}
INSTANTIATE_TEST_SUITE_P(Cases, SourceTextLimit,
                         ::testing::Values(LimitCase{"ASCII", "four", 4},
                                           LimitCase{"TwoBytes", "äöü", 3},
                                           LimitCase{"ThreeBytes", "日本", 2},
                                           LimitCase{"FourBytes", "\U0001F600", 2},
                                           LimitCase{"NothingButContinuations", "\x80\x80\x80", 3}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SourceText, LeavesOutAByteOrderMark) {
  EXPECT_EQ(readWithLimit("\xEF\xBB\xBFx", 10).text->substringFor({0, 1}), u"x");
}

TEST(LanguagesCommand, ListsEveryGrammarOnce) {
  const auto result = runHost({"languages"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(std::ranges::count(result.output, '\n'), 37);
  for (const Grammar::BuiltIn builtIn : Grammar::allBuiltIns())
    EXPECT_THAT(result.output, HasSubstr("\n" + std::string(Grammar::rawValueOf(builtIn)) + " "));
  EXPECT_THAT(result.output, ::testing::ContainsRegex("\njson +14  - +- +25 +2 +32  json\n"));
  EXPECT_THAT(result.output,
              ::testing::ContainsRegex("\nembedded_template [^\n]+  html\\+ejs, html\\+erb\n"));
}

} // namespace
} // namespace velmar::host
