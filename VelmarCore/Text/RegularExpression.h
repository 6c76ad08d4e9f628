// Regular expressions as a value: patterns that arrive at run time, from query files, editor
// configuration, language rules. The syntax is ICU's, with groups named as in `(?<name>…)`.
//
//     const RegularExpression entry(R"((?<key>\w+)\s*=\s*(?<value>.*))");
//     if (const auto match = entry.wholeMatchIn(line))
//       values.emplace(match->textOf("key"), match->textOf("value"));
//
// Every search exists for document text, UTF-16, and for strings, UTF-8; the ranges of a match are
// in units of the text that was searched. Document text is searched in place; a string is first
// converted, unless the pattern is so plain that its bytes will do. Lone surrogates in a document
// match `.` and the like as characters of their own.
//
// No search takes longer than half a second, or more than 64 MB to remember where it might go back
// to; behind that the answer is no match (see RegularExpressionPass for how to hear of it). The
// clock is looked at between steps of the engine: a pattern that, in a loop, looks through all of a
// text of megabytes in each step stops some seconds late.
#pragma once

#include "VelmarCore/Text/CompiledPattern.h"
#include "VelmarCore/Text/RegularExpressionError.h"
#include "VelmarCore/Text/RegularExpressionMatch.h"
#include "VelmarCore/Text/RegularExpressionOptions.h"
#include "VelmarCore/Text/RegularExpressionPass.h"
#include "VelmarPlatform/Basics/Result.h"
#include "VelmarPlatform/Coding/Forward.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <string_view>

namespace velmar {

template <class Unit>
class RegularExpressionMatches;
struct RegularExpressionMatchesOptions;

/// A compiled pattern with its options. Cheap to copy: copies share what was compiled. Immutable;
/// any number of threads may search with one value at the same time.
class RegularExpression {
public:
  using Options = RegularExpressionOptions;
  /// A match in a string: ranges in bytes.
  using Match = RegularExpressionMatch<char>;
  /// A match in a document's text: ranges in UTF-16 code units.
  using DocumentMatch = RegularExpressionMatch<char16_t>;

  /// Throws RegularExpressionError for a pattern that the engine refuses; the empty pattern is one.
  /// "(?:)", which matches the empty text wherever it is asked.
  RegularExpression();
  explicit RegularExpression(std::string pattern, Options options = Options::none);
  /// The same, for callers that go on without the expression if it can't be had.
  [[nodiscard]] static Result<RegularExpression, RegularExpressionError>
  compile(std::string pattern, Options options = Options::none);

  [[nodiscard]] const std::string& pattern() const noexcept { return compiled_->pattern(); }
  [[nodiscard]] Options options() const noexcept { return compiled_->options(); }
  /// How many groups the pattern has, named ones included.
  [[nodiscard]] std::int64_t captureCount() const noexcept { return compiled_->groupCount(); }
  /// The names of all named groups: to be asked before a group is read by name. O(n) in the
  /// pattern.
  [[nodiscard]] std::set<std::string> captureNames() const;

  /// Whether the pattern matches anywhere in `text`. The cheapest question: nothing is allocated
  /// for document text.
  [[nodiscard]] bool hasMatchIn(std::u16string_view text,
                                RegularExpressionPass* pass = nullptr) const;
  [[nodiscard]] bool hasMatchIn(std::string_view text, RegularExpressionPass* pass = nullptr) const;

  /// The leftmost match.
  [[nodiscard]] std::optional<DocumentMatch>
  firstMatchIn(std::u16string_view text, RegularExpressionPass* pass = nullptr) const;
  [[nodiscard]] std::optional<Match> firstMatchIn(std::string_view text,
                                                  RegularExpressionPass* pass = nullptr) const;

