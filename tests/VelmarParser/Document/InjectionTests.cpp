#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Highlight/Highlight.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Joined.h"
#include "tests/Support/Languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmar {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestLanguages;

/// The layers below the root, in order: the language, the text that each covers, and what it is
/// like.
std::vector<std::string> sublayers(const Parse& document) {
  std::vector<std::string> shown;
  for (const Parse::Layer& layer : document.layers()) {
    if (layer.depth() == 0)
      continue;
    std::string text = layer.configuration().id().rawValue + ":";
    for (const TextRange& range : layer.ranges().ranges())
      text += " " + utf8RepairingUTF16(document.textFor(range));
    if (!layer.languageNameRanges().isEmpty())
      text += " named";
    if (layer.isCombined())
      text += " combined";
    if (layer.resetsHighlights())
      text += " reset";
    shown.push_back(text);
  }
  return shown;
}

ParseConfiguration javascriptWith(std::string injections) {
  return TestLanguages::of(
             {{"javascript",
               {.grammar = Grammar::BuiltIn::javascript,
                .queries = {{ParseQueryCategory::injections, std::move(injections)}},
                .named = {}}},
              {"json", {.grammar = Grammar::BuiltIn::json, .queries = {}, .named = {}}},
              {"regex", {.grammar = Grammar::BuiltIn::regex, .queries = {}, .named = {}}}})
      ->configuration("javascript");
}

struct InjectionCase {
  const char* name;
  const char* query;
  std::u16string text;
  std::string layers; ///< Joined.
};
class Injections : public ::testing::TestWithParam<InjectionCase> {};

