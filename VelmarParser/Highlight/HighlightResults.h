// What a layer's highlights query finds in a range: spans to paint, and the matches behind them.
#pragma once

#include "VelmarParser/Query/Query.h"
#include "VelmarPlatform/Basics/Range.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// A value of its own: nothing in it is a view of the document, so it may outlive edits and go to
/// another thread. Its matches lie in four flat lists, and what is read of one of them is a view of
/// these.
class HighlightResults {
public:
  /// One capture to paint.
  struct Span {
    /// The whole node, also where it reaches out of the range asked for.
    TextRange range;
    /// An index into `captureSelectors()`.
    std::int64_t captureIndex = 0;
    std::int64_t priority = 0;
    /// Whether what was painted below shouldn't show through.
    bool reset = false;
    bool operator==(const Span&) const = default;
  };

  /// One node under the name of a capture, painted or not.
  struct Capture {
    TextRange range;
    /// The capture's id in the query.
    std::int64_t index = 0;
  };

  class Match;

  /// In the order to paint in: by range, an outer one before what it holds, and on one range by
  /// priority and then by how specific the selector is. Whoever paints them one after the other
  /// gets the right picture.
  [[nodiscard]] std::span<const Span> spans() const noexcept { return spans_; }
  /// By capture id; absent for captures that aren't painted.
  [[nodiscard]] std::span<const std::optional<LexicalSelector>> captureSelectors() const noexcept {
    return query_ ? std::span<const std::optional<LexicalSelector>>(query_->captureSelectors())
                  : std::span<const std::optional<LexicalSelector>>();
  }
  /// The number of matches that the predicates let through, in the order in which they were found.
  [[nodiscard]] std::int64_t matchCount() const noexcept {
    return static_cast<std::int64_t>(matches_.size());
  }
  /// Good as long as these results. Stops the process unless `0 <= index < matchCount()`.
  [[nodiscard]] Match match(std::int64_t index) const;
  [[nodiscard]] auto matches() const;

private:
  friend class HighlightBuilder;

  struct Property {
    std::optional<std::int64_t> captureID; // absent for a property of the match
    std::string key;
    std::string value;
  };
  struct MatchRecord {
    std::int64_t patternIndex;
    std::size_t captures; // where its captures and properties end; they begin where those of the
                          // match before end
    std::size_t properties;
  };

  std::shared_ptr<const Query> query_;
  std::vector<Span> spans_;
  std::vector<MatchRecord> matches_;
  std::vector<Capture> captures_;
  std::vector<Property> properties_;
};

/// One match of the results, which must outlive it.
class HighlightResults::Match {
public:
  [[nodiscard]] std::int64_t patternIndex() const noexcept { return record().patternIndex; }
  /// In the order of the runtime's match.
  [[nodiscard]] std::span<const Capture> captures() const;
  [[nodiscard]] const std::string& nameOf(const Capture& capture) const {
    return results_->query_->captureNames()[static_cast<std::size_t>(capture.index)];
  }
  /// Those of that name, as a view of the results and of `name`.
  [[nodiscard]] auto capturesNamed(std::string_view name) const {
    return captures() | std::views::filter([match = *this, name](const Capture& capture) {
             return match.nameOf(capture) == name;
           });
  }
  /// A property of the match: the empty text for one without a value, absent for one that isn't
  /// set.
  [[nodiscard]] std::optional<std::string_view> metadataFor(std::string_view key) const {
    return property(std::nullopt, key);
  }
  /// A property of one of its captures.
  [[nodiscard]] std::optional<std::string_view> metadataFor(const Capture& capture,
                                                            std::string_view key) const {
    return property(capture.index, key);
  }

private:
  friend class HighlightResults;
  Match(const HighlightResults& results, std::size_t index) : results_(&results), index_(index) {}

  [[nodiscard]] const MatchRecord& record() const noexcept { return results_->matches_[index_]; }
  [[nodiscard]] std::optional<std::string_view> property(std::optional<std::int64_t> captureID,
                                                         std::string_view key) const;

  const HighlightResults* results_;
  std::size_t index_;
};

inline auto HighlightResults::matches() const {
  return std::views::iota(std::int64_t{0}, matchCount()) |
         std::views::transform([this](std::int64_t index) { return match(index); });
}

} // namespace velmar
