// What bracket matching and word lists get to know from the packs: where code ends and text begins.
#include "VelmarParser/Document/Parse.h"
#include "tests/packs/PackLanguages.h"

#include <gtest/gtest.h>

namespace velmar::testing {
namespace {

struct ClassCase {
  const char* name;
  const char* language;
  const char16_t* text;
  /// The character that is asked for stands behind the first one of these, which occurs once.
  const char16_t* before;
  const char* expected;
};
void PrintTo(const ClassCase& row, std::ostream* stream) {
  *stream << row.name;
}

class PackLexicalClass : public ::testing::TestWithParam<ClassCase> {};

TEST_P(PackLexicalClass, IsTheExpectedOne) {
  Parse document(PackLanguages::shared().configuration(GetParam().language));
  document.replaceSubrange({0, 0}, GetParam().text);
  const std::u16string_view before = GetParam().before;
  const auto offset =
      static_cast<std::int64_t>(std::u16string_view(GetParam().text).find(before) + before.size());

  const auto lexicalClass = document.deepestLayerContaining(offset).lexicalSpans()[offset];
  EXPECT_EQ(lexicalClass ? lexicalClass->rawValue() : "", GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PackLexicalClass,
    ::testing::Values(
        ClassCase{"StringInC", "c", u"f(\"(\");", u"\"", "string"},
        ClassCase{"CharacterInC", "c", u"int a = '(';", u"'", "string"},
        ClassCase{"CallInC", "c", u"int a = f(b);", u"f", ""},
        ClassCase{"RawStringInCpp", "cpp", u"auto a = R\"(x()\";", u"x", "string"},
        ClassCase{"MacroBodyIsCode", "cpp", u"#define A(b) f(b) + 1\n", u") f", ""},
        ClassCase{"StringInMacroBody", "cpp", u"#define A(b) f(\"(\", b)\n", u"\"", "string"},
        ClassCase{"KeywordInTemplate", "javascript", u"`a ${typeof b} c`", u"${", "keyword"},
        ClassCase{"SubstitutionIsCode", "javascript", u"`a ${f(b)} c`", u"f", ""},
        ClassCase{"TextBehindSubstitution", "javascript", u"`a ${b} (c`", u"} ", "string"},
        ClassCase{"TemplateType", "typescript", u"type A = `(${B}`;", u"`", "string"},
        ClassCase{"RegularExpression", "javascript", u"a = /b(c)/;", u"b", "regex"},
        ClassCase{"DocComment", "javascript", u"/** @param {a} b (c */", u"b ", "comment"},
        ClassCase{"TypeInDocComment", "javascript", u"/** @param {(a)} b */", u"{", "comment"},
        ClassCase{"ElementText", "javascript", u"a = <b>(c</b>;", u">", ""},
        ClassCase{"KeyInJSON", "json", u"{\"(a\": 1}", u"{\"", "string"},
        ClassCase{"ValueOfAttribute", "html", u"<a title=\"(b\">", u"\"", "string"},
        ClassCase{"HandlerIsCode", "html", u"<a onclick=\"f(b)\">", u"f", ""},
        ClassCase{"CommentInStyle", "html", u"<style>/*(*/</style>", u"/*", "comment"},
        ClassCase{"CodeInFence", "markdown", u"```js\n// (\n```\n", u"// ", "comment"},
        ClassCase{"TextInMarkdown", "markdown", u"a (b) c\n", u"a ", ""}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar::testing
