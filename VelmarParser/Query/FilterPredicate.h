// Predicates that keep or drop a match: `(#eq? @name "self")`, `(#not-has-parent? @call
// "await_expression")`.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarParser/Query/QueryPredicate.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmar::QueryPredicates {

/// A test of each node of a capture. Without "any-" every node must pass, so that a capture without
/// nodes passes; with "any-" one node must. "not-" turns each node's answer around. Immutable; what
/// it does at a match is PredicateEvaluation's business.
struct Filter {
  /// The names in the order plain, not, any, any-not for each kind of test.
  enum class Name : std::uint8_t {
    eq,
    notEq,
    anyEq,
    anyNotEq,
    contains,
    notContains,
    anyContains,
    anyNotContains,
    match,
    notMatch,
    anyMatch,
    anyNotMatch,
    hasType,
    notHasType,
    anyHasType,
    anyNotHasType,
    hasParent,
    notHasParent,
    anyHasParent,
    anyNotHasParent,
    hasAncestor,
    notHasAncestor,
    anyHasAncestor,
    anyNotHasAncestor,
    hasParentField,
    notHasParentField,
    anyHasParentField,
    anyNotHasParentField,
    hasAncestorField,
    notHasAncestorField,
    anyHasAncestorField,
    anyNotHasAncestorField,
    nth,
    notNth,
    anyNth,
    anyNotNth,
  };
  /// The spellings in queries.
  friend std::span<const std::string_view> rawValuesOf(Name);

  /// The node's text is one of the strings, or that of some node of one of the captures.
  struct Equals {
    std::vector<QueryPredicateArgument> arguments;
  };
  /// The node's text has one of those in it.
  struct Contains {
    std::vector<QueryPredicateArgument> arguments;
  };
  /// The expression matches somewhere in the node's text.
  struct Matches {
    RegularExpression regex;
  };
  /// Names of node types or fields, sorted.
  using Names = std::vector<std::string>;
  struct HasType {
    Names names;
  };
  struct HasParent {
    Names names;
  };
  struct HasAncestor {
    Names names;
  };
  /// The node stands in one of these fields of its parent.
  struct HasParentField {
    Names names;
  };
  /// The node or one of its ancestors stands in one of these fields of its parent.
  struct HasAncestorField {
    Names names;
  };
  /// The node is that one of its parent's named children, from 0, or from the end if negative.
  struct IsNthChild {
    std::int64_t index = 0;
  };
  using Test = std::variant<Equals, Contains, Matches, HasType, HasParent, HasAncestor,
                            HasParentField, HasAncestorField, IsNthChild>;

  /// Throws QueryPredicateError.
  Filter(Name name, QueryPredicateArguments arguments);

  QueryPredicateCapture capture;
  Test test;
  bool isNegated = false;
  bool isQuantifiedAny = false;
};

} // namespace velmar::QueryPredicates
