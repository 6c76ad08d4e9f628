#include "host/TreePrinter.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// Deeper nodes aren't moved further to the right: the blanks of a tree as deep as its text is long
/// would fill a disk. They show their depth instead.
constexpr std::int64_t deepestIndentation = 60;
constexpr std::int64_t longestShownText = 40;

/// Whether some child of `node` stands in a field. Asked of nodes with very many children alone:
/// the runtime's cursor tells a child's field the slower, the more children the node has.
bool mayHaveFields(const ParseNode& node) {
  constexpr std::uint32_t manyChildren = 1000;
  const TSNode base = node.base();
  if (ts_node_child_count(base) < manyChildren)
    return true;
  const std::uint32_t count = ts_language_field_count(ts_node_language(base));
  for (std::uint32_t field = 1; field <= count; ++field) {
    if (!ts_node_is_null(ts_node_child_by_field_id(base, static_cast<TSFieldId>(field))))
      return true;
  }
  return false;
}

/// What a walk knows of the node that it is at.
struct Place {
  ParseNode node;
  std::optional<std::string_view> field;
  std::int64_t depth = 0;
};

/// Calls `enter(place)` for each node, parents first, and `leave()` behind the descendants of each.
template <class Enter, class Leave>
TreeCounts walk(const ParseTree& tree, Enter enter, Leave leave) {
  TreeCounts counts;
  auto cursor = ParseTreeCursor::startingAt(tree.rootNode());
  std::vector<bool> haveFields; // of each node above
  while (true) {
    const ParseNode node = *cursor.currentNode();
    ++counts.nodes;
    counts.errors += node.isError() ? 1 : 0;
    counts.missing += node.isMissing() ? 1 : 0;
    const bool ask = !haveFields.empty() && haveFields.back();
    enter(Place{.node = node,
                .field = ask ? cursor.currentFieldName() : std::nullopt,
                .depth = std::ssize(haveFields)});
    if (cursor.goToFirstChild()) {
      haveFields.push_back(mayHaveFields(node));
      continue;
    }
    leave();
    while (!cursor.goToNextSibling()) {
      if (!cursor.goToParent())
        return counts;
      haveFields.pop_back();
      leave();
    }
  }
}

/// A token's type is its text, which may hold a quotation mark or a line feed.
std::string quoted(std::string_view type) {
  std::string text = "\"";
  for (const char letter : type) {
    if (letter == '\n')
      text += "\\n";
    else if (letter == '\r')
      text += "\\r";
    else if (letter == '\t')
      text += "\\t";
    else if (letter == '"' || letter == '\\')
      text += {'\\', letter};
    else if (static_cast<unsigned char>(letter) < 0x20)
      text += fmt::format("\\u{:04x}", static_cast<int>(letter));
    else
      text += letter;
  }
  return text + '"';
}

/// The text of a leaf whose type says nothing about it, if it is short and printable.
std::string leafText(const ParseNode& node, const DocumentText& text) {
  const TextRange range = node.utf16Range();
  if (!node.isNamed() || range.isEmpty() || range.length() > longestShownText ||
      ts_node_child_count(node.base()) != 0)
    return {};
  const std::u16string units = text.substringFor(range);
  const bool printable =
      std::ranges::none_of(units, [](char16_t unit) { return unit < 0x20 || unit == 0x7F; });
  return printable ? utf8RepairingUTF16(units) : std::string();
}

class TreeLines {
public:
  TreeLines(const DocumentText& text, Output& output) : text_(text), output_(output) {}

  void write(const Place& place) {
    const ParseNode& node = place.node;
    indent(place.depth);
    if (place.field)
      output_.write(fmt::format("{}: ", *place.field), Style::field);
    writeType(node);
    const auto range = node.utf16Range();
    const auto places = node.textRange();
    output_.write(fmt::format(" {}..<{} {}:{}-{}:{}", range.lowerBound, range.upperBound,
                              places.lowerBound.line + 1, places.lowerBound.column + 1,
                              places.upperBound.line + 1, places.upperBound.column + 1),
                  Style::faint);
    if (const std::string leaf = leafText(node, text_); !leaf.empty())
      output_.write(" " + leaf);
    output_.write("\n");
  }

private:
  void indent(std::int64_t depth) {
    output_.write(
        std::string(static_cast<std::size_t>(std::min(depth, deepestIndentation)) * 2, ' '));
    if (depth > deepestIndentation)
      output_.write(fmt::format("[{}] ", depth), Style::faint);
  }

  void writeType(const ParseNode& node) {
    const std::string_view type = node.type().value_or("");
    if (node.isMissing())
      output_.write("MISSING ", Style::error);
    if (node.isNamed())
      output_.write(type, node.isError() ? Style::error : Style::plain);
    else
      output_.write(quoted(type), Style::faint);
  }

  const DocumentText& text_;
  Output& output_;
};

void writePosition(JSONWriter& writer, std::string_view name, TextPosition position) {
  writer.key(name);
  writer.beginArray();
  writer.value(position.line);
  writer.value(position.column);
  writer.endArray();
}

/// Opens the node's object and its array of children.
void beginNode(JSONWriter& writer, const Place& place) {
  const ParseNode& node = place.node;
  writer.beginObject();
  writer.member("type", node.type().value_or(""));
  if (place.field)
    writer.member("field", *place.field);
  writer.member("named", node.isNamed());
  if (node.isError())
    writer.member("error", true);
  if (node.isMissing())
    writer.member("missing", true);
  if (node.isExtra())
    writer.member("extra", true);
  writer.key("range");
  writer.beginArray();
  writer.value(node.utf16Range().lowerBound);
  writer.value(node.utf16Range().upperBound);
  writer.endArray();
  writePosition(writer, "start", node.textRange().lowerBound);
  writePosition(writer, "end", node.textRange().upperBound);
  writer.key("children");
  writer.beginArray();
}

} // namespace

TreeCounts printTree(const ParseTree& tree, const DocumentText& text, Output& output) {
  TreeLines lines(text, output);
  return walk(tree, [&](const Place& place) { lines.write(place); }, [] {});
}

TreeCounts writeTreeAsJSON(const ParseTree& tree, JSONWriter& writer) {
  return walk(
      tree, [&](const Place& place) { beginNode(writer, place); },
      [&] {
        writer.endArray();
        writer.endObject();
      });
}

} // namespace velmar::host
