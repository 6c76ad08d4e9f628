// Random filters over random small trees, against an evaluator that knows nothing but a plain copy
// of the tree.

#include "tests/VelmarParser/Query/QueryTesting.h"

#include <algorithm>
#include <functional>
#include <map>
#include <random>

namespace velmar {

namespace {

using testing::ParsedText;

/// A node as it stands in the tree, copied with a cursor.
struct ModelNode {
  std::string type;
  std::string field;
  std::string text;
  bool isNamed = false;
  ModelNode* parent = nullptr;
  std::vector<std::unique_ptr<ModelNode>> children;

  [[nodiscard]] std::vector<const ModelNode*> ancestors() const {
    std::vector<const ModelNode*> result;
    for (const ModelNode* node = parent; node; node = node->parent)
      result.push_back(node);
    return result;
  }
};

class Model {
public:
  explicit Model(const ParsedText& parsed) : parsed_(parsed) {
    TSTreeCursor cursor = ts_tree_cursor_new(parsed.root().base());
    root_ = copy(cursor, nullptr);
    ts_tree_cursor_delete(&cursor);
  }

  [[nodiscard]] const ModelNode& nodeOf(ParseNode node) const { return *byID_.at(node.base().id); }

private:
  std::unique_ptr<ModelNode> copy(TSTreeCursor& cursor, ModelNode* parent) {
    const ParseNode node(ts_tree_cursor_current_node(&cursor));
    auto result = std::make_unique<ModelNode>();
    result->type = *node.type();
    const char* const field = ts_tree_cursor_current_field_name(&cursor);
    result->field = field ? field : "";
    result->text = parsed_.textOf(node);
    result->isNamed = node.isNamed();
    result->parent = parent;
    byID_[node.base().id] = result.get();
    if (ts_tree_cursor_goto_first_child(&cursor)) {
      do
        result->children.push_back(copy(cursor, result.get()));
      while (ts_tree_cursor_goto_next_sibling(&cursor));
      ts_tree_cursor_goto_parent(&cursor);
    }
    return result;
  }

  const ParsedText& parsed_;
  std::unique_ptr<ModelNode> root_;
  std::map<const void*, ModelNode*> byID_;
};

/// What a capture stands for, by its name.
using ModelCaptures = std::map<std::string, std::vector<const ModelNode*>>;

struct ModelFilter {
  std::string test;
  bool isNegated = false;
  bool isAny = false;
  std::string capture;
  /// Texts, or captures if they begin with "@".
  std::vector<std::string> arguments;

  [[nodiscard]] std::string queryText() const {
    std::string text = std::string("(#") + (isAny ? "any-" : "") + (isNegated ? "not-" : "") +
                       test + " " + capture;
    for (const std::string& argument : arguments)
      text += " " + (argument.starts_with('@') ? argument : "\"" + argument + "\"");
    return text + ")";
  }

