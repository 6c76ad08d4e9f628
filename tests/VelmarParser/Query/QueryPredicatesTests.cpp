#include "VelmarParser/Query/QueryPredicates.h"

#include "tests/VelmarParser/Query/QueryTesting.h"

namespace velmar {

namespace {

using QueryPredicates::CaptureTransform;
using QueryPredicates::Filter;
using QueryPredicates::Property;
using QueryPredicates::PropertySet;

/// The predicate in a pattern that captures `@a` and `@b`.
std::string errorOf(const std::string& predicate) {
  return testing::compileError("(pair key: (_) @a value: (_) @b " + predicate + ")");
}

TEST(QueryPredicates, TellHowTheyAreUsed) {
  struct Row {
    const char* predicate;
    const char* usage;
  };
  const Row rows[] = {
      {"(#eq? @a)", "eq capture argument…"},
      {"(#eq?)", "eq capture argument…"},
      {"(#not-eq? \"x\" @a)", "notEq capture argument…"},
      {"(#any-eq? \"x\")", "anyEq capture argument…"},
      {"(#any-not-eq? @a)", "anyNotEq capture argument…"},
      {"(#contains? @a)", "contains capture argument…"},
      {"(#not-contains? @a)", "notContains capture argument…"},
      {"(#any-contains? @a)", "anyContains capture argument…"},
      {"(#any-not-contains? x y)", "anyNotContains capture argument…"},
      {"(#match? @a)", "match capture pattern"},
      {"(#match? @a \"x\" \"y\")", "match capture pattern"},
      {"(#match? @a \"(\" \"y\")", "match capture pattern"},
      {"(#not-match? @a @b)", "notMatch capture pattern"},
      {"(#any-match? \"a\" \"b\")", "anyMatch capture pattern"},
      {"(#any-not-match?)", "anyNotMatch capture pattern"},
      {"(#has-type? @a)", "hasType capture type…"},
      {"(#not-has-type? @a @b)", "notHasType capture type…"},
      {"(#any-has-type? a b)", "anyHasType capture type…"},
      {"(#any-not-has-type? @a b @b)", "anyNotHasType capture type…"},
      {"(#has-parent? @a)", "hasParent capture type…"},
      {"(#not-has-parent? @a @b)", "notHasParent capture type…"},
      {"(#any-has-parent? a b)", "anyHasParent capture type…"},
      {"(#any-not-has-parent? @a)", "anyNotHasParent capture type…"},
      {"(#has-ancestor? @a)", "hasAncestor capture type…"},
      {"(#not-has-ancestor? @a @b)", "notHasAncestor capture type…"},
      {"(#any-has-ancestor? a b)", "anyHasAncestor capture type…"},
      {"(#any-not-has-ancestor? @a)", "anyNotHasAncestor capture type…"},
      {"(#has-parent-field? @a)", "hasParentField capture field…"},
      {"(#not-has-parent-field? @a @b)", "notHasParentField capture field…"},
      {"(#any-has-parent-field? a b)", "anyHasParentField capture field…"},
      {"(#any-not-has-parent-field? @a)", "anyNotHasParentField capture field…"},
      {"(#has-ancestor-field? @a)", "hasAncestorField capture field…"},
      {"(#not-has-ancestor-field? @a @b)", "notHasAncestorField capture field…"},
      {"(#any-has-ancestor-field? a b)", "anyHasAncestorField capture field…"},
      {"(#any-not-has-ancestor-field? @a)", "anyNotHasAncestorField capture field…"},
      {"(#nth? @a)", "nth capture index"},
      {"(#nth? @a 1 2)", "nth capture index"},
      {"(#not-nth? @a @b)", "notNth capture index"},
      {"(#any-nth? 1 1)", "anyNth capture index"},
      {"(#any-not-nth?)", "anyNotNth capture index"},

      {"(#set!)", "set [capture] key [value]"},
      {"(#set! @a)", "set [capture] key [value]"},
      {"(#set! k v w)", "set [capture] key [value]"},
      {"(#set! @a k @b)", "set [capture] key [value]"},
      {"(#set-if-eq! @a x)", "setIfEq compareCapture argument [capture] key [value]"},
      {"(#set-if-eq! x x k)", "setIfEq compareCapture argument [capture] key [value]"},
      {"(#set-if-not-eq! @a x @b)", "setIfNotEq compareCapture argument [capture] key [value]"},
      {"(#set-if-any-eq! @a x k v w)", "setIfAnyEq compareCapture argument [capture] key [value]"},
      {"(#set-if-any-not-eq! @a x @b @b)",
       "setIfAnyNotEq compareCapture argument [capture] key [value]"},
      {"(#set-if-contains! @a x)", "setIfContains compareCapture argument [capture] key [value]"},
      {"(#set-if-not-contains! @a)",
       "setIfNotContains compareCapture argument [capture] key [value]"},
      {"(#set-if-any-contains!)", "setIfAnyContains compareCapture argument [capture] key [value]"},
      {"(#set-if-any-not-contains! @a x k v w)",
       "setIfAnyNotContains compareCapture argument [capture] key [value]"},
      {"(#set-if-match! @a x)", "setIfMatch compareCapture regex [capture] key [value]"},
      {"(#set-if-match! @a @b k)", "setIfMatch compareCapture regex [capture] key [value]"},
      {"(#set-if-not-match! @a \"(\" k v w)",
       "setIfNotMatch compareCapture regex [capture] key [value]"},
      {"(#set-if-any-match! x x k)", "setIfAnyMatch compareCapture regex [capture] key [value]"},
      {"(#set-if-any-not-match!)", "setIfAnyNotMatch compareCapture regex [capture] key [value]"},
      {"(#set-by-case-eq! @a k x)",
       "setByCaseEq compareCapture [capture] key (argument, value)… [defaultValue]"},
      {"(#set-by-case-eq! @a @b k x)",
       "setByCaseEq compareCapture [capture] key (argument, value)… [defaultValue]"},
      {"(#set-by-case-eq! k k x y)",
       "setByCaseEq compareCapture [capture] key (argument, value)… [defaultValue]"},
      {"(#set-by-case-eq! @a k x @b)",
       "setByCaseEq compareCapture [capture] key (argument, value)… [defaultValue]"},
      {"(#set-by-case-eq! @a k x y @b)",
       "setByCaseEq compareCapture [capture] key (argument, value)… [defaultValue]"},
      {"(#set-by-case-match! @a k x)",
       "setByCaseMatch compareCapture [capture] key (pattern, value)… [defaultValue]"},
      {"(#set-by-case-match! @a k @b x)",
       "setByCaseMatch compareCapture [capture] key (pattern, value)… [defaultValue]"},
      {"(#set-by-case-match! @a k \"(\" x @b y)",
       "setByCaseMatch compareCapture [capture] key (pattern, value)… [defaultValue]"},

      {"(#is?)", "is key [value]"},
      {"(#is? @a)", "is key [value]"},
      {"(#is-not? k v w)", "isNot key [value]"},

      {"(#prefix! @a)", "prefix capture argument…"},
      {"(#append! x y)", "append capture argument…"},
      {"(#strip!)", "strip capture [pattern]"},
      {"(#strip! @a x y)", "strip capture [pattern]"},
      {"(#strip! @a @b)", "strip capture [pattern]"},
      {"(#replace! @a x)", "replace capture pattern template"},
      {"(#replace! @a x y z)", "replace capture pattern template"},
      {"(#replace! @a \"(\" @b)", "replace capture pattern template"},
      {"(#downcase! x)", "downcase capture"},
      {"(#downcase! @a x)", "downcase capture"},
      {"(#upcase!)", "upcase capture"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(errorOf(row.predicate), std::string("Usage: (#") + row.usage + ").") << row.predicate;
}

TEST(QueryPredicates, TakeArgumentsOfTheRightKinds) {
  for (const char* predicate : {"(#eq? @a x)",
                                "(#eq? @a @b \"x\" @a)",
                                "(#any-not-contains? @a x)",
                                "(#match? @a \"^x\")",
                                "(#has-type? @a x y)",
                                "(#nth? @a -1)",
                                "(#nth? @a \"+2\")",
                                "(#set! k)",
                                "(#set! k v)",
                                "(#set! @a k)",
                                "(#set! @a k v)",
                                "(#set-if-eq! @a x k)",
                                "(#set-if-eq! @a @b @a k v)",
                                "(#set-if-any-not-match! @a x @b k)",
                                "(#set-by-case-eq! @a k x 1)",
                                "(#set-by-case-eq! @a @b k @a 1 y 2 default)",
                                "(#set-by-case-match! @a k x 1 d)",
                                "(#is? k)",
                                "(#is? @a k)",
                                "(#is-not? @a k v)",
                                "(#prefix! @a x @b)",
                                "(#strip! @a)",
                                "(#strip! @a x)",
                                "(#replace! @a x y)",
                                "(#upcase! @a)"})
    EXPECT_EQ(errorOf(predicate), "") << predicate;
}

TEST(QueryPredicates, TellWhichPatternDoesNotCompile) {
  const auto reason = [](const char* pattern) {
    return RegularExpression::compile(pattern).error().reason();
  };
  for (const char* predicate :
       {"(#match? @a \"(\")", "(#set-if-match! @a \"(\" k)", "(#strip! @a \"(\")",
        "(#set-by-case-match! @a k x 1 \"(\" 2)", "(#replace! @a \"(\" x)"})
    EXPECT_EQ(errorOf(predicate), "Could not compile regular expression: (, " + reason("(") + ".")
        << predicate;
}

TEST(QueryPredicates, TellWhichIndexIsNoInteger) {
  for (const char* index : {"x", "1x", "", " 1", "1.5", "+-1", "--1", "+", "99999999999999999999"})
    EXPECT_EQ(errorOf(std::string("(#nth? @a \"") + index + "\")"),
              std::string("Could not parse “") + index + "” as an integer.");
}

TEST(QueryPredicates, AreNegatedAndQuantifiedByTheirSpelling) {
  const std::vector<QueryPredicateArgument> arguments{QueryPredicateCapture{"a", 0},
                                                      QueryPredicateString("1")};
  for (const std::string test :
       {"eq?", "contains?", "match?", "has-type?", "has-parent?", "has-ancestor?",
        "has-parent-field?", "has-ancestor-field?", "nth?"}) {
    for (const bool isAny : {false, true}) {
      for (const bool isNegated : {false, true}) {
        const std::string name =
            std::string(isAny ? "any-" : "") + (isNegated ? "not-" : "") + test;
        const auto filter = predicateNamed<Filter>(name, arguments);
        ASSERT_TRUE(filter) << name;
        EXPECT_EQ(filter->isQuantifiedAny, isAny) << name;
        EXPECT_EQ(filter->isNegated, isNegated) << name;
      }
    }
  }
  EXPECT_FALSE(predicateNamed<Filter>("not-any-eq?", arguments));
  EXPECT_FALSE(predicateNamed<Filter>("eq", arguments));

  const std::vector<QueryPredicateArgument> setArguments{
      QueryPredicateCapture{"a", 0}, QueryPredicateString("x"), QueryPredicateString("k")};
  const auto set = predicateNamed<PropertySet>("set-if-any-not-contains!", setArguments);
  ASSERT_TRUE(set);
  EXPECT_TRUE(std::get<PropertySet::SetIfContains>(set->action).isNegated);
  EXPECT_TRUE(std::get<PropertySet::SetIfContains>(set->action).isQuantifiedAny);
  const auto notMatch = predicateNamed<PropertySet>("set-if-not-match!", setArguments);
  EXPECT_TRUE(std::get<PropertySet::SetIfMatches>(notMatch->action).isNegated);
  EXPECT_FALSE(std::get<PropertySet::SetIfMatches>(notMatch->action).isQuantifiedAny);
}

TEST(QueryPredicates, AnotherFamilysNameIsNoError) {
  EXPECT_FALSE(predicateNamed<Property>("eq?", {}));
  EXPECT_FALSE(predicateNamed<CaptureTransform>("set!", {}));
}

} // namespace

} // namespace velmar
