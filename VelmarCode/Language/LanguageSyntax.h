// The few facts about a language that an editor needs apart from its grammar: how to comment, what
// belongs to an identifier, which brackets pair.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarPlatform/Coding/Forward.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// Two scalars that open and close.
struct BracketPair {
  char32_t open = 0;
  char32_t close = 0;

  /// The pair of the first scalars of two texts; absent if either text is empty.
  [[nodiscard]] static std::optional<BracketPair> fromStrings(std::string_view open,
                                                              std::string_view close);

  bool operator==(const BracketPair&) const = default;
  /// The two side by side: "()".
  [[nodiscard]] std::string description() const;
};
/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const BracketPair& pair);

/// A table of `open` and `close`, each a text of which the first scalar is read.
template <>
struct Coder<BracketPair> {
  static bool decode(Decoder from, BracketPair& into);
  static void encode(const BracketPair& value, Encoder& into);
};

struct LanguageSyntax {
  struct Comments {
    struct Multiline {
      std::string prefix;
      std::string suffix;
      bool operator==(const Multiline&) const = default;
      static std::span<const FieldRow> rows();
    };
    /// What begins a comment that ends with its line.
    std::optional<std::string> single;
    std::optional<Multiline> multiline;
    bool operator==(const Comments&) const = default;
    static std::span<const FieldRow> rows();
  };

  /// How to find marks in comments, such as the headings of sections.
  struct Bookmarks {
    RegularExpression regex;
    /// The number of the group in `regex` that holds a mark's text.
    std::int64_t contentCapture = 0;
    bool operator==(const Bookmarks&) const = default;
    static std::span<const FieldRow> rows();
  };

  struct Identifiers {
    /// Characters that belong to identifiers beside those that do in every language.
    std::optional<std::string> characters;
    bool operator==(const Identifiers&) const = default;
    static std::span<const FieldRow> rows();
  };

  struct Brackets {
    std::vector<BracketPair> pairs;
    bool operator==(const Brackets&) const = default;
    static std::span<const FieldRow> rows();
  };

  Comments comments;
  std::optional<Bookmarks> bookmarks;
  Identifiers identifiers;
  Brackets brackets;

  bool operator==(const LanguageSyntax&) const = default;
  static std::span<const FieldRow> rows();
};

} // namespace velmar
