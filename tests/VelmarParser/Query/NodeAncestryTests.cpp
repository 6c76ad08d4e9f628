#include "VelmarParser/Query/NodeAncestry.h"

#include "tests/VelmarParser/Query/QueryTesting.h"

#include <algorithm>
#include <random>

namespace velmar {

namespace {

using testing::ParsedText;

struct Place {
  ParseNode node;
  std::vector<ParseNode> ancestors;
  std::vector<std::string> fields;
};

/// All nodes in pre-order, with what a walk from the root passes on its way to each.
std::vector<Place> allPlaces(ParseNode root) {
  std::vector<Place> places;
  Place way{.node = root, .ancestors = {}, .fields = {""}};
  TSTreeCursor cursor = ts_tree_cursor_new(root.base());
  const auto visit = [&](auto&& self) -> void {
    way.node = ParseNode(ts_tree_cursor_current_node(&cursor));
    places.push_back(way);
    if (!ts_tree_cursor_goto_first_child(&cursor))
      return;
    way.ancestors.push_back(way.node);
    do {
      const char* const field = ts_tree_cursor_current_field_name(&cursor);
      way.fields.emplace_back(field ? field : "");
      self(self);
      way.fields.pop_back();
    } while (ts_tree_cursor_goto_next_sibling(&cursor));
    ts_tree_cursor_goto_parent(&cursor);
    way.node = way.ancestors.back();
    way.ancestors.pop_back();
  };
  visit(visit);
  ts_tree_cursor_delete(&cursor);
  return places;
}

void expectWay(NodeAncestry& ancestry, const Place& place) {
  const auto way = ancestry.wayTo(place.node);
  ASSERT_EQ(way.size(), place.ancestors.size() + 1);
  EXPECT_EQ(way.back().node, place.node);
  for (std::size_t index = 0; index < way.size(); ++index) {
    EXPECT_EQ(fieldNameOf(way[index]).value_or(""), place.fields[index]);
    if (index < place.ancestors.size())
      EXPECT_EQ(way[index].node, place.ancestors[index]);
  }
}

const std::string source =
    R"(class A extends B { static x = 1; m(a, {b}, ...c) { if (a) return `x${a + b}y`; else f(; } }
/* c */ function g() { [1, , 2].map(x => ({x, y: x ? 1 : null})) } // d
let = } ) "unclosed
for (const i of a.b.c[0]) { } ;;
)";

TEST(NodeAncestry, FindsEachNodeInTheOrderOfTheText) {
  const ParsedText parsed(Grammar::BuiltIn::javascript, source);
  NodeAncestry ancestry;
  for (const Place& place : allPlaces(parsed.root()))
    expectWay(ancestry, place);
}

TEST(NodeAncestry, FindsEachNodeInAnyOrder) {
  for (const auto language :
       {Grammar::BuiltIn::javascript, Grammar::BuiltIn::c, Grammar::BuiltIn::json}) {
    const ParsedText parsed(language, source); // two of them see little but errors
    std::vector<Place> places = allPlaces(parsed.root());
    std::mt19937 random(3);
    NodeAncestry ancestry;
    for (int round = 0; round < 5; ++round) {
      std::ranges::shuffle(places, random);
      for (const Place& place : places)
        expectWay(ancestry, place);
    }
    std::ranges::reverse(places);
    for (const Place& place : places)
      expectWay(ancestry, place);
  }
}

TEST(NodeAncestry, GoesFromTreeToTree) {
  const ParsedText one(Grammar::BuiltIn::json, "[1, 2]");
  const ParsedText two(Grammar::BuiltIn::json, "{\"a\": 3}");
  NodeAncestry ancestry;
  EXPECT_EQ(ancestry.parentOf(one.root()), std::nullopt);
  EXPECT_EQ(ancestry.parentOf(two.root().children()[0]), two.root());
  EXPECT_EQ(ancestry.parentOf(one.root().children()[0]), one.root());
  EXPECT_TRUE(ancestry.wayTo(ParseNode(TSNode{})).empty());
}

TEST(NodeAncestry, BearsDeepTrees) {
  // The missing brackets at the end hang at every depth, and have no text.
  const ParsedText parsed(Grammar::BuiltIn::json, std::string(20'000, '['));
  NodeAncestry ancestry;
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  std::size_t depth = 1;
  while (cursor.goToLastChild())
    ++depth;
  EXPECT_EQ(ancestry.wayTo(*cursor.currentNode()).size(), depth);
}

} // namespace

} // namespace velmar