  [[nodiscard]] bool holds(const ModelCaptures& captures) const {
    const auto nodes = captures.find(capture);
    std::size_t passed = 0;
    std::size_t count = 0;
    if (nodes != captures.end()) {
      for (const ModelNode* node : nodes->second) {
        ++count;
        passed += passes(*node, captures) != isNegated ? 1 : 0;
      }
    }
    return isAny ? passed > 0 : passed == count;
  }

private:
  [[nodiscard]] bool isArgument(const std::string& text) const {
    return !text.empty() && std::ranges::count(arguments, text) > 0;
  }
  [[nodiscard]] bool passes(const ModelNode& node, const ModelCaptures& captures) const {
    const auto ancestors = node.ancestors();
    if (test == "eq?" || test == "contains?") {
      for (const std::string& argument : arguments) {
        std::vector<std::string> candidates;
        if (!argument.starts_with('@'))
          candidates.push_back(argument);
        else if (captures.contains(argument))
          for (const ModelNode* other : captures.at(argument))
            candidates.push_back(other->text);
        for (const std::string& candidate : candidates)
          if (test == "eq?" ? node.text == candidate
                            : node.text.find(candidate) != std::string::npos)
            return true;
      }
      return false;
    }
    if (test == "match?")
      return node.text == arguments[0].substr(1, arguments[0].size() - 2);
    if (test == "has-type?")
      return isArgument(node.type);
    if (test == "has-parent?")
      return node.parent && isArgument(node.parent->type);
    if (test == "has-ancestor?")
      return std::ranges::any_of(ancestors,
                                 [&](const ModelNode* each) { return isArgument(each->type); });
    if (test == "has-parent-field?")
      return isArgument(node.field);
    if (test == "has-ancestor-field?")
      return isArgument(node.field) || std::ranges::any_of(ancestors, [&](const ModelNode* each) {
               return isArgument(each->field);
             });
    std::vector<const ModelNode*> siblings;
    if (node.parent) {
      for (const auto& sibling : node.parent->children)
        if (sibling->isNamed)
          siblings.push_back(sibling.get());
    }
    const int index = std::stoi(arguments[0]);
    const auto count = static_cast<int>(siblings.size());
    const int position = index < 0 ? count + index : index;
    return position >= 0 && position < count &&
           siblings[static_cast<std::size_t>(position)] == &node;
  }
};

class Random {
public:
  explicit Random(unsigned seed) : engine_(seed) {}
  int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(engine_); }
  template <class T>
  T oneOf(const std::vector<T>& values) {
    return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
  }

private:
  std::mt19937 engine_;
};

/// Statements with few different names and numbers, on several lines.
std::string randomSource(Random& random) {
  const std::function<std::string(int)> expression = [&](int depth) -> std::string {
    switch (depth > 3 ? random.below(2) : random.below(7)) {
    case 0:
      return random.oneOf<std::string>({"a", "b", "ab"});
    case 1:
      return random.oneOf<std::string>({"1", "2", "12"});
    case 2:
      return "f(" + expression(depth + 1) + ", " + expression(depth + 1) + ")";
    case 3:
      return "[" + expression(depth + 1) + "," + (random.below(2) == 0 ? "\n" : " ") +
             expression(depth + 1) + "]";
    case 4:
      return expression(depth + 1) + " + " + expression(depth + 1);
    case 5:
      return "({a: " + expression(depth + 1) + ", b})";
    default:
      return "`x\n${" + expression(depth + 1) + "}`";
    }
  };
  std::string source;
  for (int count = random.below(4); count >= 0; --count)
    source += expression(0) + (random.below(8) == 0 ? " ) \n" : ";\n");
  return source;
}

ModelFilter randomFilter(Random& random) {
  ModelFilter filter;
  filter.test = random.oneOf<std::string>({"eq?", "contains?", "match?", "has-type?", "has-parent?",
                                           "has-ancestor?", "has-parent-field?",
                                           "has-ancestor-field?", "nth?"});
  filter.isNegated = random.below(2) == 0;
  filter.isAny = random.below(2) == 0;
  filter.capture = random.oneOf<std::string>({"@x", "@x", "@y"});
  const auto add = [&](const std::vector<std::string>& values) {
    for (int count = random.below(3); count >= 0; --count)
      filter.arguments.push_back(random.oneOf(values));
  };
  if (filter.test == "eq?" || filter.test == "contains?")
    add({"a", "b", "ab", "1", "12", "@x", "@y", "@y"});
  else if (filter.test == "match?")
    filter.arguments = {"^" + random.oneOf<std::string>({"a", "12", "b"}) + "$"};
  else if (filter.test == "nth?")
    filter.arguments = {std::to_string(random.below(7) - 3)};
  else if (filter.test.ends_with("field?"))
    add({"function", "arguments", "left", "right", "key", "value"});
  else
    add({"identifier", "number", "array", "call_expression", "arguments", "program", "ERROR",
         "template_string"});
  return filter;
}

TEST(RandomPredicates, AgreeWithALiteralEvaluator) {
  const std::vector<std::string> patterns{
      "(_) @x",
      "(identifier) @x",
      "(array (_) @x (_) @y)",
      "(arguments . (_) @x (_) @x (_)? @y)",
      "(binary_expression left: (_) @x right: (_) @y)",
      "(program (_)* @x . (expression_statement) @y)",
      "(_ _ @x (_) @y)",
  };
  Random random(20'240'607);
  int held = 0;
  int failed = 0;
  for (int round = 0; round < 50; ++round) {
    const std::string source = randomSource(random);
    const ParsedText parsed(Grammar::BuiltIn::javascript, source);
    const Model model(parsed);
    for (int count = 0; count < 20; ++count) {
      const std::string pattern = random.oneOf(patterns);
      std::vector<ModelFilter> filters{randomFilter(random)};
      if (random.below(3) == 0)
        filters.push_back(randomFilter(random));
      if (pattern.find("@y") == std::string::npos) { // then the query doesn't know that capture
        for (ModelFilter& filter : filters) {
          filter.capture = "@x";
          std::ranges::replace(filter.arguments, std::string("@y"), std::string("@x"));
        }
      }
      std::string queryText = "(" + pattern;
      for (const ModelFilter& filter : filters)
        queryText += " " + filter.queryText();
      queryText += ")";
      SCOPED_TRACE(source + "\n" + queryText);

      const auto query = parsed.query(queryText);
      std::vector<TextRange> expected;
      for (const Query::Match& match : query->matchesIn(parsed.root())) {
        ModelCaptures captures;
        for (const Query::Match::Capture capture : match.captures())
          captures["@" + capture.name()].push_back(&model.nodeOf(capture.node()));
        if (std::ranges::all_of(filters,
                                [&](const ModelFilter& filter) { return filter.holds(captures); }))
          expected.push_back(match.captures()[0].node().utf16Range());
        else
          ++failed;
      }
      std::vector<TextRange> found;
      for (const QueryMatches::Element& match :
           QueryMatches(query, parsed.root(), parsed.range(), parsed.text()))
        found.push_back(match.captures()[0].node().utf16Range());
      ASSERT_EQ(found, expected);
      held += static_cast<int>(found.size());
    }
  }
  EXPECT_GT(held, 1'500); // both answers are common
  EXPECT_GT(failed, 1'500);
}

} // namespace

} // namespace velmar
