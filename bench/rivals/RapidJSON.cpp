#include "bench/rivals/JSONRivals.h"

#include <cstdlib>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>

namespace velmar::bench {
namespace {

using Value = rapidjson::Value;
using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

std::string_view textOf(const Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

void read(const Value& value, std::int64_t& into) {
  into = value.GetInt64();
}
void read(const Value& value, bool& into) {
  into = value.GetBool();
}
void read(const Value& value, std::string& into) {
  into.assign(value.GetString(), value.GetStringLength());
}

template <class T>
void read(const Value& value, std::optional<T>& into);
template <class T>
void read(const Value& value, std::vector<T>& into);

/// Calls `perform(key, value)` for each member.
template <class Function>
void forEachMember(const Value& value, Function&& perform) {
  for (auto member = value.MemberBegin(); member != value.MemberEnd(); ++member)
    perform(textOf(member->name), member->value);
}

void read(const Value& value, Position& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "line")
      read(member, into.line);
    else if (key == "character")
      read(member, into.character);
  });
}
void read(const Value& value, TextRange& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "start")
      read(member, into.start);
    else if (key == "end")
      read(member, into.end);
  });
}
void read(const Value& value, TextEdit& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "range")
      read(member, into.range);
    else if (key == "newText")
      read(member, into.newText);
  });
}
void read(const Value& value, Markup& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "kind")
      read(member, into.kind);
    else if (key == "value")
      read(member, into.value);
  });
}
void read(const Value& value, CompletionItem& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "label")
      read(member, into.label);
    else if (key == "kind")
      read(member, into.kind);
    else if (key == "detail")
      read(member, into.detail);
    else if (key == "documentation")
      read(member, into.documentation);
    else if (key == "sortText")
      read(member, into.sortText);
    else if (key == "filterText")
      read(member, into.filterText);
    else if (key == "insertTextFormat")
      read(member, into.insertTextFormat);
    else if (key == "textEdit")
      read(member, into.textEdit);
    else if (key == "additionalTextEdits")
      read(member, into.additionalTextEdits);
  });
}
void read(const Value& value, CompletionList& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "isIncomplete")
      read(member, into.isIncomplete);
    else if (key == "items")
      read(member, into.items);
  });
}
void read(const Value& value, SemanticTokens& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "resultId")
      read(member, into.resultId);
    else if (key == "data")
      read(member, into.data);
  });
}
void read(const Value& value, WorkspaceEdit& into) {
  forEachMember(value, [&into](std::string_view key, const Value& member) {
    if (key == "changes")
      forEachMember(member, [&into](std::string_view file, const Value& edits) {
        read(edits, into.changes[std::string(file)]);
      });
  });
}

template <class T>
void read(const Value& value, std::optional<T>& into) {
  if (!value.IsNull())
    read(value, into.emplace());
}
template <class T>
void read(const Value& value, std::vector<T>& into) {
  into.reserve(value.Size());
  for (const Value& element : value.GetArray())
    read(element, into.emplace_back());
}

void write(Writer& writer, std::int64_t value) {
  writer.Int64(value);
}
void write(Writer& writer, bool value) {
  writer.Bool(value);
}
void write(Writer& writer, const std::string& value) {
  writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}
void write(Writer& writer, const CompletionItem& value);
void write(Writer& writer, const TextEdit& value);
void write(Writer& writer, const Markup& value);
void write(Writer& writer, const TextRange& value);
void write(Writer& writer, const Position& value);
template <class T>
void write(Writer& writer, const std::vector<T>& values) {
  writer.StartArray();
  for (const T& value : values)
    write(writer, value);
  writer.EndArray();
}

template <std::size_t Size, class T>
void member(Writer& writer, const char (&key)[Size], const T& value) {
  writer.Key(key, Size - 1);
  write(writer, value);
}
template <std::size_t Size, class T>
void member(Writer& writer, const char (&key)[Size], const std::optional<T>& value) {
  if (value)
    member(writer, key, *value);
}

void write(Writer& writer, const Position& value) {
  writer.StartObject();
  member(writer, "line", value.line);
  member(writer, "character", value.character);
  writer.EndObject();
}
void write(Writer& writer, const TextRange& value) {
  writer.StartObject();
  member(writer, "start", value.start);
  member(writer, "end", value.end);
  writer.EndObject();
}
void write(Writer& writer, const TextEdit& value) {
  writer.StartObject();
  member(writer, "range", value.range);
  member(writer, "newText", value.newText);
  writer.EndObject();
}
void write(Writer& writer, const Markup& value) {
  writer.StartObject();
  member(writer, "kind", value.kind);
  member(writer, "value", value.value);
  writer.EndObject();
}
void write(Writer& writer, const CompletionItem& value) {
  writer.StartObject();
  member(writer, "label", value.label);
  member(writer, "kind", value.kind);
  member(writer, "detail", value.detail);
  member(writer, "documentation", value.documentation);
  member(writer, "sortText", value.sortText);
  member(writer, "filterText", value.filterText);
  member(writer, "insertTextFormat", value.insertTextFormat);
  member(writer, "textEdit", value.textEdit);
  member(writer, "additionalTextEdits", value.additionalTextEdits);
  writer.EndObject();
}
void write(Writer& writer, const CompletionList& value) {
  writer.StartObject();
  member(writer, "isIncomplete", value.isIncomplete);
  member(writer, "items", value.items);
  writer.EndObject();
}
void write(Writer& writer, const SemanticTokens& value) {
  writer.StartObject();
  member(writer, "resultId", value.resultId);
  member(writer, "data", value.data);
  writer.EndObject();
}
void write(Writer& writer, const WorkspaceEdit& value) {
  writer.StartObject();
  writer.Key("changes");
  writer.StartObject();
  for (const auto& [file, edits] : value.changes) {
    writer.Key(file.data(), static_cast<rapidjson::SizeType>(file.size()));
    write(writer, edits);
  }
  writer.EndObject();
  writer.EndObject();
}

rapidjson::Document parsed(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.data(), text.size());
  if (document.HasParseError())
    std::abort();
  return document;
}

} // namespace

template <class Record>
Record RapidJSON<Record>::decode(const std::string& text) {
  Record record;
  read(parsed(text), record);
  return record;
}

template <class Record>
std::string RapidJSON<Record>::encode(const Record& record) {
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  write(writer, record);
  return {buffer.GetString(), buffer.GetSize()};
}

template struct RapidJSON<CompletionList>;
template struct RapidJSON<SemanticTokens>;
template struct RapidJSON<WorkspaceEdit>;

std::size_t parseWithRapidJSON(const std::string& text) {
  return parsed(text).MemberCount();
}

} // namespace velmar::bench
