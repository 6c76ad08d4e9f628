// What a query finds, as the runtime reports it: matches with their captures, without a look at
// predicates.
#pragma once

#include "VelmarCore/Concurrency/CancellationToken.h"
#include "VelmarParser/Grammar/ParseNode.h"
#include "VelmarParser/Query/Query.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <tree_sitter/api.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

/// A match: a pattern of the query and the nodes that its captures stand for. Its nodes are valid
/// while their tree stands, and it borrows the query. A copy has captures of its own.
class Query::Match {
public:
  /// A node under the name that a capture gives it.
  class Capture {
  public:
    Capture(const Query& query, TSQueryCapture base) noexcept : query_(&query), base_(base) {}

    [[nodiscard]] TSQueryCapture base() const noexcept { return base_; }
    /// The capture's id.
    [[nodiscard]] std::int64_t index() const noexcept { return base_.index; }
    [[nodiscard]] const std::string& name() const { return query_->captureNames()[base_.index]; }
    [[nodiscard]] const std::optional<LexicalSelector>& selector() const {
      return query_->captureSelectors()[base_.index];
    }
    [[nodiscard]] ParseNode node() const noexcept { return ParseNode(base_.node); }

  private:
    const Query* query_;
    TSQueryCapture base_;
  };

  /// A capture whose name is a case of `T`.
  template <TextEnumeration T>
  struct TypedCapture {
    Capture base;
    T name;
    [[nodiscard]] ParseNode node() const noexcept { return base.node(); }
  };

  class Captures;
  class CaptureNodes;
  template <TextEnumeration T>
  class TypedCaptures;

  explicit Match(const Query& query) noexcept : query_(&query) {}
  /// A match of the runtime's, whose captures are copied.
  Match(const Query& query, const TSQueryMatch& base) : query_(&query) { assign(base); }

  /// Takes another match of the same query, in the memory that this one has.
  void assign(const TSQueryMatch& base) {
    id_ = base.id;
    patternIndex_ = base.pattern_index;
    captures_.assign(base.captures, base.captures + base.capture_count);
  }

  [[nodiscard]] const Query& query() const noexcept { return *query_; }
  /// The runtime's record, good as long as this match is there and stays as it is.
  [[nodiscard]] TSQueryMatch base() const noexcept {
    return {.id = id_,
            .pattern_index = patternIndex_,
            .capture_count = static_cast<std::uint16_t>(captures_.size()),
            .captures = captures_.data()};
  }
  [[nodiscard]] std::int64_t patternIndex() const noexcept { return patternIndex_; }

  /// In the order of their nodes; a view of this match.
  [[nodiscard]] Captures captures() const;
  /// Those whose names are cases of `T`; a view of this match.
  template <TextEnumeration T>
  [[nodiscard]] TypedCaptures<T> capturesNamed() const {
    return TypedCaptures<T>(*this);
  }
  /// The nodes of one capture, none if it has none here; a view of this match.
  [[nodiscard]] CaptureNodes nodesFor(const QueryPredicateCapture& capture) const;

private:
  const Query* query_;
  std::uint32_t id_ = 0;
  std::uint16_t patternIndex_ = 0;
  std::vector<TSQueryCapture> captures_;
};

class Query::Match::Captures {
public:
  class Iterator {
  public:
    using value_type = Capture;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    Iterator(const Query* query, const TSQueryCapture* base) noexcept
        : query_(query), base_(base) {}
    Capture operator*() const noexcept { return {*query_, *base_}; }
    Iterator& operator++() noexcept {
      ++base_;
      return *this;
    }
    Iterator operator++(int) noexcept { return {query_, base_++}; }
    bool operator==(const Iterator& other) const noexcept { return base_ == other.base_; }

  private:
    const Query* query_ = nullptr;
    const TSQueryCapture* base_ = nullptr;
  };

  Captures(const Query& query, std::span<const TSQueryCapture> base) noexcept
      : query_(&query), base_(base) {}

  [[nodiscard]] std::int64_t count() const noexcept {
    return static_cast<std::int64_t>(base_.size());
  }
  /// Stops the process unless `0 <= index < count()`.
  [[nodiscard]] Capture operator[](std::int64_t index) const {
    precondition(index >= 0 && index < count(), "A capture's index lies outside its match.");
    return {*query_, base_[static_cast<std::size_t>(index)]};
  }
  [[nodiscard]] Iterator begin() const noexcept { return {query_, base_.data()}; }
  [[nodiscard]] Iterator end() const noexcept { return {query_, base_.data() + base_.size()}; }

private:
  const Query* query_;
  std::span<const TSQueryCapture> base_;
};

/// The nodes of one capture in a match, in order.
///
/// Found by going through the match's captures, of which there are few: a map of them would cost
/// each match more than all its readers. So walking it is O(captures), and so is each access by
/// index.
class Query::Match::CaptureNodes {
public:
  class Iterator {
  public:
    using value_type = ParseNode;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    Iterator(const CaptureNodes* nodes, const TSQueryCapture* at) noexcept
        : nodes_(nodes), at_(at) {
      skip();
    }
    ParseNode operator*() const noexcept { return ParseNode(at_->node); }
    Iterator& operator++() noexcept {
      ++at_;
      skip();
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    Iterator& operator--() noexcept {
      do
        --at_;
      while (at_->index != nodes_->id_);
      return *this;
    }
    Iterator operator--(int) noexcept {
      Iterator before = *this;
      --*this;
      return before;
    }
    bool operator==(const Iterator& other) const noexcept { return at_ == other.at_; }

  private:
    void skip() noexcept {
      while (at_ != nodes_->end_ && at_->index != nodes_->id_)
        ++at_;
    }
    const CaptureNodes* nodes_ = nullptr;
    const TSQueryCapture* at_ = nullptr;
  };

