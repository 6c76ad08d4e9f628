// Predicates that test a match's metadata after its property setters have run: `(#is? "scope"
// "local")`.
#pragma once

#include "VelmarParser/Query/QueryPredicate.h"
#include "VelmarParser/Query/QueryPropertyValue.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar::QueryPredicates {

/// Asks whether a property is set, or set to a value.
struct Property {
  enum class Name : std::uint8_t { is, isNot };
  /// The spellings in queries.
  friend std::span<const std::string_view> rawValuesOf(Name);

  /// Throws QueryPredicateError.
  Property(Name name, QueryPredicateArguments arguments);

  /// Whose property is asked for: this capture's, or the match's own if absent.
  std::optional<QueryPredicateCapture> capture;
  std::string key;
  QueryPropertyValue value;
  bool isNegated = false;
};

} // namespace velmar::QueryPredicates
