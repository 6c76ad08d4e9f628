// The two tags of an element, for an editor that shows one when the cursor is at the other.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace velmar {

/// What a tagMatching query captures.
enum class TagMatchingCapture : std::uint8_t { tagStart, tagStartName, tagEnd, tagEndName };

inline std::span<const std::string_view> rawValuesOf(TagMatchingCapture) {
  static constexpr std::array<std::string_view, 4> texts{"tag.start", "tag.start.name", "tag.end",
                                                         "tag.end.name"};
  return texts;
}

struct Tag {
  /// The whole tag, or its name where the query captures no more.
  TextRange range;
  std::optional<TextRange> nameRange;

  bool operator==(const Tag&) const = default;
};

/// The opening and the closing tag of the innermost element at `offset` that has both; empty if
/// there is none, or the layer has no tagMatching query.
///
/// At the end of the text the unit in front counts. Stops the process for an offset outside the
/// text. The cost follows the element, not the document.
[[nodiscard]] std::vector<Tag> matchingTagsAt(const Parse::Layer& layer, std::int64_t offset);

} // namespace velmar
