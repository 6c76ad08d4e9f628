// The matches of a query that its predicates let through, each with its metadata.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Query/PredicateEvaluation.h"
#include "VelmarParser/Query/QueryMatch.h"
#include "VelmarParser/Query/QueryMatchMetadata.h"

#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

template <TextEnumeration K>
class KeyedMetadataQueryMatches;

/// A walk that hasn't begun: `for (const QueryMatches::Element& match : QueryMatches(query, node,
/// range, text))`.
///
/// Nodes belong to the tree and the text is borrowed: no edit may come before the walk is over and
/// its matches are gone. Each walk is one thread's.
class QueryMatches {
public:
  class Iterator;

  /// A match that is left. Its metadata may be changed.
  struct Element {
    Query::Match base;
    QueryMatchMetadata metadata;

    [[nodiscard]] std::int64_t patternIndex() const noexcept { return base.patternIndex(); }
    [[nodiscard]] Query::Match::Captures captures() const { return base.captures(); }
    template <TextEnumeration T>
    [[nodiscard]] Query::Match::TypedCaptures<T> capturesNamed() const {
      return base.capturesNamed<T>();
    }
    [[nodiscard]] Query::Match::CaptureNodes nodesFor(const QueryPredicateCapture& capture) const {
      return base.nodesFor(capture);
    }
  };

  /// The matches in `node` that touch `range`, in UTF-16 code units; none without a node. Each
  /// match starts with `properties`. Searches are charged to `pass`, if given, which must outlive
  /// the walks; without one, each walk has a pass of its own.
  QueryMatches(std::shared_ptr<const Query> query, std::optional<ParseNode> node, TextRange range,
               const DocumentText& text, QueryMatchMetadata properties = {},
               RegularExpressionPass* pass = nullptr)
      : query_(std::move(query)), node_(node), range_(range), text_(&text),
        properties_(std::move(properties)), pass_(pass) {}

  /// Makes walks end soon after `token` is cancelled, as if there were no more matches, also where
  /// none is found for long. The token must outlive them.
  [[nodiscard]] QueryMatches cancelledBy(const CancellationToken& token) && {
    cancel_ = &token;
    return std::move(*this);
  }

  /// Makes walks tell `listener` of each match before the predicates are asked. It must outlive
  /// them.
  template <class Listener>
  [[nodiscard]] QueryMatches seenBy(Listener& listener) && {
    listener_ = &listener;
    seen_ = [](void* object, const Query::Match& match) {
      (*static_cast<Listener*>(object))(match);
    };
    return std::move(*this);
  }

  [[nodiscard]] const std::shared_ptr<const Query>& query() const noexcept { return query_; }
  [[nodiscard]] const std::optional<ParseNode>& node() const noexcept { return node_; }
  [[nodiscard]] TextRange range() const noexcept { return range_; }

  /// The same matches with their metadata read by the cases of `K`.
  template <TextEnumeration K>
  [[nodiscard]] KeyedMetadataQueryMatches<K> withMetadataKeyedBy() const {
    return KeyedMetadataQueryMatches<K>(*this);
  }

  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return std::default_sentinel; }

private:
  std::shared_ptr<const Query> query_;
  std::optional<ParseNode> node_;
  TextRange range_;
  const DocumentText* text_;
  QueryMatchMetadata properties_;
  RegularExpressionPass* pass_;
  const CancellationToken* cancel_ = nullptr;
  void* listener_ = nullptr;
  void (*seen_)(void*, const Query::Match&) = nullptr;
};

/// A walk under way; move-only. The element that it stands at is reused for the next one: copy it
/// to keep it, and keep the query then too.
class QueryMatches::Iterator {
public:
  using value_type = Element;
  using difference_type = std::ptrdiff_t;

  explicit Iterator(const QueryMatches& matches);

  [[nodiscard]] Element& operator*() noexcept { return element_; }
  [[nodiscard]] const Element& operator*() const noexcept { return element_; }
  [[nodiscard]] Element* operator->() noexcept { return &element_; }
  [[nodiscard]] const Element* operator->() const noexcept { return &element_; }
  Iterator& operator++() {
    advance();
    return *this;
  }
  void operator++(int) { advance(); }
  [[nodiscard]] bool operator==(std::default_sentinel_t) const noexcept { return isAtEnd_; }

  /// The regular expressions that used up their time in this walk and matched nothing from then on.
  [[nodiscard]] std::vector<std::string> patternsOff() const { return pass_->patternsOff(); }

  /// Whether the query has so many matches at once here that some were dropped (see
  /// `mostMatchesInProgress`).
  [[nodiscard]] bool hasDroppedMatches() const noexcept {
    return cursor_ && cursor_->hasDroppedMatches();
  }

private:
  void advance();
  bool survives();

  std::shared_ptr<const Query> query_;
  QueryMatchMetadata properties_;
  std::unique_ptr<RegularExpressionPass> ownPass_; // on the heap, for `evaluator_` points to it
  RegularExpressionPass* pass_;
  PredicateEvaluator evaluator_;
  std::optional<QueryCursor> cursor_; // absent without a node
  void* listener_;
  void (*seen_)(void*, const Query::Match&);
  Element element_;
  bool isAtEnd_ = false;
};

inline QueryMatches::Iterator QueryMatches::begin() const {
  return Iterator(*this);
}

/// QueryMatches whose metadata are read by the cases of an enumeration.
template <TextEnumeration K>
class KeyedMetadataQueryMatches {
public:
  /// A view of the match that the walk stands at.
  struct Element {
    const Query::Match& base;
    KeyedQueryMatchMetadata<K, QueryMatchMetadata> metadata;

    [[nodiscard]] std::int64_t patternIndex() const noexcept { return base.patternIndex(); }
    [[nodiscard]] Query::Match::Captures captures() const { return base.captures(); }
    template <TextEnumeration T>
    [[nodiscard]] Query::Match::TypedCaptures<T> capturesNamed() const {
      return base.capturesNamed<T>();
    }
    [[nodiscard]] Query::Match::CaptureNodes nodesFor(const QueryPredicateCapture& capture) const {
      return base.nodesFor(capture);
    }
  };

  class Iterator {
  public:
    using value_type = Element;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(QueryMatches::Iterator base) noexcept : base_(std::move(base)) {}
    [[nodiscard]] Element operator*() {
      return {(*base_).base, KeyedQueryMatchMetadata<K, QueryMatchMetadata>((*base_).metadata)};
    }
    Iterator& operator++() {
      ++base_;
      return *this;
    }
    void operator++(int) { ++base_; }
    [[nodiscard]] bool operator==(std::default_sentinel_t end) const noexcept {
      return base_ == end;
    }

  private:
    QueryMatches::Iterator base_;
  };

  explicit KeyedMetadataQueryMatches(QueryMatches base) : base_(std::move(base)) {}

  [[nodiscard]] const QueryMatches& base() const noexcept { return base_; }
  [[nodiscard]] Iterator begin() const { return Iterator(base_.begin()); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return std::default_sentinel; }

private:
  QueryMatches base_;
};

} // namespace velmar
