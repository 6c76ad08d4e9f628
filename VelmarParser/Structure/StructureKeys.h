// The words that folds and symbols queries write, and the attributes that their matches carry
// through the pairing.
#pragma once

#include "VelmarCode/Syntax/CodeFoldingRegion.h"
#include "VelmarCode/Syntax/CodeSymbol.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

enum class FoldMetadata : std::uint8_t { role };

inline std::span<const std::string_view> rawValuesOf(FoldMetadata) {
  static constexpr std::array<std::string_view, 1> texts{"role"};
  return texts;
}

enum class SymbolMetadata : std::uint8_t {
  /// The text of a CodeSymbolKind or of a SpecialSymbolKind.
  role,
  /// The query that works the name out from the node "name.target".
  nameQuery,
  /// The same for the display name.
  displayNameQuery,
  /// The query that finds the arguments in the node "arguments.target".
  argumentsQuery,
  autocloseExpression,
  autocloseCompletion,
};

inline std::span<const std::string_view> rawValuesOf(SymbolMetadata) {
  static constexpr std::array<std::string_view, 6> texts{"role",
                                                         "name.query",
                                                         "displayname.query",
                                                         "arguments.query",
                                                         "autoclose.expression",
                                                         "autoclose.completion"};
  return texts;
}

enum class SpecialSymbolKind : std::uint8_t {
  /// A function, or a method: the grammar alone doesn't tell.
  funcOrMethod,
};

inline std::span<const std::string_view> rawValuesOf(SpecialSymbolKind) {
  static constexpr std::array<std::string_view, 1> texts{"function-or-method"};
  return texts;
}

enum class SymbolCandidateCapture : std::uint8_t {
  name,
  nameTarget,
  displayName,
  displayNameTarget,
  argumentsTarget,
};

inline std::span<const std::string_view> rawValuesOf(SymbolCandidateCapture) {
  static constexpr std::array<std::string_view, 5> texts{"name", "name.target", "displayname",
                                                         "displayname.target", "arguments.target"};
  return texts;
}

/// The captures of a query for arguments.
enum class SymbolArgumentCapture : std::uint8_t { name, type };

inline std::span<const std::string_view> rawValuesOf(SymbolArgumentCapture) {
  static constexpr std::array<std::string_view, 2> texts{"name", "type"};
  return texts;
}

/// The keys of ScopingAttributes.
namespace StructureAttributes {

struct FoldRole {
  using Value = std::optional<CodeFoldingRegion::Role>;
  static constexpr std::string_view name = "fold.role";
};
/// Absent inside where the query's role is the text of no kind.
struct SymbolKind {
  using Value = std::optional<CodeSymbolKind>;
  static constexpr std::string_view name = "symbol.kind";
};
struct SymbolSpecialKind {
  using Value = SpecialSymbolKind;
  static constexpr std::string_view name = "symbol.kind.special";
};
struct SymbolName {
  using Value = std::string;
  static constexpr std::string_view name = "symbol.name";
};
struct SymbolNameRange {
  using Value = TextRange;
  static constexpr std::string_view name = "symbol.nameRange";
};
struct SymbolDisplayName {
  using Value = std::string;
  static constexpr std::string_view name = "symbol.displayName";
};
struct SymbolArguments {
  using Value = std::vector<CodeSymbol::Argument>;
  static constexpr std::string_view name = "symbol.arguments";
};
struct SymbolAutoclose {
  using Value = CodeSymbol::Autoclose;
  static constexpr std::string_view name = "symbol.autoclose";
};
struct SymbolTypeString {
  using Value = std::string;
  static constexpr std::string_view name = "symbol.typeString";
};

} // namespace StructureAttributes

} // namespace velmar
