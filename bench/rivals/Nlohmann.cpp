#include "bench/rivals/JSONRivals.h"

#include <nlohmann/json.hpp>

namespace velmar::bench {

using nlohmann::json;

template <class T>
void readIfPresent(const json& value, const char* key, std::optional<T>& into) {
  const auto member = value.find(key);
  if (member != value.end() && !member->is_null())
    member->get_to(into.emplace());
}

void from_json(const json& value, Position& into) {
  value.at("line").get_to(into.line);
  value.at("character").get_to(into.character);
}
void from_json(const json& value, TextRange& into) {
  value.at("start").get_to(into.start);
  value.at("end").get_to(into.end);
}
void from_json(const json& value, TextEdit& into) {
  value.at("range").get_to(into.range);
  value.at("newText").get_to(into.newText);
}
void from_json(const json& value, Markup& into) {
  value.at("kind").get_to(into.kind);
  value.at("value").get_to(into.value);
}
void from_json(const json& value, CompletionItem& into) {
  value.at("label").get_to(into.label);
  readIfPresent(value, "kind", into.kind);
  readIfPresent(value, "detail", into.detail);
  readIfPresent(value, "documentation", into.documentation);
  readIfPresent(value, "sortText", into.sortText);
  readIfPresent(value, "filterText", into.filterText);
  readIfPresent(value, "insertTextFormat", into.insertTextFormat);
  readIfPresent(value, "textEdit", into.textEdit);
  readIfPresent(value, "additionalTextEdits", into.additionalTextEdits);
}
void from_json(const json& value, CompletionList& into) {
  value.at("isIncomplete").get_to(into.isIncomplete);
  value.at("items").get_to(into.items);
}
void from_json(const json& value, SemanticTokens& into) {
  readIfPresent(value, "resultId", into.resultId);
  value.at("data").get_to(into.data);
}
void from_json(const json& value, WorkspaceEdit& into) {
  value.at("changes").get_to(into.changes);
}

template <class Record>
Record Nlohmann<Record>::decode(const std::string& text) {
  return json::parse(text).get<Record>();
}

template struct Nlohmann<CompletionList>;
template struct Nlohmann<SemanticTokens>;
template struct Nlohmann<WorkspaceEdit>;

std::size_t parseWithNlohmann(const std::string& text) {
  return nlohmann::ordered_json::parse(text).size();
}

} // namespace velmar::bench
