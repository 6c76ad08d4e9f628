#include "VelmarParser/Query/PropertySetPredicate.h"

#include "VelmarParser/Query/PredicateArguments.h"

#include <array>

namespace velmar::QueryPredicates {

namespace {

using Name = PropertySet::Name;

// clang-format off
constexpr std::array<std::string_view, 15> spellings{
    "set!",
    "set-if-eq!", "set-if-not-eq!", "set-if-any-eq!", "set-if-any-not-eq!",
    "set-if-contains!", "set-if-not-contains!", "set-if-any-contains!", "set-if-any-not-contains!",
    "set-if-match!", "set-if-not-match!", "set-if-any-match!", "set-if-any-not-match!",
    "set-by-case-eq!", "set-by-case-match!",
};
constexpr std::array<std::string_view, 15> caseNames{
    "set",
    "setIfEq", "setIfNotEq", "setIfAnyEq", "setIfAnyNotEq",
    "setIfContains", "setIfNotContains", "setIfAnyContains", "setIfAnyNotContains",
    "setIfMatch", "setIfNotMatch", "setIfAnyMatch", "setIfAnyNotMatch",
    "setByCaseEq", "setByCaseMatch",
};
// clang-format on

struct Quantifier {
  bool isNegated;
  bool isAny;
};

Quantifier quantifierOf(Name name) {
  const std::string_view spelling = rawValueOf(name);
  return {.isNegated =
              spelling.starts_with("set-if-any-not-") || spelling.starts_with("set-if-not-"),
          .isAny = spelling.starts_with("set-if-any-")};
}

std::string_view usageOf(Name name) {
  if (name == Name::set)
    return " [capture] key [value]).";
  if (name <= Name::setIfAnyNotContains)
    return " compareCapture argument [capture] key [value]).";
  if (name <= Name::setIfAnyNotMatch)
    return " compareCapture regex [capture] key [value]).";
  if (name == Name::setByCaseEq)
    return " compareCapture [capture] key (argument, value)… [defaultValue]).";
  return " compareCapture [capture] key (pattern, value)… [defaultValue]).";
}

/// What a predicate comes to: the members of PropertySet.
struct Parts {
  std::optional<QueryPredicateCapture> capture;
  std::string key;
  PropertySet::Action action;
};

Parts partsOf(detail::PropertyAssignment assignment, PropertySet::Action action) {
  return {std::move(assignment.capture), std::move(assignment.key), std::move(action)};
}

Parts set(detail::PredicateArguments& arguments) {
  auto assignment = arguments.assignment();
  PropertySet::Set action{std::move(assignment.value)};
  return partsOf(std::move(assignment), std::move(action));
}

template <class Action>
Parts setIfText(detail::PredicateArguments& arguments, Quantifier quantifier) {
  arguments.require(arguments.count() >= 3);
  QueryPredicateCapture compareCapture = arguments.capture();
  QueryPredicateArgument argument = arguments.any();
  auto assignment = arguments.assignment();
  Action action{.compareCapture = std::move(compareCapture),
                .argument = std::move(argument),
                .value = std::move(assignment.value),
                .isNegated = quantifier.isNegated,
                .isQuantifiedAny = quantifier.isAny};
  return partsOf(std::move(assignment), std::move(action));
}

Parts setIfMatches(detail::PredicateArguments& arguments, Quantifier quantifier) {
  arguments.require(arguments.count() >= 3);
  QueryPredicateCapture compareCapture = arguments.capture();
  const std::string& pattern = arguments.string();
  auto assignment = arguments.assignment();
  PropertySet::SetIfMatches action{.compareCapture = std::move(compareCapture),
                                   .regex = detail::compiledPattern(pattern),
                                   .value = std::move(assignment.value),
                                   .isNegated = quantifier.isNegated,
                                   .isQuantifiedAny = quantifier.isAny};
  return partsOf(std::move(assignment), std::move(action));
}

/// What a predicate with cases is made of, before it is known what the cases are compared with.
struct CaseParts {
  QueryPredicateCapture compareCapture;
  std::optional<QueryPredicateCapture> capture;
  std::string key;
  std::vector<std::pair<QueryPredicateArgument, std::string>> cases;
  std::optional<std::string> defaultValue;
};

CaseParts caseParts(detail::PredicateArguments& arguments) {
  arguments.require(arguments.count() >= 4);
  CaseParts parts;
  parts.compareCapture = arguments.capture();
  parts.capture = arguments.captureIfAny();
  parts.key = arguments.string();
  arguments.require(arguments.count() >= 2);
  while (arguments.count() >= 2) {
    const QueryPredicateArgument& compared = arguments.any();
    parts.cases.emplace_back(compared, arguments.string());
  }
  if (!arguments.isAtEnd())
    parts.defaultValue = arguments.string();
  return parts;
}

Parts setByCaseIfEquals(detail::PredicateArguments& arguments) {
  CaseParts parts = caseParts(arguments);
  return {std::move(parts.capture), std::move(parts.key),
          PropertySet::SetByCaseIfEquals{.compareCapture = std::move(parts.compareCapture),
                                         .cases = std::move(parts.cases),
                                         .defaultValue = std::move(parts.defaultValue)}};
}

Parts setByCaseIfMatches(detail::PredicateArguments& arguments) {
  CaseParts parts = caseParts(arguments);
  for (const auto& [pattern, value] : parts.cases)
    arguments.require(std::holds_alternative<QueryPredicateString>(pattern));
  PropertySet::SetByCaseIfMatches action{.compareCapture = std::move(parts.compareCapture),
                                         .cases = {},
                                         .defaultValue = std::move(parts.defaultValue)};
  for (auto& [pattern, value] : parts.cases)
    action.cases.emplace_back(detail::compiledPattern(std::get<QueryPredicateString>(pattern).text),
                              std::move(value));
  return {std::move(parts.capture), std::move(parts.key), std::move(action)};
}

Parts partsFor(Name name, detail::PredicateArguments& arguments) {
  switch (name) {
  case Name::set:
    return set(arguments);
  case Name::setIfEq:
  case Name::setIfNotEq:
  case Name::setIfAnyEq:
  case Name::setIfAnyNotEq:
    return setIfText<PropertySet::SetIfEquals>(arguments, quantifierOf(name));
  case Name::setIfContains:
  case Name::setIfNotContains:
  case Name::setIfAnyContains:
  case Name::setIfAnyNotContains:
    return setIfText<PropertySet::SetIfContains>(arguments, quantifierOf(name));
  case Name::setIfMatch:
  case Name::setIfNotMatch:
  case Name::setIfAnyMatch:
  case Name::setIfAnyNotMatch:
    return setIfMatches(arguments, quantifierOf(name));
  case Name::setByCaseEq:
    return setByCaseIfEquals(arguments);
  case Name::setByCaseMatch:
    return setByCaseIfMatches(arguments);
  }
  preconditionFailed("A property setter has no known name.", std::source_location::current());
}

} // namespace

std::span<const std::string_view> rawValuesOf(PropertySet::Name) {
  return spellings;
}

PropertySet::PropertySet(Name name, QueryPredicateArguments arguments) {
  detail::PredicateArguments reader(arguments, caseNames[static_cast<std::size_t>(name)],
                                    usageOf(name));
  Parts parts = partsFor(name, reader);
  capture = std::move(parts.capture);
  key = std::move(parts.key);
  action = std::move(parts.action);
}

} // namespace velmar::QueryPredicates
