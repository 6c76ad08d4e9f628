// Predicates that rewrite the text of a capture where it is taken as a value: `(#strip! @name
// "^['\"]|['\"]$")`.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarParser/Query/QueryPredicate.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmar::QueryPredicates {

/// Acts in `captureValues` alone. Immutable.
struct CaptureTransform {
  enum class Name : std::uint8_t { prefix, append, strip, replace, downcase, upcase };
  /// The spellings in queries.
  friend std::span<const std::string_view> rawValuesOf(Name);

  /// The arguments, in order, in front of the text. A capture stands for its text at that moment.
  struct Prefix {
    std::vector<QueryPredicateArgument> arguments;
  };
  /// The same behind it.
  struct Append {
    std::vector<QueryPredicateArgument> arguments;
  };
  /// Takes matches away that start the text or end it; without an expression, white space at both
  /// ends.
  struct Strip {
    std::optional<RegularExpression> regex;
  };
  /// Puts the template, filled in, for each match.
  struct Replace {
    RegularExpression regex;
    QueryPredicateString replacement;
  };
  struct Downcase {};
  struct Upcase {};
  using Action = std::variant<Prefix, Append, Strip, Replace, Downcase, Upcase>;

  /// Throws QueryPredicateError.
  CaptureTransform(Name name, QueryPredicateArguments arguments);

  QueryPredicateCapture capture;
  Action action;
};

} // namespace velmar::QueryPredicates
