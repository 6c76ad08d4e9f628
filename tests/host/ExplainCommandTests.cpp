// Explaining places of a small page, with the tests' own packs. The whole report is written anew,
// to be read as a difference, by
//     VELMAR_REWRITE_GOLDEN=1 build/dev/tests/hostTests --gtest_filter='*Explain*'
#include "cmake/SourceTree.h"
#include "tests/host/RunHost.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using velmar::testing::contentsOf;
using velmar::testing::HostResult;
using velmar::testing::runHost;

const std::string data = sourcePath("tests/host/data/");

HostResult explain(const std::string& place, const std::string& text,
                   const std::string& language = "html") {
  return runHost({"explain", place, "--language", language},
                 {.standardInput = text, .environment = {{"VELMAR_PACKS", data + "packs"}}});
}

struct PlaceCase {
  const char* name;
  /// In the sample page.
  const char* place;
};
class ExplainGolden : public ::testing::TestWithParam<PlaceCase> {};
TEST_P(ExplainGolden, TellsLayersNodesCapturesAndPatterns) {
  const auto result = explain(GetParam().place, contentsOf(data + "sample.html"));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  const std::string path = data + "explain." + GetParam().name + ".txt";
  if (std::getenv("VELMAR_REWRITE_GOLDEN")) // NOLINT(concurrency-mt-unsafe): nobody sets it
    std::ofstream(path, std::ios::binary) << result.output;
  EXPECT_EQ(result.output, contentsOf(path));
}
INSTANTIATE_TEST_SUITE_P(Cases, ExplainGolden,
                         ::testing::Values(PlaceCase{"handler", "-:1:33"},
                                           PlaceCase{"builtin", "-:3:23"},
                                           PlaceCase{"tab", "-:1:50"}),
                         [](const auto& row) { return std::string(row.param.name); });

struct SentenceCase {
  const char* name;
  const char* place;
  int exitCode;
  const char* output;
  const char* errors;
};
class ExplainPlace : public ::testing::TestWithParam<SentenceCase> {};
TEST_P(ExplainPlace, IsFoundOrRefusedWithASentence) {
  const auto result = explain(GetParam().place, "[1,\r\n 22]\n", "json");
  EXPECT_EQ(result.exitCode, GetParam().exitCode);
  EXPECT_THAT(result.output, StartsWith(GetParam().output));
  EXPECT_THAT(result.errors, StartsWith(GetParam().errors));
}
INSTANTIATE_TEST_SUITE_P(
    Cases, ExplainPlace,
    ::testing::Values(
        SentenceCase{"LineAndColumn", "-:2:2", 0, "   22]\n   ^\n\njson  depth 0, ", ""},
        SentenceCase{"LineAlone", "-:2", 0, "   22]\n  ^\n\njson  depth 0, ", ""},
        SentenceCase{"Terminator", "-:1:4", 0, "  [1,\n     ^\n\njson  depth 0, ", ""},
        SentenceCase{"End", "-:3:1", 0, "  \n  ^\n\nThis is the end of the text.\n", ""},
        SentenceCase{"NoPlace", "-", 2, "", "velmar: “-” names no place; write “FILE:LINE:COLUMN”"},
        SentenceCase{"LineZero", "-:0:1", 2, "", "velmar: “-:0:1” names no place;"},
        SentenceCase{"ColumnZero", "-:1:0", 2, "", "velmar: “-:1:0” names no place;"},
        SentenceCase{"NoLine", "-:4", 1, "", "velmar: There is no line 4: the text has 3.\n"},
        SentenceCase{"NoColumn", "-:1:5", 1, "",
                     "velmar: There is no column 5 in line 1, which has 3 units.\n"},
        SentenceCase{"OverflowingLine", "-:99999999999999999999:1", 2, "",
                     "velmar: “-:99999999999999999999:1” names no place;"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ExplainCommand, TheCaptureOnTopComesLast) {
  // All of one node, and two captures of it that differ in priority; around them, from the same
  // place, a longer one.
  const velmar::testing::TemporaryFolder packs;
  packs.write("json/highlights.scm", "((number) @constant (#set! \"priority\" \"1\"))\n"
                                     "(number) @number.simple\n"
                                     "(document) @text\n");
  const auto result =
      runHost({"explain", "-:1:1", "--language", "json"},
              {.standardInput = "12 ", .environment = {{"VELMAR_PACKS", packs.path}}});
  EXPECT_THAT(result.output, HasSubstr("  highlights:\n"
                                       "    @text 1:1-1:4  json/highlights.scm:3\n"
                                       "    @number.simple 1:1-1:3  json/highlights.scm:2\n"
                                       "    @constant 1:1-1:3, priority 1  json/highlights.scm:1\n"
                                       "        (#set! \"priority\" \"1\")\n"
                                       "\n"
                                       "Painted as constant"));
}

TEST(ExplainCommand, NeedsOnePlace) {
  EXPECT_EQ(runHost({"explain"}).exitCode, 2);
  EXPECT_EQ(runHost({"explain", "a:1", "b:1"}).exitCode, 2);
  EXPECT_EQ(runHost({"explain", "/nowhere/a.json:1:1"}).errors,
            "velmar: Could not open “/nowhere/a.json”: No such file or directory.\n");
}

} // namespace
} // namespace velmar::host
