// What kind of token a piece of text is, as far as the engine itself wants to know: whether to
// leave it out of bracket matching and word lists. Colours are a matter of the much finer
// LexicalSelector.
#pragma once

#include "VelmarPlatform/Coding/Forward.h"

#include <array>
#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <span>
#include <string_view>

namespace velmar {

/// An open vocabulary: four classes are known by name, and any other text is a class too. As large
/// as a pointer and as cheap to copy and compare, for a document keeps one for each run of its
/// text. Any thread.
class LexicalClass {
public:
  static const LexicalClass keyword;
  static const LexicalClass comment;
  static const LexicalClass string;
  static const LexicalClass regex;

  /// The class of that name. The text of a class without a name above is kept for the rest of the
  /// process, once.
  /// The class without a name.
  LexicalClass() : LexicalClass(std::string_view()) {}
  explicit LexicalClass(std::string_view rawValue);

  [[nodiscard]] constexpr std::string_view rawValue() const noexcept { return *rawValue_; }
  [[nodiscard]] std::string_view description() const noexcept { return rawValue(); }

  /// The four above, in the order in which a text that names several of them belongs to the first.
  [[nodiscard]] static std::span<const LexicalClass> known() noexcept;

  constexpr bool
  operator==(const LexicalClass&) const noexcept = default; // equal texts are one text
  /// By the text.
  std::strong_ordering operator<=>(const LexicalClass& other) const noexcept {
    return rawValue() <=> other.rawValue();
  }

private:
  static constexpr std::array<std::string_view, 4> knownRawValues{"keyword", "comment", "string",
                                                                  "regex"};

  explicit constexpr LexicalClass(const std::string_view* rawValue) noexcept
      : rawValue_(rawValue) {}

  const std::string_view* rawValue_;
};

inline constexpr LexicalClass LexicalClass::keyword{&knownRawValues[0]};
inline constexpr LexicalClass LexicalClass::comment{&knownRawValues[1]};
inline constexpr LexicalClass LexicalClass::string{&knownRawValues[2]};
inline constexpr LexicalClass LexicalClass::regex{&knownRawValues[3]};

/// Writes the raw value.
std::ostream& operator<<(std::ostream& stream, const LexicalClass& lexicalClass);

/// The raw value as a text.
template <>
struct Coder<LexicalClass> {
  static bool decode(Decoder from, LexicalClass& into);
  static void encode(const LexicalClass& value, Encoder& into);
};

} // namespace velmar

template <>
struct std::hash<velmar::LexicalClass> {
  std::size_t operator()(const velmar::LexicalClass& lexicalClass) const noexcept {
    return std::hash<std::string_view>()(lexicalClass.rawValue());
  }
};
