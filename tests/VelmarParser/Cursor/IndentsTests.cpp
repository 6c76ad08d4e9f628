#include "VelmarParser/Cursor/Indents.h"

#include "tests/Support/Languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace velmar {
namespace {

using testing::TestLanguages;
using Category = ParseQueryCategory;

// What a pack has, in small.
constexpr const char* javascript = R"scm(
  [(statement_block) (object) (array) (class_body) (switch_body)] @indent.begin
  [(arguments) (formal_parameters)] @indent.align
  (statement_block "}" @indent.branch) (object "}" @indent.branch) (array "]" @indent.branch)
  (class_body "}" @indent.branch) (switch_body "}" @indent.branch) (arguments ")" @indent.branch)
  ((switch_case) @indent.begin (#set! "indent.open"))
  (if_statement consequence: (_) @indent.begin
    (#not-has-type? @indent.begin "statement_block") (#set! "indent.body"))
  ((lexical_declaration) @indent.begin (#set! "indent.levels" "2"))
  (comment) @indent.auto
  (template_string) @indent.zero
  (labeled_statement) @indent.dedent
  (ERROR ["{" "("] @indent.begin) (ERROR ["}" ")"] @indent.end)
)scm";

/// Each line of the text begins with what it is to get: levels, or the column that it is aligned
/// with behind "@" and the levels behind that, or "=" if it stays; then "|" and the line itself.
struct IndentCase {
  const char* name;
  std::string text;
};
class LineIndents : public ::testing::TestWithParam<IndentCase> {};

std::string shown(const LineIndent& indent, const Parse& document) {
  std::ostringstream stream;
  if (indent.isKept)
    return "=";
  if (!indent.alignedWith)
    return std::to_string(indent.levels);
  stream << '@' << document.text().positionOf(*indent.alignedWith).column;
  if (indent.levelsBehindAlignment > 0)
    stream << '+' << indent.levelsBehindAlignment;
  return stream.str();
}

TEST_P(LineIndents, AreTheExpectedOnes) {
  std::istringstream stream(GetParam().text);
  std::string text;
  std::string expected;
  for (std::string line; std::getline(stream, line);) {
    const auto bar = line.find('|');
    expected += line.substr(0, bar) + "\n";
    text += line.substr(bar + 1) + "\n";
  }
  text.pop_back();
  auto languages = TestLanguages::of(
      {{"html",
        {.grammar = Grammar::BuiltIn::html,
         .queries = {{Category::indents, "(element) @indent.begin (script_element) @indent.begin "
                                         "(end_tag) @indent.branch"},
                     {Category::injections,
                      R"((script_element (raw_text) @injection.content
                          (#set! "injection.language" "javascript")))"}},
         .named = {}}},
       {"javascript",
        {.grammar = Grammar::BuiltIn::javascript,
         .queries = {{Category::indents, javascript}},
         .named = {}}}});
  Parse document(languages->configuration(text.starts_with('<') ? "html" : "javascript"));
  document.replaceSubrange({0, 0}, text);
  std::string found;
  for (const auto& line : document.lines())
    found += shown(lineIndentAt(document, line.range().lowerBound), document) + "\n";
  EXPECT_EQ(found, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LineIndents,
    ::testing::Values(
        IndentCase{"Blocks", "0|function f() {\n1|  if (x) {\n2|    y();\n1|  }\n1|\n0|}\n0|z"},
        IndentCase{"OneLineOpensOneLevel", "0|call({\n1|  a: [\n2|    1\n1|  ]\n0|})"},
        IndentCase{"AlignedArguments", "0|call(a,\n@5|     b, {\n@5+1|       c\n@5|     })"},
        IndentCase{"ArgumentsFromTheNextLineOn", "0|call(\n1|  a,\n1|  b\n0|)"},
        IndentCase{"ABodyWithoutBraces", "0|if (x)\n1|  y();\n0|else z();\n0|if (x) y();\n0|z"},
        IndentCase{"CasesGoOn", "0|switch (x) {\n1|  case 1:\n2|    y();\n2|\n1|  case 2:\n0|}"},
        IndentCase{"SeveralLevels", "0|let x =\n2|    1;\n0|let y = {\n1|  z\n0|};"},
        IndentCase{"CommentsStay", "0|/*\n=| a\n=|*/\n0|x"},
        IndentCase{"Zero", "0|{\n0|`a`;\n1|  x\n0|}"},
        IndentCase{"Dedent", "0|{\n0|a:\n0|  x();\n1|  y\n0|}"}, IndentCase{"Nothing", "0|"},
        // While it is being typed.
        IndentCase{"ABlockThatIsOpen", "0|function f() {\n1|"},
        IndentCase{"TwoBlocksThatAreOpen", "0|function f() {\n1|  if (x) {\n2|    y\n2|"},
        IndentCase{"ACallThatIsOpen", "0|{\n1|  call(\n2|"},
        IndentCase{"AnOpenBlockTakesTheNextBrace",
                   "0|function f() {\n1|  if (x) {\n2|\n1|}\n1|function g() {\n2|  y\n1|}"},
        IndentCase{"AClosingBraceTooMuch", "0|{\n1|  x\n0|}\n0|}\n0|y"},
        IndentCase{"BrokenInside", "0|{\n1|  let = ;\n1|  {\n2|    y\n1|  }\n0|}"},
        // In layers.
        IndentCase{"Elements", "0|<div>\n1|  <p>\n2|    a\n1|  </p>\n0|</div>"},
        IndentCase{"AScript", "0|<div>\n1|  <script>\n2|    {\n3|      x\n2|    }\n1|  "
                              "</script>\n0|</div>"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Indents, AreNothingWithoutAQueryOrWithOneThatFails) {
  for (const char* query : {"", "(nonsense) @indent.begin", "(object) @indent.bgin"}) {
    auto languages = TestLanguages::of({{"json",
                                         {.grammar = Grammar::BuiltIn::json,
                                          .queries = {{Category::indents, query}},
                                          .named = {}}}});
    Parse document(languages->configuration("json"));
    document.replaceSubrange({0, 0}, u"{\n1}");
    EXPECT_EQ(lineIndentAt(document, 2), LineIndent());
    EXPECT_EQ(indentAt(document.rootLayer(), 2), 0);
  }
  Parse document(testing::plainLanguage(Grammar::BuiltIn::json));
  EXPECT_EQ(indentAt(document.rootLayer(), 0), 0);
  EXPECT_DEATH((void)indentAt(document.rootLayer(), 1), "outside the text");
}

} // namespace
} // namespace velmar
