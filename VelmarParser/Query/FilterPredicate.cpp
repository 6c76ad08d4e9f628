#include "VelmarParser/Query/FilterPredicate.h"

#include "VelmarParser/Query/PredicateArguments.h"
#include "VelmarParser/Query/QueryPropertyValue.h"

#include <algorithm>

namespace velmar::QueryPredicates {

namespace {

// clang-format off
constexpr std::array<std::string_view, 36> spellings{
    "eq?", "not-eq?", "any-eq?", "any-not-eq?",
    "contains?", "not-contains?", "any-contains?", "any-not-contains?",
    "match?", "not-match?", "any-match?", "any-not-match?",
    "has-type?", "not-has-type?", "any-has-type?", "any-not-has-type?",
    "has-parent?", "not-has-parent?", "any-has-parent?", "any-not-has-parent?",
    "has-ancestor?", "not-has-ancestor?", "any-has-ancestor?", "any-not-has-ancestor?",
    "has-parent-field?", "not-has-parent-field?", "any-has-parent-field?", "any-not-has-parent-field?",
    "has-ancestor-field?", "not-has-ancestor-field?", "any-has-ancestor-field?", "any-not-has-ancestor-field?",
    "nth?", "not-nth?", "any-nth?", "any-not-nth?",
};
constexpr std::array<std::string_view, 36> caseNames{
    "eq", "notEq", "anyEq", "anyNotEq",
    "contains", "notContains", "anyContains", "anyNotContains",
    "match", "notMatch", "anyMatch", "anyNotMatch",
    "hasType", "notHasType", "anyHasType", "anyNotHasType",
    "hasParent", "notHasParent", "anyHasParent", "anyNotHasParent",
    "hasAncestor", "notHasAncestor", "anyHasAncestor", "anyNotHasAncestor",
    "hasParentField", "notHasParentField", "anyHasParentField", "anyNotHasParentField",
    "hasAncestorField", "notHasAncestorField", "anyHasAncestorField", "anyNotHasAncestorField",
    "nth", "notNth", "anyNth", "anyNotNth",
};
// clang-format on

/// The kinds of test, in the order of the names.
enum class Kind {
  equals,
  contains,
  matches,
  hasType,
  hasParent,
  hasAncestor,
  hasParentField,
  hasAncestorField,
  isNthChild
};

Kind kindOf(Filter::Name name) {
  return static_cast<Kind>(static_cast<std::size_t>(name) / 4);
}

std::string_view usageOf(Kind kind) {
  switch (kind) {
  case Kind::equals:
  case Kind::contains:
    return " capture argument…).";
  case Kind::matches:
    return " capture pattern).";
  case Kind::hasType:
  case Kind::hasParent:
  case Kind::hasAncestor:
    return " capture type…).";
  case Kind::hasParentField:
  case Kind::hasAncestorField:
    return " capture field…).";
  case Kind::isNthChild:
    return " capture index).";
  }
  preconditionFailed("A filter is of no known kind.", std::source_location::current());
}

/// A decimal integer with an optional sign, and nothing else.
std::int64_t integer(const std::string& text) {
  const auto value = wholeNumberIn(text);
  if (!value)
    throw QueryPredicateError("Could not parse “" + text + "” as an integer.");
  return *value;
}

Filter::Names sortedNames(detail::PredicateArguments& arguments) {
  Filter::Names names = arguments.remainingStrings();
  std::ranges::sort(names);
  return names;
}

Filter::Test testOf(Kind kind, detail::PredicateArguments& arguments) {
  switch (kind) {
  case Kind::equals:
    return Filter::Equals{arguments.remaining()};
  case Kind::contains:
    return Filter::Contains{arguments.remaining()};
  case Kind::matches: {
    const std::string& pattern = arguments.string();
    arguments.expectEnd();
    return Filter::Matches{detail::compiledPattern(pattern)};
  }
  case Kind::hasType:
    return Filter::HasType{sortedNames(arguments)};
  case Kind::hasParent:
    return Filter::HasParent{sortedNames(arguments)};
  case Kind::hasAncestor:
    return Filter::HasAncestor{sortedNames(arguments)};
  case Kind::hasParentField:
    return Filter::HasParentField{sortedNames(arguments)};
  case Kind::hasAncestorField:
    return Filter::HasAncestorField{sortedNames(arguments)};
  case Kind::isNthChild: {
    const std::string& index = arguments.string();
    arguments.expectEnd();
    return Filter::IsNthChild{integer(index)};
  }
  }
  preconditionFailed("A filter is of no known kind.", std::source_location::current());
}

} // namespace

std::span<const std::string_view> rawValuesOf(Filter::Name) {
  return spellings;
}

Filter::Filter(Name name, QueryPredicateArguments arguments) {
  const std::string_view spelling = rawValueOf(name);
  isQuantifiedAny = spelling.starts_with("any-");
  isNegated = spelling.starts_with("any-not-") || spelling.starts_with("not-");
  const Kind kind = kindOf(name);
  detail::PredicateArguments reader(arguments, caseNames[static_cast<std::size_t>(name)],
                                    usageOf(kind));
  reader.require(reader.count() >= 2);
  capture = reader.capture();
  test = testOf(kind, reader);
}

} // namespace velmar::QueryPredicates
