// The records that language servers send most of, as plain structs: what ours and the rivals fill
// alike. Any compiler takes this header; the rows are defined where ours are measured.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmar {
struct FieldRow;
}

namespace velmar::bench {

struct Position {
  std::int64_t line = 0;
  std::int64_t character = 0;
  static std::span<const FieldRow> rows();
};

struct TextRange {
  Position start;
  Position end;
  static std::span<const FieldRow> rows();
};

struct TextEdit {
  TextRange range;
  std::string newText;
  static std::span<const FieldRow> rows();
};

struct Markup {
  std::string kind;
  std::string value;
  static std::span<const FieldRow> rows();
};

struct CompletionItem {
  std::string label;
  std::optional<std::int64_t> kind;
  std::optional<std::string> detail;
  std::optional<Markup> documentation;
  std::optional<std::string> sortText;
  std::optional<std::string> filterText;
  std::optional<std::int64_t> insertTextFormat;
  std::optional<TextEdit> textEdit;
  std::optional<std::vector<TextEdit>> additionalTextEdits;
  static std::span<const FieldRow> rows();
};

struct CompletionList {
  bool isIncomplete = false;
  std::vector<CompletionItem> items;
  static std::span<const FieldRow> rows();
};

struct SemanticTokens {
  std::optional<std::string> resultId;
  std::vector<std::int64_t> data;
  static std::span<const FieldRow> rows();
};

struct WorkspaceEdit {
  std::map<std::string, std::vector<TextEdit>> changes;
  static std::span<const FieldRow> rows();
};

} // namespace velmar::bench
