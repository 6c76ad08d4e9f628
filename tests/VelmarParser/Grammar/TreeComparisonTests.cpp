#include "VelmarParser/Grammar/TreeComparison.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Trees.h"
#include "tests/VelmarParser/Grammar/EditedSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace velmar {
namespace {

using Places = std::vector<Range<TreeByte>>;
using testing::EditedSource;

/// Each visible node of a tree with all that is below it, in words.
struct NodeText {
  TextRange range;
  std::string text;
};

std::vector<NodeText> nodeTexts(const ParseTree& tree) {
  std::vector<NodeText> texts;
  auto cursor = ParseTreeCursor::startingAt(tree.rootNode());
  cursor.enumerate([&](const ParseNode& node) {
    texts.push_back({node.utf16Range(), std::string(cursor.currentFieldName().value_or("")) + " " +
                                            testing::treeText(node)});
    return ParseTreeCursor::EnumerateAction::next;
  });
  return texts;
}

/// The nodes of `tree` that `other` doesn't have and that touch no place.
std::string forgotten(const ParseTree& tree, const ParseTree& other, const Places& places) {
  std::set<std::string> known;
  for (const NodeText& node : nodeTexts(other))
    known.insert(node.text);
  std::string result;
  for (const NodeText& node : nodeTexts(tree)) {
    const bool touches = std::ranges::any_of(places, [&](const Range<TreeByte>& place) {
      return utf16Offset(place.lowerBound) <= node.range.upperBound &&
             node.range.lowerBound <= utf16Offset(place.upperBound);
    });
    if (!touches && !known.contains(node.text))
      result += node.text;
  }
  return result;
}

/// Where each node that differs is to be looked for.
Places placesOf(const EditedSource& source) {
  const auto differences = differencesOf(*source.old.base(), *source.tree->base(), 1'000'000);
  Places places;
  for (const TreeDifference& node : differences.value().nodes) {
    const TreeByte start = node.range.lowerBound;
    places.push_back({start, node.hasChildren ? start : node.range.upperBound});
  }
  return places;
}

struct Sample {
  const char* name;
  Grammar::BuiltIn language;
  std::u16string_view text;
};

class SharedNodes : public ::testing::TestWithParam<Sample> {};

TEST_P(SharedNodes, AreAllThatIsLeftOutAfterRandomEdits) {
  static constexpr std::u16string_view typed[] = {u"a", u"{",  u"}", u"(",    u")",  u"\"", u"'",
                                                  u";", u"/*", u" ", u"\n\n", u"<i", u"=",  u"1"};
  std::mt19937 random(5);
  std::u16string text;
  for (int copy = 0; copy < 12; ++copy)
    text += GetParam().text;
  EditedSource source(GetParam().language, text);
  for (int step = 0; step < 120; ++step) {
    const auto count = static_cast<std::uint32_t>(source.text.count());
    const std::int64_t place = random() % (count + 1);
    const std::int64_t length =
        step % 3 == 0 ? std::min<std::int64_t>(random() % 4, count - place) : 0;
    const std::u16string before = source.text.substringFor(TextRange(0, source.text.count()));
    source.edit({place, place + length}, length > 0 ? u"" : typed[random() % std::size(typed)]);
    const Places places = placesOf(source);
    const std::string what = "step " + std::to_string(step) + " at " + std::to_string(place) +
                             " in\n" + utf8RepairingUTF16(before);
    ASSERT_EQ(forgotten(*source.tree, source.old, places), "") << what;
    ASSERT_EQ(forgotten(source.old, *source.tree, places), "") << what;
    if (places.empty()) {
      ASSERT_TRUE(source.tree->changedRangesFrom(source.old).empty()) << what;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Samples, SharedNodes,
    ::testing::Values(
        Sample{"Javascript", Grammar::BuiltIn::javascript,
               u"class A extends B {\n  m(a, b) { return a ? [b, 1] : `x${a}`; }\n"
               u"  static n = async () => { await f(); }\n}\n"
               u"// c\nlet { p, q: r } = g(\"s\")\nfor (const x of y) x.z();\n"},
        Sample{"Cpp", Grammar::BuiltIn::cpp,
               u"namespace n {\nclass A : public B<int> {\npublic:\n  A() : a(1) {}\n"
               u"  int f(int x) const { if (x < 2) return a * x; return \"s\"[0]; }\n"
               u"private:\n  int a = 0; // c\n};\n}\n#define M(x) x\n"},
        Sample{"Html", Grammar::BuiltIn::html,
               u"<!doctype html>\n<p class=\"a\">b <i>c</i><br></p>\n"
               u"<script>let a</script><ul><li>1<li>2</ul>\n<!-- d -->\n"},
        Sample{"Json", Grammar::BuiltIn::json,
               u"{\"a\": [1, 2, {\"b\": null}], \"c\": \"d\\n\",\n \"e\": {\"f\": []}}"}),
    [](const auto& row) { return std::string(row.param.name); });

// A quote in one of many functions makes the root an error, and still all others are shared.
TEST(TreeComparison, FindsTheFewNodesThatABraceChanges) {
  std::u16string text;
  for (int index = 0; index < 500; ++index)
    text += u"function f(a) {\n  return [a, 'b'].map(c => c + 1);\n}\n";
  EditedSource source(Grammar::BuiltIn::javascript, text);
  const std::int64_t middle = 250 * (static_cast<std::int64_t>(text.size()) / 500) + 15;
  source.edit({middle, middle}, u"{");
  ASSERT_TRUE(source.root().hasError());

  std::int64_t units = 0;
  for (const Range<TreeByte>& place : placesOf(source))
    units += utf16Range(place.lowerBound, place.upperBound).length();
  EXPECT_LT(units, 200);
  EXPECT_FALSE(differencesOf(*source.old.base(), *source.tree->base(), 0));
}

} // namespace
} // namespace velmar
