#include "VelmarParser/Grammar/ParseNode.h"

#include "VelmarPlatform/Basics/Precondition.h"

namespace velmar {

namespace {

std::optional<std::string_view> textOf(const char* text) {
  return text ? std::optional<std::string_view>(text) : std::nullopt;
}

std::uint32_t childIndex(std::int64_t index) {
  precondition(index >= 0 && index <= std::numeric_limits<std::uint32_t>::max(),
               "A child's index doesn't fit a syntax tree.");
  return static_cast<std::uint32_t>(index);
}

} // namespace

std::optional<std::string_view> ParseNode::type() const {
  return isNull() ? std::nullopt : textOf(ts_node_type(base_));
}

std::optional<std::string_view> ParseNode::grammarType() const {
  return isNull() ? std::nullopt : textOf(ts_node_grammar_type(base_));
}

std::optional<ParseNode> ParseNode::parent() const {
  const TSNode parent = ts_node_parent(base_);
  return ts_node_is_null(parent) ? std::nullopt : std::optional(ParseNode(parent));
}

template <bool namedOnly>
ParseNode ParseNode::Nodes<namedOnly>::operator[](std::int64_t index) const {
  precondition(index >= 0 && index < count(), "A child's index lies outside its node.");
  return ParseNode(namedOnly ? ts_node_named_child(base_, childIndex(index))
                             : ts_node_child(base_, childIndex(index)));
}

template <bool namedOnly>
std::optional<std::string_view> ParseNode::Nodes<namedOnly>::fieldNameAt(std::int64_t index) const {
  return textOf(namedOnly ? ts_node_field_name_for_named_child(base_, childIndex(index))
                          : ts_node_field_name_for_child(base_, childIndex(index)));
}

template class ParseNode::Nodes<false>;
template class ParseNode::Nodes<true>;

} // namespace velmar

std::size_t std::hash<velmar::ParseNode>::operator()(const velmar::ParseNode& node) const noexcept {
  const TSNode base = node.base();
  const std::size_t tree = std::hash<const void*>()(base.tree);
  const std::size_t id = std::hash<const void*>()(base.id);
  return tree ^ (id + 0x9e3779b97f4a7c15ULL + (tree << 6) + (tree >> 2));
}
