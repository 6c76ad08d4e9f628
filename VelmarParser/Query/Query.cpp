#include "VelmarParser/Query/Query.h"

#include "VelmarParser/Query/QueryMatch.h"
#include "VelmarParser/Query/QueryTextCheck.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <limits>

namespace velmar {

namespace {

QueryError::Kind kindOf(TSQueryError code) {
  using enum QueryError::Kind;
  switch (code) {
  case TSQueryErrorSyntax:
    return syntaxError;
  case TSQueryErrorNodeType:
    return nodeTypeError;
  case TSQueryErrorField:
    return fieldError;
  case TSQueryErrorCapture:
    return captureError;
  case TSQueryErrorStructure:
    return structureError;
  case TSQueryErrorLanguage:
    return languageError;
  case TSQueryErrorNone:
    break;
  }
  return unknownError;
}

QueryPredicateError invalidPredicate(std::int64_t pattern) {
  return QueryPredicateError("Predicate in pattern “" + std::to_string(pattern) + "” is invalid.");
}

[[noreturn]] void fail(TSQueryError code, std::int64_t offset, std::string_view text,
                       const QueryTextReport& report,
                       const std::shared_ptr<const Grammar>& grammar) {
  const QueryError::Kind kind = kindOf(code);
  if (kind == QueryError::Kind::languageError)
    throw QueryError::languageError(grammar);
  if (kind == QueryError::Kind::unknownError)
    throw QueryError::unknownError("Unhandled library error code “" + std::to_string(code) + "”");
  if (kind == QueryError::Kind::syntaxError && report.namelessPredicate &&
      report.namelessPredicate->offset == offset)
    throw invalidPredicate(report.namelessPredicate->patternIndex);
  throw QueryError::inContext(kind, QueryError::Context::at(offset, text));
}

TSQuery* compiled(std::string_view text, const std::shared_ptr<const Grammar>& grammar,
                  QueryNodeTypes& nodeTypes) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max())
    throw QueryError::unknownError("The text is longer than 4 GB.");
  QueryTextReport report = checkedQueryText(text, grammar->base());
  if (report.unsafeOffset)
    fail(TSQueryErrorStructure, *report.unsafeOffset, text, report, grammar);
  if (report.unknownFieldOffset)
    fail(TSQueryErrorField, *report.unknownFieldOffset, text, report, grammar);
  std::uint32_t errorOffset = 0;
  TSQueryError code = TSQueryErrorNone;
  TSQuery* const query = ts_query_new(grammar->base(), text.data(),
                                      static_cast<std::uint32_t>(text.size()), &errorOffset, &code);
  if (!query)
    fail(code, errorOffset, text, report, grammar);
  nodeTypes = std::move(report.nodeTypes);
  return query;
}

/// A text that the runtime keeps; empty if it gives none.
std::string textOf(const char* start, std::uint32_t length) {
  return start ? repairedUTF8({start, length}) : std::string();
}

std::optional<LexicalSelector> selectorOf(const std::string& captureName) {
  return captureName.starts_with('_') ? std::nullopt : LexicalSelector::fromString(captureName);
}

/// Takes the predicate if it is one of the family's.
template <QueryPredicate P>
bool takes(std::vector<P>& family, std::string_view name, QueryPredicateArguments arguments) {
  auto predicate = predicateNamed<P>(name, arguments);
  if (!predicate)
    return false;
  family.push_back(std::move(*predicate));
  return true;
}

} // namespace

Query::Query(std::string_view text, std::shared_ptr<const Grammar> grammar)
    : text_(text), grammar_(std::move(grammar)), base_(compiled(text_, grammar_, nodeTypes_)) {
  readCaptures();
  const std::uint32_t count = ts_query_pattern_count(base_.get());
  filterPredicates_.resize(count);
  propertySetPredicates_.resize(count);
  propertyPredicates_.resize(count);
  captureTransformPredicates_.resize(count);
  otherPredicates_.resize(count);
  for (std::uint32_t pattern = 0; pattern < count; ++pattern) {
    readPredicates(pattern);
    hasSingleRoots_ = hasSingleRoots_ && ts_query_is_pattern_rooted(base_.get(), pattern);
  }
}

Query::~Query() = default;

