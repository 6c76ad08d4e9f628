// Text by the characters that people see: extended grapheme clusters, as the Unicode standard and
// ICU have them. A letter with its accents is one character, a family emoji is one, and so is CR
// LF.
//
//   for (std::string_view character : CharacterView(text))
//     if (!isWhitespace(character)) …
//
// Everything works on UTF-8 and on UTF-16 in place and copies nothing. Indices count bytes or
// UTF-16 units. Text needn't be valid: a bad piece of UTF-8 and a lone surrogate count as U+FFFD.
// All on any thread; nothing is allocated but one break iterator per thread, on the first character
// that needs it (emoji sequences, flags, Indic conjuncts). ASCII takes a few instructions a
// character.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace velmar {

namespace detail {

std::int64_t characterEndImpl(std::string_view text, std::int64_t index);
std::int64_t characterEndImpl(std::u16string_view text, std::int64_t index);
std::int64_t characterStartImpl(std::string_view text, std::int64_t index);
std::int64_t characterStartImpl(std::u16string_view text, std::int64_t index);

/// Whether both units are ASCII and aren't CR LF: there is a boundary between two such, whatever
/// stands around them.
template <class Unit>
[[nodiscard]] constexpr bool surelyApart(Unit first, Unit second) noexcept {
  constexpr int limit = 0x80;
  const auto valueOf = [](Unit unit) {
    if constexpr (sizeof(Unit) == 1)
      return static_cast<int>(static_cast<unsigned char>(unit));
    else
      return static_cast<int>(unit);
  };
  return valueOf(first) < limit && valueOf(second) < limit &&
         !(valueOf(first) == '\r' && valueOf(second) == '\n');
}

template <class TextView>
[[nodiscard]] std::int64_t nextBoundary(TextView text, std::int64_t index) {
  const auto count = static_cast<std::int64_t>(text.size());
  precondition(index >= 0 && index < count, "A character was looked for outside the text.");
  const auto at = static_cast<std::size_t>(index);
  if (index + 1 < count && surelyApart(text[at], text[at + 1]))
    return index + 1;
  return characterEndImpl(text, index);
}

template <class TextView>
[[nodiscard]] std::int64_t previousBoundary(TextView text, std::int64_t index) {
  const auto count = static_cast<std::int64_t>(text.size());
  precondition(index > 0 && index <= count, "A character was looked for outside the text.");
  const auto at = static_cast<std::size_t>(index);
  if (index >= 2 && surelyApart(text[at - 2], text[at - 1]))
    return index - 1;
  return characterStartImpl(text, index);
}

} // namespace detail

/// The end of the character that starts at `index`, which must be below the size (else the process
/// stops). The answer is that for the text from `index` on: what stands in front of it isn't looked
/// at. O(length of the character).
[[nodiscard]] inline std::int64_t nextCharacterBoundary(std::string_view text, std::int64_t index) {
  return detail::nextBoundary(text, index);
}
[[nodiscard]] inline std::int64_t nextCharacterBoundary(std::u16string_view text,
                                                        std::int64_t index) {
  return detail::nextBoundary(text, index);
}

/// The last character boundary in front of `index`, which must be above 0 and at most the size
/// (else the process stops); it may lie inside a character or a scalar. O(length of the character),
/// or of the row of flags that it ends.
[[nodiscard]] inline std::int64_t previousCharacterBoundary(std::string_view text,
                                                            std::int64_t index) {
  return detail::previousBoundary(text, index);
}
[[nodiscard]] inline std::int64_t previousCharacterBoundary(std::u16string_view text,
                                                            std::int64_t index) {
  return detail::previousBoundary(text, index);
}

/// Whether a character starts or ends at `index`: both ends of the text are boundaries. `index` is
/// at most the size.
[[nodiscard]] bool isCharacterBoundary(std::string_view text, std::int64_t index);
[[nodiscard]] bool isCharacterBoundary(std::u16string_view text, std::int64_t index);

/// The first or last character, a view into `text`; empty if the text is.
[[nodiscard]] std::string_view firstCharacter(std::string_view text);
[[nodiscard]] std::u16string_view firstCharacter(std::u16string_view text);
[[nodiscard]] std::string_view lastCharacter(std::string_view text);
[[nodiscard]] std::u16string_view lastCharacter(std::u16string_view text);

/// The number of characters. O(n).
[[nodiscard]] std::int64_t characterCount(std::string_view text);
[[nodiscard]] std::int64_t characterCount(std::u16string_view text);

/// Whether the scalar has the Unicode property White_Space: tab to CR, blank, no-break blanks, the
/// line separators, …
[[nodiscard]] bool isWhitespaceScalar(char32_t scalar) noexcept;

/// Whether `character` is white space: its first scalar decides. False for an empty one.
[[nodiscard]] bool isWhitespace(std::string_view character) noexcept;
[[nodiscard]] bool isWhitespace(std::u16string_view character) noexcept;

/// Whether `character` ends a line by Unicode's reckoning: LF, vertical tab, form feed, CR, CR LF,
/// U+0085, U+2028, U+2029. Its first scalar decides. False for an empty one.
[[nodiscard]] bool isNewline(std::string_view character) noexcept;
[[nodiscard]] bool isNewline(std::u16string_view character) noexcept;

/// The characters of a text from first to last, each as a view into it. The text must outlive what
/// is read from it.
template <class TextView>
class BasicCharacterView {
public:
  class Iterator {
  public:
    using iterator_concept = std::bidirectional_iterator_tag;
    using iterator_category = std::input_iterator_tag; // it gives values, not references
    using value_type = TextView;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = TextView;

    Iterator() = default;

    [[nodiscard]] TextView operator*() const {
      precondition(start_ < end_, "The end of a text has no character.");
      return text_.substr(static_cast<std::size_t>(start_),
                          static_cast<std::size_t>(end_ - start_));
    }
    Iterator& operator++() {
      precondition(start_ < end_, "There is nothing behind the end of a text.");
      start_ = end_;
      findEnd();
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    Iterator& operator--() {
      end_ = start_;
      start_ = detail::previousBoundary(text_, start_);
      return *this;
    }
    Iterator operator--(int) {
      Iterator before = *this;
      --*this;
      return before;
    }
    /// Iterators over one text are equal where they stand at one character.
    bool operator==(const Iterator& other) const noexcept { return start_ == other.start_; }

    /// Where the character starts in the text.
    [[nodiscard]] std::int64_t index() const noexcept { return start_; }

  private:
    friend class BasicCharacterView;
    Iterator(TextView text, std::int64_t start) : text_(text), start_(start) { findEnd(); }
    void findEnd() {
      const auto count = static_cast<std::int64_t>(text_.size());
      end_ = start_ < count ? detail::nextBoundary(text_, start_) : start_;
    }

    TextView text_;
    std::int64_t start_ = 0;
    std::int64_t end_ = 0; // start_ exactly at the end of the text
  };

  explicit BasicCharacterView(TextView text) : text_(text) {}

  [[nodiscard]] Iterator begin() const { return {text_, 0}; }
  [[nodiscard]] Iterator end() const { return {text_, static_cast<std::int64_t>(text_.size())}; }

private:
  TextView text_;
};

using CharacterView = BasicCharacterView<std::string_view>;
using UTF16CharacterView = BasicCharacterView<std::u16string_view>;

} // namespace velmar
