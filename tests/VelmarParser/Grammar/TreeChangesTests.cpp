#include "VelmarParser/Grammar/TreeChanges.h"

#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "tests/Support/Trees.h"

#include <gtest/gtest.h>

namespace velmar {
namespace {

/// A script that stands behind something else and is parsed alone.
struct Script {
  Script(std::u16string_view before, std::u16string_view source)
      : start(static_cast<std::int64_t>(before.size())),
        end(start + static_cast<std::int64_t>(source.size())) {
    text.replaceSubrange({0, 0}, before);
    text.replaceSubrange({start, start}, source);
  }

  [[nodiscard]] ParseTree parse(const ParseTree* old = nullptr) const {
    Parser parser("script", Grammar::fromBuiltIn(Grammar::BuiltIn::javascript),
                  std::make_shared<const AtomicFlag>());
    const TSRange range{.start_point = point(start),
                        .end_point = point(end),
                        .start_byte = treeByte(start).value,
                        .end_byte = treeByte(end).value};
    EXPECT_TRUE(parser.setIncludedRanges(std::span(&range, 1)));
    ParseInput input(text);
    return *parser.parse(old, input.input());
  }
  [[nodiscard]] TSPoint point(std::int64_t offset) const {
    return treePoint(text.positionOf(offset));
  }

  DocumentText text;
  std::int64_t start;
  std::int64_t end;
};

std::int64_t changedNodes(const ParseTree& tree) {
  std::int64_t count = 0;
  auto cursor = ParseTreeCursor::startingAt(tree.rootNode());
  cursor.enumerate([&](const ParseNode& node) {
    count += node.hasChanges();
    return ParseTreeCursor::EnumerateAction::next;
  });
  return count;
}

struct Move {
  const char* name;
  std::u16string before;
  std::u16string after;
};
class MovedTree : public ::testing::TestWithParam<Move> {};

TEST_P(MovedTree, IsTheTreeOfTheTextThere) {
  for (const char16_t* const source :
       {u"", u"x", u"  let a = [1,\n 2];\n/* b */ f(`${a}`)", u"let = )( ;"}) {
    const Script from(GetParam().before, source);
    const Script to(GetParam().after, source);
    ParseTree tree = from.parse();
    // Whoever keeps a copy of the tree must not see it move.
    const ParseTree kept(ts_tree_copy(tree.base()));
    moveTree(*tree.base(), treeByte(from.start), from.point(from.start), treeByte(to.start),
             to.point(to.start));

    const ParseTree fresh = to.parse();
    EXPECT_EQ(testing::treeDifference(tree.rootNode().base(), fresh.rootNode().base()), "");
    EXPECT_EQ(changedNodes(tree), 0);
    EXPECT_EQ(testing::treeDifference(kept.rootNode().base(), from.parse().rootNode().base()), "");
    const ParseTree again = to.parse(&tree);
    EXPECT_EQ(testing::treeDifference(again.rootNode().base(), fresh.rootNode().base()), "");
    EXPECT_TRUE(again.changedRangesFrom(tree).empty());
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, MovedTree,
                         ::testing::Values(Move{"Nowhere", u"ab\n", u"ab\n"},
                                           Move{"AlongItsLine", u"ab ", u"ab abc "},
                                           Move{"ToTheStart", u"ab\ncd ", u""},
                                           Move{"FromTheStart", u"", u"ab\ncd "},
                                           Move{"Far", u"ab", std::u16string(500, u'\n') + u"ab"},
                                           Move{"Back", std::u16string(900, u'a'), u"\n\n"}),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
