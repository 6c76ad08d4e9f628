#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Coding/Coder.h"

namespace velmar {

bool Coder<JSONValue>::decode(Decoder from, JSONValue& into) {
  if (decodeShape(from, into))
    return true;
  // Whatever was wrong inside, the value as a whole isn't JSON.
  return from.fail(DecodingErrorKind::typeMismatch, "Could not decode JSON value");
}

bool Coder<JSONValue>::decodeShape(Decoder from, JSONValue& into) {
  switch (from.kind()) {
  case ValueKind::nil:
    into.variant_ = JSONValue::Null();
    return true;
  case ValueKind::boolean:
    return from.readBoolean(into.variant_.emplace<bool>());
  case ValueKind::integer:
  case ValueKind::unsignedInteger:
  case ValueKind::floating:
    return from.readDouble(into.variant_.emplace<double>());
  case ValueKind::text:
    return from.read(into.variant_.emplace<std::string>());
  case ValueKind::array: {
    auto& array = into.variant_.emplace<JSONValue::Array>();
    array.reserve(static_cast<std::size_t>(from.count()));
    return from.forEachElement(
        [&array](Decoder element) { return decodeShape(element, array.emplace_back()); });
  }
  case ValueKind::table: {
    auto& object = into.variant_.emplace<JSONObject>();
    object.reserveCapacity(from.count());
    return from.forEachMember([&object](std::string_view key, Decoder member) {
      return decodeShape(member, object.valueForKey(key));
    });
  }
  case ValueKind::date:
  case ValueKind::data:
    return false;
  }
  return false;
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
