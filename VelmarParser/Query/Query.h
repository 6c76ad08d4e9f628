// A compiled query: patterns of syntax with captures, and what the runtime leaves to its users,
// which is the meaning of capture names and of predicates.
//
//     const auto query = std::make_shared<const Query>(R"(
//       ((call_expression function: (identifier) @function)
//        (#not-eq? @function "require"))
//     )", grammar);
//     for (const QueryMatches::Element& match : QueryMatches(query, tree.rootNode(), range, text))
//       …
//
// `matchesIn` gives the runtime's bare matches, without a look at predicates (QueryMatch.h);
// QueryMatches gives those that the predicates let through (QueryMatches.h).
#pragma once

#include "VelmarCode/Syntax/LexicalSelector.h"
#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Grammar/ParseNode.h"
#include "VelmarParser/Query/QueryError.h"
#include "VelmarParser/Query/QueryNodeTypes.h"
#include "VelmarParser/Query/QueryPredicate.h"
#include "VelmarParser/Query/QueryPredicates.h"
#include "VelmarPlatform/Basics/LockedState.h"

#include <tree_sitter/api.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

/// Immutable once its captures are as they should be, and then shared by any number of threads.
/// Compiled once, so that evaluation parses nothing: patterns of regular expressions, names and
/// numbers are read here.
class Query {
public:
  class Pattern;
  class Patterns;
  class Match;
  class Matches;

  /// A predicate that none of the engine's families knows.
  struct OtherPredicate {
    std::string name;
    std::vector<QueryPredicateArgument> arguments;
  };
  /// For each pattern its predicates, in the order in which they stand there.
  template <class P>
  using ByPattern = std::vector<std::vector<P>>;

  /// Throws QueryError or QueryPredicateError. `text` is UTF-8; it may be anything, though: what
  /// the runtime's compiler can't cope with is a QueryError of kind `structureError`.
  Query(std::string_view text, std::shared_ptr<const Grammar> grammar);
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query();

  [[nodiscard]] const TSQuery* base() const noexcept { return base_.get(); }
  [[nodiscard]] const std::shared_ptr<const Grammar>& grammar() const noexcept { return grammar_; }
  [[nodiscard]] const std::string& text() const noexcept { return text_; }

  /// By capture id.
  [[nodiscard]] const std::vector<std::string>& captureNames() const noexcept {
    return captureNames_;
  }
  /// By capture id. Absent for names that begin with "_" and for those that are no selector.
  [[nodiscard]] const std::vector<std::optional<LexicalSelector>>&
  captureSelectors() const noexcept {
    return captureSelectors_;
  }
  /// The id of the capture of that name. O(captures).
  [[nodiscard]] std::optional<std::int64_t> captureIDNamed(std::string_view name) const;

  [[nodiscard]] std::int64_t patternCount() const noexcept {
    return static_cast<std::int64_t>(filterPredicates_.size());
  }
  [[nodiscard]] Patterns patterns() const;

  [[nodiscard]] const ByPattern<QueryPredicates::Filter>& filterPredicates() const noexcept {
    return filterPredicates_;
  }
  [[nodiscard]] const ByPattern<QueryPredicates::PropertySet>&
  propertySetPredicates() const noexcept {
    return propertySetPredicates_;
  }
  [[nodiscard]] const ByPattern<QueryPredicates::Property>& propertyPredicates() const noexcept {
    return propertyPredicates_;
  }
  [[nodiscard]] const ByPattern<QueryPredicates::CaptureTransform>&
  captureTransformPredicates() const noexcept {
    return captureTransformPredicates_;
  }
  /// Have no effect unless somebody asks for them.
  [[nodiscard]] const ByPattern<OtherPredicate>& otherPredicates() const noexcept {
    return otherPredicates_;
  }

  /// The predicates of a family that the engine doesn't know, by pattern. Read on first use and
  /// kept with the query; any thread. Throws what `P` throws first, each time.
  template <QueryPredicate P>
  [[nodiscard]] const ByPattern<P>& customPredicates() const;

  /// The runtime's matches in `node`, without a look at predicates. The query must outlive them.
  /// Needs "VelmarParser/Query/QueryMatch.h".
  [[nodiscard]] Matches matchesIn(ParseNode node) const;
  /// Those that touch `range`, in UTF-16 code units of the document. An empty range is touched by
  /// the nodes that reach out of it on both sides.
  [[nodiscard]] Matches matchesStartingAt(ParseNode node, TextRange range) const;

  /// Leaves a capture out of all matches to come, for good, which spares the runtime its work.
  /// Names and ids stay. Only before the query is shared. Nothing happens for an id or a name that
  /// the query doesn't have.
  void disableCaptureAt(std::int64_t captureID);
  void disableCaptureNamed(std::string_view name);
  /// Whether the pattern, which must exist, can give a capture of that id. O(1).
  [[nodiscard]] bool patternCaptures(std::int64_t pattern, std::int64_t captureID) const;
  /// Whether some predicate asks where a captured node stands: what its parent or its ancestors
  /// are, or which child it is. Without such, a match depends on nothing outside its own nodes and
  /// their parent.
  [[nodiscard]] bool asksForSurroundings() const;
  /// Whether each pattern has one root, so that the nodes of a match all lie in one of them. Where
  /// that isn't plain, the answer is no.
  [[nodiscard]] bool hasSingleRoots() const noexcept { return hasSingleRoots_; }
  [[nodiscard]] const QueryNodeTypes& nodeTypes() const noexcept { return nodeTypes_; }

private:
  struct Deleter {
    void operator()(TSQuery* query) const noexcept { ts_query_delete(query); }
  };

