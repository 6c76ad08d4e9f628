#include "VelmarParser/Query/PredicateEvaluation.h"

#include "tests/Support/Joined.h"
#include "tests/VelmarParser/Query/QueryTesting.h"

#include <map>

namespace velmar {

namespace {

using testing::ParsedText;
using Texts = std::vector<std::string>;

constexpr auto json = Grammar::BuiltIn::json;
constexpr auto javascript = Grammar::BuiltIn::javascript;
constexpr auto c = Grammar::BuiltIn::c;

struct FilterCase {
  const char* name;
  const char* source;
  const char* query;
  std::string survivors; ///< Joined.
  Grammar::BuiltIn language = json;
};
class FilterKeeps : public ::testing::TestWithParam<FilterCase> {};

TEST_P(FilterKeeps, TheMatchesThatPass) {
  const ParsedText parsed(GetParam().language, GetParam().source);
  EXPECT_EQ(testing::joined(parsed.survivors(GetParam().query)), GetParam().survivors);
}

INSTANTIATE_TEST_SUITE_P(
    Text, FilterKeeps,
    ::testing::Values(
        FilterCase{"Equals", "[1, 2, 12]", "((number) @x (#eq? @x \"1\"))", "1"},
        FilterCase{"EqualsOneOfSeveral", "[1, 2, 3]", "((number) @x (#eq? @x 3 1))", "1 | 3"},
        FilterCase{"NotEquals", "[1, 2, 3]", "((number) @x (#not-eq? @x 3 1))", "2"},
        FilterCase{"EqualsBeyondASCII", "größe; 日本; a",
                   "((identifier) @x (#eq? @x \"größe\" \"日本\"))", "größe | 日本", javascript},
        FilterCase{"EqualsCapture", "a = a; b = a;",
                   "(assignment_expression left: (_) @x right: (_) @y (#eq? @x @y))", "a",
                   javascript},
        FilterCase{"NotEqualsCapture", "a = a; b = a;",
                   "(assignment_expression left: (_) @x right: (_) @y (#not-eq? @x @y))", "b",
                   javascript},
        FilterCase{"EqualsOverLines", "f(`a\nb`, `a\nc`)",
                   "((template_string) @x (#eq? @x \"`a\\nb`\"))", "`a\nb`", javascript},
        FilterCase{"EqualsOtherNodeOverLines", "`a\nb` == `a\nb`; `a\nb` == `a\nc`",
                   "(binary_expression left: (_) @x right: (_) @y (#eq? @x @y))", "`a\nb`",
                   javascript},
        FilterCase{"AnyOfTheNodesOfTheOtherCapture", "[1, 2, \"2\", 1, 1, \"2\"]",
                   "(array (number) @y . (number) @y . (string (string_content) @x) (#eq? @x @y))",
                   "2"},
        FilterCase{"Contains", "[123, 45, 23]", "((number) @x (#contains? @x \"23\"))", "123 | 23"},
        FilterCase{"ContainsNot", "[123, 45, 23]", "((number) @x (#not-contains? @x 4 12))", "23"},
        FilterCase{"ContainsTheEmptyText", "[1]", "((number) @x (#contains? @x \"\"))", "1"},
        FilterCase{"ContainsCapture", "abc = b; abc = d;",
                   "(assignment_expression left: (_) @x right: (_) @y (#contains? @x @y))", "abc",
                   javascript},
        FilterCase{"Matches", "[1, 22, 333]", "((number) @x (#match? @x \"^(.)\\\\1+$\"))",
                   "22 | 333"},
        FilterCase{"MatchesLiterally", "int if_, iff; if (a) b;",
                   "((identifier) @x (#match? @x \"^(if_|b)$\"))", "if_ | b", c},
        FilterCase{"MatchesNot", "[1, 22, 333]", "((number) @x (#not-match? @x \"3\"))", "1 | 22"},
        FilterCase{"MatchesOverLines", "`a\nb`; `c`",
                   "((template_string) @x (#match? @x \"a\\nb\"))", "`a\nb`", javascript},
        FilterCase{"SeveralFilters", "[1, 12, 123]",
                   "((number) @x (#match? @x 1) (#match? @x 2) (#not-eq? @x 12))", "123"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Quantifiers, FilterKeeps,
    ::testing::Values(
        FilterCase{"AllNodesMustPass", "[[1, 1], [1, 2], [2, 2]]",
                   "(array . (number) @x (number) @x . (#eq? @x 1))", "1,1"},
        FilterCase{"OneNodeMustPass", "[[1, 1], [1, 2], [2, 2]]",
                   "(array . (number) @x (number) @x . (#any-eq? @x 1))", "1,1 | 1,2"},
        FilterCase{"AllNodesMustFail", "[[1, 1], [1, 2], [2, 2]]",
                   "(array . (number) @x (number) @x . (#not-eq? @x 1))", "2,2"},
        FilterCase{"OneNodeMustFail", "[[1, 1], [1, 2], [2, 2]]",
                   "(array . (number) @x (number) @x . (#any-not-eq? @x 1))", "1,2 | 2,2"},
        FilterCase{"NoNodesPass", "[null]", "(array . (number)? @y (null) @x (#eq? @y 1))", "null"},
        FilterCase{"NoNodesPassNegated", "[null]",
                   "(array . (number)? @y (null) @x (#not-eq? @y 1))", "null"},
        FilterCase{"NoNodesAreNotAny", "[null]", "(array . (number)? @y (null) @x (#any-eq? @y 1))",
                   ""},
        FilterCase{"NoNodesAreNotAnyNegated", "[null]",
                   "(array . (number)? @y (null) @x (#any-not-eq? @y 1))", ""}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Structure, FilterKeeps,
    ::testing::Values(
        FilterCase{"HasType", "[1, null, true]", "(array (_) @x (#has-type? @x number true))",
                   "1 | true"},
        FilterCase{"HasNotType", "[1, null, true]",
                   "(array (_) @x (#not-has-type? @x number true))", "null"},
        FilterCase{"HasTypeAnonymous", "[1]", "(array _ @x (#has-type? @x \"[\" \"]\"))", "[ | ]"},
        FilterCase{"HasParent", "[1, {\"a\": 2}]", "((number) @x (#has-parent? @x array))", "1"},
        FilterCase{"HasNotParent", "[1, {\"a\": 2}]", "((number) @x (#not-has-parent? @x array))",
                   "2"},
        FilterCase{"TheRootHasNoParent", "1", "((document) @x (#has-parent? @x document))", ""},
        FilterCase{"TheRootHasNotAParent", "1", "((document) @x (#not-has-parent? @x document))",
                   "1"},
        FilterCase{"HasAncestor", "[1, {\"a\": [2]}]", "((number) @x (#has-ancestor? @x pair))",
                   "2"},
        FilterCase{"HasAncestorFarAway", "[[[[[3]]]]]",
                   "((number) @x (#has-ancestor? @x nothing document))", "3"},
        FilterCase{"IsNotItsOwnAncestor", "[[1]]", "((array) @x (#has-ancestor? @x array))", "[1]"},
        FilterCase{"HasNotAncestor", "[1, {\"a\": [2]}]",
                   "((number) @x (#not-has-ancestor? @x pair))", "1"},
        FilterCase{"HasParentField", "{\"a\": \"b\"}",
                   "((string) @x (#has-parent-field? @x value))", "\"b\""},
        FilterCase{"HasNotParentField", "{\"a\": \"b\"}",
                   "((string) @x (#not-has-parent-field? @x value))", "\"a\""},
        FilterCase{"WithoutFields", "[\"a\"]", "((string) @x (#not-has-parent-field? @x value))",
                   "\"a\""},
        FilterCase{"TheRootHasNoField", "1", "((document) @x (#has-parent-field? @x value))", ""},
        FilterCase{"FieldOfAnAnonymousNode", "int a = 1 + 2;",
                   "(binary_expression _ @x (#has-parent-field? @x operator))", "+", c},
        FilterCase{"HasAncestorField", "{\"a\": [1, {\"b\": 2}], \"c\": 3}",
                   "((number) @x (#has-ancestor-field? @x value))", "1 | 2 | 3"},
        FilterCase{"HasAncestorFieldOneOfSeveral", "function f(a) { g(b); }",
                   "((identifier) @x (#has-ancestor-field? @x parameters function))", "a | g",
                   javascript},
        FilterCase{"HasNotAncestorField", "[1, {\"b\": 2}]",
                   "((number) @x (#not-has-ancestor-field? @x value))", "1"},
        FilterCase{"Nth", "[10, 20, 30]", "((number) @x (#nth? @x 1))", "20"},
        FilterCase{"NthFromTheEnd", "[10, 20, 30]", "((number) @x (#nth? @x -1))", "30"},
        FilterCase{"NthBeyondTheEnd", "[10, 20, 30]", "((number) @x (#nth? @x 3))", ""},
        FilterCase{"NthBeforeTheStart", "[10, 20, 30]", "((number) @x (#nth? @x -4))", ""},
        FilterCase{"NotNth", "[10, 20, 30]", "((number) @x (#not-nth? @x -4))", "10 | 20 | 30"},
        FilterCase{"OnlyNamedChildrenCount", "[10]", "(array _ @x (#nth? @x 0))", "10"},
        FilterCase{"TheRootIsNoChild", "1", "((document) @x (#nth? @x 0))", ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PredicateEvaluation, HiddenNodesAreAsIfNotThere) {
  const ParsedText parsed(json, "[1, 2, 3]");
  const auto query = parsed.query("(array (number) @a (number) @a (number) @b (#eq? @a 1) "
                                  "(#any-eq? @a 2) (#eq? @a @b) (#any-eq? @a 9))");
  std::vector<Query::Match> matches;
  for (const Query::Match& match : query->matchesIn(parsed.root()))
    matches.push_back(match);
  ASSERT_EQ(matches.size(), 1U);
  const auto& filters = query->filterPredicates()[0];
  PredicateEvaluator evaluator({.text = parsed.text()});

  std::vector<std::string> asked;
  std::string hidden;
  auto predicate = [&](std::string_view name, ParseNode node) {
    asked.push_back(std::string(name) + parsed.textOf(node));
    return parsed.textOf(node) != hidden;
  };
  const auto holds = [&](std::size_t filter, const char* hiddenText) {
    hidden = hiddenText;
    return evaluator.evaluate(filters[filter], matches[0], predicate);
  };
  EXPECT_FALSE(holds(0, ""));
  EXPECT_TRUE(holds(0, "2"));
  EXPECT_TRUE(holds(1, ""));
  EXPECT_FALSE(holds(1, "2"));
  EXPECT_FALSE(holds(2, "3")); // nothing is left to be equal to
  asked.clear();
  EXPECT_FALSE(holds(2, ""));
  EXPECT_EQ(asked, (std::vector<std::string>{
                       "a1", "b3"})); // a filter stops at the first node that decides
  EXPECT_FALSE(evaluator.satisfies(filters, matches[0]));
  EXPECT_TRUE(evaluator.satisfies({}, matches[0]));
}

TEST(PredicateEvaluation, APatternThatRunsAwayMatchesNothing) {
  const ParsedText parsed(json, "[\"" + std::string(40, 'a') + "\", \"b\"]");
  const auto query = parsed.query("((string_content) @x (#match? @x \"^(a+)+c|b$\"))");
  RegularExpressionPass pass(
      {.perSearch = std::chrono::milliseconds(5), .perPattern = std::chrono::seconds(1)});
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& match :
       QueryMatches(query, parsed.root(), parsed.range(), parsed.text(), {}, &pass))
    ++count;
  EXPECT_EQ(count, 0U); // once off, it doesn't find the "b" either
  EXPECT_EQ(pass.patternsOff(), (Texts{"^(a+)+c|b$"}));
}

/// The properties of the first match that survives, as "key=value" or "capture.key", sorted.
std::string metadataOf(const ParsedText& parsed, const std::string& query,
                       QueryMatchMetadata properties = {}) {
  for (const QueryMatches::Element& match :
       QueryMatches(parsed.query(query), parsed.root(), parsed.range(), parsed.text(),
                    std::move(properties))) {
    std::map<std::string, std::string> texts;
    for (const auto& property : match.metadata.properties()) {
      const std::string owner =
          property.captureID
              ? "@" +
                    match.base.query()
                        .captureNames()[static_cast<std::size_t>(*property.captureID)] +
                    "."
              : "";
      texts[owner + property.key] = property.value.string() ? "=" + property.value.text() : "";
    }
    std::string result;
    for (const auto& [key, value] : texts)
      result += (result.empty() ? "" : " ") + key + value;
    return result;
  }
  return "(none)";
}

struct SetCase {
  const char* name;
  std::string predicates;
  std::string metadata;
};
class PropertySets : public ::testing::TestWithParam<SetCase> {};

/// `@n` are the numbers 1, 2 and 12, `@s` is the string "a", and `@z` has no node.
TEST_P(PropertySets, WriteMetadata) {
  const ParsedText parsed(json, "[1, 2, 12, \"a\"]");
  EXPECT_EQ(metadataOf(parsed,
                       "(array . (number) @n (number) @n (number) @n (string (string_content) @s) "
                       "(null)? @z . " +
                           GetParam().predicates + ")"),
            GetParam().metadata);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PropertySets,
    ::testing::Values(
        SetCase{"Nothing", "", ""}, SetCase{"Key", "(#set! k)", "k"},
        SetCase{"Value", "(#set! k v)", "k=v"}, SetCase{"EmptyValue", "(#set! k \"\")", "k="},
        SetCase{"OfACapture", "(#set! @s k v)", "@s.k=v"},
        SetCase{"TheLastWins", "(#set! k v) (#set! @s k u) (#set! k w)", "@s.k=u k=w"},
        SetCase{"IfEqualAll", "(#set-if-eq! @n 1 k)", ""},
        SetCase{"IfEqualOnlyNode", "(#set-if-eq! @s a k v)", "k=v"},
        SetCase{"IfEqualAny", "(#set-if-any-eq! @n 2 @s k v)", "@s.k=v"},
        SetCase{"IfEqualAnyNone", "(#set-if-any-eq! @n 3 k)", ""},
        SetCase{"IfNotEqual", "(#set-if-not-eq! @n 3 k)", "k"},
        SetCase{"IfNotEqualOne", "(#set-if-not-eq! @n 2 k)", ""},
        SetCase{"IfAnyNotEqual", "(#set-if-any-not-eq! @n 2 k)", "k"},
        SetCase{"IfEqualCapture", "(#set-if-any-eq! @s @n k) (#set-if-eq! @s @s l)", "l"},
        SetCase{"IfContains", "(#set-if-any-contains! @n 2 k) (#set-if-contains! @n 2 l)", "k"},
        SetCase{"IfNotContains",
                "(#set-if-not-contains! @n 3 k) (#set-if-any-not-contains! @n 2 l)", "k l"},
        SetCase{"IfMatches", "(#set-if-match! @n \"^\\\\d+$\" k) (#set-if-any-match! @n \"..\" l)",
                "k l"},
        SetCase{"IfNotMatches",
                "(#set-if-not-match! @n \"2\" k) (#set-if-any-not-match! @n \"2\" l)", "l"},
        SetCase{"IfEqualWithoutNodes", "(#set-if-eq! @z x k)", ""},
        SetCase{"IfNotEqualWithoutNodes", "(#set-if-not-eq! @z x k)", "k"},
        SetCase{"IfAnyWithoutNodes", "(#set-if-any-eq! @z x k) (#set-if-any-not-eq! @z x l)", ""},
        SetCase{"IfMatchesWithoutNodes", "(#set-if-match! @z x k) (#set-if-not-match! @z x l)",
                "l"},
        SetCase{"CaseOfTheLastNode", "(#set-by-case-eq! @n k 1 one 2 two 12 twelve)", "k=twelve"},
        SetCase{"FirstCaseThatFits", "(#set-by-case-eq! @s @n k a one a two)", "@n.k=one"},
        SetCase{"NoCaseFits", "(#set-by-case-eq! @n k 1 one 2 two)", ""},
        SetCase{"DefaultCase", "(#set-by-case-eq! @n k 1 one 2 two other)", "k=other"},
        SetCase{"CaseWithCapture", "(#set-by-case-eq! @s k @n number @s string)", "k=string"},
        SetCase{"CaseByPattern", "(#set-by-case-match! @n k \"^.$\" short \"^..$\" long)",
                "k=long"},
        SetCase{"CaseByPatternDefault", "(#set-by-case-match! @n k x short other)", "k=other"},
        SetCase{"CaseWithoutNodes", "(#set-by-case-eq! @z k a b)", ""},
        SetCase{"CaseWithoutNodesDefault", "(#set-by-case-eq! @z k a b c)", "k=c"},

        SetCase{"IsSet", "(#set! k) (#is? k)", "k"}, SetCase{"IsNotSet", "(#is? k)", "(none)"},
        SetCase{"IsNot", "(#is-not? k)", ""},
        SetCase{"IsNotButSet", "(#set! k v) (#is-not? k)", "(none)"},
        SetCase{"IsValue", "(#set! k v) (#is? k v)", "k=v"},
        SetCase{"IsOtherValue", "(#set! k v) (#is? k w)", "(none)"},
        SetCase{"IsNotValue", "(#set! k v) (#is-not? k w)", "k=v"},
        SetCase{"IsNotTheValue", "(#set! k v) (#is-not? k v)", "(none)"},
        SetCase{"IsNotValueOfNothing", "(#is-not? k v)", ""},
        SetCase{"SetIsNoValue", "(#set! k) (#is? k v)", "(none)"},
        SetCase{"SetIsNotNoValueEither", "(#set! k) (#is-not? k v)", "(none)"},
        SetCase{"ValueIsSet", "(#set! k v) (#is? k)", "k=v"},
        SetCase{"IsReadsWhatSetWrites", "(#is? k v) (#set! k v)", "k=v"},
        SetCase{"ACapturesPropertyIsNotTheMatchs", "(#set! @s k v) (#is? k v)", "(none)"},
        SetCase{"IsOfACapture", "(#set! @s k v) (#is? @s k v) (#is-not? @n k)", "@s.k=v"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PropertySets, ConditionsSeeOnlyAcceptedNodes) {
  const ParsedText parsed(json, "[1, 2]");
  const auto query = parsed.query(
      "(array (number) @n (number) @n (#set-if-eq! @n 1 k) (#set-by-case-eq! @n c 1 one 2 two)"
      " (#set-if-any-eq! @n 2 a))");
  PredicateEvaluator evaluator({.text = parsed.text()});
  std::string accepted;
  auto predicate = [&](std::string_view, ParseNode node) {
    return accepted.find(parsed.textOf(node)) != std::string::npos;
  };
  const auto performed = [&](const char* acceptedTexts) {
    accepted = acceptedTexts;
    QueryMatchMetadata metadata;
    for (const Query::Match& match : query->matchesIn(parsed.root()))
      evaluator.perform(query->propertySetPredicates()[0], match, metadata, predicate);
    std::string result;
    for (const auto& property : metadata.properties())
      result += property.key + "=" + property.value.text() + " ";
    return result;
  };
  EXPECT_EQ(performed("12"), "c=two a= ");
  EXPECT_EQ(performed("1"), "k= c=one ");
  EXPECT_EQ(performed(""), "k= "); // there are nodes, and none of those accepted fails
}

TEST(QueryMatches, StartWithTheGivenProperties) {
  const ParsedText parsed(json, "[1, 2]");
  QueryMatchMetadata properties;
  properties.setValue(QueryPropertyValue::string("w"), "k");
  EXPECT_EQ(metadataOf(parsed, "((number) @x (#is? k w))", properties), "k=w");
  EXPECT_EQ(metadataOf(parsed, "((number) @x (#set! k v) (#is? k w))", properties), "(none)");
  // What one match sets doesn't reach the next.
  std::size_t count = 0;
  for (const QueryMatches::Element& match : parsed.matches("((number) @x (#set-if-eq! @x 1 k))"))
    count += match.metadata.properties().size();
  EXPECT_EQ(count, 1U);
}

TEST(QueryMatches, WithoutANodeAreNone) {
  const ParsedText parsed(json, "[1]");
  const QueryMatches matches(parsed.query("(number) @n"), std::nullopt, parsed.range(),
                             parsed.text());
  EXPECT_TRUE(matches.begin() == std::default_sentinel);
}

TEST(QueryMatches, OfAnEmptyDocumentAreThoseOfItsRoot) {
  const ParsedText parsed(json, "");
  EXPECT_EQ(parsed.survivors("((document) @x (#eq? @x \"\"))"), (Texts{""}));
}

enum class Key { priority, language };
std::span<const std::string_view> rawValuesOf(Key) {
  static constexpr std::array<std::string_view, 2> texts{"priority", "the.language"};
  return texts;
}

TEST(QueryMatches, GiveMetadataByKeys) {
  const ParsedText parsed(json, "[1, 2]");
  std::string result;
  const auto matches =
      parsed.matches("((number) @x (#set-if-eq! @x 2 priority 7) (#set! @x the.language))");
  for (auto match : matches.withMetadataKeyedBy<Key>()) {
    const auto* const priority = match.metadata.valueFor(Key::priority);
    result += priority ? priority->text() : "-";
    result += match.metadata.isSet(Key::language) ? "!" : "?";
    const std::optional capture = QueryPredicateCapture{"x", 0};
    EXPECT_NE(match.metadata.valueFor(capture, Key::language), nullptr);
    match.metadata.setValue(std::nullopt, capture, Key::language);
    EXPECT_EQ(match.metadata.valueFor(capture, Key::language), nullptr);
    match.metadata.setValue(QueryPropertyValue::isSet(), Key::language);
    EXPECT_TRUE(match.metadata.isSet(Key::language));
  }
  EXPECT_EQ(result, "-?7?");
}

TEST(QueryMatchMetadata, IsEqualInAnyOrder) {
  QueryMatchMetadata a;
  a.setValue(QueryPropertyValue::string("1"), "k");
  a.setValue(QueryPropertyValue::isSet(), QueryPredicateCapture{"c", 3}, "k");
  QueryMatchMetadata b;
  b.setValue(QueryPropertyValue::isSet(), QueryPredicateCapture{"c", 3}, "k");
  EXPECT_NE(a, b);
  b.setValue(QueryPropertyValue::string("2"), "k");
  EXPECT_NE(a, b);
  b.setValue(QueryPropertyValue::string("1"), "k");
  EXPECT_EQ(a, b);
  a.setValue(std::nullopt, "k");
  a.setValue(std::nullopt, "nothing");
  EXPECT_EQ(a.valueFor("k"), nullptr);
  EXPECT_EQ(a.properties().size(), 1U);
  EXPECT_FALSE(a.valueFor(QueryPredicateCapture{"c", 3}, "k")->string());
}

} // namespace

} // namespace velmar
