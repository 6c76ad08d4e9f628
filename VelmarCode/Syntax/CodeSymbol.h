// A line of a document's outline: a class, a function, a heading, a bookmark.
#pragma once

#include "VelmarCode/Language/LanguageID.h"
#include "VelmarCode/Syntax/CodeSymbolKind.h"
#include "VelmarPlatform/Basics/Range.h"
#include "VelmarPlatform/Coding/Forward.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmar {

/// A value. All ranges are UTF-16 code units of the document, all texts valid UTF-8. In JSON absent
/// fields are left out.
struct CodeSymbol {
  /// A set of facts. The JSON form is the number.
  struct Traits {
    using RawValue = std::int64_t;
    std::int64_t rawValue = 0;

    /// A line in the outline rather than an entry.
    static const Traits separator;
    /// A function where it stands alone, a method where it stands in a type.
    static const Traits functionOrMethod;

    [[nodiscard]] constexpr bool contains(Traits other) const noexcept {
      return (rawValue & other.rawValue) == other.rawValue;
    }
    constexpr Traits& operator|=(Traits other) noexcept {
      rawValue |= other.rawValue;
      return *this;
    }
    friend constexpr Traits operator|(Traits left, Traits right) noexcept { return left |= right; }
    bool operator==(const Traits&) const = default;
  };

  struct Argument {
    TextRange range;
    std::string name;
    TextRange nameRange;
    std::optional<std::string> typeName = std::nullopt;
    bool operator==(const Argument&) const = default;
    static std::span<const FieldRow> rows();
  };

  /// For editors that close what their user opens: a pattern and what completes it, both as the
  /// query gives them.
  struct Autoclose {
    std::string expression;
    std::string completion;
    bool operator==(const Autoclose&) const = default;
    static std::span<const FieldRow> rows();
  };

  CodeSymbolKind kind;
  /// All of it, body included.
  TextRange range;
  /// In one line.
  std::string name;
  TextRange nameRange;
  /// The language of the layer that it was found in.
  std::optional<LanguageID> languageID = std::nullopt;
  /// What to show instead of the name.
  std::optional<std::string> displayName = std::nullopt;
  std::optional<std::string> typeName = std::nullopt;
  std::optional<std::string> comment = std::nullopt;
  Traits traits = {};
  /// As the query sets it, such as that of a heading: not how deep the symbol lies in others.
  std::int64_t level = 0;
  std::vector<Argument> arguments = {};
  std::optional<Autoclose> autoclose = std::nullopt;

  bool operator==(const CodeSymbol&) const = default;
  static std::span<const FieldRow> rows();
};

inline constexpr CodeSymbol::Traits CodeSymbol::Traits::separator{1};
inline constexpr CodeSymbol::Traits CodeSymbol::Traits::functionOrMethod{2};

} // namespace velmar
