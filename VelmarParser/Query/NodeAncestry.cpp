#include "VelmarParser/Query/NodeAncestry.h"

namespace velmar {

namespace {

/// Whether all of `inner` lies in `outer`; one without text may lie at its edge.
bool covers(ParseNode outer, ParseNode inner) {
  return outer.startByte() <= inner.startByte() && inner.endByte() <= outer.endByte();
}

} // namespace

std::span<const NodeAncestry::Step> NodeAncestry::wayTo(ParseNode node) {
  if (node.isNull())
    return {};
  const bool isSameTree = !way_.empty() && way_.front().node.base().tree == node.base().tree;
  if (!(isSameTree && (isOnTheWay(node) || searchOutwards(node))) && !searchFromRoot(node))
    return {};
  noteField();
  return way_;
}

std::optional<ParseNode> NodeAncestry::parentOf(ParseNode node) {
  const std::span<const Step> way = wayTo(node);
  return way.size() > 1 ? std::optional(way[way.size() - 2].node) : std::nullopt;
}

/// Whether the cursor stands at the node or below it; goes up to it then.
bool NodeAncestry::isOnTheWay(ParseNode node) {
  std::size_t length = way_.size();
  while (length > 0 && way_[length - 1].node != node)
    --length;
  if (length == 0)
    return false;
  while (way_.size() > length)
    goUp();
  return true;
}

/// Looks below where the cursor stands, then behind that, then further up.
bool NodeAncestry::searchOutwards(ParseNode node) {
  do {
    while (!covers(way_.back().node, node) && way_.back().node.endByte() <= node.startByte() &&
           goOn()) {
    }
    if (covers(way_.back().node, node) && searchBelow(node))
      return true;
  } while (goUp());
  return false;
}

/// Looks for the node in the one that the cursor stands at, which the cursor comes back to if it
/// isn't there.
bool NodeAncestry::searchBelow(ParseNode node) {
  const std::size_t base = way_.size();
  while (way_.back().node != node) {
    if (covers(way_.back().node, node) && goDown(node))
      continue;
    // A node without text may hang in any of those that touch its place.
    while (way_.size() > base && (way_.back().node.startByte() > node.startByte() || !goOn()))
      goUp();
    if (way_.size() == base)
      return false;
  }
  return true;
}

bool NodeAncestry::searchFromRoot(ParseNode node) {
  const ParseNode root(ts_tree_root_node(node.base().tree));
  if (cursor_)
    cursor_->resetTo(root);
  else
    cursor_ = ParseTreeCursor::startingAt(root);
  way_.assign(1, {.node = root, .field = std::nullopt, .isFieldKnown = true});
  return searchBelow(node);
}

/// To the first child that the node can be or hang in.
bool NodeAncestry::goDown(ParseNode node) {
  noteField();
  const bool isEmpty = node.startByte() == node.endByte();
  if (!(isEmpty ? cursor_->goToFirstChild()
                : cursor_->goToFirstChildForByte(node.startByte().value).has_value()))
    return false;
  way_.push_back({.node = *cursor_->currentNode(), .field = std::nullopt});
  return true;
}

/// To the next sibling.
bool NodeAncestry::goOn() {
  if (way_.size() == 1 || !cursor_->goToNextSibling())
    return false;
  way_.back() = {.node = *cursor_->currentNode(), .field = std::nullopt};
  return true;
}

bool NodeAncestry::goUp() {
  if (way_.size() == 1)
    return false;
  cursor_->goToParent();
  way_.pop_back();
  return true;
}

/// A field can be asked for only while the cursor stands at its node, and is needed only of nodes
/// on the way.
void NodeAncestry::noteField() {
  if (Step& step = way_.back(); !step.isFieldKnown) {
    step.field = cursor_->currentFieldID();
    step.isFieldKnown = true;
  }
}

std::optional<std::string_view> fieldNameOf(const NodeAncestry::Step& step) {
  const char* const name =
      step.field
          ? ts_language_field_name_for_id(ts_node_language(step.node.base()), step.field->base)
          : nullptr;
  return name ? std::optional<std::string_view>(name) : std::nullopt;
}

std::optional<ParseNode> namedChildAt(ParseNode parent, std::int64_t index) {
  const auto children = parent.namedChildren();
  const std::int64_t count = children.count();
  if (index < 0)
    index += count;
  return index >= 0 && index < count ? std::optional(children[index]) : std::nullopt;
}

} // namespace velmar
