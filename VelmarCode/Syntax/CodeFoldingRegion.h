// A stretch of text that an editor can hide.
#pragma once

#include "VelmarPlatform/Basics/Range.h"
#include "VelmarPlatform/Coding/Forward.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>

namespace velmar {

/// A value. In JSON an absent role is left out.
struct CodeFoldingRegion {
  /// What is hidden, by name: an open vocabulary. The JSON form is the text.
  struct Role {
    using RawValue = std::string;
    std::string rawValue;

    Role() = default;
    explicit Role(std::string value) : rawValue(std::move(value)) {}

    auto operator<=>(const Role&) const = default;

    static const Role comment;
    static const Role function;
    static const Role type;
    static const Role block;
    static const Role tag;
    static const Role heading;
  };

  /// The text that folding hides, in UTF-16 code units of the document.
  TextRange range;
  std::optional<Role> role = std::nullopt;
  /// How many of the document's folds it lies in.
  std::int64_t level = 0;

  bool operator==(const CodeFoldingRegion&) const = default;
  static std::span<const FieldRow> rows();

  /// Such as "(range: 4..<9, role: comment, level: 0)".
  [[nodiscard]] std::string description() const;
};

// Made when the program starts: a constant of another file must not be made from one of these.
inline const CodeFoldingRegion::Role CodeFoldingRegion::Role::comment{"comment"};
inline const CodeFoldingRegion::Role CodeFoldingRegion::Role::function{"function"};
inline const CodeFoldingRegion::Role CodeFoldingRegion::Role::type{"type"};
inline const CodeFoldingRegion::Role CodeFoldingRegion::Role::block{"block"};
inline const CodeFoldingRegion::Role CodeFoldingRegion::Role::tag{"tag"};
inline const CodeFoldingRegion::Role CodeFoldingRegion::Role::heading{"heading"};

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const CodeFoldingRegion& region);
/// Writes the raw value.
std::ostream& operator<<(std::ostream& stream, const CodeFoldingRegion::Role& role);

} // namespace velmar

template <>
struct std::hash<velmar::CodeFoldingRegion::Role> {
  std::size_t operator()(const velmar::CodeFoldingRegion::Role& role) const noexcept {
    return std::hash<std::string>()(role.rawValue);
  }
};
