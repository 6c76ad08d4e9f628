#include "VelmarParser/Grammar/TreeComparison.h"

#include <algorithm>
#include <language.h>
#include <span>
#include <subtree.h>
#include <tree.h>
#include <vector>

namespace velmar {

namespace {

/// What a node's parent makes of it, through hidden nodes between the two. What lies below the node
/// is the same whatever that is.
struct Role {
  static constexpr std::size_t mostSupertypes = 8; // as many as queries look at
  TSSymbol alias = 0;
  TSFieldId field = 0;
  std::size_t supertypeCount = 0;
  TSSymbol supertypes[mostSupertypes] = {};

  bool operator==(const Role&) const = default;
};

std::span<const Subtree> childrenOf(Subtree node) {
  return {ts_subtree_children(node), ts_subtree_child_count(node)};
}

/// A visible node that has an equal in the other tree, as far as the two themselves go.
struct VisiblePair {
  std::uint64_t number = 0; ///< 0 for none.
  TSSymbol type = 0;
};

/// A walk through all nodes of a tree, hidden ones too, from parents to children.
class TreeWalk {
public:
  explicit TreeWalk(const TSTree& tree) : language_(tree.language) {
    path_.push_back(
        {.node = tree.root, .start = ts_subtree_padding(tree.root).bytes, .pairAround = {}});
  }

  [[nodiscard]] bool isAtEnd() const { return path_.empty(); }
  [[nodiscard]] Subtree node() const { return path_.back().node; }
  /// Where the node's text starts, without its padding.
  [[nodiscard]] std::uint32_t start() const { return path_.back().start; }
  [[nodiscard]] std::uint32_t end() const { return start() + size(); }
  [[nodiscard]] std::uint32_t size() const { return ts_subtree_size(node()).bytes; }
  [[nodiscard]] bool hasChildren() const { return ts_subtree_child_count(node()) > 0; }
  [[nodiscard]] bool isVisible() const { return isVisible(path_.size() - 1); }
  [[nodiscard]] Role role() const;

  /// What the parent is to this walk: the number of its pair, 0 without one. Two nodes at the same
  /// index in two parents of one pair have the same role.
  [[nodiscard]] std::uint64_t frame() const {
    return path_.size() > 1 ? path_[path_.size() - 2].childFrame : 0;
  }
  [[nodiscard]] std::uint32_t structuralIndex() const { return path_.back().structuralIndex; }

  /// The innermost visible node with a pair around this one.
  [[nodiscard]] const VisiblePair& pairAround() const { return path_.back().pairAround; }
  /// What queries take the node for.
  [[nodiscard]] TSSymbol type() const {
    const TSSymbol alias = aliasAt(path_.size() - 1);
    return ts_language_public_symbol(language_, alias != 0 ? alias : ts_subtree_symbol(node()));
  }

  /// To the first child, around which stands `pairAround`.
  void enter(std::uint64_t childFrame, VisiblePair pairAround) {
    path_.back().childFrame = childFrame;
    const std::span<const Subtree> children = childrenOf(node());
    for (const Subtree child : children) { // else the walk mostly waits for memory
      if (!child.data.is_inline)
        __builtin_prefetch(child.ptr);
    }
    path_.push_back({.node = children.front(), .start = start(), .pairAround = pairAround});
  }
  /// Goes on behind the node, to a sibling of its parent if it is the last.
  void skip() {
    while (path_.size() > 1) {
      Level& level = path_.back();
      const std::span<const Subtree> siblings = childrenOf(path_[path_.size() - 2].node);
      if (level.index + 1 < siblings.size()) {
        level.start += ts_subtree_size(level.node).bytes;
        level.structuralIndex += !ts_subtree_extra(level.node);
        level.node = siblings[++level.index];
        level.start += ts_subtree_padding(level.node).bytes;
        return;
      }
      path_.pop_back();
    }
    path_.clear();
  }

private:
  struct Level {
    Subtree node;
    std::uint32_t start = 0;
    std::uint32_t index = 0;
    std::uint32_t structuralIndex = 0;
    std::uint64_t childFrame = 0;
    VisiblePair pairAround;
  };

  /// What the node at a level is called instead of its own name; 0 if it isn't.
  [[nodiscard]] TSSymbol aliasAt(std::size_t level) const {
    if (level == 0 || ts_subtree_extra(path_[level].node))
      return 0;
    return ts_language_alias_at(language_, path_[level - 1].node.ptr->production_id,
                                path_[level].structuralIndex);
  }
  [[nodiscard]] bool isVisible(std::size_t level) const {
    return ts_subtree_visible(path_[level].node) || aliasAt(level) != 0;
  }
  [[nodiscard]] TSFieldId fieldAt(std::size_t level) const;

