// The text of a node, without a copy wherever the lines allow it.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Grammar/ParseNode.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmar {

/// The text of `node`, a node of a tree of `text`: a view into the line where the node lies in one
/// line, else into `scratch`, which then gets a copy. Good until the next edit, and until `scratch`
/// changes.
[[nodiscard]] std::u16string_view textOfNode(ParseNode node, const DocumentText& text,
                                             std::u16string& scratch);

/// The text of `range`, likewise. O(log lines).
[[nodiscard]] std::u16string_view textOfRange(TextRange range, const DocumentText& text,
                                              std::u16string& scratch);

/// A node's text that is fetched when it is first looked at, and its length, which is known before.
class LazyNodeText {
public:
  /// `scratch` must outlive this object and not be used for anything else meanwhile.
  LazyNodeText(ParseNode node, const DocumentText& text, std::u16string& scratch)
      : node_(node), text_(&text), scratch_(&scratch),
        length_(static_cast<std::size_t>(node.utf16Range().length())) {}

  /// The number of code units.
  [[nodiscard]] std::size_t length() const noexcept { return length_; }
  [[nodiscard]] std::u16string_view units() {
    if (!units_)
      units_ = textOfNode(node_, *text_, *scratch_);
    return *units_;
  }

private:
  ParseNode node_;
  const DocumentText* text_;
  std::u16string* scratch_;
  std::size_t length_;
  std::optional<std::u16string_view> units_;
};

} // namespace velmar
