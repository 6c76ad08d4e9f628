#include "VelmarParser/Cursor/Completion.h"

#include "VelmarParser/Query/PredicateArguments.h"
#include "VelmarParser/Query/PredicateEvaluation.h"
#include "VelmarParser/Query/QueryMatch.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <unordered_set>

namespace velmar {

namespace {

constexpr std::string_view providerPrefix = "provider.";

/// The names that the cursor must be in.
std::vector<std::string> namesIn(std::span<const CompletionFilterPredicate> predicates) {
  std::vector<std::string> names;
  for (const CompletionFilterPredicate& predicate : predicates)
    names.push_back(std::get<CompletionFilterPredicate::CursorIn>(predicate.test).capture.name);
  std::ranges::sort(names);
  names.erase(std::ranges::unique(names).begin(), names.end());
  return names;
}

/// One match, looked at from the cursor.
class CompletionMatch {
public:
  CompletionMatch(const Query::Match& match, std::int64_t offset)
      : match_(match), offset_(offset) {}

  /// Hides what the cursor isn't in. False if some name isn't met.
  bool meets(std::vector<std::string> names) {
    std::vector<std::string> unmet = names;
    TextRangeSet elsewhere;
    for (const auto& capture : match_.captures()) {
      const TextRange range = capture.node().utf16Range();
      if (std::ranges::binary_search(names, capture.name())) {
        if (range.lowerBound <= offset_ && offset_ <= range.upperBound)
          std::erase(unmet, capture.name());
        else
          elsewhere.insertContentsOf(range);
      }
      if (elsewhere.intersectsContentsOf(range))
        hidden_.insert(capture.node());
    }
    return unmet.empty();
  }

  bool satisfiesPredicates(PredicateEvaluator& evaluator) const {
    const Query& query = match_.query();
    const auto pattern = static_cast<std::size_t>(match_.patternIndex());
    auto isVisible = [this](std::string_view, ParseNode node) { return !hidden_.contains(node); };
    if (!evaluator.satisfies(query.filterPredicates()[pattern], match_, isVisible))
      return false;
    QueryMatchMetadata metadata;
    evaluator.perform(query.propertySetPredicates()[pattern], match_, metadata, isVisible);
    return PredicateEvaluator::satisfies(query.propertyPredicates()[pattern], metadata);
  }

  /// Sets the variables, and tells whether the provider's ranges let the cursor in.
  bool provides(const Parse& parse, CompletionVariables& variables) {
    for (const auto& capture : match_.captures()) {
      if (hidden_.contains(capture.node()))
        continue;
      const std::string& name = capture.name();
      if (name.starts_with(providerPrefix)) {
        if (const auto scoping = fromRawValue<CompletionScopingCapture>(name))
          addScoping(*scoping, capture.node().utf16Range());
      } else if (!name.starts_with('_')) {
        variables.insert_or_assign(name, utf8RepairingUTF16(parse.textFor(capture.node())));
      }
    }
    return provided_.isEmpty() || std::ranges::any_of(provided_.ranges(), [this](TextRange range) {
             return range.lowerBound <= offset_ && offset_ <= range.upperBound;
           });
  }

private:
  void addScoping(CompletionScopingCapture capture, TextRange range) {
    switch (capture) {
    case CompletionScopingCapture::start:
      start_ = range.upperBound;
      return;
    case CompletionScopingCapture::startBefore:
      start_ = range.lowerBound;
      return;
    case CompletionScopingCapture::end:
      return close(range.lowerBound);
    case CompletionScopingCapture::endAfter:
      return close(range.upperBound);
    case CompletionScopingCapture::subtree:
      provided_.insertContentsOf(range);
      return;
    }
  }

  void close(std::int64_t end) {
    if (start_ && *start_ < end)
      provided_.insertContentsOf({*start_, end});
    start_.reset();
  }

  const Query::Match& match_;
  std::int64_t offset_;
  std::unordered_set<ParseNode> hidden_;
  std::optional<std::int64_t> start_;
  TextRangeSet provided_;
};

} // namespace

CompletionFilterPredicate::CompletionFilterPredicate(Name, QueryPredicateArguments arguments) {
  detail::PredicateArguments reader(arguments, "cursorIn", " capture).");
  test = CursorIn{reader.capture()};
}

bool matchesCompletionQuery(const Parse::Layer& layer, const std::shared_ptr<const Query>& query,
                            std::int64_t offset, CompletionVariables& variables) {
  const Parse& parse = layer.parse();
  precondition(offset >= 0 && offset <= parse.count(),
               "A completion was asked for outside the text.");
  const auto root = layer.root();
  if (parse.isEmpty() || !root)
    return false;
  const auto predicates = parse.withErrorHandling(
      [] { return std::string("predicates"); }, layer.configuration(),
      [&] { return &query->customPredicates<CompletionFilterPredicate>(); });
  if (!predicates)
    return false;
  RegularExpressionPass pass;
  PredicateEvaluator evaluator({.text = parse.text(), .pass = &pass});
  const std::int64_t start = std::max<std::int64_t>(offset - 1, 0);
  for (const Query::Match& base : query->matchesStartingAt(*root, {start, start + 1})) {
    CompletionMatch match(base, offset);
    if (match.meets(namesIn((*predicates)[static_cast<std::size_t>(base.patternIndex())])) &&
        match.satisfiesPredicates(evaluator) && match.provides(parse, variables))
      return true;
  }
  return false;
}

} // namespace velmar