  /// The match that starts at the start of `text`.
  [[nodiscard]] std::optional<DocumentMatch>
  prefixMatchIn(std::u16string_view text, RegularExpressionPass* pass = nullptr) const;
  [[nodiscard]] std::optional<Match> prefixMatchIn(std::string_view text,
                                                   RegularExpressionPass* pass = nullptr) const;

  /// The match at the start of `text`, if it reaches to the end. There is no second try: `a|ab`
  /// doesn't match all of "ab", as its first match there is "a". Write `(?:a|ab)$` to have
  /// alternatives tried until one fits.
  [[nodiscard]] std::optional<DocumentMatch>
  wholeMatchIn(std::u16string_view text, RegularExpressionPass* pass = nullptr) const;
  [[nodiscard]] std::optional<Match> wholeMatchIn(std::string_view text,
                                                  RegularExpressionPass* pass = nullptr) const;

  /// All matches in `text`, from the first on, found one by one as they are asked for. `text` must
  /// outlive the answer. Needs "VelmarCore/Text/RegularExpressionMatches.h".
  [[nodiscard]] RegularExpressionMatches<char16_t> matchesIn(std::u16string_view text) const;
  [[nodiscard]] RegularExpressionMatches<char> matchesIn(std::string_view text) const;
  [[nodiscard]] RegularExpressionMatches<char16_t>
  matchesIn(std::u16string_view text, RegularExpressionMatchesOptions options) const;
  [[nodiscard]] RegularExpressionMatches<char>
  matchesIn(std::string_view text, RegularExpressionMatchesOptions options) const;

  /// `replacement` with the groups of `match` filled in: `$1` or `${name}` for a group, `$0` for
  /// the whole match, nothing for a group that took no part. A backslash makes the next character
  /// literal.
  ///
  /// After `$` at most so many digits count as the number of groups has, so that `$10` of a pattern
  /// with three groups is the first group and a "0". A number beyond the groups gives nothing; a
  /// `$` without a number or a known name is literal. Never fails.
  [[nodiscard]] std::string replacementFor(const Match& match, std::string_view replacement) const;
  [[nodiscard]] std::u16string replacementFor(const DocumentMatch& match,
                                              std::u16string_view replacement) const;

  /// Equal in pattern and options; nothing more is compared.
  bool operator==(const RegularExpression& other) const noexcept;

private:
  friend class RegularExpressionPass;
  friend class RegexScanner;
  template <class Unit>
  friend class RegularExpressionMatches;

  explicit RegularExpression(std::shared_ptr<const CompiledPattern> compiled)
      : compiled_(std::move(compiled)) {}

  /// One search within the limits of `pass`, and charged to it.
  [[nodiscard]] bool search(std::u16string_view text, CompiledPattern::Start start,
                            RegularExpressionPass* pass, CompiledPattern::Groups* groups) const;
  /// Whether a search that was made for `pass` found something, after charging it.
  [[nodiscard]] bool settle(CompiledPattern::Search search, RegularExpressionPass* pass) const;
  [[nodiscard]] bool isOff(const RegularExpressionPass* pass) const noexcept;
  [[nodiscard]] static std::chrono::nanoseconds timeLimitOf(const RegularExpressionPass* pass);
  [[nodiscard]] std::optional<DocumentMatch> matchIn(std::u16string_view text,
                                                     CompiledPattern::Start start,
                                                     RegularExpressionPass* pass) const;
  [[nodiscard]] std::optional<Match> matchIn(std::string_view text, CompiledPattern::Start start,
                                             RegularExpressionPass* pass) const;

  std::shared_ptr<const CompiledPattern> compiled_;
};

/// Writes the pattern between slashes, for messages and tests.
std::ostream& operator<<(std::ostream& stream, const RegularExpression& expression);

/// A table of `pattern` and the number `options`. One that doesn't compile can't be decoded.
template <>
struct Coder<RegularExpression> {
  static bool decode(Decoder from, RegularExpression& into);
  static void encode(const RegularExpression& value, Encoder& into);
};

} // namespace velmar
