#include "VelmarParser/Grammar/ParseTree.h"

#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace velmar {
namespace {

using testing::ParsedSource;
using Action = ParseTreeCursor::EnumerateAction;

/// The types of the nodes that a walk sees, whose action for each type `action` says.
template <class Choose>
std::string walk(ParseTreeCursor& cursor, Choose action) {
  std::string seen;
  cursor.enumerate([&](const ParseNode& node) {
    seen += seen.empty() ? "" : " ";
    seen += *node.type();
    return action(node);
  });
  return seen;
}

constexpr auto goOn = [](const ParseNode&) { return Action::next; };

TEST(ParseTreeCursor, NextVisitsEveryNodeInPreOrder) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, [null], 2]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  EXPECT_EQ(walk(cursor, goOn), "document array [ number , array [ null ] , number ]");
  EXPECT_EQ(cursor.currentNode(), parsed.root()); // the walk ends where it can't go further up
}

TEST(ParseTreeCursor, SkipDescendantsGoesOnBehindTheNode) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, [null], 2]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  const auto skipInner = [](const ParseNode& node) {
    return node.type() == "array" && node.startByte().value > 0 ? Action::skipDescendants
                                                                : Action::next;
  };
  EXPECT_EQ(walk(cursor, skipInner), "document array [ number , array , number ]");
}

TEST(ParseTreeCursor, StopEndsTheWalkAtTheNode) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, [null], 2]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  EXPECT_EQ(walk(cursor, [](const ParseNode&) { return Action::stop; }), "document");
  const auto stopAtNull = [](const ParseNode& node) {
    return node.type() == "null" ? Action::stop : Action::next;
  };
  EXPECT_EQ(walk(cursor, stopAtNull), "document array [ number , array [ null");
  EXPECT_EQ(cursor.currentNode()->utf16Range(), TextRange(5, 9));
}

TEST(ParseTreeCursor, AWalkStaysInsideTheNodeThatTheCursorStartedAt) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, [null], 2]");
  const ParseNode inner = parsed.root().namedChildren()[0].namedChildren()[1];
  auto cursor = ParseTreeCursor::startingAt(inner);
  EXPECT_EQ(walk(cursor, goOn), "array [ null ]");
}

TEST(ParseTreeCursor, WhatTheBodyThrowsPassesThrough) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  EXPECT_THROW(cursor.enumerate([](const ParseNode&) -> Action { throw 7; }), int);
}

TEST(ParseTreeCursor, AChildForAByteBehindTheNodeIsAbsentAndTheCursorStays) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, 2]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root().namedChildren()[0]);
  EXPECT_EQ(cursor.goToFirstChildForByte(6 * 2), std::nullopt);
  EXPECT_EQ(cursor.goToFirstChildFor({.line = 3, .column = 0}), std::nullopt);
  EXPECT_EQ(cursor.currentNode()->type(), "array");
}

TEST(ParseTreeCursor, FindsTheFirstChildThatReachesBeyondAPlace) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1,\n 22]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root().namedChildren()[0]);
  EXPECT_EQ(cursor.goToFirstChildForByte(6 * 2), 3);
  EXPECT_EQ(cursor.currentNode()->utf16Range(), TextRange(5, 7));
  ASSERT_TRUE(cursor.goToParent());
  EXPECT_EQ(cursor.goToFirstChildFor({.line = 1, .column = 2}), 3);
}

TEST(ParseTreeCursor, ACopyGoesItsOwnWay) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, 2]");
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  ASSERT_TRUE(cursor.goToFirstChild());
  auto copy = ParseTreeCursor::copying(cursor);
  ASSERT_TRUE(copy.goToLastChild());
  EXPECT_EQ(cursor.currentNode()->type(), "array");
  EXPECT_EQ(copy.currentNode()->type(), "]");
  ASSERT_TRUE(copy.goToPreviousSibling());
  EXPECT_EQ(copy.currentNode()->utf16Range(), TextRange(4, 5));
}

TEST(ParseTreeCursor, KnowsTheFieldOfItsNode) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"{\"a\": 1}");
  auto cursor = ParseTreeCursor::startingAt(parsed.root().namedChildren()[0].namedChildren()[0]);
  EXPECT_EQ(cursor.currentFieldName(), std::nullopt);
  ASSERT_TRUE(cursor.goToFirstChild());
  EXPECT_EQ(cursor.currentFieldName(), "key");
  ASSERT_TRUE(cursor.goToNextSibling());
  EXPECT_EQ(cursor.currentFieldName(), std::nullopt);
  EXPECT_EQ(cursor.currentFieldID(), std::nullopt);
}

