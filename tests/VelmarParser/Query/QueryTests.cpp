#include "VelmarParser/Query/Query.h"

#include "VelmarParser/Query/QueryTextCheck.h"
#include "tests/VelmarParser/Query/QueryTesting.h"

#include <array>
#include <set>
#include <string>

namespace velmar {

namespace {

using testing::compileError;
using testing::ParsedText;

struct FaultCase {
  const char* name;
  std::string text;
  std::string message;
};
class QueryFault : public ::testing::TestWithParam<FaultCase> {};

TEST_P(QueryFault, IsToldWithItsLine) {
  EXPECT_EQ(compileError(GetParam().text), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, QueryFault,
    ::testing::Values(
        FaultCase{"None", "(number) @n", ""}, FaultCase{"EmptyText", "", ""},
        FaultCase{"Comment", "; (nothing\n", ""},
        FaultCase{"Syntax", "(number) @n\n  (string))\n(null)",
                  "Syntax error in query:   (string))"},
        FaultCase{"NodeType", "(number)\r\n(nomber) @x\r\n(null)",
                  "Invalid node type in query: (nomber) @x"},
        FaultCase{"AnonymousNode", "\"fnord\"", "Invalid node type in query: \"fnord\""},
        FaultCase{"Field", "(pair\n\tkei: (string))",
                  "Invalid field name in query: \tkei: (string))"},
        FaultCase{"FieldBehindOtherFaults", "(nomber)\n(pair kei: (string) @s)",
                  "Invalid node type in query: (nomber)"},
        FaultCase{"FieldAroundOtherFaults", "(pair kei:\n(strinh) @s)",
                  "Invalid node type in query: (strinh) @s)"},
        FaultCase{"FieldWithCapture", "(pair\nkei: (string) @s)",
                  "Invalid field name in query: kei: (string) @s)"},
        FaultCase{"FieldBehindAnonymousNode", "\"\\[\" (array \"[\" @a\nkei: (string) @s)",
                  "Invalid field name in query: kei: (string) @s)"},
        FaultCase{"NegatedField", "(pair !kei)", "Invalid field name in query: (pair !kei)"},
        FaultCase{"Capture", "((string) @s (#eq? @t \"x\"))",
                  "Invalid capture name in query: ((string) @s (#eq? @t \"x\"))"},
        FaultCase{"Structure", "(number (string)) @x",
                  "Invalid structure in query: (number (string)) @x"},
        FaultCase{"LastLine", "(number)\n(nomber)\n", "Invalid node type in query: (nomber)"},
        FaultCase{"BehindTheLastLine", "(number\n", "Syntax error in query: "},
        FaultCase{"OtherLineBreaks", "(number)\xE2\x80\xA8(nomber)\xC2\x85(null)",
                  "Syntax error in query: (number)"},
        FaultCase{"NotUTF8", "(number) \xFF", "Syntax error in query: (number) \xEF\xBF\xBD"},
        FaultCase{"NamelessPredicate", "(number)\n((string) @s (#@s \"x\"))",
                  "Predicate in pattern “1” is invalid."},
        FaultCase{"EmptyPredicate", "((string) @s (#))", "Predicate in pattern “0” is invalid."},
        FaultCase{"UnclosedPredicate", "((string) @s (#",
                  "Syntax error in query: ((string) @s (#"}),
    [](const auto& row) { return std::string(row.param.name); });

/// Texts at which the runtime's compiler writes outside its memory, recurses without end or never
/// returns.
class QueryUnsafeText : public ::testing::TestWithParam<const char*> {};

TEST_P(QueryUnsafeText, IsAnErrorLikeAnyOther) {
  const std::string text = std::string("(null)\n") + GetParam();
  try {
    const Query query(text, Grammar::fromBuiltIn(Grammar::BuiltIn::json));
    FAIL() << "compiled";
  } catch (const QueryError& error) {
    EXPECT_EQ(error.kind(), QueryError::Kind::structureError);
    EXPECT_EQ(error.message(), std::string("Invalid structure in query: ") + GetParam());
    ASSERT_TRUE(error.context());
    EXPECT_EQ(error.context()->offset, 7);
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, QueryUnsafeText,
                         ::testing::Values("key: (#foo)", "((#foo)) @a", "((#foo))*",
                                           "(array ((#foo))+)", "(number)?+", "((number)?)+",
                                           "(array (number)?+)", "(_ (number)?)+", "((number)?)+?",
                                           "(number)?+*", "(array ((number)? (null)?)+)"));

TEST(Query, NestsOnlySoDeep) {
  const auto nested = [](int depth) {
    return std::string(static_cast<std::size_t>(depth), '(') + "(number)" +
           std::string(static_cast<std::size_t>(depth), ')');
  };
  EXPECT_EQ(compileError(nested(largestQueryNesting - 1)), "");
  EXPECT_EQ(compileError(nested(largestQueryNesting)),
            "Invalid structure in query: " + nested(largestQueryNesting));
  EXPECT_NE(compileError(std::string(1'000'000, '(')), "");
  EXPECT_NE(compileError(std::string(1'000'000, '[')), "");
  std::string fields;
  for (int count = 0; count < 300'000; ++count)
    fields += "key:";
  EXPECT_NE(compileError(fields), "");
}

TEST(Query, HasOnlySoManySteps) {
  std::string text;
  for (int count = 0; count < 70'000; ++count)
    text += "_\n";
  EXPECT_EQ(compileError(text), "Invalid structure in query: _");
}

TEST(Query, TakesRepetitionsThatEnd) {
  for (const char* text : {"(number)+",
                           "(number)*",
                           "[(number)? (null)]+",
                           "(array [((number)?)+ (null)])",
                           "((number)* (null)*)*",
                           "(array (number)? (null)?)+",
                           "(array (number)+)*",
                           "[(number) (null)]+",
                           "(_value)+",
                           "((comment)+ (pair))?",
                           "(_ key: (string)? @k value: (_)*)",
                           "[(array (_)*) ((number) . (null)?)]",
                           "((number) (#foo))",
                           "(array (#foo) (number))",
                           "[(number) (#foo)]",
                           "(#foo)",
                           "(MISSING) @m",
                           "(MISSING number)",
                           "(_value/number)",
                           "(pair !value)",
                           "(array . (_) @a .)"})
    EXPECT_EQ(compileError(text), "") << text;
}

TEST(Query, RefusesOtherFormatsOfGrammars) {
  // Only the runtime reads the tables, and the version comes first.
  struct Tables {
    std::uint32_t version;
    std::array<std::uint32_t, 256> rest;
  } tables{99, {}};
  const auto grammar =
      std::make_shared<const Grammar>("future", reinterpret_cast<const TSLanguage*>(&tables));
  try {
    const Query query("(a)", grammar);
    FAIL() << "compiled";
  } catch (const QueryError& error) {
    EXPECT_EQ(error.kind(), QueryError::Kind::languageError);
    EXPECT_EQ(error.grammar(), grammar);
    EXPECT_EQ(error.message(),
              "Incompatible language ABI version: 99. Supported versions are 13–15.");
  }
}

TEST(Query, CapturesHaveSelectorsUnlessTheirNamesSayOtherwise) {
  const Query query("(number) @keyword.control (string) @_temp (null) @h1 (true) @_temp",
                    Grammar::fromBuiltIn(Grammar::BuiltIn::json));
  EXPECT_EQ(query.captureNames(), (std::vector<std::string>{"keyword.control", "_temp", "h1"}));
  ASSERT_EQ(query.captureSelectors().size(), 3U);
  EXPECT_EQ(query.captureSelectors()[0]->string(), "control.keyword");
  EXPECT_FALSE(query.captureSelectors()[1]);
  EXPECT_FALSE(query.captureSelectors()[2]);
  EXPECT_EQ(query.captureIDNamed("h1"), 2);
  EXPECT_EQ(query.captureIDNamed("h2"), std::nullopt);
}

TEST(Query, SortsPredicatesIntoTheirFamilies) {
  const Query query(R"(
      ((number) @n (#set! "a" "b") (#eq? @n "1") (#my-thing! @n word "text") (#not-match? @n "x") (#is? a)
                   (#upcase! @n) (#set-if-eq! @n "2" c) (#is-not? d) (#strip! @n))
      (null)
      ((string) @s (#other))
    )",
                    Grammar::fromBuiltIn(Grammar::BuiltIn::json));
  ASSERT_EQ(query.patternCount(), 3);
  const auto counts = [&](std::size_t pattern) {
    return std::array{query.filterPredicates()[pattern].size(),
                      query.propertySetPredicates()[pattern].size(),
                      query.propertyPredicates()[pattern].size(),
                      query.captureTransformPredicates()[pattern].size(),
                      query.otherPredicates()[pattern].size()};
  };
  EXPECT_EQ(counts(0), (std::array<std::size_t, 5>{2, 2, 2, 2, 1}));
  EXPECT_EQ(counts(1), (std::array<std::size_t, 5>{0, 0, 0, 0, 0}));
  EXPECT_EQ(counts(2), (std::array<std::size_t, 5>{0, 0, 0, 0, 1}));

  EXPECT_TRUE(
      std::holds_alternative<QueryPredicates::Filter::Equals>(query.filterPredicates()[0][0].test));
  EXPECT_TRUE(std::holds_alternative<QueryPredicates::Filter::Matches>(
      query.filterPredicates()[0][1].test));
  EXPECT_TRUE(query.filterPredicates()[0][1].isNegated);
  EXPECT_EQ(query.propertySetPredicates()[0][0].key, "a");
  EXPECT_EQ(query.propertySetPredicates()[0][1].key, "c");
  EXPECT_TRUE(query.propertyPredicates()[0][1].isNegated);
  const Query::OtherPredicate& other = query.otherPredicates()[0][0];
  EXPECT_EQ(other.name, "my-thing!");
  const std::vector<QueryPredicateArgument> arguments{
      QueryPredicateCapture{"n", 0}, QueryPredicateString("word"), QueryPredicateString("text")};
  EXPECT_EQ(other.arguments, arguments);
}

TEST(Query, WithoutPatternsFindsNothing) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[1]");
  const auto query = parsed.query("; nothing here\n");
  EXPECT_EQ(query->patternCount(), 0);
  EXPECT_TRUE(query->filterPredicates().empty());
  EXPECT_TRUE(query->matchesIn(parsed.root()).begin() == std::default_sentinel);
}

TEST(Query, KnowsWhereItsPatternsStand) {
  const Query query("; first\n(number) @n\n  ((string) (null))",
                    Grammar::fromBuiltIn(Grammar::BuiltIn::json));
  const Query::Patterns patterns = query.patterns();
  ASSERT_EQ(patterns.count(), 2);
  EXPECT_EQ(patterns[0].byteRange(), Range<std::int64_t>(8, 22)); // with the blanks behind it
  EXPECT_EQ(patterns[1].byteRange(), Range<std::int64_t>(22, 39));
  EXPECT_TRUE(patterns[0].isRooted());
  EXPECT_FALSE(patterns[1].isRooted());
}

TEST(Query, KnowsTheTypesOfRootsAndParents) {
  struct Row {
    const char* text;
    const char* roots;
    const char* parents;
  };
  static constexpr Row rows[] = {
      {"", "", ""},
      {"(number) @n", "number", ""},
      {"\"{\" @b (ERROR)+", "ERROR {", ""},
      {"(array (number)* @n \"]\")", "array", "array"},
      {"(object (pair key: (string) @k (#eq? @k \"a\")))", "object", "object pair"},
      {"((array \"[\" @a) (#set! x))", "array", "array"},
      {"[(null) (array . (_)) [\"[\" (pair !key)]]", "[ array null pair", "array pair"},
      {"(array _)", "array", "array"},
      {"(array (_ (number)))", "array", "*"},
      {"_ @x", "*", ""},
      {"(_) @x", "*", ""},
      {"(_value) @x", "*", ""},
      {"(_value/number) @x", "*", ""},
      {"key: (string) @x", "*", ""},
      {"(MISSING number)", "number", ""},
      {"(MISSING)", "*", ""},
      {"; (array (number))\n(string)", "string", ""},
  };
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  const auto namesIn = [&](const NodeTypeSet& types) {
    constexpr TSSymbol noSymbol = 60'000; // is in no set but that of all
    std::set<std::string> names;
    for (TSSymbol type = 0; type < ts_language_symbol_count(grammar->base()); ++type) {
      if (types.contains(type))
        names.insert(ts_language_symbol_name(grammar->base(), type));
    }
    if (types.contains(ts_language_symbol_for_name(grammar->base(), "ERROR", 5, true)))
      names.insert("ERROR");
    std::string text;
    for (const std::string& name : names)
      text += (text.empty() ? "" : " ") + name;
    return types.contains(noSymbol) ? "*" : text;
  };
  for (const Row& row : rows) {
    const Query query(row.text, grammar);
    EXPECT_EQ(namesIn(query.nodeTypes().roots), row.roots) << row.text;
    EXPECT_EQ(namesIn(query.nodeTypes().parents), row.parents) << row.text;
  }
}

TEST(Query, TheMatchesOfARangeTouchIt) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[10, 20, 30]");
  const auto query = parsed.query("(number) @n");
  const auto numbers = [&](TextRange range) {
    std::string result;
    for (const Query::Match& match : query->matchesStartingAt(parsed.root(), range))
      result += parsed.textOf(match.captures()[0].node()) + " ";
    return result;
  };
  EXPECT_EQ(numbers({0, 12}), "10 20 30 ");
  EXPECT_EQ(numbers({2, 6}), "10 20 ");
  EXPECT_EQ(numbers({3, 5}), ""); // ends where one begins, begins where one ends
  EXPECT_EQ(numbers({6, 6}), "20 ");
  EXPECT_EQ(numbers({5, 5}), "");
  EXPECT_EQ(numbers({0, 0}), "");
  EXPECT_EQ(numbers({12, 99}), "");
}

TEST(Query, MatchesInProgressAreLimited) {
  std::string source = "[0";
  for (int index = 1; index < 600; ++index)
    source += ", " + std::to_string(index);
  const ParsedText parsed(Grammar::BuiltIn::json, source + "]");
  const auto lastOf = [&](const char* queryText, bool& hasDropped) {
    std::string last;
    const QueryMatches matches = parsed.matches(queryText);
    for (auto match = matches.begin(); match != matches.end(); ++match) {
      last = parsed.textOf(match->captures()[0].node());
      hasDropped = match.hasDroppedMatches();
    }
    return last;
  };
  bool hasDropped = false;
  EXPECT_EQ(lastOf("(array (number) @a)", hasDropped), "599");
  EXPECT_FALSE(hasDropped);
  EXPECT_EQ(lastOf("(array (number) @a (number) @b)", hasDropped),
            "598"); // the last to begin stay
  EXPECT_TRUE(hasDropped);
}

TEST(Query, ADisabledCaptureIsLeftOut) {
  const ParsedText parsed(Grammar::BuiltIn::json, "{\"a\": 1}");
  Query query("(pair key: (_) @k value: (_) @v) @p", parsed.grammar());
  query.disableCaptureAt(0);
  query.disableCaptureNamed("p");
  query.disableCaptureAt(99);
  query.disableCaptureAt(-1);
  query.disableCaptureNamed("nobody");
  for (const Query::Match& match : query.matchesIn(parsed.root())) {
    ASSERT_EQ(match.captures().count(), 1);
    EXPECT_EQ(match.captures()[0].name(), "v");
  }
  EXPECT_EQ(query.captureNames().size(), 3U);
}

enum class NamedCapture { key, value };
std::span<const std::string_view> rawValuesOf(NamedCapture) {
  static constexpr std::array<std::string_view, 2> texts{"the.key", "the.value"};
  return texts;
}

TEST(QueryMatch, GivesItsCapturesByNameAndByArgument) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[1, 2, null, 3]");
  const auto query = parsed.query(
      "(array (number) @the.value (number) @the.value (null) @other (number) @the.key)");
  std::vector<Query::Match> matches; // copies, which keep what the walk goes on to overwrite
  for (const Query::Match& match : query->matchesIn(parsed.root()))
    matches.push_back(match);
  ASSERT_FALSE(matches.empty());
  const Query::Match* longest = &matches[0];
  for (const Query::Match& match : matches)
    longest = match.captures().count() > longest->captures().count() ? &match : longest;
  EXPECT_EQ(longest->captures().count(), 4);

  std::string typed;
  for (const auto capture : longest->capturesNamed<NamedCapture>())
    typed += (capture.name == NamedCapture::key ? "key " : "value ") +
             parsed.textOf(capture.node()) + "; ";
  EXPECT_EQ(typed, "value 1; value 2; key 3; ");

  const auto values = longest->nodesFor({"the.value", *query->captureIDNamed("the.value")});
  EXPECT_EQ(values.count(), 2);
  EXPECT_EQ(parsed.textOf(values[1]), "2");
  EXPECT_EQ(parsed.textOf(*--values.end()), "2");
  EXPECT_TRUE(longest->nodesFor({"none", 17}).isEmpty());
}

TEST(QueryDeathTest, IndicesOutsideStopTheProcess) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[1]");
  const auto query = parsed.query("(number) @n");
  EXPECT_DEATH(static_cast<void>(query->patterns()[1]), "outside its query");
  const auto matches = query->matchesIn(parsed.root());
  const auto match = matches.begin();
  EXPECT_DEATH(static_cast<void>(match->captures()[1]), "outside its match");
  EXPECT_DEATH(static_cast<void>(match->nodesFor({"n", 0})[1]), "outside its capture");
}

struct CursorIn {
  enum class Name { cursorIn, notCursorIn };
  friend std::span<const std::string_view> rawValuesOf(Name) {
    static constexpr std::array<std::string_view, 2> texts{"cursor-in?", "not-cursor-in?"};
    return texts;
  }
  CursorIn(Name predicate, QueryPredicateArguments arguments)
      : name(predicate), count(arguments.size()) {
    if (arguments.empty())
      throw QueryPredicateError("A cursor needs a capture.");
  }
  Name name;
  std::size_t count;
};
static_assert(QueryPredicate<CursorIn>);

TEST(Query, ReadsPredicatesOfOtherFamiliesWhenAsked) {
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  const Query query("(null) ((number) @n (#cursor-in? @n) (#eq? @n \"1\") (#elsewhere! @n) "
                    "(#not-cursor-in? @n @n))",
                    grammar);
  const auto& predicates = query.customPredicates<CursorIn>();
  EXPECT_EQ(&query.customPredicates<CursorIn>(), &predicates);
  ASSERT_EQ(predicates.size(), 2U);
  EXPECT_TRUE(predicates[0].empty());
  ASSERT_EQ(predicates[1].size(), 2U);
  EXPECT_EQ(predicates[1][0].name, CursorIn::Name::cursorIn);
  EXPECT_EQ(predicates[1][1].count, 2U);
  EXPECT_THROW(
      static_cast<void>(Query("((null) (#cursor-in?))", grammar).customPredicates<CursorIn>()),
      QueryPredicateError);
}

/// A predicate that looks at the other predicates of its query when it is read.
struct Curious {
  enum class Name { curious };
  friend std::span<const std::string_view> rawValuesOf(Name) {
    static constexpr std::array<std::string_view, 1> texts{"curious?"};
    return texts;
  }
  Curious(Name, QueryPredicateArguments)
      : cursors(query->customPredicates<CursorIn>().front().size()) {}
  std::size_t cursors;
  static inline const Query* query = nullptr;
};

TEST(Query, PredicatesOfOtherFamiliesMayAskForEachOther) {
  const Query query("((number) @n (#curious?) (#cursor-in? @n))",
                    Grammar::fromBuiltIn(Grammar::BuiltIn::json));
  Curious::query = &query;
  EXPECT_EQ(query.customPredicates<Curious>().front().front().cursors, 1U);
}

} // namespace

} // namespace velmar
