// What is answered at the cursor while somebody types: never a failure, and the same as in a
// document that was opened with that text.
#include "VelmarParser/Cursor/Brackets.h"
#include "VelmarParser/Cursor/Indents.h"
#include "VelmarParser/Cursor/Words.h"
#include "VelmarParser/Structure/Structure.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Oracle.h"
#include "tests/packs/PackLanguages.h"

#include <gtest/gtest.h>

namespace velmar::testing {
namespace {

struct TypingCase {
  const char* language;
  const char* text;
};
class Typing : public ::testing::TestWithParam<TypingCase> {};

std::vector<LineIndent> indentsOf(const Parse& document) {
  std::vector<LineIndent> indents;
  for (const auto& line : document.lines())
    indents.push_back(lineIndentAt(document, line.range().lowerBound));
  return indents;
}

TEST_P(Typing, GivesTheAnswersOfAFreshDocument) {
  const auto configuration = PackLanguages::shared().configuration(GetParam().language);
  Parse document(configuration);
  std::u16string text = utf16RepairingUTF8(GetParam().text);
  document.replaceSubrange({0, 0}, text);
  RandomTyping typing(7, {u"a",    u" ",  u"\n",      u"(",      u")",         u"{",
                          u"}",    u"[",  u"]",       u"<",      u">",         u"\"",
                          u"/*",   u"*/", u"case 1:", u"if (a)", u"else",      u"<p>",
                          u"</p>", u"# ", u"- ",      u"`${",    u"class A {", u"\U0001F600"});
  int compared = 0;
  for (int step = 0; step < 150; ++step) {
    SCOPED_TRACE(step);
    const RandomEdit edit = typing.next(text);
    text.replace(static_cast<std::size_t>(edit.range.lowerBound),
                 static_cast<std::size_t>(edit.range.length()), edit.text);
    document.replaceSubrange(edit.range, edit.text);
    const auto indents = indentsOf(document);
    for (const LineIndent& indent : indents) {
      EXPECT_GE(indent.levels, indent.levelsBehindAlignment);
      EXPECT_LE(indent.levels, document.text().lineCount());
      EXPECT_LE(indent.alignedWith.value_or(0), document.count());
    }
    Parse fresh(configuration);
    fresh.replaceSubrange({0, 0}, text);
    if (!documentDifference(document, fresh).empty())
      continue; // the runtime may mend a broken text in another way when it has seen it before
    ++compared;
    EXPECT_EQ(indents, indentsOf(fresh));
    EXPECT_EQ(bracketDepths(document), bracketDepths(fresh));
    EXPECT_EQ(identifierWordsIn(document, {0, document.count()}),
              identifierWordsIn(fresh, {0, fresh.count()}));
    EXPECT_EQ(parseStructure(document.rootLayer()), parseStructure(fresh.rootLayer()));
  }
  EXPECT_GT(compared, 50);
}

INSTANTIATE_TEST_SUITE_P(
    Languages, Typing,
    ::testing::Values(
        TypingCase{"cpp",
                   "namespace a {\nclass B : C {\npublic:\n  int f(int x,\n        int y) {\n"
                   "    switch (x) {\n    case 1:\n      return y;\n    }\n  }\n};\n}\n"},
        TypingCase{"javascript", "// one\n// two\nclass A {\n  f(a, b) {\n    if (a)\n      g([\n"
                                 "        1\n      ]);\n  }\n}\n"},
        TypingCase{"html", "<!DOCTYPE html>\n<p id=\"a\">1 < 2\n<script>\n  f({\n    a: 1\n  })\n"
                           "</script>\n<style>\n  p { color: red }\n</style>\n"},
        TypingCase{"markdown", "# A\n\n- one\n  - two\n\n```js\nf({\n  a\n})\n```\n\n## B\n"},
        TypingCase{"css",
                   "/* a */\np > a {\n  color: red;\n}\n@media print {\n  a { top: 0 }\n}\n"}),
    [](const auto& row) { return std::string(row.param.language); });

} // namespace
} // namespace velmar::testing