  CaptureNodes(std::span<const TSQueryCapture> captures, std::int64_t captureID) noexcept
      : begin_(captures.data()), end_(captures.data() + captures.size()), id_(captureID) {}

  [[nodiscard]] Iterator begin() const noexcept { return {this, begin_}; }
  [[nodiscard]] Iterator end() const noexcept { return {this, end_}; }
  [[nodiscard]] bool isEmpty() const noexcept { return begin() == end(); }
  [[nodiscard]] std::int64_t count() const { return std::distance(begin(), end()); }
  /// Stops the process unless `0 <= index < count()`.
  [[nodiscard]] ParseNode operator[](std::int64_t index) const {
    precondition(index >= 0 && index < count(), "A node's index lies outside its capture.");
    return *std::next(begin(), index);
  }

private:
  friend class Iterator;
  const TSQueryCapture* begin_;
  const TSQueryCapture* end_;
  std::int64_t id_;
};

/// The captures of a match whose names are cases of an enumeration; the others are passed over.
template <TextEnumeration T>
class Query::Match::TypedCaptures {
public:
  class Iterator {
  public:
    using value_type = TypedCapture<T>;
    using difference_type = std::ptrdiff_t;
    explicit Iterator(Captures captures) noexcept : at_(captures.begin()), end_(captures.end()) {
      skip();
    }
    TypedCapture<T> operator*() const { return {*at_, *name_}; }
    Iterator& operator++() {
      ++at_;
      skip();
      return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const noexcept { return at_ == end_; }

  private:
    void skip() {
      for (; at_ != end_; ++at_) {
        if ((name_ = fromRawValue<T>((*at_).name())))
          return;
      }
    }
    Captures::Iterator at_;
    Captures::Iterator end_;
    std::optional<T> name_;
  };

  explicit TypedCaptures(const Match& match) noexcept : match_(&match) {}

  [[nodiscard]] Iterator begin() const { return Iterator(match_->captures()); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return std::default_sentinel; }

private:
  const Match* match_;
};

inline Query::Match::Captures Query::Match::captures() const {
  return {*query_, captures_};
}

inline Query::Match::CaptureNodes
Query::Match::nodesFor(const QueryPredicateCapture& capture) const {
  return {captures_, capture.valueID};
}

/// A search that hasn't begun: `for (const Query::Match& match : query.matchesIn(node))`. Borrows
/// the query.
class Query::Matches {
public:
  class Iterator;

  Matches(const Query& query, ParseNode node, Range<TreeByte> byteRange) noexcept
      : query_(&query), node_(node), byteRange_(byteRange) {}

  [[nodiscard]] const Query& query() const noexcept { return *query_; }
  [[nodiscard]] ParseNode node() const noexcept { return node_; }
  [[nodiscard]] Range<TreeByte> byteRange() const noexcept { return byteRange_; }

  /// Starts a search of its own each time.
  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return std::default_sentinel; }

private:
  const Query* query_;
  ParseNode node_;
  Range<TreeByte> byteRange_;
};

/// How many matches, begun and not ended, a search remembers; behind that the one that began first
/// is dropped.
///
/// The runtime compares all that are in progress with each other at each node. Queries that editors
/// use keep fewer than 32 of them, but `(array (_) @a (_) @b)` in a data file of some thousand
/// elements would keep millions, for minutes.
inline constexpr std::uint32_t mostMatchesInProgress = 256;

/// A search under way, which fills one match object after the other. Owns the runtime's cursor; one
/// thread.
class QueryCursor {
public:
  /// A search that is to be given up soon after `cancel`, which must outlive it, is cancelled; it
  /// then has no more matches. Without one it goes on to its end.
  explicit QueryCursor(const Query::Matches& matches, const CancellationToken* cancel = nullptr);

  /// Puts the next match into `match`, which is one of the same query; false at the end.
  bool next(Query::Match& match);
  /// Whether matches have been dropped because too many were in progress.
  [[nodiscard]] bool hasDroppedMatches() const noexcept {
    return base_ && ts_query_cursor_did_exceed_match_limit(base_.get());
  }

private:
  struct Deleter {
    void operator()(TSQueryCursor* cursor) const noexcept { ts_query_cursor_delete(cursor); }
  };
  /// On the heap, for the runtime keeps a pointer to it.
  std::unique_ptr<TSQueryCursorOptions> options_;
  std::unique_ptr<TSQueryCursor, Deleter> base_; // null if there is nothing to find
};

/// Stands at a match, which is reused for the next one: copy it to keep it.
class Query::Matches::Iterator {
public:
  using value_type = Match;
  using difference_type = std::ptrdiff_t;

  explicit Iterator(const Matches& matches) : cursor_(matches), match_(matches.query()) { ++*this; }

  [[nodiscard]] const Match& operator*() const noexcept { return match_; }
  [[nodiscard]] const Match* operator->() const noexcept { return &match_; }
  Iterator& operator++() {
    isAtEnd_ = !cursor_.next(match_);
    return *this;
  }
  void operator++(int) { ++*this; }
  [[nodiscard]] bool operator==(std::default_sentinel_t) const noexcept { return isAtEnd_; }

private:
  QueryCursor cursor_;
  Match match_;
  bool isAtEnd_ = false;
};

inline Query::Matches::Iterator Query::Matches::begin() const {
  return Iterator(*this);
}

} // namespace velmar
