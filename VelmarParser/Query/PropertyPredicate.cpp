#include "VelmarParser/Query/PropertyPredicate.h"

#include "VelmarParser/Query/PredicateArguments.h"

#include <array>

namespace velmar::QueryPredicates {

std::span<const std::string_view> rawValuesOf(Property::Name) {
  static constexpr std::array<std::string_view, 2> spellings{"is?", "is-not?"};
  return spellings;
}

Property::Property(Name name, QueryPredicateArguments arguments) : isNegated(name == Name::isNot) {
  detail::PredicateArguments reader(arguments, isNegated ? "isNot" : "is", " key [value]).");
  auto assignment = reader.assignment();
  capture = std::move(assignment.capture);
  key = std::move(assignment.key);
  value = std::move(assignment.value);
}

} // namespace velmar::QueryPredicates
