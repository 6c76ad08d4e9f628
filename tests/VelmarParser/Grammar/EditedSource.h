// A text that is edited and parsed again, and its tree before.
#pragma once

#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <memory>
#include <string_view>
#include <utility>

namespace velmar::testing {

struct EditedSource : ParsedSource {
  EditedSource(Grammar::BuiltIn language, std::u16string_view units)
      : ParsedSource(language, units), builtIn(language), old(ts_tree_copy(tree->base())) {}

  void edit(TextRange range, std::u16string_view replacement) {
    const Range<TextPosition> before = text.positionsOf(range);
    text.replaceSubrange(range, replacement);
    const std::int64_t end = range.lowerBound + static_cast<std::int64_t>(replacement.size());
    const TSInputEdit treeEdit{.start_byte = treeByte(range.lowerBound).value,
                               .old_end_byte = treeByte(range.upperBound).value,
                               .new_end_byte = treeByte(end).value,
                               .start_point = treePoint(before.lowerBound),
                               .old_end_point = treePoint(before.upperBound),
                               .new_end_point = treePoint(text.positionOf(end))};
    old = std::move(*tree);
    ts_tree_edit(old.base(), &treeEdit);
    Parser parser("test", Grammar::fromBuiltIn(builtIn), std::make_shared<const AtomicFlag>());
    ParseInput input(text);
    tree = parser.parse(&old, input.input());
  }

  Grammar::BuiltIn builtIn;
  /// Edited along with the text.
  ParseTree old;
};

} // namespace velmar::testing
