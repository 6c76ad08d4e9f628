// A cursor on which hand-written parsers of small languages stand: scan, test, move on. What
// doesn't match moves nothing.
//
//     RegexScanner scanner(text);
//     scanner.scan(oneOrMore(whitespace));
//     const auto name = scanner.scan(oneOrMore(wordCharacter));
//     if (!name)
//       throw ParseError(…, scanner.currentIndex());
//     while (scanner.scan('|')) …
//
// Three kinds of patterns serve everywhere: a plain string or ASCII character; a class of
// characters, or a run of them; and a RegularExpression where the others don't reach. The first two
// walk by characters as people see them (grapheme clusters), so that "e" isn't found in front of an
// accent that combines with it; expressions walk by scalars.
#pragma once

#include "VelmarCore/Text/CharacterClass.h"
#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarPlatform/Basics/Range.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmar {

class TranscodedText;

/// A place in a borrowed UTF-8 text, or in a part of one. Indices count bytes of the whole text; so
/// do the ranges of matches. Everything returned is borrowed from the text, which must outlive it
/// and the scanner.
///
/// A value: a copy goes its own way. One thread at a time. Time is linear in what is passed over;
/// the first regular expression also converts the text once.
class RegexScanner {
public:
  explicit RegexScanner(std::string_view text);
  /// Scans the part `bounds` of `base` and sees nothing of the rest. The bounds must lie within
  /// `base`.
  RegexScanner(std::string_view base, TextRange bounds);
  /// The text must outlive the scanner.
  template <std::same_as<std::string> Temporary>
  explicit RegexScanner(Temporary&& text) = delete;

  [[nodiscard]] std::string_view base() const noexcept { return base_; }
  [[nodiscard]] TextRange bounds() const noexcept { return bounds_; }

  [[nodiscard]] std::int64_t currentIndex() const noexcept { return currentIndex_; }
  /// Goes to `index`, mostly back to an earlier place; stops the process outside the bounds.
  void setCurrentIndex(std::int64_t index);
  /// Back to the start of the bounds.
  void reset() noexcept { currentIndex_ = bounds_.lowerBound; }

  [[nodiscard]] bool isAtEnd() const noexcept { return currentIndex_ == bounds_.upperBound; }
  /// What is still to be scanned.
  [[nodiscard]] std::string_view remaining() const noexcept {
    return textIn({currentIndex_, bounds_.upperBound});
  }
  /// The part of the base text with that range.
  [[nodiscard]] std::string_view textIn(TextRange range) const noexcept {
    return base_.substr(static_cast<std::size_t>(range.lowerBound),
                        static_cast<std::size_t>(range.length()));
  }
  /// What was passed over since the scanner stood at `index`.
  [[nodiscard]] std::string_view textSince(std::int64_t index) const {
    return textIn({index, currentIndex_});
  }

  /// Moves one character on; false at the end.
  bool advance();
  /// The character here; absent at the end.
  [[nodiscard]] std::optional<std::string_view> peek() const;
  /// Whether `character` stands here; false at the end.
  [[nodiscard]] bool peek(std::string_view character) const;
  [[nodiscard]] bool peek(char character) const { return peek({&character, 1}); }
  /// Whether a character of the class stands here; false at the end.
  [[nodiscard]] bool peek(const CharacterClass& characters) const;
  /// The character here, which is moved past.
  std::optional<std::string_view> scanCharacter();

  /// Moves past what stands here if it matches, and gives it; absent at the end, whatever the
  /// pattern.
  std::optional<std::string_view> scan(std::string_view text);
  std::optional<std::string_view> scan(char character) { return scan({&character, 1}); }
  std::optional<std::string_view> scan(const CharacterClass& characters);
  std::optional<std::string_view> scan(const CharacterRun& run);
  /// `^` matches here and looking behind sees nothing. `pass`: see RegularExpressionPass.
  std::optional<RegularExpression::Match> scan(const RegularExpression& expression,
                                               RegularExpressionPass* pass = nullptr);

  /// Moves to the next place where the pattern matches, or to the end if there is none, and gives
  /// the range passed over; absent if that is empty.
  std::optional<TextRange> scanUpTo(std::string_view text);
  std::optional<TextRange> scanUpTo(char character) { return scanUpTo({&character, 1}); }
  std::optional<TextRange> scanUpTo(const CharacterClass& characters);
  std::optional<TextRange> scanUpTo(const RegularExpression& expression,
                                    RegularExpressionPass* pass = nullptr);

private:
  /// Moves to `end` and gives what lies between.
  std::string_view take(std::int64_t end);
  std::optional<TextRange> moveTo(std::int64_t index);
  /// The end of the run of characters from here on which are in the class, or aren't.
  [[nodiscard]] std::int64_t endOfRun(const CharacterClass& characters) const;
  [[nodiscard]] bool search(const RegularExpression& expression, CompiledPattern::Start start,
                            RegularExpressionPass* pass, CompiledPattern::Groups& groups);

  std::string_view base_;
  TextRange bounds_;
  std::int64_t currentIndex_ = 0;
  /// The base up to the end of the bounds, made for the first regular expression and shared by
  /// copies.
  std::shared_ptr<const TranscodedText> transcoded_;
};

} // namespace velmar
