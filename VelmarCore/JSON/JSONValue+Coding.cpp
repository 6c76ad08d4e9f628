#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Coding/Coder.h"
#include "VelmarPlatform/Coding/DecodingSource.h"

namespace velmar {

bool Coder<JSONValue>::decode(Decoder from, JSONValue& into) {
  if (read(from.source(), from.value(), into))
    return true;
  // Whatever was wrong inside, the value as a whole isn't JSON. So nobody needs to know where
  // inside it was, and the source is read directly.
  return from.fail(DecodingErrorKind::typeMismatch, "Could not decode JSON value");
}

bool Coder<JSONValue>::read(const DecodingSource& source, CodedValue at, JSONValue& into) {
  switch (source.kind(at)) {
  case ValueKind::nil:
    into.variant_.emplace<JSONValue::Null>();
    return true;
  case ValueKind::boolean:
    into.variant_.emplace<bool>(source.boolean(at));
    return true;
  case ValueKind::integer:
    into.variant_.emplace<double>(static_cast<double>(source.integer(at)));
    return true;
  case ValueKind::unsignedInteger:
    into.variant_.emplace<double>(static_cast<double>(source.unsignedInteger(at)));
    return true;
  case ValueKind::floating:
    into.variant_.emplace<double>(source.floating(at));
    return true;
  case ValueKind::text:
    into.variant_.emplace<std::string>(source.text(at));
    return true;
  case ValueKind::array:
    return readArray(source, at, into.variant_.emplace<JSONValue::Array>());
  case ValueKind::table:
    return readObject(source, at, into.variant_.emplace<JSONObject>());
  case ValueKind::date:
  case ValueKind::data:
    return false;
  }
  return false;
}

bool Coder<JSONValue>::readArray(const DecodingSource& source, CodedValue at,
                                 JSONValue::Array& into) {
  into.reserve(static_cast<std::size_t>(source.count(at)));
  CodedChildren walk = source.children(at);
  CodedValue element;
  while (source.nextElement(walk, element))
    if (!read(source, element, into.emplace_back()))
      return false;
  return true;
}

bool Coder<JSONValue>::readObject(const DecodingSource& source, CodedValue at, JSONObject& into) {
  into.reserveCapacity(source.count(at));
  CodedChildren walk = source.children(at);
  std::string_view key;
  CodedValue member;
  while (source.nextMember(walk, key, member))
    if (!read(source, member, into.valueForKey(key)))
      return false;
  return true;
}

void Coder<JSONValue>::encode(const JSONValue& value, Encoder& into) {
  std::visit(Overloaded{[&](bool boolean) { into.boolean(boolean); },
                        [&](double number) { into.floating(number); },
                        [&](JSONValue::Null) { into.nil(); },
                        [&](const auto& other) { into.write(other); }},
             value.variant());
}

bool Coder<JSONObject>::decode(Decoder from, JSONObject& into) {
  into.removeAll();
  into.reserveCapacity(from.count());
  return from.forEachMember([&into](std::string_view key, Decoder member) {
    return Coder<JSONValue>::decode(member, into.valueForKey(key));
  });
}

void Coder<JSONObject>::encode(const JSONObject& value, Encoder& into) {
  into.table([&value](TableEncoder& table) {
    for (const auto& [key, member] : value)
      table.atExactly(key, [&member](Encoder& at) { Coder<JSONValue>::encode(member, at); });
  });
}

} // namespace velmar
