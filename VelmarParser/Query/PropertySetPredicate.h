// Predicates that write a match's metadata for whoever reads the match: `(#set! "priority" "90")`,
// `(#set-if-match! @name "^[A-Z]" @name "kind" "type")`.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarParser/Query/QueryPredicate.h"
#include "VelmarParser/Query/QueryPropertyValue.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmar::QueryPredicates {

/// Writes one property, perhaps only on a condition. Immutable; PredicateEvaluation carries it out.
struct PropertySet {
  enum class Name : std::uint8_t {
    set,
    setIfEq,
    setIfNotEq,
    setIfAnyEq,
    setIfAnyNotEq,
    setIfContains,
    setIfNotContains,
    setIfAnyContains,
    setIfAnyNotContains,
    setIfMatch,
    setIfNotMatch,
    setIfAnyMatch,
    setIfAnyNotMatch,
    setByCaseEq,
    setByCaseMatch,
  };
  /// The spellings in queries.
  friend std::span<const std::string_view> rawValuesOf(Name);

  /// Without a condition.
  struct Set {
    QueryPropertyValue value;
  };
  /// If nodes of `compareCapture` pass a test; "not" and "any" are as with filters. But a capture
  /// without nodes never passes, unless negated.
  struct SetIfEquals {
    QueryPredicateCapture compareCapture;
    QueryPredicateArgument argument;
    QueryPropertyValue value;
    bool isNegated = false;
    bool isQuantifiedAny = false;
  };
  struct SetIfContains {
    QueryPredicateCapture compareCapture;
    QueryPredicateArgument argument;
    QueryPropertyValue value;
    bool isNegated = false;
    bool isQuantifiedAny = false;
  };
  struct SetIfMatches {
    QueryPredicateCapture compareCapture;
    RegularExpression regex;
    QueryPropertyValue value;
    bool isNegated = false;
    bool isQuantifiedAny = false;
  };
  /// The value of the first case that the last node of `compareCapture` passes, else the default,
  /// if there is one.
  struct SetByCaseIfEquals {
    QueryPredicateCapture compareCapture;
    std::vector<std::pair<QueryPredicateArgument, std::string>> cases;
    std::optional<std::string> defaultValue;
  };
  struct SetByCaseIfMatches {
    QueryPredicateCapture compareCapture;
    std::vector<std::pair<RegularExpression, std::string>> cases;
    std::optional<std::string> defaultValue;
  };
  using Action = std::variant<Set, SetIfEquals, SetIfContains, SetIfMatches, SetByCaseIfEquals,
                              SetByCaseIfMatches>;

  /// Throws QueryPredicateError.
  PropertySet(Name name, QueryPredicateArguments arguments);

  /// Whose property is set: this capture's, or the match's own if absent.
  std::optional<QueryPredicateCapture> capture;
  std::string key;
  Action action;
};

} // namespace velmar::QueryPredicates
