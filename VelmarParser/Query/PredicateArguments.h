// Reads the arguments of a predicate one by one. For the constructors of predicate families only.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarParser/Query/QueryPredicate.h"
#include "VelmarParser/Query/QueryPropertyValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::detail {

/// Where a property goes and what it becomes.
struct PropertyAssignment {
  std::optional<QueryPredicateCapture> capture;
  std::string key;
  QueryPropertyValue value;
};

/// A reader that throws the predicate's usage error where the next argument isn't of the kind asked
/// for. The arguments must outlive it.
class PredicateArguments {
public:
  /// `caseName` names the predicate in the error, and `usage` is what follows there: " capture
  /// pattern).".
  PredicateArguments(QueryPredicateArguments arguments, std::string_view caseName,
                     std::string_view usage)
      : rest_(arguments), caseName_(caseName), usage_(usage) {}

  /// How many are left.
  [[nodiscard]] std::size_t count() const noexcept { return rest_.size(); }
  [[nodiscard]] bool isAtEnd() const noexcept { return rest_.empty(); }
  void require(bool condition) const {
    if (!condition)
      fail();
  }

  const QueryPredicateArgument& any();
  const QueryPredicateCapture& capture();
  const std::string& string();
  /// The next argument if it is a capture; else nothing is read.
  std::optional<QueryPredicateCapture> captureIfAny();
  /// [capture] key [value], and nothing behind.
  PropertyAssignment assignment();
  /// All that are left.
  std::vector<QueryPredicateArgument> remaining();
  /// All that are left, which must be strings.
  std::vector<std::string> remainingStrings();
  void expectEnd() const { require(isAtEnd()); }

private:
  [[noreturn]] void fail() const;

  QueryPredicateArguments rest_;
  std::string_view caseName_;
  std::string_view usage_;
};

/// Throws QueryPredicateError with what is wrong. To be called after the arguments have been read:
/// whether they are the right ones matters more.
[[nodiscard]] RegularExpression compiledPattern(const std::string& pattern);

} // namespace velmar::detail
