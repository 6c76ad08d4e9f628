#include "VelmarPlatform/Coding/TaggedUnion.h"

namespace velmar {
namespace {

constexpr std::string_view underscoredKey = "_0";

bool decodePayload(Decoder from, void* payload, const CaseRow& row) {
  if (!row.isUnderscored)
    return row.coding->decode(from, payload);
  KeyedDecodingContainer table;
  return from.open(table) && table.at(underscoredKey, [&](Decoder inner) {
    return row.coding->decode(inner, payload);
  });
}

void encodePayload(const void* payload, const CaseRow& row, Encoder& into) {
  if (!row.isUnderscored)
    return row.coding->encode(payload, into);
  into.table([&](TableEncoder& table) {
    table.atExactly(underscoredKey, [&](Encoder& inner) { row.coding->encode(payload, inner); });
  });
}

} // namespace

bool decodeUnion(Decoder from, void* taggedUnion, std::span<const CaseRow> cases) {
  KeyedDecodingContainer table;
  if (!from.open(table))
    return false;
  const auto keys = table.allKeys();
  if (keys.size() != 1)
    return from.fail(DecodingErrorKind::typeMismatch,
                     "Invalid number of keys found, expected one.");
  for (const CaseRow& row : cases)
    if (row.key == keys.front())
      return table.at(row.key, [&](Decoder payload) {
        return decodePayload(payload, row.make(taggedUnion), row);
      });
  return from.fail(DecodingErrorKind::typeMismatch,
                   "The key “" + std::string(keys.front()) + "” names no case.");
}

void encodeUnion(const void* taggedUnion, std::span<const CaseRow> cases, Encoder& into) {
  for (const CaseRow& row : cases)
    if (const void* payload = row.payload(taggedUnion))
      return into.table([&](TableEncoder& table) {
        table.at(row.key, [&](Encoder& member) { encodePayload(payload, row, member); });
      });
  precondition(false, "A union holds an alternative that is none of its cases.");
}

} // namespace velmar