void Query::readCaptures() {
  const std::uint32_t count = ts_query_capture_count(base_.get());
  for (std::uint32_t id = 0; id < count; ++id) {
    std::uint32_t length = 0;
    const char* const name = ts_query_capture_name_for_id(base_.get(), id, &length);
    captureNames_.push_back(textOf(name, length));
    captureSelectors_.push_back(selectorOf(captureNames_.back()));
  }
}

void Query::readPredicates(std::int64_t pattern) {
  std::uint32_t count = 0;
  const TSQueryPredicateStep* const steps =
      ts_query_predicates_for_pattern(base_.get(), static_cast<std::uint32_t>(pattern), &count);
  std::vector<QueryPredicateArgument> arguments;
  for (const TSQueryPredicateStep& step : std::span(steps, count)) {
    std::uint32_t length = 0;
    switch (step.type) {
    case TSQueryPredicateStepTypeCapture: {
      const char* const name = ts_query_capture_name_for_id(base_.get(), step.value_id, &length);
      arguments.emplace_back(
          QueryPredicateCapture{.name = textOf(name, length), .valueID = step.value_id});
      break;
    }
    case TSQueryPredicateStepTypeString: {
      const char* const string = ts_query_string_value_for_id(base_.get(), step.value_id, &length);
      arguments.emplace_back(QueryPredicateString(textOf(string, length)));
      break;
    }
    case TSQueryPredicateStepTypeDone:
      add(pattern, std::exchange(arguments, {}));
      break;
    default:
      throw QueryPredicateError("Unhandled predicate step type: “" + std::to_string(step.type) +
                                "”.");
    }
  }
}

void Query::add(std::int64_t pattern, std::vector<QueryPredicateArgument> arguments) {
  if (arguments.empty() || !std::holds_alternative<QueryPredicateString>(arguments.front()))
    throw invalidPredicate(pattern);
  std::string name = std::move(std::get<QueryPredicateString>(arguments.front()).text);
  arguments.erase(arguments.begin());
  const auto index = static_cast<std::size_t>(pattern);
  if (!takes(filterPredicates_[index], name, arguments) &&
      !takes(propertySetPredicates_[index], name, arguments) &&
      !takes(propertyPredicates_[index], name, arguments) &&
      !takes(captureTransformPredicates_[index], name, arguments))
    otherPredicates_[index].push_back({.name = std::move(name), .arguments = std::move(arguments)});
}

std::optional<std::int64_t> Query::captureIDNamed(std::string_view name) const {
  const auto found = std::ranges::find(captureNames_, name);
  return found != captureNames_.end() ? std::optional<std::int64_t>(found - captureNames_.begin())
                                      : std::nullopt;
}

void Query::disableCaptureAt(std::int64_t captureID) {
  if (captureID >= 0 && captureID < static_cast<std::int64_t>(captureNames_.size()))
    disableCaptureNamed(captureNames_[static_cast<std::size_t>(captureID)]);
}

void Query::disableCaptureNamed(std::string_view name) {
  ts_query_disable_capture(base_.get(), name.data(), static_cast<std::uint32_t>(name.size()));
}

bool Query::patternCaptures(std::int64_t pattern, std::int64_t captureID) const {
  return ts_query_capture_quantifier_for_id(base_.get(), static_cast<std::uint32_t>(pattern),
                                            static_cast<std::uint32_t>(captureID)) !=
         TSQuantifierZero;
}

bool Query::asksForSurroundings() const {
  using namespace QueryPredicates;
  constexpr auto asks = [](const Filter& filter) {
    return std::holds_alternative<Filter::HasParent>(filter.test) ||
           std::holds_alternative<Filter::HasAncestor>(filter.test) ||
           std::holds_alternative<Filter::HasParentField>(filter.test) ||
           std::holds_alternative<Filter::HasAncestorField>(filter.test) ||
           std::holds_alternative<Filter::IsNthChild>(filter.test);
  };
  return std::ranges::any_of(filterPredicates_, [&](const auto& ofPattern) {
    return std::ranges::any_of(ofPattern, asks);
  });
}

Query::Matches Query::matchesIn(ParseNode node) const {
  return {*this, node, node.byteRange()};
}

Query::Matches Query::matchesStartingAt(ParseNode node, TextRange range) const {
  return {*this, node, {treeByte(range.lowerBound), treeByte(range.upperBound)}};
}

} // namespace velmar
