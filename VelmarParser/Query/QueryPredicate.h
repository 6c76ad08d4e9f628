// What all predicates of queries have in common: their arguments, their errors, and what a family
// of them must be.
//
// A predicate is written `(#name! @capture "string" …)` inside a pattern. Each family, such as
// QueryPredicates::Filter, is a type with a `Name`, an enumeration of the names as they are spelled
// in queries, and a constructor that checks the arguments. Families of the engine are read when a
// query is compiled; others are read by `Query::customPredicates`.
#pragma once

#include "VelmarParser/Query/TextEnumeration.h"
#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace velmar {

/// A predicate that can't be understood. It makes the whole query fail.
class QueryPredicateError : public Error {
public:
  using Error::Error;
  [[nodiscard]] const std::string& reason() const noexcept { return message(); }
};

/// A capture as an argument.
struct QueryPredicateCapture {
  std::string name;
  /// The capture's id in its query.
  std::int64_t valueID = 0;
  bool operator==(const QueryPredicateCapture&) const = default;
};

/// A string as an argument, kept in both encodings: names and keys are compared in UTF-8, document
/// text in UTF-16.
struct QueryPredicateString {
  std::string text;
  std::u16string units;

  explicit QueryPredicateString(std::string string)
      : text(std::move(string)), units(utf16RepairingUTF8(text)) {}
  bool operator==(const QueryPredicateString&) const = default;
};

using QueryPredicateArgument = std::variant<QueryPredicateCapture, QueryPredicateString>;
using QueryPredicateArguments = std::span<const QueryPredicateArgument>;

/// A family of predicates. The constructor throws QueryPredicateError.
template <class P>
concept QueryPredicate = TextEnumeration<typename P::Name> &&
                         std::constructible_from<P, typename P::Name, QueryPredicateArguments>;

/// The predicate of that name; absent, whatever the arguments, if the family has no such name.
/// Throws QueryPredicateError.
template <QueryPredicate P>
[[nodiscard]] std::optional<P> predicateNamed(std::string_view name,
                                              QueryPredicateArguments arguments) {
  const auto known = fromRawValue<typename P::Name>(name);
  return known ? std::optional<P>(std::in_place, *known, arguments) : std::nullopt;
}

} // namespace velmar
