// Where a layer's tree says that another language begins: what a match of the `injections` query
// amounts to.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Document/LayerImpl.h"
#include "VelmarParser/Document/ParseConfiguration.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace velmar {

/// The captures that injection queries use.
enum class InjectionCapture {
  /// The text of this node names the language.
  language,
  /// This node is content.
  content,
  /// Content begins at the end of this node, or at its start.
  contentStart,
  contentStartBefore,
  /// Content ends at the start of this node, or at its end.
  contentEnd,
  contentEndAfter,
};

/// The properties that a pattern sets.
enum class InjectionMetadata {
  /// The language by name, whatever a capture says.
  language,
  /// The language of the layer itself, or of its parent.
  languageSelf,
  languageParent,
  /// All places of this language are parsed as one text.
  combined,
  /// The colours of the layers above shouldn't show through.
  reset,
};

std::span<const std::string_view> rawValuesOf(InjectionCapture);
std::span<const std::string_view> rawValuesOf(InjectionMetadata);

namespace detail {

struct InjectionPoint {
  /// From the lowest to the highest offset of the content.
  TextRange range;
  TextRangeSet contentRanges;
  std::optional<TextRange> languageNameRange;
  ParseConfiguration configuration;
  bool isCombined = false;
  bool resetsHighlights = false;
};

/// A range in the tree's units, its ends by line and column as well. O(log lines).
[[nodiscard]] TSRange treeRange(TextRange range, const DocumentText& text);

} // namespace detail

} // namespace velmar
