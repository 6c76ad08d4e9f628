// The commands on places of a cursor, with the packs of the house.
#include "cmake/SourceTree.h"
#include "tests/host/RunHost.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;
using velmar::testing::HostResult;
using velmar::testing::runHost;
using velmar::testing::wordsOf;

HostResult run(std::vector<std::string> words, std::string language, std::string text,
               bool isTerminal = false) {
  words.insert(words.end(), {"--language", std::move(language)});
  return runHost(words, {.standardInput = std::move(text),
                         .isTerminal = isTerminal,
                         .environment = {{"VELMAR_PACKS", sourcePath("packs")}}});
}

struct OutputCase {
  const char* name;
  const char* words; ///< A blank between them.
  const char* language;
  const char* text;
  const char* output;
};
void PrintTo(const OutputCase& row, std::ostream* stream) {
  *stream << row.name;
}
class CursorCommand : public ::testing::TestWithParam<OutputCase> {};

TEST_P(CursorCommand, Prints) {
  const OutputCase& row = GetParam();
  const HostResult result = run(wordsOf(row.words), row.language, row.text);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, row.output);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CursorCommand,
    ::testing::Values(
        OutputCase{"Tags", "tags -:1:5", "html", "<b><i>x</i></b>",
                   "1:4-1:7  <i>\n1:8-1:12  </i>\n"},
        OutputCase{"NoTags", "tags -:1:1", "html", "x<br>", "No two tags belong to this place.\n"},
        OutputCase{"TagsOfJSX", "tags -:1:2", "javascript", "(<A.b>x</A.b>)",
                   "1:2-1:7  <A.b>\n1:8-1:14  </A.b>\n"},
        OutputCase{"Brackets", "brackets -", "javascript", "f((a[0])); // )\n",
                   "f((a[0])); // )\n 01 0 010\n"},
        OutputCase{"Words", "words -", "javascript", "ab(ab, c, $d1); // ab\n",
                   "1 $d1  1:11-1:14\n2 ab  1:1-1:3, 1:4-1:6\n"},
        OutputCase{"Colors", "colors -", "css",
                   "a { color: #fff; background: rgb(1, 2, 3) url(x); border: solid red }",
                   "1:12-1:16  #fff\n1:30-1:42  rgb(1, 2, 3)\n1:65-1:68  red\n"},
        OutputCase{"ProseOfCode", "prose -", "c", "int a; /* Two\nlines. */\n",
                   "1:8-2:10  /* Two↵lines. */\n"},
        OutputCase{"ProseOfMarkdown", "prose -", "markdown", "Use `f(x)` often.\n",
                   "1:1-1:5  Use \n1:11-1:18   often.\n"},
        OutputCase{"Indent", "indent -", "javascript", "if (a) {\n  b();\n    c();\n}\n",
                   "3: 4 → 2      c();\n3 of 4 lines agree (75.0 %), 2 columns to a level.\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CursorCommand, PaintsBracketsOnATerminal) {
  EXPECT_THAT(run({"brackets", "-"}, "json", "[]", true).output,
              HasSubstr("\x1b[1;38;5;33m[\x1b[m"));
}

TEST(CursorCommand, CompletesWithinAnAttribute) {
  const velmar::testing::TemporaryFolder folder;
  const std::string query = folder.write("class.scm", "((attribute (attribute_name) @name "
                                                      "(quoted_attribute_value) @provider.subtree) "
                                                      "(#cursor-in? @provider.subtree))");
  const std::string page = "<b class='x'>y</b>";
  EXPECT_EQ(run({"complete", "-:1:12", "--query", query}, "html", page).output,
            "The query applies here, in html.\n  name = class\n");
  EXPECT_EQ(run({"complete", "-:1:15", "--query", query}, "html", page).output,
            "The query doesn’t apply here, in html.\n");
  const auto misspelt =
      run({"complete", "-:1:2", "--query", folder.write("bad.scm", "(atribute)")}, "html", page);
  EXPECT_EQ(misspelt.exitCode, 1);
  EXPECT_THAT(misspelt.errors, HasSubstr("atribute"));
}

TEST(CursorCommand, TellsWhatIsMissing) {
  const HostResult noQuery = run({"complete", "-:1:1"}, "json", "[]");
  EXPECT_EQ(noQuery.exitCode, 2);
  EXPECT_THAT(noQuery.errors, HasSubstr("needs “--query QUERY.scm”"));
  EXPECT_THAT(run({"indent", "-", "--width", "0"}, "json", "[]").errors,
              HasSubstr("a number from 1 to 16"));
  EXPECT_THAT(run({"tags", "-"}, "json", "[]").errors, HasSubstr("names no place"));
}

} // namespace
} // namespace velmar::host