  void readCaptures();
  void readPredicates(std::int64_t pattern);
  void add(std::int64_t pattern, std::vector<QueryPredicateArgument> arguments);
  template <QueryPredicate P>
  [[nodiscard]] ByPattern<P> readCustomPredicates() const;

  /// One address for each family of predicates.
  template <QueryPredicate P>
  static constexpr char familyMark = 0;

  std::string text_;
  std::shared_ptr<const Grammar> grammar_; // outlives `base_`, which reads its tables
  QueryNodeTypes nodeTypes_;
  std::unique_ptr<TSQuery, Deleter> base_;
  std::vector<std::string> captureNames_;
  std::vector<std::optional<LexicalSelector>> captureSelectors_;
  ByPattern<QueryPredicates::Filter> filterPredicates_;
  ByPattern<QueryPredicates::PropertySet> propertySetPredicates_;
  ByPattern<QueryPredicates::Property> propertyPredicates_;
  ByPattern<QueryPredicates::CaptureTransform> captureTransformPredicates_;
  ByPattern<OtherPredicate> otherPredicates_;
  /// By the mark of their family.
  mutable LockedState<std::map<const void*, std::shared_ptr<const void>>> customPredicates_;
  bool hasSingleRoots_ = true;
};

/// One pattern of a query, which must outlive it.
class Query::Pattern {
public:
  Pattern(const Query& query, std::int64_t index)
      : query_(&query), index_(static_cast<std::uint32_t>(index)) {}

  [[nodiscard]] const Query& query() const noexcept { return *query_; }
  [[nodiscard]] std::int64_t index() const noexcept { return index_; }
  /// Where it stands in the query's text, in bytes.
  [[nodiscard]] Range<std::int64_t> byteRange() const {
    return {ts_query_start_byte_for_pattern(query_->base(), index_),
            ts_query_end_byte_for_pattern(query_->base(), index_)};
  }
  /// Whether it has a single root node.
  [[nodiscard]] bool isRooted() const { return ts_query_is_pattern_rooted(query_->base(), index_); }
  /// Whether it has several root nodes and can begin inside a repetition.
  [[nodiscard]] bool isNonLocal() const {
    return ts_query_is_pattern_non_local(query_->base(), index_);
  }
  /// Whether a match is certain once the step at this offset of the query's text is reached.
  [[nodiscard]] bool isGuaranteedAtByteOffset(std::int64_t offset) const {
    return ts_query_is_pattern_guaranteed_at_step(query_->base(),
                                                  static_cast<std::uint32_t>(offset));
  }

private:
  const Query* query_;
  std::uint32_t index_;
};

/// The patterns of a query, in the order of its text.
class Query::Patterns {
public:
  class Iterator {
  public:
    using value_type = Pattern;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    Iterator(const Query* query, std::int64_t index) : query_(query), index_(index) {}
    Pattern operator*() const { return {*query_, index_}; }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    Iterator operator++(int) { return std::exchange(*this, Iterator(query_, index_ + 1)); }
    bool operator==(const Iterator& other) const { return index_ == other.index_; }

  private:
    const Query* query_ = nullptr;
    std::int64_t index_ = 0;
  };

  explicit Patterns(const Query& query) : query_(&query) {}

  [[nodiscard]] std::int64_t count() const { return query_->patternCount(); }
  /// Stops the process unless `0 <= index < count()`.
  [[nodiscard]] Pattern operator[](std::int64_t index) const {
    precondition(index >= 0 && index < count(), "A pattern's index lies outside its query.");
    return {*query_, index};
  }
  [[nodiscard]] Iterator begin() const { return {query_, 0}; }
  [[nodiscard]] Iterator end() const { return {query_, count()}; }

private:
  const Query* query_;
};

inline Query::Patterns Query::patterns() const {
  return Patterns(*this);
}

template <QueryPredicate P>
const Query::ByPattern<P>& Query::customPredicates() const {
  const auto kept = [this](std::shared_ptr<const void> family) {
    return customPredicates_.withLock([&](auto& families) {
      auto& known = families[&familyMark<P>];
      if (!known)
        known = std::move(family);
      return known;
    });
  };
  auto family = kept(nullptr);
  if (!family) // Read without the lock: `P` may ask the query for predicates of its own.
    family = kept(std::make_shared<const ByPattern<P>>(readCustomPredicates<P>()));
  return *static_cast<const ByPattern<P>*>(family.get());
}

template <QueryPredicate P>
Query::ByPattern<P> Query::readCustomPredicates() const {
  ByPattern<P> result(otherPredicates_.size());
  for (std::size_t pattern = 0; pattern < otherPredicates_.size(); ++pattern) {
    for (const OtherPredicate& other : otherPredicates_[pattern]) {
      if (auto predicate = predicateNamed<P>(other.name, other.arguments))
        result[pattern].push_back(std::move(*predicate));
    }
  }
  return result;
}

} // namespace velmar