TEST_P(Injections, GiveTheLayers) {
  Parse document(javascriptWith(GetParam().query));
  document.replaceSubrange({0, 0}, GetParam().text);
  EXPECT_EQ(testing::joined(sublayers(document)), GetParam().layers);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Injections,
    ::testing::Values(
        InjectionCase{
            "ALanguageByName",
            R"((string (string_fragment) @injection.content (#set! "injection.language" "json")))",
            u"f('[1]', '{}')", "json: [1] | json: {}"},
        InjectionCase{
            "ALanguageNamedInTheText",
            R"((pair key: (property_identifier) @injection.language value: (string (string_fragment) @injection.content)))",
            u"x = {json: '[1]', other: '[2]'}", "json: [1] named"},
        InjectionCase{
            "APropertyWinsOverTheText",
            R"((pair key: (property_identifier) @injection.language value: (string (string_fragment) @injection.content)
                          (#set! "injection.language" "regex")))",
            u"x = {json: 'a'}", "regex: a"},
        InjectionCase{
            "BetweenTheDelimiters",
            R"((array "[" @injection.content.start "]" @injection.content.end (#set! "injection.language" "json")))",
            u"x = [1, 2]", "json: 1, 2"},
        InjectionCase{"WithTheDelimiters",
                      R"((array "[" @injection.content.start.before "]" @injection.content.end.after
                          (#set! "injection.language" "json")))",
                      u"x = [1, 2]", "json: [1, 2]"},
        InjectionCase{
            "NodesDecideWhereStartAndEndAreOutOfOrder",
            R"((array "[" @injection.content.end (number) @injection.content "]" @injection.content.start
                          (#set! "injection.language" "json")))",
            u"x = [1]", "json: 1"},
        InjectionCase{"CombinedIntoOneLayer", R"((string (string_fragment) @injection.content
                          (#set! "injection.language" "json") (#set! "injection.combined") (#set! "injection.reset")))",
                      u"f('[1,', '2]')", "json: [1, 2] combined reset"},
        InjectionCase{
            "AFoundTwiceCombinedPlaceIsParsedOnce",
            R"((string (string_fragment) @injection.content (#set! "injection.language" "json") (#set! "injection.combined"))
                         (arguments (string (string_fragment) @injection.content)
                          (#set! "injection.language" "json") (#set! "injection.combined")))",
            u"f('[1]')", "json: [1] combined"},
        InjectionCase{"OneselfInAPart",
                      R"((string (string_fragment) @injection.content (#set! "injection.self")))",
                      u"f('g(1)')", "javascript: g(1)"},
        InjectionCase{"NotOneselfInAll", R"((program) @injection.content (#set! "injection.self"))",
                      u"f(1)", ""},
        InjectionCase{
            "AnUnknownLanguageIsDropped",
            R"((string (string_fragment) @injection.content (#set! "injection.language" "klingon")))",
            u"f('x')", ""},
        InjectionCase{"NothingInAnEmptyPlace",
                      R"((string) @injection.content (#set! "injection.language" "json"))", u"",
                      ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Injection, AnEditInFrontMovesALayerAndLeavesItsTree) {
  Parse document(javascriptWith(
      R"((string (string_fragment) @injection.content (#set! "injection.language" "json")))"));
  document.replaceSubrange({0, 0}, u"f('[1]'); g('[2]')");
  const auto before = document.rootLayer().sublayers();
  const TextRangeSet changed = document.replaceSubrange({0, 0}, u"h();\n");
  EXPECT_EQ(document.rootLayer().sublayers(), before);
  EXPECT_THAT(sublayers(document), ElementsAre("json: [1]", "json: [2]"));
  EXPECT_FALSE(changed.intersectsContentsOf(before[1].ranges().ranges().front()));
}

TEST(Injection, AnEditInsideMakesANewLayerAndReportsIt) {
  Parse document(javascriptWith(
      R"((string (string_fragment) @injection.content (#set! "injection.language" "json")))"));
  document.replaceSubrange({0, 0}, u"f('[1]'); g('[2]')");
  const auto before = document.rootLayer().sublayers();
  const TextRangeSet changed = document.replaceSubrange({4, 5}, u"7");
  const auto now = document.rootLayer().sublayers();
  EXPECT_NE(now[0], before[0]);
  EXPECT_EQ(now[1], before[1]);
  EXPECT_TRUE(TextRangeSet({3, 6}).isSubsetOf(changed));
  EXPECT_FALSE(before[0].parent() == std::nullopt) << "a dropped layer that is held stays readable";
}

TEST(Injection, NestingEndsAtItsLimit) {
  // Only the outermost brackets of a layer inject: were it all of them, layers would double at each
  // depth.
  Parse document(javascriptWith(R"q(
    (program (expression_statement
      (parenthesized_expression "(" @injection.content.start ")" @injection.content.end))
      (#set! "injection.self")))q"));
  document.replaceSubrange({0, 0}, std::u16string(100, u'(') + u"1" + std::u16string(100, u')'));
  std::int64_t deepest = 0;
  for (const Parse::Layer& layer : document.layersIntersecting({100, 101}))
    deepest = std::max(deepest, layer.depth());
  EXPECT_EQ(deepest, 64);
}

struct ErrorCase {
  const char* name;
  TestLanguages::Language root;
  std::string label;
};

TEST(Injection, FailuresReachTheHandlerAndTheRestGoesOn) {
  const auto language = [](std::map<ParseQueryCategory, std::string> queries) {
    return TestLanguages::Language{
        .grammar = Grammar::BuiltIn::javascript, .queries = std::move(queries), .named = {}};
  };
  using enum ParseQueryCategory;
  const ErrorCase cases[] = {
      {"a query that doesn't compile", language({{injections, "(no_such_node) @x"}}), "injections"},
      {"a resolver that throws for a text", language({{injections, "!"}}), "injections"},
      {"a resolver that throws for a language",
       language(
           {{injections,
             R"((string (string_fragment) @injection.content (#set! "injection.language" "!")))"}}),
       "injections"},
      {"highlights that don't compile", language({{highlights, "(string) @string (#eq? @string)"}}),
       "lexicalSpans"},
  };
  for (const auto& [name, root, label] : cases) {
    Parse document(TestLanguages::of({{"root", root}})->configuration("root"));
    std::vector<std::string> heard;
    document.setErrorHandler([&](const ParseConfiguration& configuration, std::string_view what,
                                 const std::exception& error) {
      heard.push_back(configuration.id().rawValue + " " + std::string(what));
      EXPECT_STRNE(error.what(), "");
    });
    document.replaceSubrange({0, 0}, u"f('x')");
    EXPECT_THAT(heard, ElementsAre("root " + label)) << name;
    EXPECT_THAT(sublayers(document), IsEmpty());
    EXPECT_FALSE(document.rootLayer().root()->hasError());
    document.replaceSubrange({0, 0}, u" ");
    EXPECT_EQ(heard.size(), 2U) << name << ": a kept failure is told each time";
  }
}

ParseConfiguration painted(std::string highlights) {
  return TestLanguages::of({{"javascript",
                             {.grammar = Grammar::BuiltIn::javascript,
                              .queries = {{ParseQueryCategory::highlights, std::move(highlights)}},
                              .named = {}}}})
      ->configuration("javascript");
}

std::string shownSpans(const Parse& document, TextRange range) {
  std::string text;
  const HighlightResults results = highlight(document.rootLayer(), range);
  for (const auto& span : results.spans()) {
    const auto& selector = results.captureSelectors()[static_cast<std::size_t>(span.captureIndex)];
    text += utf8RepairingUTF16(document.textFor(span.range)) + "=" + selector->string() +
            (span.reset ? "! " : " ");
  }
  return text;
}

TEST(Highlight, SpansComeInTheOrderToPaintIn) {
  Parse document(painted(R"(
    (call_expression) @call
    (identifier) @b.a
    ((identifier) @low (#set! "priority" "-5"))
    ((identifier) @nonsense (#set! "priority" "abc"))
    (call_expression function: (identifier) @top (#set! "priority" "9"))
    (template_substitution) @embedded
    (identifier) @_hidden)"));
  document.replaceSubrange({0, 0}, u"f(`${g}`)");
  EXPECT_EQ(shownSpans(document, {0, document.count()}),
            "f(`${g}`)=call f=low f=nonsense f=a.b f=top ${g}=embedded! g=low g=nonsense g=a.b ");
  // Whole nodes, though only a part of them was asked for; what only touches the range is left out.
  EXPECT_EQ(shownSpans(document, {1, 2}), "f(`${g}`)=call ");
}

TEST(Highlight, HiddenCapturesAreThereToRead) {
  Parse document(painted(
      R"(((call_expression function: (identifier) @_name) @call (#set! "k" "v") (#set! @_name "own")))"));
  document.replaceSubrange({0, 0}, u"f(1); g(2)");
  const HighlightResults results = highlight(document.rootLayer(), {0, 10});
  ASSERT_EQ(results.matchCount(), 2);
  const auto match = results.match(1);
  EXPECT_EQ(match.metadataFor("k"), "v");
  EXPECT_EQ(match.metadataFor("own"), std::nullopt);
  std::vector<TextRange> names;
  for (const auto& capture : match.capturesNamed("_name")) {
    names.push_back(capture.range);
    EXPECT_EQ(match.metadataFor(capture, "own"), "");
  }
  EXPECT_THAT(names, ElementsAre(TextRange(6, 7)));
}

struct SpanCase {
  std::string query;
  std::u16string text;
  std::string spans; // a letter for each code unit: k, s, c, r or .
};

TEST(LexicalSpans, LaterRangesCoverThoseOfOtherClasses) {
  const SpanCase cases[] = {
      {"(call_expression) @keyword (string) @string", u"f('a', 1)", "kkssskkkk"},
      {"(call_expression) @string (string) @string", u"f('a')", "ssssss"},
      {"(identifier) @variable (comment) @comment.string", u"a /*b*/", "..ccccc"},
      {"(regex) @regex (string) @no-class", u"/a/ + 'x'", "rrr......"},
  };
  for (const auto& [query, text, spans] : cases) {
    Parse document(painted(query));
    document.replaceSubrange({0, 0}, text);
    std::string found;
    for (std::int64_t index = 0; index < document.count(); ++index) {
      const auto lexicalClass = document.rootLayer().lexicalSpans()[index];
      found += lexicalClass ? lexicalClass->rawValue()[0] : '.';
    }
    EXPECT_EQ(found, spans) << query;
  }
}

} // namespace
} // namespace velmar
