// A pattern in the form that the expression engine runs, with matchers kept at hand. This is the
// one place that talks to the engine. RegularExpression is what everybody else uses.
#pragma once

#include "VelmarCore/Text/RegularExpressionOptions.h"
#include "VelmarPlatform/Basics/Range.h"
#include "VelmarPlatform/Basics/Result.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

class LiteralPattern;
class RegularExpressionError;

/// One compiled pattern. Immutable for its users, so any number of threads may search with one at
/// the same time: each search borrows a matcher, and a small lock-free set keeps the matchers that
/// aren't in use.
class CompiledPattern {
public:
  enum class Start : std::uint8_t { anywhere, anchored };
  enum class Outcome : std::uint8_t {
    found,
    notFound,
    /// The time or the memory allowed for one search ran out.
    stopped,
  };
  /// What a search came to. `time` is zero for searches that were too short for looking at the
  /// clock to pay.
  struct Search {
    Outcome outcome = Outcome::notFound;
    std::chrono::nanoseconds time{0};
  };
  /// The ranges of a match in the units searched.
  struct Groups {
    TextRange whole;
    /// Those of each capture group, absent if it took no part.
    std::vector<std::optional<TextRange>> captures;
    bool operator==(const Groups&) const = default;
  };

  [[nodiscard]] static Result<std::shared_ptr<const CompiledPattern>, RegularExpressionError>
  compile(std::string pattern, RegularExpressionOptions options);

  ~CompiledPattern();
  CompiledPattern(const CompiledPattern&) = delete;
  CompiledPattern& operator=(const CompiledPattern&) = delete;

  [[nodiscard]] const std::string& pattern() const noexcept { return pattern_; }
  [[nodiscard]] RegularExpressionOptions options() const noexcept { return options_; }
  [[nodiscard]] std::int64_t groupCount() const noexcept { return groupCount_; }
  /// The number of the group named `name`, from 1.
  [[nodiscard]] std::optional<std::int64_t> groupNamed(std::string_view name) const;
  /// Set if the pattern can be found without the engine.
  [[nodiscard]] const LiteralPattern* literal() const noexcept { return literal_.get(); }

  /// Looks for the pattern in `text` from the unit `from` on; what lies in front of it can be seen
  /// by `^`, `\b` and by looking behind. `groups`, if given, gets the ranges of a match. No
  /// allocation without `groups` once each thread that searches at the same time has its matcher. A
  /// text of 2 GB or more is never searched: `stopped`.
  [[nodiscard]] Search search(std::u16string_view text, std::size_t from, Start start,
                              std::chrono::nanoseconds timeLimit, Groups* groups) const;

private:
  friend class PatternSession;
  struct Engine;
  struct Matcher;

  CompiledPattern(std::string pattern, RegularExpressionOptions options,
                  std::unique_ptr<Engine> engine, std::unique_ptr<LiteralPattern> literal);

  std::string pattern_;
  RegularExpressionOptions options_;
  std::int64_t groupCount_ = 0;
  std::unique_ptr<Engine> engine_;
  std::unique_ptr<LiteralPattern> literal_;
};

/// Several searches with one pattern in one text. The matcher is borrowed and set up once, so each
/// search costs little more than the engine's own work. Borrows pattern and text; one thread.
class PatternSession {
public:
  PatternSession(const CompiledPattern& pattern, std::u16string_view text);
  ~PatternSession();
  PatternSession(const PatternSession&) = delete;
  PatternSession& operator=(const PatternSession&) = delete;

  /// As CompiledPattern::search, by the engine alone: the short cut for literal patterns isn't
  /// taken, and can be tested against this.
  [[nodiscard]] CompiledPattern::Search search(std::size_t from, CompiledPattern::Start start,
                                               std::chrono::nanoseconds timeLimit,
                                               CompiledPattern::Groups* groups);

private:
  const CompiledPattern& pattern_;
  std::size_t length_;
  /// Null if there is no memory for one, or the text is too long.
  std::unique_ptr<CompiledPattern::Matcher> matcher_;
};

} // namespace velmar
