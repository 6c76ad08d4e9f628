#include "VelmarParser/Structure/Structure.h"

#include "VelmarPlatform/Concurrency/Cancellation.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Joined.h"
#include "tests/Support/Languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <thread>

namespace velmar {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestLanguages;
using Category = ParseQueryCategory;

/// "kind name", with what else there is to say; the text of the name stands in `…` where it
/// differs.
std::string shown(const CodeSymbol& symbol, const Parse& document) {
  std::ostringstream stream;
  stream << symbol.kind << ' ' << symbol.name;
  if (const auto text = utf8RepairingUTF16(document.textFor(symbol.nameRange)); text != symbol.name)
    stream << " `" << text << '`';
  if (symbol.displayName)
    stream << " as " << *symbol.displayName;
  if (symbol.traits.contains(CodeSymbol::Traits::separator))
    stream << " separator";
  if (symbol.traits.contains(CodeSymbol::Traits::functionOrMethod))
    stream << " or method";
  if (symbol.level != 0)
    stream << " level " << symbol.level;
  for (const CodeSymbol::Argument& argument : symbol.arguments)
    stream << " (" << argument.name << (argument.typeName ? ": " + *argument.typeName : "") << ")";
  if (symbol.autoclose)
    stream << " closes " << symbol.autoclose->expression << " with "
           << symbol.autoclose->completion;
  return stream.str();
}

class Outline : public ::testing::Test {
protected:
  /// JavaScript with these structure queries, and JSON inside template strings.
  Parse& open(std::string symbols, std::string folds, std::u16string_view text,
              std::optional<LanguageSyntax::Bookmarks> bookmarks = std::nullopt) {
    const LanguageSyntax syntax{
        .comments = {.single = "//", .multiline = {{.prefix = "/*", .suffix = "*/"}}},
        .bookmarks = std::move(bookmarks),
        .identifiers = {},
        .brackets = {}};
    auto languages = TestLanguages::of(
        {{"javascript",
          {.grammar = Grammar::BuiltIn::javascript,
           .queries =
               {{Category::symbols, std::move(symbols)},
                {Category::folds, std::move(folds)},
                {Category::highlights, "(comment) @comment"},
                {Category::injections,
                 R"(((template_string) @injection.content (#set! "injection.language" "json"))
                           ((comment) @injection.content (#match? @injection.content "^/\\*@")
                                                         (#set! "injection.language" "jsdoc")))"}},
           .named = named,
           .syntax = syntax}},
         {"jsdoc", {.grammar = Grammar::BuiltIn::jsdoc, .queries = {}, .named = {}}},
         {"json",
          {.grammar = Grammar::BuiltIn::json,
           .queries = {{Category::symbols,
                        R"((pair key: (string) @name (#set! "role" "property")) @subtree)"},
                       {Category::folds, R"((object "{" @start "}" @end))"}},
           .named = {}}}});
    document = std::make_unique<Parse>(languages->configuration("javascript"));
    document->setErrorHandler(
        [this](const ParseConfiguration&, std::string_view label, const std::exception& error) {
          errors.push_back(std::string(label) + ": " + error.what());
        });
    document->replaceSubrange({0, 0}, text);
    return *document;
  }

  std::vector<std::string> symbols() {
    std::vector<std::string> lines;
    for (const CodeSymbol& symbol : parseStructure(document->rootLayer()).symbols)
      lines.push_back(shown(symbol, *document));
    return lines;
  }
  /// Level, role and text of each fold.
  std::vector<std::string> folds() {
    std::vector<std::string> lines;
    for (const CodeFoldingRegion& fold : parseStructure(document->rootLayer()).folds)
      lines.push_back(std::to_string(fold.level) + (fold.role ? " " + fold.role->rawValue : "") +
                      ":" + utf8RepairingUTF16(document->textFor(fold.range)));
    return lines;
  }

  std::map<std::string, std::string, std::less<>> named;
  std::unique_ptr<Parse> document;
  std::vector<std::string> errors;
};

struct SymbolsCase {
  const char* name;
  const char* query;
  std::u16string text;
  std::string symbols; ///< Joined, like what follows.
  std::string errors = {};
};
class OutlineOf : public Outline, public ::testing::WithParamInterface<SymbolsCase> {};

TEST_P(OutlineOf, IsTheExpectedOne) {
  named = {{"words", "(identifier) @result"},
           {"nothing", "(number) @result"},
           {"broken", "(identifier @result"},
           {"parameters", R"((formal_parameters (identifier) @name @subtree)
                             (formal_parameters (assignment_pattern left: (identifier) @name
                                                                    right: (_) @type) @subtree)
                             (formal_parameters (rest_pattern) @subtree))"}};
  open(GetParam().query, "", GetParam().text);
  EXPECT_EQ(testing::joined(symbols()), GetParam().symbols);
  EXPECT_EQ(testing::joined(errors), GetParam().errors);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OutlineOf,
    ::testing::Values(
        SymbolsCase{"KindAndName",
                    R"((function_declaration name: (_) @name (#set! "role" "function")) @subtree)",
                    u"function f() { function g() {} }", "function f | function g"},
        SymbolsCase{
            "AFunctionOrMethod",
            R"((function_declaration name: (_) @name (#set! "role" "function-or-method")) @subtree)",
            u"function f() {}", "function f or method"},
        SymbolsCase{"ARoleThatIsMisspelt",
                    R"((function_declaration name: (_) @name (#set! "role" "Function")) @subtree)",
                    u"function f() {}", ""},
        SymbolsCase{"NoRole", R"((function_declaration name: (_) @name) @subtree)",
                    u"function f() {}", ""},
        SymbolsCase{"ARoleWithoutAValue",
                    R"((function_declaration name: (_) @name (#set! "role")) @subtree)",
                    u"function f() {}", ""},
        SymbolsCase{"NoName", R"((function_declaration (#set! "role" "function")) @subtree)",
                    u"function f() {}", ""},
        SymbolsCase{"ANameOfSeveralLines",
                    R"(((sequence_expression) @name @subtree (#set! "role" "expression")))",
                    u"a,\r\n   b;", "expression a, b `a,\r\n   b`"},
        SymbolsCase{"NamesAreTrimmedAndTransformed",
                    R"(((string) @subtree @name (#set! "role" "constant") (#strip! @name "'")))",
                    u"x = 'é'", "constant é `'é'`"},
        SymbolsCase{"ADisplayName", R"((variable_declarator name: (_) @name value: (_) @displayname
                        (#set! "role" "variable")) @subtree)",
                    u"var a = 12", "variable a as 12"},
        SymbolsCase{"NamesFromQueries",
                    R"(((call_expression) @subtree @name.target @displayname.target
                        (#set! "name.query" "words") (#set! "displayname.query" "words")
                        (#set! "role" "expression")))",
                    u"f(a, 1, b)", "expression f a b `f(a, 1, b` as fab"},
        SymbolsCase{"ACapturedNameNeedsNoQuery",
                    R"(((call_expression function: (_) @name) @subtree @name.target
                        (#set! "name.query" "missing") (#set! "role" "expression")))",
                    u"f(a)", "expression f"},
        SymbolsCase{"AnEmptyNameIsNone",
                    R"(((call_expression) @subtree @name.target (#set! "name.query" "nothing")
                        (#set! "role" "expression")))",
                    u"f(a)", ""},
        SymbolsCase{"AQueryThatIsMissing",
                    R"(((call_expression function: (_) @name) @subtree @displayname.target
                        (#set! "displayname.query" "words2") (#set! "role" "expression")))",
                    u"f(a)", "expression f",
                    "words2: Could not find a query named “words2” for the language “javascript”."},
        SymbolsCase{"AQueryThatDoesNotCompile",
                    R"(((call_expression) @subtree @name.target (#set! "name.query" "broken")
                        (#set! "role" "expression")))",
                    u"f(a)", "", "broken: Syntax error in query: (identifier @result"},
        SymbolsCase{"Arguments",
                    R"((function_declaration name: (_) @name parameters: (_) @arguments.target
                        (#set! "arguments.query" "parameters") (#set! "role" "function")) @subtree)",
                    u"function f(a, b = 2, ...c) {}; function g() {}",
                    "function f (a) (b: 2) | function g"},
        SymbolsCase{"Autoclose", R"((function_declaration name: (_) @name (#set! "role" "function")
                        (#set! "autoclose.expression" "x") (#set! "autoclose.completion")) @subtree)",
                    u"function f() {}", "function f closes x with "},
        SymbolsCase{
            "GroupsByName",
            R"(((call_expression function: (identifier) @f arguments: (arguments (string) @name)) @start
                        (#eq? @f "begin") (#set! "role" "block") (#set! "scope.groupByName") (#set! "scope.level" "3"))
                       ((call_expression function: (identifier) @f arguments: (arguments (string) @name)) @end
                        (#eq? @f "end") (#set! "scope.groupByName")))",
            u"begin('a'); begin('b'); end('a'); end('b'); end('a')",
            "block 'a' level 3 | block 'b' level 3"},
        SymbolsCase{"OutlinesOfSublayersInTheirPlace",
                    R"((variable_declarator name: (_) @name (#set! "role" "variable")) @subtree)",
                    u"var a = `{\"x\": 1}`, b", "variable a | property \"x\" | variable b"},
        SymbolsCase{"ABrokenQueryTakesTheSublayersWithIt",
                    R"((variable_declarator name: (_) @name @subtree)", u"var a = `{\"x\": 1}`, b",
                    "", "structure: Syntax error in query: "}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Outline, SymbolsKnowTheirLanguageAndPlace) {
  open(R"((variable_declarator name: (_) @name (#set! "role" "variable")) @subtree)", "",
       u"var a = `{\"x\": 1}`");
  const auto found = parseStructure(document->rootLayer()).symbols;
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].languageID, LanguageID::javascript);
  EXPECT_EQ(found[1].languageID, LanguageID::json);
  EXPECT_EQ(found[1].range, TextRange(10, 16));
  EXPECT_EQ(found[1].nameRange, TextRange(10, 13));
}

TEST_F(Outline, FoldsHaveRolesAndLevels) {
  open("",
       R"(((statement_block "{" @start "}" @end) (#set! "role" "function") (#set! "scope.byLine"))
          ((array) @subtree (#set! "role"))
          ((parenthesized_expression) @subtree))",
       u"if (a\n) {\n  `{\n}`\n}\n// one\n// two\n[1,\n2]; [3]\n");
  EXPECT_THAT(folds(), ElementsAre("0:(a\n)", "0 function:\n  `{\n}`", "1:\n", "0 comment:\n// two",
                                   "0 :[1,\n2]"));
}

struct CommentsCase {
  const char* name;
  std::u16string text;
  std::vector<std::string> folds;
  std::vector<std::string> bookmarks = {};
  std::optional<LanguageSyntax::Bookmarks> syntax = std::nullopt;
};
class CommentsOf : public Outline, public ::testing::WithParamInterface<CommentsCase> {};

TEST_P(CommentsOf, FoldAndMark) {
  open("", "", GetParam().text, GetParam().syntax);
  EXPECT_EQ(folds(), GetParam().folds);
  EXPECT_EQ(symbols(), GetParam().bookmarks);
}

LanguageSyntax::Bookmarks bookmarks(std::string regex, std::int64_t contentCapture) {
  return {.regex = RegularExpression(std::move(regex)), .contentCapture = contentCapture};
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CommentsOf,
    ::testing::Values(
        CommentsCase{"ThreeLines", u"// a\n// b\r\n  // c\nx", {"0 comment:\n// b\r\n  // c"}},
        CommentsCase{"OneLine", u"// a\nx", {}},
        CommentsCase{"ABlankLineParts", u"// a\n\n// b\n// c", {"0 comment:\n// c"}},
        CommentsCase{"CodeInFrontParts", u"// a\nx // b\n// c\n", {"0 comment:\n// c"}},
        CommentsCase{"CodeInFrontOfTheFirst", u"x // a\n// b", {"0 comment:\n// b"}},
        CommentsCase{"ABlockBetween", u"// a\n/* b\nc */\n// d\n", {"0 comment: b\nc "}},
        CommentsCase{"ABlockOfOneLine", u"/* a */ /**/", {}},
        CommentsCase{"ABlockThatIsAllMark", u"/*/ \n /*/", {"0 comment:/ \n /"}},
        CommentsCase{"InASublayer", u"/*@ ! a\n b */", {"0 comment:@ ! a\n b "}},
        CommentsCase{"NoBookmark", u"// Section", {}},
        CommentsCase{
            "ABookmark", u"// ! Section  \nx //!two", {}, {"bookmark Section", "bookmark two"}},
        CommentsCase{"ASeparator",
                     u"// ! - Section\nx // !-",
                     {},
                     {"bookmark Section separator", "bookmark - separator"}},
        CommentsCase{"InABlock", u"/* ! a\n   b */", {"0 comment: ! a\n   b "}, {"bookmark a"}},
        CommentsCase{"AfterALineSeparator", u"// ! a\u2028b", {}, {"bookmark a"}},
        CommentsCase{"ByAPattern",
                     u"// TODO: x y\n\n// !z\n\n// NOTE q",
                     {},
                     {"bookmark x y", "bookmark z"},
                     bookmarks(R"(^TODO:\s*(.*)|NOTE)", 1)},
        CommentsCase{"ByAPatternAndTheDefault",
                     u"// !TODO - a",
                     {},
                     {"bookmark a separator"},
                     bookmarks(R"(TODO (.*))", 1)},
        CommentsCase{"AGroupThatThePatternLacks", u"// !TODO", {}, {}, bookmarks("TODO", 1)},
        CommentsCase{"ANegativeGroup", u"// !TODO", {}, {}, bookmarks("TODO", -1)},
        CommentsCase{"AllOfThePattern", u"// TODO", {}, {"bookmark TODO"}, bookmarks("TODO", 0)}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Outline, NothingIsOutlinedWithoutQueriesOrText) {
  open("", "", u"");
  EXPECT_THAT(symbols(), IsEmpty());
  Parse bare(testing::plainLanguage(Grammar::BuiltIn::json));
  EXPECT_EQ(parseStructure(bare.rootLayer()), Structure());
  bare.replaceSubrange({0, 0}, u"[1]");
  EXPECT_EQ(parseStructure(bare.rootLayer()), Structure());
}

TEST_F(Outline, ACancelledTokenGivesNothing) {
  open(R"((number) @subtree (#set! "role" "constant"))", "", u"// ! a");
  const CancellationToken token;
  token.cancel();
  EXPECT_THROW(static_cast<void>(parseStructure(document->rootLayer(), token)), CancellationError);
}

/// Wherever it is when the token is cancelled: nothing but the error, and the next call is whole.
TEST_F(Outline, CancellingFromAnotherThreadEndsIt) {
  std::u16string text;
  for (int line = 0; line < 20'000; ++line)
    text += u"f(1) // a\n";
  open(R"((call_expression function: (_) @name (#set! "role" "expression")) @subtree)",
       R"((call_expression) @subtree)", text);
  const auto whole = parseStructure(document->rootLayer());
  EXPECT_EQ(whole.symbols.size(), 20'000U);
  for (int round = 0; round < 8; ++round) {
    const CancellationToken token;
    std::atomic<bool> begins = false;
    std::jthread canceller([&] {
      begins.wait(false);
      for (int spin = 0; spin < round * 20'000; ++spin)
        std::atomic_signal_fence(std::memory_order_seq_cst);
      token.cancel();
    });
    begins = true;
    begins.notify_one();
    try {
      EXPECT_EQ(parseStructure(document->rootLayer(), token), whole);
    } catch (const CancellationError&) {
    }
  }
  EXPECT_EQ(parseStructure(document->rootLayer()), whole);
}

} // namespace
} // namespace velmar
