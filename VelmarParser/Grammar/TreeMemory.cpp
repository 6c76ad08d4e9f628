#include "VelmarParser/Grammar/TreeMemory.h"

#include <span>
#include <subtree.h>
#include <tree.h>
#include <vector>

namespace velmar {

namespace {

/// Small leaves live in the pointer to them.
std::size_t bytesOfNode(Subtree node) {
  if (node.data.is_inline)
    return 0;
  const std::uint32_t children = ts_subtree_child_count(node);
  std::size_t bytes = ts_subtree_alloc_size(children);
  if (children == 0 && node.ptr->has_external_tokens &&
      node.ptr->external_scanner_state.length > sizeof node.ptr->external_scanner_state.short_data)
    bytes += node.ptr->external_scanner_state.length;
  return bytes;
}

} // namespace

std::int64_t bytesOf(const ParseTree& tree) {
  const TSTree& base = *tree.base();
  std::size_t bytes = sizeof base + base.included_range_count * sizeof *base.included_ranges;
  std::vector<Subtree> pending{base.root};
  while (!pending.empty()) {
    const Subtree node = pending.back();
    pending.pop_back();
    bytes += bytesOfNode(node);
    const std::span children(ts_subtree_children(node), ts_subtree_child_count(node));
    pending.insert(pending.end(), children.begin(), children.end());
  }
  return static_cast<std::int64_t>(bytes);
}

} // namespace velmar