  const TSLanguage* language_;
  std::vector<Level> path_;
};

TSFieldId TreeWalk::fieldAt(std::size_t level) const {
  if (ts_subtree_extra(path_[level].node))
    return 0;
  const TSFieldMapEntry* entry = nullptr;
  const TSFieldMapEntry* end = nullptr;
  ts_language_field_map(language_, path_[level - 1].node.ptr->production_id, &entry, &end);
  for (; entry < end; ++entry) {
    if (!entry->inherited && entry->child_index == path_[level].structuralIndex)
      return entry->field_id;
  }
  return 0;
}

Role TreeWalk::role() const {
  Role role;
  for (std::size_t level = path_.size() - 1; level > 0; --level) {
    const TSSymbol alias = aliasAt(level);
    if (level == path_.size() - 1)
      role.alias = alias;
    else if (isVisible(level))
      break;
    const TSSymbol symbol = alias != 0 ? alias : ts_subtree_symbol(path_[level].node);
    if (ts_language_symbol_metadata(language_, symbol).supertype &&
        role.supertypeCount < Role::mostSupertypes)
      role.supertypes[role.supertypeCount++] = symbol;
    if (role.field == 0)
      role.field = fieldAt(level);
  }
  return role;
}

bool areShared(Subtree left, Subtree right) {
  return !left.data.is_inline && !right.data.is_inline && left.ptr == right.ptr;
}

/// Whether two nodes that start at the same place differ, if at all, in what is below them and in
/// what they are to their parents. Small tokens are part of their parent and can't be shared, but
/// looked at.
bool areAlike(const TreeWalk& left, const TreeWalk& right) {
  const Subtree a = left.node();
  const Subtree b = right.node();
  return left.size() == right.size() && ts_subtree_symbol(a) == ts_subtree_symbol(b) &&
         ts_subtree_extra(a) == ts_subtree_extra(b) &&
         ts_subtree_missing(a) == ts_subtree_missing(b) &&
         left.hasChildren() == right.hasChildren();
}

class Comparison {
public:
  Comparison(const TSTree& old, const TSTree& tree, std::size_t mostNodes)
      : old_(old), new_(tree), mostNodes_(mostNodes) {}

  std::optional<TreeDifferences> differences() {
    while (!old_.isAtEnd() && !new_.isAtEnd() && !isTooMuch())
      step();
    while (!old_.isAtEnd() && !isTooMuch())
      differ(old_);
    while (!new_.isAtEnd() && !isTooMuch())
      differ(new_);
    if (isTooMuch())
      return std::nullopt;
    return std::move(found_);
  }

private:
  [[nodiscard]] bool isTooMuch() const { return found_.nodes.size() > mostNodes_; }

  /// Both walks go on behind what is the same. Of other nodes the larger is looked into, until the
  /// two stand at the same one.
  void step() {
    if (old_.start() == new_.start()) {
      if (areShared(old_.node(), new_.node())) {
        if (!isSameToParents())
          noteOtherRole();
        old_.skip();
        new_.skip();
        return;
      }
      if (areAlike(old_, new_)) {
        const bool sameRole = isSameToParents();
        if (sameRole || (!old_.isVisible() && !new_.isVisible()))
          return stepIntoPair(sameRole);
      }
    }
    const auto [oldDiffers, newDiffers] = whichDiffers();
    if (oldDiffers)
      differ(old_);
    if (newDiffers)
      differ(new_);
  }

  void stepIntoPair(bool sameRole) {
    const bool isVisible = new_.isVisible();
    if (!new_.hasChildren()) {
      if (ts_subtree_has_changes(old_.node()) && isVisible) {
        const TreeByte first =
            found_.editedTokens ? found_.editedTokens->lowerBound : TreeByte{new_.start()};
        found_.editedTokens.emplace(first, TreeByte{new_.end()});
      }
      old_.skip();
      new_.skip();
      return;
    }
    ++found_.enteredCount;
    const bool sameProduction = old_.node().ptr->production_id == new_.node().ptr->production_id;
    const std::uint64_t frame = sameRole && sameProduction ? ++lastFrame_ : 0;
    if (isVisible) {
      const VisiblePair pair{++lastPair_, new_.type()};
      old_.enter(frame, pair);
      new_.enter(frame, pair);
    } else {
      old_.enter(frame, old_.pairAround());
      new_.enter(frame, new_.pairAround());
    }
  }

  /// A shared node is something else to its parents in the new tree.
  void noteOtherRole() {
    if (new_.isVisible() || old_.isVisible()) {
      note(old_, old_.type());
      note(new_, new_.type());
    } else { // and so are all those that are shown in its place
      note(new_, TreeDifference::anyType);
    }
  }

  [[nodiscard]] bool isSameToParents() const {
    if (old_.pairAround().number != new_.pairAround().number)
      return false;
    if (old_.frame() != 0 && old_.frame() == new_.frame() &&
        old_.structuralIndex() == new_.structuralIndex() &&
        ts_subtree_extra(old_.node()) == ts_subtree_extra(new_.node()))
      return true;
    return old_.role() == new_.role();
  }

  /// Of two nodes that aren't the same: the one that ends before the other begins, the larger, the
  /// hidden one, or both.
  [[nodiscard]] std::pair<bool, bool> whichDiffers() const {
    if (old_.end() <= new_.start() && old_.start() < new_.start())
      return {true, false};
    if (new_.end() <= old_.start() && new_.start() < old_.start())
      return {false, true};
    if (old_.size() != new_.size())
      return {old_.size() > new_.size(), new_.size() > old_.size()};
    if (old_.isVisible() != new_.isVisible())
      return {!old_.isVisible(), !new_.isVisible()};
    return {true, true};
  }

  void differ(TreeWalk& walk) {
    if (walk.isVisible())
      note(walk, walk.type());
    if (!walk.hasChildren())
      return walk.skip();
    ++found_.enteredCount;
    walk.enter(0, walk.pairAround());
  }

  void note(const TreeWalk& walk, TSSymbol type) {
    found_.nodes.push_back({.range = {TreeByte{walk.start()}, TreeByte{walk.end()}},
                            .hasChildren = walk.hasChildren(),
                            .isInOld = &walk == &old_,
                            .type = type,
                            .parentType = walk.pairAround().type});
  }

  TreeWalk old_;
  TreeWalk new_;
  std::size_t mostNodes_;
  std::uint64_t lastFrame_ = 0;
  std::uint64_t lastPair_ = 0;
  TreeDifferences found_;
};

} // namespace

std::optional<TreeDifferences> differencesOf(const TSTree& old, const TSTree& tree,
                                             std::size_t mostNodes) {
  return Comparison(old, tree, mostNodes).differences();
}

} // namespace velmar