TEST(ParseTreeCursorDeathTest, ABytePastThirtyTwoBitsStopsTheProcess) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"1");
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  EXPECT_DEATH(cursor.goToFirstChildForByte(std::int64_t{1} << 32), "doesn't fit a syntax tree");
  EXPECT_DEATH(cursor.goToFirstChildForByte(-1), "doesn't fit a syntax tree");
  EXPECT_DEATH(cursor.goToFirstChildFor({.line = 0, .column = -1}), "doesn't fit a syntax tree");
}

TEST(ParseNode, MeasuresInUTF16CodeUnits) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[\n  \"\U0001F600\", true]");
  const ParseNode truth = parsed.root().namedChildren()[0].namedChildren()[1];
  EXPECT_EQ(truth.type(), "true");
  EXPECT_EQ(truth.utf16Range(), TextRange(10, 14));
  EXPECT_EQ(truth.startByte().value, 20U);
  EXPECT_EQ(truth.endByte().value, 28U);
  EXPECT_EQ(truth.textRange(),
            Range<TextPosition>({.line = 1, .column = 8}, {.line = 1, .column = 12}));
}

TEST(ParseNode, KnowsItsPlaceInTheTree) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1]");
  const ParseNode array = parsed.root().namedChildren()[0];
  EXPECT_EQ(parsed.root().parent(), std::nullopt);
  EXPECT_EQ(array.parent(), parsed.root());
  EXPECT_EQ(array.children().count(), 3);
  EXPECT_EQ(array.namedChildren().count(), 1);
  EXPECT_FALSE(array.children()[0].isNamed());
  EXPECT_TRUE(array.namedChildren()[0].isNamed());
}

TEST(ParseNode, TellsErrorsFromWhatIsMissing) {
  const ParsedSource missing(Grammar::BuiltIn::json, u"[1");
  const ParseNode array = missing.root().namedChildren()[0];
  const ParseNode bracket = array.children()[array.children().count() - 1];
  EXPECT_TRUE(bracket.isMissing());
  EXPECT_TRUE(bracket.utf16Range().isEmpty());
  EXPECT_TRUE(array.hasError());
  EXPECT_FALSE(array.isError());
  const ParsedSource error(Grammar::BuiltIn::json, u"[1 } 2]");
  EXPECT_TRUE(error.root().hasError());
}

TEST(ParseNode, EqualNodesHashAlike) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1, 1]");
  const ParseNode array = parsed.root().namedChildren()[0];
  std::unordered_set<ParseNode> nodes;
  for (const ParseNode child : array.namedChildren())
    nodes.insert(child);
  nodes.insert(array.namedChildren()[0]);
  EXPECT_EQ(nodes.size(), 2U);
  EXPECT_TRUE(nodes.contains(array.namedChildren()[1]));
}

TEST(ParseNode, NamedChildrenKnowTheirFields) {
  const ParsedSource parsed(Grammar::BuiltIn::javascript, u"/*c*/ f(a)");
  const ParseNode call = parsed.root().namedChildren()[1].namedChildren()[0];
  ASSERT_EQ(call.type(), "call_expression");
  EXPECT_EQ(call.namedChildren().fieldNameAt(0), "function");
  EXPECT_EQ(call.namedChildren().fieldNameAt(1), "arguments");
  EXPECT_EQ(call.namedChildren().fieldNameAt(2), std::nullopt);
  EXPECT_EQ(call.namedChildren()[1].namedChildren().fieldNameAt(0), std::nullopt);
}

TEST(ParseNodeDeathTest, AChildOutsideTheNodeStopsTheProcess) {
  const ParsedSource parsed(Grammar::BuiltIn::json, u"[1]");
  EXPECT_DEATH((void)parsed.root().children()[1], "lies outside its node");
  EXPECT_DEATH((void)parsed.root().namedChildren()[-1], "lies outside its node");
  EXPECT_DEATH((void)parsed.root().namedChildren().fieldNameAt(-1), "doesn't fit a syntax tree");
}

TEST(ParseTree, ReportsWhereItsStructureChanged) {
  const ParsedSource before(Grammar::BuiltIn::json, u"[1, 2]");
  const ParsedSource same(Grammar::BuiltIn::json, u"[1, 2]");
  EXPECT_TRUE(same.tree->changedRangesFrom(*before.tree).empty());
  const ParsedSource after(Grammar::BuiltIn::json, u"[1, {}]");
  const auto ranges = after.tree->changedRangesFrom(*before.tree);
  ASSERT_EQ(ranges.size(), 1U);
  EXPECT_EQ(ranges[0].start_byte, 4U * 2);
}

} // namespace
} // namespace velmar
