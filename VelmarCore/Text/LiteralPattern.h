// Patterns that are only text. Most patterns in query files are `^(if|else|while)$` and the like:
// what they look for can be found by comparing units, many times faster than by running an
// expression engine.
//
// This knows nothing of the engine, and must agree with it in every answer; a pattern that isn't
// understood in full is left to the engine. RegularExpression is the only user.
#pragma once

#include "VelmarCore/Text/RegularExpressionOptions.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// One literal, or several of which the first that fits counts, with or without an anchor at either
/// end.
///
/// Understood are literals (with punctuation behind a backslash), one group around the whole, and,
/// behind `^` only, alternatives in that group. Letter case and comments count as written.
/// Immutable; any thread.
class LiteralPattern {
public:
  /// Absent if `pattern` needs the engine. `pattern` must be one that the engine has accepted.
  [[nodiscard]] static std::optional<LiteralPattern> fromPattern(std::u16string_view pattern,
                                                                 RegularExpressionOptions options);

  struct Hit {
    std::size_t start = 0;
    std::size_t end = 0;
    bool operator==(const Hit&) const = default;
  };
  /// The first place at or behind `from` where the pattern matches, in units of `text`; `from`
  /// alone is tried if `anchored`. The capture group, if there is one, has the same range as the
  /// match.
  [[nodiscard]] std::optional<Hit> find(std::u16string_view text, std::size_t from,
                                        bool anchored) const;
  [[nodiscard]] std::optional<Hit> find(std::string_view text, std::size_t from,
                                        bool anchored) const;

private:
  template <class Unit>
  struct Alternative {
    std::basic_string<Unit> text;
    std::size_t order = 0;
  };
  /// Sorted by first unit and then by order, so that those which can start at a place lie together.
  template <class Unit>
  using Alternatives = std::vector<Alternative<Unit>>;

  LiteralPattern() = default;
  void setAlternatives(const std::vector<std::u16string>& texts);
  template <class Unit>
  std::optional<Hit> findImpl(const Alternatives<Unit>& alternatives,
                              std::basic_string_view<Unit> text, std::size_t from,
                              bool anchored) const;
  template <class Unit>
  std::optional<Hit> findAt(const Alternatives<Unit>& alternatives,
                            std::basic_string_view<Unit> text, std::size_t start) const;

  Alternatives<char16_t> units_;
  Alternatives<char> bytes_;
  bool atStart_ = false;
  bool atEnd_ = false;
};

} // namespace velmar
