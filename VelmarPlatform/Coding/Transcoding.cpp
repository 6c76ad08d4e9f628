#include "VelmarPlatform/Coding/Transcoding.h"

#include <vector>

namespace velmar {
namespace {

/// An array or a table on the way from the root to where the walk is.
struct Level {
  CodedChildren walk;
  bool isTable;
};

void tellScalar(const DecodingSource& source, CodedValue value, ValueKind kind,
                EncodingSink& sink) {
  switch (kind) {
  case ValueKind::nil:
    return sink.nil();
  case ValueKind::boolean:
    return sink.boolean(source.boolean(value));
  case ValueKind::integer:
    return sink.integer(source.integer(value));
  case ValueKind::unsignedInteger:
    return sink.unsignedInteger(source.unsignedInteger(value));
  case ValueKind::floating:
    return sink.floating(source.floating(value));
  case ValueKind::text:
    return sink.text(source.text(value));
  case ValueKind::date:
    return sink.date(source.date(value));
  case ValueKind::data:
    return sink.data(source.data(value));
  case ValueKind::array:
  case ValueKind::table:
    return;
  }
}

/// Tells a scalar, or the start of an array or a table, which then is the last level.
void tell(const DecodingSource& source, CodedValue value, EncodingSink& sink,
          std::vector<Level>& levels) {
  const ValueKind kind = source.kind(value);
  if (kind != ValueKind::array && kind != ValueKind::table)
    return tellScalar(source, value, kind, sink);
  const bool isTable = kind == ValueKind::table;
  if (isTable)
    sink.beginTable();
  else
    sink.beginArray();
  levels.push_back({source.children(value), isTable});
}

} // namespace

void transcode(const DecodingSource& source, CodedValue value, EncodingSink& sink) {
  std::vector<Level> levels;
  tell(source, value, sink, levels);
  while (!levels.empty()) {
    auto& [walk, isTable] = levels.back();
    std::string_view key;
    CodedValue child;
    if (isTable ? source.nextMember(walk, key, child) : source.nextElement(walk, child)) {
      if (isTable)
        sink.key(key);
      tell(source, child, sink, levels);
      continue;
    }
    if (isTable)
      sink.endTable();
    else
      sink.endArray();
    levels.pop_back();
  }
}

} // namespace velmar
