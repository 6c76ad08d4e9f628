// All matches of a regular expression in a text, one after the other: `for (const auto& match :
// expression.matchesIn(text))`.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <source_location>
#include <string_view>
#include <utility>

namespace velmar {

struct RegularExpressionMatchesOptions {
  /// Whether each match must start right where the search for it starts.
  CompiledPattern::Start start = CompiledPattern::Start::anywhere;
  /// What the searches are charged to; must outlive them.
  RegularExpressionPass* pass = nullptr;
};

/// A sequence of matches. Each search begins at the end of the last match, or one character behind
/// it if that was empty, so the sequence always ends. What lies in front stays in sight: `^`
/// matches at the start of the text or of a line only, and looking behind works. No search begins
/// at the end of the text; so an empty text has no matches.
///
/// Borrows the text. Walking it any number of times starts anew each time; an iterator belongs to
/// one thread at a time.
template <class Unit>
class RegularExpressionMatches {
public:
  using View = std::basic_string_view<Unit>;
  using Match = RegularExpressionMatch<Unit>;

  RegularExpressionMatches(RegularExpression expression, View text,
                           RegularExpressionMatchesOptions options = {})
      : expression_(std::move(expression)), text_(text), options_(options) {}

  /// Stands at a match or at the end. Move-only, must not outlive the sequence.
  class Iterator {
  public:
    using value_type = Match;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const RegularExpressionMatches& matches);
    Iterator(const Iterator&) = delete;
    Iterator& operator=(const Iterator&) = delete;
    Iterator(Iterator&&) noexcept;
    Iterator& operator=(Iterator&&) noexcept;
    ~Iterator();

    /// Stops the process at the end.
    const Match& operator*() const {
      if (!match_)
        preconditionFailed("There is no match behind the last.", std::source_location::current());
      return *match_;
    }
    const Match* operator->() const { return &**this; }
    Iterator& operator++() {
      advance();
      return *this;
    }
    void operator++(int) { advance(); }
    bool operator==(std::default_sentinel_t) const noexcept { return !match_.has_value(); }

  private:
    struct Searches;

    void advance();

    const RegularExpressionMatches* matches_;
    std::unique_ptr<Searches> searches_;
    std::optional<Match> match_;
  };

  [[nodiscard]] Iterator begin() const { return Iterator(*this); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return std::default_sentinel; }

private:
  RegularExpression expression_;
  View text_;
  RegularExpressionMatchesOptions options_;
};

extern template class RegularExpressionMatches<char>;
extern template class RegularExpressionMatches<char16_t>;

} // namespace velmar
