#include "VelmarParser/Query/PredicateArguments.h"

namespace velmar::detail {

void PredicateArguments::fail() const {
  throw QueryPredicateError(std::string("Usage: (#").append(caseName_).append(usage_));
}

const QueryPredicateArgument& PredicateArguments::any() {
  require(!isAtEnd());
  const QueryPredicateArgument& first = rest_.front();
  rest_ = rest_.subspan(1);
  return first;
}

const QueryPredicateCapture& PredicateArguments::capture() {
  const auto* const found = std::get_if<QueryPredicateCapture>(&any());
  require(found != nullptr);
  return *found;
}

const std::string& PredicateArguments::string() {
  const auto* const found = std::get_if<QueryPredicateString>(&any());
  require(found != nullptr);
  return found->text;
}

std::optional<QueryPredicateCapture> PredicateArguments::captureIfAny() {
  if (isAtEnd() || !std::holds_alternative<QueryPredicateCapture>(rest_.front()))
    return std::nullopt;
  return capture();
}

PropertyAssignment PredicateArguments::assignment() {
  PropertyAssignment result;
  result.capture = captureIfAny();
  result.key = string();
  if (!isAtEnd())
    result.value = QueryPropertyValue::string(string());
  expectEnd();
  return result;
}

std::vector<QueryPredicateArgument> PredicateArguments::remaining() {
  std::vector<QueryPredicateArgument> result(rest_.begin(), rest_.end());
  rest_ = {};
  return result;
}

std::vector<std::string> PredicateArguments::remainingStrings() {
  std::vector<std::string> result;
  while (!isAtEnd())
    result.push_back(string());
  return result;
}

RegularExpression compiledPattern(const std::string& pattern) {
  auto compiled = RegularExpression::compile(pattern);
  if (!compiled)
    throw QueryPredicateError("Could not compile regular expression: " + pattern + ", " +
                              compiled.error().reason() + ".");
  return std::move(compiled).value();
}

} // namespace velmar::detail
