// Several query texts compiled as one query, so that one walk of the tree serves them all.
#pragma once

#include "VelmarParser/Query/Query.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

/// A query that knows which of its patterns came from which text. A value; copies share the query.
template <class K>
class QuerySet {
public:
  /// Throws QueryError or QueryPredicateError: one text that is wrong makes all of them fail.
  /// Captures of the same name are the same capture, wherever they stand.
  QuerySet(const std::map<K, std::string>& keysWithStrings,
           std::shared_ptr<const Grammar> grammar) {
    std::string text;
    std::vector<std::pair<K, std::int64_t>> starts;
    for (const auto& [key, string] : keysWithStrings) {
      starts.emplace_back(key, static_cast<std::int64_t>(text.size()));
      text += string;
      text += '\n'; // ends a comment that the text may end with
    }
    query_ = std::make_shared<const Query>(text, std::move(grammar));
    for (std::size_t index = 0; index < starts.size(); ++index) {
      const std::int64_t end = index + 1 < starts.size()
                                   ? firstPatternFrom(starts[index + 1].second)
                                   : query_->patternCount();
      const Range range{firstPatternFrom(starts[index].second), end};
      patternRanges_.emplace(starts[index].first, range);
      keysByPatternIndex_.insert(keysByPatternIndex_.end(),
                                 static_cast<std::size_t>(range.length()), starts[index].first);
    }
  }

  [[nodiscard]] const std::shared_ptr<const Query>& query() const noexcept { return query_; }
  /// The key whose text the pattern stands in. Stops the process for an index that the query
  /// doesn't have.
  [[nodiscard]] const K& patternKeyAt(std::int64_t index) const {
    precondition(index >= 0 && index < query_->patternCount(),
                 "A pattern's index lies outside its query set.");
    return keysByPatternIndex_[static_cast<std::size_t>(index)];
  }
  /// The patterns of that key, an empty range if its text has none; absent for a key without a
  /// text.
  [[nodiscard]] std::optional<Range<std::int64_t>> patternRangeFor(const K& key) const {
    const auto found = patternRanges_.find(key);
    return found != patternRanges_.end() ? std::optional(found->second) : std::nullopt;
  }
  /// Where that range begins.
  [[nodiscard]] std::optional<std::int64_t> firstPatternIndexFor(const K& key) const {
    const auto range = patternRangeFor(key);
    return range ? std::optional(range->lowerBound) : std::nullopt;
  }

private:
  [[nodiscard]] std::int64_t firstPatternFrom(std::int64_t byteOffset) const {
    std::int64_t count = 0;
    for (const Query::Pattern pattern : query_->patterns())
      count += pattern.byteRange().lowerBound < byteOffset ? 1 : 0;
    return count;
  }

  std::shared_ptr<const Query> query_;
  std::map<K, Range<std::int64_t>> patternRanges_;
  std::vector<K> keysByPatternIndex_;
};

} // namespace velmar
