#include "VelmarParser/Cursor/Brackets.h"
#include "VelmarParser/Cursor/Checking.h"
#include "VelmarParser/Cursor/Completion.h"
#include "VelmarParser/Cursor/Tags.h"
#include "VelmarParser/Cursor/Words.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Languages.h"
#include "tests/VelmarParser/Cursor/MarkedText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace velmar {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MarkedText;
using ::testing::StartsWith;
using testing::TestLanguages;
using Category = ParseQueryCategory;
using Queries = std::map<Category, std::string>;

constexpr const char* scripts =
    R"((script_element (raw_text) @injection.content (#set! "injection.language" "javascript")))";

/// HTML with scripts in it, or JavaScript.
class CursorServices : public ::testing::Test {
protected:
  Parse& open(std::string_view language, Queries queries, std::u16string_view text,
              std::optional<std::string> characters = std::nullopt) {
    const LanguageSyntax syntax{
        .comments = {},
        .bookmarks = std::nullopt,
        .identifiers = {.characters = std::move(characters)},
        .brackets = {.pairs = {{U'(', U')'}, {U'[', U']'}, {U'|', U'|'}, {U'\U0001F600', U'!'}}}};
    Queries html = queries;
    html.emplace(Category::injections, scripts);
    if (language == "html")
      queries = {};
    queries.emplace(Category::highlights, "(comment) @comment (string) @string");
    auto languages = TestLanguages::of({
        {"html", {.grammar = Grammar::BuiltIn::html, .queries = html, .named = {}, .syntax = {}}},
        {"javascript",
         {.grammar = Grammar::BuiltIn::javascript,
          .queries = queries,
          .named = {},
          .syntax = syntax}},
    });
    document = std::make_unique<Parse>(languages->configuration(language));
    document->setErrorHandler(
        [this](const ParseConfiguration&, std::string_view label, const std::exception& error) {
          errors.push_back(std::string(label) + ": " + error.what());
        });
    document->replaceSubrange({0, 0}, text);
    return *document;
  }

  std::string textOf(TextRange range) const { return utf8RepairingUTF16(document->textFor(range)); }
  /// The brackets of each depth with their offsets.
  std::vector<std::string> depths() const {
    std::vector<std::string> shown;
    for (const TextRangeSet& set : bracketDepths(*document)) {
      shown.emplace_back();
      for (const TextRange& range : set.ranges())
        shown.back() += textOf(range) + std::to_string(range.lowerBound) + " ";
    }
    return shown;
  }
  std::map<std::string, std::vector<TextRange>> words(TextRange range) const {
    const auto found = identifierWordsIn(*document, range);
    return {found.begin(), found.end()};
  }
  std::vector<std::string> wordList() const {
    std::vector<std::string> list;
    for (const auto& [word, ranges] : words({0, document->count()}))
      list.push_back(word);
    return list;
  }

  std::unique_ptr<Parse> document;
  std::vector<std::string> errors;
};

// Tags.

constexpr const char* tags = R"((element (start_tag (tag_name) @tag.start.name) @tag.start
                                         (end_tag (tag_name) @tag.end.name)? @tag.end))";

struct TagsCase {
  const char* name;
  std::u16string text; // its marks are the name, the tag, the name, the tag
  const char* query = tags;
};
class MatchingTags : public CursorServices, public ::testing::WithParamInterface<TagsCase> {};

