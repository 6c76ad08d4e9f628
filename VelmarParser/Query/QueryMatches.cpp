#include "VelmarParser/Query/QueryMatches.h"

namespace velmar {

QueryMatches::Iterator::Iterator(const QueryMatches& matches)
    : query_(matches.query_), properties_(matches.properties_),
      ownPass_(matches.pass_ ? nullptr : std::make_unique<RegularExpressionPass>()),
      pass_(matches.pass_ ? matches.pass_ : ownPass_.get()),
      evaluator_({.text = *matches.text_, .pass = pass_}), listener_(matches.listener_),
      seen_(matches.seen_), element_{.base = Query::Match(*query_), .metadata = {}} {
  if (matches.node_)
    cursor_.emplace(query_->matchesStartingAt(*matches.node_, matches.range_), matches.cancel_);
  advance();
}

void QueryMatches::Iterator::advance() {
  do
    isAtEnd_ = !cursor_ || !cursor_->next(element_.base);
  while (!isAtEnd_ && !survives());
}

bool QueryMatches::Iterator::survives() {
  if (seen_)
    seen_(listener_, element_.base);
  const auto pattern = static_cast<std::size_t>(element_.patternIndex());
  if (!evaluator_.satisfies(query_->filterPredicates()[pattern], element_.base))
    return false;
  element_.metadata.assign(properties_);
  // The setters go first: a pattern's tests see what it has set itself.
  evaluator_.perform(query_->propertySetPredicates()[pattern], element_.base, element_.metadata);
  return PredicateEvaluator::satisfies(query_->propertyPredicates()[pattern], element_.metadata);
}

} // namespace velmar
