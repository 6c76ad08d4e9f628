// Classes of characters for hand-written scanners, such as "a digit" or "a brace or a backslash".
// They stand for the bracket expressions that a regular expression would have, and cost a look into
// a table.
//
//     using namespace CharacterClasses;
//     constexpr CharacterClass wordCharacter = letter | digit | CharacterClass::anyOf("_");
//     scanner.scan(oneOrMore(whitespace));
//     scanner.scanUpTo(CharacterClass::anyOf("{\\"));
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"

#include <array>
#include <cstdint>
#include <source_location>
#include <string_view>

namespace velmar {

/// A set of characters (grapheme clusters): any of the ASCII ones, and of the others none, all, or
/// the white space.
///
/// An ASCII letter with an accent that combines isn't ASCII. CR LF, one character, is in a class
/// that has both; and in the complement of one that hasn't.
class CharacterClass {
public:
  /// The characters of `characters`, which must be ASCII (else the process stops).
  [[nodiscard]] static constexpr CharacterClass anyOf(std::string_view characters) {
    CharacterClass result;
    for (const char character : characters)
      result.insert(character);
    return result;
  }
  /// From `first` to `last`, both included and ASCII.
  [[nodiscard]] static constexpr CharacterClass range(char first, char last) {
    CharacterClass result;
    for (char character = first; character < last; ++character)
      result.insert(character);
    result.insert(last);
    return result;
  }
  /// All white space in Unicode's sense, line breaks included.
  [[nodiscard]] static constexpr CharacterClass anyWhitespace() {
    CharacterClass result = anyOf("\t\n\v\f\r ");
    result.others_ = Others::whitespace;
    return result;
  }

  /// Whether `character`, one grapheme cluster in UTF-8, is in the class. False for an empty one.
  [[nodiscard]] bool contains(std::string_view character) const noexcept;
  /// The same, so that a class serves wherever a question about a character is asked for.
  [[nodiscard]] bool operator()(std::string_view character) const noexcept {
    return contains(character);
  }
  /// Whether an ASCII character is in the class.
  [[nodiscard]] constexpr bool containsASCII(char character) const noexcept {
    const auto value = static_cast<unsigned char>(character);
    return (ascii_[value >> 6 & 1] >> (value & 63) & 1) != 0;
  }

  /// What is in either class.
  [[nodiscard]] constexpr CharacterClass operator|(const CharacterClass& other) const noexcept {
    CharacterClass result;
    result.ascii_ = {ascii_[0] | other.ascii_[0], ascii_[1] | other.ascii_[1]};
    // The bits of the two halves of what isn't ASCII: white space, and all else.
    result.others_ =
        static_cast<Others>(static_cast<unsigned>(others_) | static_cast<unsigned>(other.others_));
    result.lineBreakPair_ =
        lineBreakPair_ || other.lineBreakPair_ || result.hasBothHalvesOfTheLineBreakPair();
    return result;
  }
  /// What isn't in the class.
  [[nodiscard]] constexpr CharacterClass operator!() const noexcept {
    CharacterClass result;
    result.ascii_ = {~ascii_[0], ~ascii_[1]};
    result.others_ = static_cast<Others>(static_cast<unsigned>(others_) ^ 3U);
    result.lineBreakPair_ = !lineBreakPair_;
    return result;
  }

  bool operator==(const CharacterClass&) const = default;

private:
  enum class Others : std::uint8_t { none = 0, whitespace = 1, allButWhitespace = 2, all = 3 };

  constexpr void insert(char character) {
    const auto value = static_cast<unsigned char>(character);
    if (value >= 0x80)
      preconditionFailed("A character class lists ASCII characters only.",
                         std::source_location::current());
    ascii_[value >> 6] |= std::uint64_t{1} << (value & 63);
    lineBreakPair_ = hasBothHalvesOfTheLineBreakPair();
  }
  [[nodiscard]] constexpr bool hasBothHalvesOfTheLineBreakPair() const noexcept {
    return containsASCII('\r') && containsASCII('\n');
  }

  std::array<std::uint64_t, 2> ascii_{};
  Others others_ = Others::none;
  bool lineBreakPair_ = false;
};

/// One or more characters of a class in a row, as many as there are.
struct CharacterRun {
  CharacterClass characters;
};
[[nodiscard]] constexpr CharacterRun oneOrMore(CharacterClass characters) noexcept {
  return {characters};
}

/// The classes that most small languages need. All but `whitespace` are ASCII.
namespace CharacterClasses {

inline constexpr CharacterClass whitespace = CharacterClass::anyWhitespace();
inline constexpr CharacterClass lineBreak = CharacterClass::anyOf("\r\n");
inline constexpr CharacterClass digit = CharacterClass::range('0', '9');
inline constexpr CharacterClass hexadecimalDigit =
    digit | CharacterClass::range('a', 'f') | CharacterClass::range('A', 'F');
inline constexpr CharacterClass letter =
    CharacterClass::range('a', 'z') | CharacterClass::range('A', 'Z');
inline constexpr CharacterClass letterOrDigit = letter | digit;
inline constexpr CharacterClass wordCharacter = letterOrDigit | CharacterClass::anyOf("_");

} // namespace CharacterClasses

} // namespace velmar