TEST_P(MatchingTags, AreThoseOfTheInnermostElementThatIsClosed) {
  const MarkedText marked(GetParam().text);
  open("html", {{Category::tagMatching, GetParam().query}}, marked.text);
  std::vector<Tag> expected;
  if (const auto& ranges = marked.ranges; ranges.size() == 4)
    expected = {{ranges[1], ranges[0]}, {ranges[3], ranges[2]}};
  EXPECT_EQ(matchingTagsAt(document->rootLayer(), marked.cursor), expected);
  EXPECT_THAT(errors, IsEmpty());
}
INSTANTIATE_TEST_SUITE_P(
    Cases, MatchingTags,
    ::testing::Values(TagsCase{"AtTheOpeningOne", u"<p>«<«a¦bc»>»x«</«abc»>»</p>"},
                      TagsCase{"InTheContents", u"<p>«<«abc»>»¦x«</«abc»>»</p>"},
                      TagsCase{"AtTheEndOfTheText", u"<p></p>«<«b»>»x«</«b»>»¦"},
                      TagsCase{"AroundOneThatIsNotClosed", u"«<«div»>»<p>a¦b«</«div»>»"},
                      TagsCase{"NothingClosed", u"<div>a¦b"}, TagsCase{"NothingThere", u"ab¦c"},
                      TagsCase{"NoText", u"¦"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(CursorServices, ATagOfANameAloneIsThatName) {
  open("html",
       {{Category::tagMatching,
         "(element (start_tag (tag_name) @tag.start.name) (end_tag) @tag.end)"}},
       u"<b>x</b>");
  EXPECT_THAT(matchingTagsAt(document->rootLayer(), 3),
              ElementsAre(Tag{{1, 2}, TextRange(1, 2)}, Tag{{4, 8}, std::nullopt}));
}

TEST_F(CursorServices, TagsNeedAQueryThatCompiles) {
  open("html", {}, u"<b>x</b>");
  EXPECT_THAT(matchingTagsAt(document->rootLayer(), 3), IsEmpty());
  EXPECT_THAT(errors, IsEmpty());
  open("html", {{Category::tagMatching, "(element"}}, u"<b>x</b>");
  EXPECT_THAT(matchingTagsAt(document->rootLayer(), 3), IsEmpty());
  EXPECT_THAT(errors, ElementsAre(StartsWith("tagMatching: ")));
  EXPECT_DEATH((void)matchingTagsAt(document->rootLayer(), 9), "outside the text");
}

// Brackets.

struct BracketsCase {
  const char* name;
  const char* language;
  std::u16string text;
  std::vector<std::string> depths;
};
class BracketDepths : public CursorServices, public ::testing::WithParamInterface<BracketsCase> {};

TEST_P(BracketDepths, CountEachKindForItself) {
  open(GetParam().language, {}, GetParam().text);
  EXPECT_EQ(depths(), GetParam().depths);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, BracketDepths,
    ::testing::Values(
        BracketsCase{"TwoKinds", "javascript", u"(a[b]c)", {"(0 [2 ]4 )6 "}},
        BracketsCase{"Deeper", "javascript", u"((a),\n [[\n]]", {"(0 [7 ]11 ", "(1 )3 [8 ]10 "}},
        BracketsCase{"StrayClosing", "javascript", u")](a)", {"(2 )4 "}},
        BracketsCase{"NotInWhatHasAClass", "javascript", u"f('(') /* ( */ // [", {"(1 )5 "}},
        BracketsCase{"EqualSidesAreNone", "javascript", u"a | b | !c", {}},
        BracketsCase{"ClosedAndOpenedAtOnce", "javascript", u"(a)(b)", {"(0 )(2 )5 "}},
        BracketsCase{"EachLayerForItself",
                     "html",
                     u"(<script>(a</script>[<script>[b)]</script>",
                     {"(9 [29 ]32 "}},
        BracketsCase{"NoText", "javascript", u"", {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(CursorServices, BracketsOfAnInnerLayerStandInOrder) {
  open("javascript", {{Category::injections, R"(((template_string) @injection.content
      (#set! "injection.language" "javascript") (#set! "injection.include-children")))"}},
       u"f(`g((1))`, (2));");
  EXPECT_EQ(bracketDepths(*document)[0].ranges().size(), 4U);
  document->checkInvariants();
}

TEST_F(CursorServices, BracketsGoOnThroughACombinedLayer) {
  open("html", {{Category::injections, R"(((raw_text) @injection.content
           (#set! "injection.language" "javascript") (#set! "injection.combined")))"}},
       u"<script>(a</script>)<script>b)</script>");
  EXPECT_THAT(depths(), ElementsAre("(8 )29 "));
}

// Words.

struct WordsCase {
  const char* name;
  std::u16string text;
  std::optional<std::string> characters;
  std::vector<std::string> words;
};
class IdentifierWords : public CursorServices, public ::testing::WithParamInterface<WordsCase> {};

TEST_P(IdentifierWords, AreFound) {
  open("javascript", {}, GetParam().text, GetParam().characters);
  EXPECT_EQ(wordList(), GetParam().words);
}
/// The same text behind a line that isn't ASCII, which is read by regular expressions.
TEST_P(IdentifierWords, AreTheSameInAnyText) {
  std::u16string text = GetParam().text;
  for (char16_t& unit : text)
    unit = unit == u' ' ? u'\u2003' : unit;
  open("javascript", {}, text, GetParam().characters);
  EXPECT_EQ(wordList(), GetParam().words);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, IdentifierWords,
    ::testing::Values(
        WordsCase{
            "Plain", u"foo-bar $baz _x\nnext", std::nullopt, {"_x", "bar", "baz", "foo", "next"}},
        WordsCase{"WithADash", u"foo-bar -", "-", {"foo-bar"}},
        WordsCase{"WithACaret", u"a^b", "^$", {"a^b"}},
        WordsCase{"NoNumbersAndNoSingleLetters", u"x 42 3.14 a1 4b", ".", {"4b", "a1"}},
        WordsCase{"NotInComments", u"one; 'two' // three\nfour", std::nullopt, {"four", "one"}},
        WordsCase{"NonsenseInBrackets", u"ab cd", "[", {"ab", "cd"}},
        WordsCase{"ASetInBrackets", u"ab.cd", "[.]", {"ab.cd"}},
        WordsCase{
            "OtherLetters", u"größe ñ πρ e\u0301 日本", std::nullopt, {"größe", "πρ", "日本"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(CursorServices, WordsHaveTheirPlacesInOrder) {
  open("javascript", {}, u"ab(cd,\nab) + größe + ab");
  EXPECT_THAT(words({0, 1})["ab"],
              ElementsAre(TextRange(0, 2), TextRange(7, 9), TextRange(21, 23)));
  EXPECT_THAT(words({0, 1})["größe"], ElementsAre(TextRange(13, 18)));
}

TEST_F(CursorServices, WordsAreThoseOfTheLayersInTheRange) {
  open("html", {}, u"<p>text</p><script>var abc</script><script>def</script>");
  EXPECT_FALSE(words({0, 5}).contains("abc"));
  EXPECT_TRUE(words({0, 5}).contains("text"));
  EXPECT_TRUE(words({20, 21}).contains("text"));
  EXPECT_TRUE(words({20, 21}).contains("abc"));
  EXPECT_FALSE(words({20, 21}).contains("def"));
}

// Prose and colours.

TEST_F(CursorServices, ProseIsWhatCommentsSayUnlessAQueryKnowsBetter) {
  const auto prose = [&](TextRange range) {
    std::vector<std::string> texts;
    const auto set = textCheckingRangesIntersecting(document->rootLayer(), range);
    for (const TextRange& each : set.ranges())
      texts.push_back(textOf(each));
    return texts;
  };
  open("javascript", {}, u"a /* one */ 'two' // three");
  EXPECT_THAT(prose({0, 100}), ElementsAre("/* one */", "// three"));
  EXPECT_THAT(prose({4, 9}), ElementsAre(" one "));
  EXPECT_THAT(prose({26, 26}), IsEmpty());
  open("javascript", {{Category::textChecking, "(string_fragment) @subtree"}},
       u"a /* one */ 'two' // three");
  EXPECT_THAT(prose({0, 26}), ElementsAre("two"));
  EXPECT_THAT(prose({14, 15}), ElementsAre("two"));
  EXPECT_THAT(prose({0, 5}), IsEmpty());
  open("javascript", {{Category::textChecking, "(string_fragmnt) @subtree"}}, u"a /* one */");
  EXPECT_THAT(prose({0, 11}), ElementsAre("/* one */"));
  EXPECT_THAT(errors, ElementsAre(StartsWith("textChecking: ")));
}

TEST_F(CursorServices, ColoursAreWhatTheQueryDeclares) {
  open("javascript", {{Category::colors, R"(((string_fragment) @subtree
                                             (#match? @subtree "^#")))"}},
       u"f('#fff', 'a', '#123')");
  EXPECT_THAT(colorCandidatesIn(document->rootLayer(), {0, 22}),
              ElementsAre(TextRange(3, 7), TextRange(16, 20)));
  EXPECT_THAT(colorCandidatesIn(document->rootLayer(), {0, 10}), ElementsAre(TextRange(3, 7)));
  open("javascript", {}, u"f('#fff')");
  EXPECT_THAT(colorCandidatesIn(document->rootLayer(), {0, 9}), IsEmpty());
}

// Completion.

struct CompletionCase {
  const char* name;
  const char* query;
  std::u16string text;
  bool applies;
  CompletionVariables variables = {};
  std::vector<std::string> errors = {};
};
class CompletionQuery : public CursorServices,
                        public ::testing::WithParamInterface<CompletionCase> {};

TEST_P(CompletionQuery, TellsWhetherItAppliesAndWhatItFound) {
  const MarkedText marked(GetParam().text);
  open("javascript", {}, marked.text);
  const auto query = document->rootLayer().configuration().anonymousQueryFor(GetParam().query);
  CompletionVariables variables;
  EXPECT_EQ(matchesCompletionQuery(document->rootLayer(), query, marked.cursor, variables),
            GetParam().applies);
  EXPECT_EQ(variables, GetParam().variables);
  EXPECT_EQ(errors, GetParam().errors);
}
constexpr const char* argument = R"((call_expression function: (_) @name
    arguments: (arguments (_) @argument) (#cursor-in? @argument)))";
constexpr const char* between = R"scm((arguments "(" @provider.start ")" @provider.end) @_all)scm";
INSTANTIATE_TEST_SUITE_P(
    Cases, CompletionQuery,
    ::testing::Values(
        CompletionCase{"AtTheEndOfTheNode",
                       argument,
                       u"f(one¦, two)",
                       true,
                       {{"name", "f"}, {"argument", "one"}}},
        CompletionCase{
            "InTheOther", argument, u"f(one, t¦wo)", true, {{"name", "f"}, {"argument", "two"}}},
        CompletionCase{"Outside", argument, u"f(one) + ¦2", false},
        CompletionCase{"BetweenBothEnds", between, u"f(a¦)", true},
        CompletionCase{"NotInFront", between, u"f¦(a)", false},
        CompletionCase{"NotBehind", between, u"f(a)¦", false},
        CompletionCase{"BothEndsTakenIn",
                       R"scm((arguments "(" @provider.start.before ")" @provider.end.after))scm",
                       u"f(a)¦", true},
        CompletionCase{"AnEndAlone", R"((arguments "(" @provider.end))", u"f(a¦)", true},
        CompletionCase{"AnUnknownRole", R"((arguments "(" @provider.strat))", u"f(a¦)", true},
        CompletionCase{"Subtree", "(string) @provider.subtree", u"f('a¦')", true},
        CompletionCase{"NoVariableWithAnUnderscore", "(identifier) @_x", u"a¦", true},
        CompletionCase{"AFilterSeesOnlyWhereTheCursorIs",
                       R"((program (expression_statement)+ @a (#cursor-in? @a)
                                                              (#eq? @a "two;")))",
                       u"one; tw¦o;",
                       true,
                       {{"a", "two;"}}},
        CompletionCase{"AFilterThatFails", R"(((identifier) @a (#eq? @a "b")))", u"a¦", false},
        CompletionCase{"APropertyThatIsMissing", R"(((identifier) @a (#is? "b")))", u"a¦", false},
        CompletionCase{"APropertyThatIsSet",
                       R"(((identifier) @a (#set! "b") (#is? "b")))",
                       u"a¦",
                       true,
                       {{"a", "a"}}},
        CompletionCase{"VariablesOfAMatchThatFailsStay",
                       R"((call_expression function: (identifier) @name
                           arguments: (arguments "(" @provider.start.before) @provider.end))",
                       u"f(a¦)",
                       true,
                       {{"name", "f"}}},
        CompletionCase{"NoCapture",
                       R"(((identifier) @a (#cursor-in? "a")))",
                       u"a¦",
                       false,
                       {},
                       {"predicates: Usage: (#cursorIn capture)."}},
        CompletionCase{"NoText", "(program) @p", u"¦", false},
        CompletionCase{"AtTheStart", "(identifier) @a", u"¦abc", true, {{"a", "abc"}}},
        CompletionCase{
            "Broken", argument, u"f(one, tw¦;\n", true, {{"name", "f"}, {"argument", "tw"}}}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
