#include "bench/VelmarCore/JSON/Documents.h"

#include "VelmarPlatform/Coding/Record.h"

#include <random>

namespace velmar::bench {

std::span<const FieldRow> Position::rows() {
  static constexpr auto table =
      rowsOf<Position>(row<&Position::line>("line"), row<&Position::character>("character"));
  return table;
}

std::span<const FieldRow> TextRange::rows() {
  static constexpr auto table =
      rowsOf<TextRange>(row<&TextRange::start>("start"), row<&TextRange::end>("end"));
  return table;
}

std::span<const FieldRow> TextEdit::rows() {
  static constexpr auto table =
      rowsOf<TextEdit>(row<&TextEdit::range>("range"), row<&TextEdit::newText>("newText"));
  return table;
}

std::span<const FieldRow> Markup::rows() {
  static constexpr auto table =
      rowsOf<Markup>(row<&Markup::kind>("kind"), row<&Markup::value>("value"));
  return table;
}

std::span<const FieldRow> CompletionItem::rows() {
  static constexpr auto table = rowsOf<CompletionItem>(
      row<&CompletionItem::label>("label"), row<&CompletionItem::kind>("kind"),
      row<&CompletionItem::detail>("detail"), row<&CompletionItem::documentation>("documentation"),
      row<&CompletionItem::sortText>("sortText"), row<&CompletionItem::filterText>("filterText"),
      row<&CompletionItem::insertTextFormat>("insertTextFormat"),
      row<&CompletionItem::textEdit>("textEdit"),
      row<&CompletionItem::additionalTextEdits>("additionalTextEdits"));
  return table;
}

std::span<const FieldRow> CompletionList::rows() {
  static constexpr auto table = rowsOf<CompletionList>(
      row<&CompletionList::isIncomplete>("isIncomplete"), row<&CompletionList::items>("items"));
  return table;
}

std::span<const FieldRow> SemanticTokens::rows() {
  static constexpr auto table = rowsOf<SemanticTokens>(row<&SemanticTokens::resultId>("resultId"),
                                                       row<&SemanticTokens::data>("data"));
  return table;
}

std::span<const FieldRow> WorkspaceEdit::rows() {
  static constexpr auto table = rowsOf<WorkspaceEdit>(row<&WorkspaceEdit::changes>("changes"));
  return table;
}

CompletionList completionList() {
  constexpr int count = 5000;
  CompletionList list{.isIncomplete = true, .items = {}};
  for (int i = 0; i < count; ++i) {
    const std::string name = "insertElementAt" + std::to_string(i);
    CompletionItem item;
    item.label = " " + name + "(const value_type &value, size_type position)";
    item.kind = 2 + i % 20;
    item.detail = "std::pair<iterator, bool>";
    if (i % 3 == 0)
      item.documentation = Markup{
          "markdown", "Inserts a copy of `value` in front of *position*.\n\nReturns the place, and "
                      "whether there was room: \"true\" if so – “false” otherwise.\n"};
    item.sortText = "40b" + std::to_string(100000 + i) + name;
    item.filterText = name;
    item.insertTextFormat = 2;
    item.textEdit = TextEdit{{{1200, 8}, {1200, 14}},
                             name + "(${1:const value_type &value}, ${2:size_type position})"};
    if (i % 10 == 0)
      item.additionalTextEdits = std::vector{TextEdit{{{12, 0}, {12, 0}}, "#include <vector>\n"}};
    list.items.push_back(std::move(item));
  }
  return list;
}

SemanticTokens semanticTokens() {
  constexpr int count = 20'000; // of five integers each
  std::mt19937 random(1);
  const auto below = [&random](unsigned limit) {
    return static_cast<std::int64_t>(random() % limit);
  };
  SemanticTokens tokens{.resultId = "17", .data = {}};
  for (int i = 0; i < count; ++i)
    for (const unsigned limit : {3U, 80U, 20U, 23U, i % 16 == 0 ? 4096U : 8U})
      tokens.data.push_back(below(limit));
  return tokens;
}

WorkspaceEdit workspaceEdit() {
  constexpr int files = 200;
  constexpr int edits = 25;
  WorkspaceEdit edit;
  for (int file = 0; file < files; ++file) {
    auto& changes =
        edit.changes["file:///base/source/component/part" + std::to_string(file) + ".cpp"];
    for (std::int64_t i = 0; i < edits; ++i)
      changes.push_back({{{17 * i, 4 + i}, {17 * i, 16 + i}}, "insertElementInFront"});
  }
  return edit;
}

} // namespace velmar::bench
