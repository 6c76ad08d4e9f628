#include "VelmarCore/JSON/JSONValue.h"

#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Coding/JSON/JSONTextWriter.h"

#include <cmath>
#include <ostream>

namespace velmar {
namespace {

using Array = JSONValue::Array;
using Null = JSONValue::Null;

std::string quoted(const std::string& text) {
  std::string result;
  JSONTextWriter(result).text(text);
  return result;
}

RawValue rawFrom(RawValue::Variant variant) {
  return RawValue(std::move(variant));
}

} // namespace

/// Ends the children in the ordinary way, each inside of its parent's end, down to a depth that
/// few documents reach. What lies deeper is put aside, for the outermost value to end. Nothing
/// empty comes here, so a vector that grows may drop what it has moved.
void JSONValue::endContainer() noexcept {
  constexpr int greatestDepth = 128;
  thread_local int depth = 0;
  thread_local Array* aside = nullptr; // the outermost one's
  if (depth == greatestDepth) {
    aside->push_back(std::move(*this));
    return;
  }
  if (depth > 0) {
    ++depth;
    variant_ = Null();
    --depth;
    return;
  }
  Array deeper;
  aside = &deeper;
  depth = 1;
  variant_ = Null();
  while (!deeper.empty()) {
    JSONValue next = std::move(deeper.back());
    deeper.pop_back();
    next.variant_ = Null();
  }
  depth = 0;
}

bool JSONValue::operator==(const JSONValue& other) const {
  return variant_ == other.variant_;
}

bool JSONValue::isTruthy() const {
  return std::visit(Overloaded{[](bool boolean) { return boolean; },
                               [](double number) { return number != 0 && !std::isnan(number); },
                               [](const std::string& text) { return !text.empty(); },
                               [](const Array&) { return true; },
                               [](const JSONObject&) { return true; }, [](Null) { return false; }},
                    variant_);
}

bool JSONValue::coerceToBoolean() const {
  return std::visit(Overloaded{[](bool boolean) { return boolean; },
                               [](double number) { return std::isfinite(number) && number != 0; },
                               [](const std::string& text) { return !text.empty(); },
                               [](const Array& array) { return !array.empty(); },
                               [](const JSONObject&) { return true; }, [](Null) { return false; }},
                    variant_);
}

double JSONValue::coerceToNumber() const {
  return std::visit(
      Overloaded{[](bool boolean) { return boolean ? 1.0 : 0.0; },
                 [](double number) { return number; },
                 [](const std::string& text) { return parseFloatingPoint(text).value_or(0); },
                 [](const Array&) { return 0.0; }, [](const JSONObject&) { return 0.0; },
                 [](Null) { return 0.0; }},
      variant_);
}

std::string JSONValue::coerceToText() const {
  return std::visit(Overloaded{[](bool boolean) { return std::string(boolean ? "true" : "false"); },
                               [](double number) { return decimalText(number); },
                               [](const std::string& text) { return text; },
                               [](const Array&) { return std::string(); },
                               [](const JSONObject&) { return std::string(); },
                               [](Null) { return std::string(); }},
                    variant_);
}

const JSONValue* JSONValue::find(std::int64_t index) const {
  const Array* const array = ifArray();
  if (array == nullptr || index < 0 || index >= static_cast<std::int64_t>(array->size()))
    return nullptr;
  return &(*array)[static_cast<std::size_t>(index)];
}

const JSONValue* JSONValue::find(std::string_view key) const {
  const JSONObject* const object = ifObject();
  return object == nullptr ? nullptr : object->find(key);
}

const JSONValue* JSONValue::find(std::span<const JSONPath::Component> path) const {
  const JSONValue* at = this;
  for (const JSONPath::Component& component : path) {
    if (const std::int64_t* index = component.ifIndex()) {
      at = at->find(*index);
    } else if (at->ifArray() != nullptr) {
      const auto position = parseDecimal<std::int64_t>(*component.ifKey());
      at = position ? at->find(*position) : nullptr;
    } else {
      at = at->find(*component.ifKey());
    }
    if (at == nullptr)
      return nullptr;
  }
  return at;
}

const JSONValue* JSONValue::findAtKeyPath(std::span<const std::string> keys) const {
  const JSONValue* at = keys.empty() ? nullptr : this;
  for (const std::string& key : keys) {
    at = at->find(key);
    if (at == nullptr)
      return nullptr;
  }
  return at;
}

void JSONValue::setAtKeyPath(std::span<const std::string> keys, std::optional<JSONValue> value) {
  JSONObject* object = ifObject();
  if (keys.empty() || object == nullptr)
    return;
  for (; keys.size() > 1; keys = keys.subspan(1)) {
    const std::string& key = keys.front();
    JSONValue* child = object->find(key);
    if (child == nullptr || child->ifObject() == nullptr) {
      if (!value) {
        if (keys.size() == 2)
          object->removeValueForKey(key);
        return;
      }
      child = &object->valueForKey(key);
      *child = JSONObject();
    }
    object = child->ifObject();
  }
  object->set(keys.front(), std::move(value));
}

JSONValue JSONValue::fromRaw(const RawValue& raw) {
  return std::visit(
      Overloaded{[](RawValue::Nothing) { return JSONValue(); },
                 [](bool boolean) { return JSONValue(boolean); },
                 [](std::integral auto number) { return JSONValue(number); },
                 [](std::floating_point auto number) { return JSONValue(number); },
                 [](const std::string& text) { return JSONValue(text); },
                 [&raw](const Date&) -> JSONValue { throw JSONValueRawCoercionError(raw); },
                 [&raw](const Bytes&) -> JSONValue { throw JSONValueRawCoercionError(raw); },
                 [](const RawValue::Array& array) {
                   Array elements;
                   elements.reserve(array.size());
                   for (const RawValue& element : array)
                     elements.push_back(fromRaw(element));
                   return JSONValue(std::move(elements));
                 },
                 [](const RawValue::Dictionary& dictionary) {
                   JSONObject object;
                   for (const auto& [key, member] : dictionary)
                     object.valueForKey(key) = fromRaw(member);
                   return JSONValue(std::move(object));
                 }},
      raw.value);
}

RawValue JSONValue::asRawValue() const {
  return std::visit(Overloaded{[](const Array& array) {
                                 RawValue::Array elements;
                                 elements.reserve(array.size());
                                 for (const JSONValue& element : array)
                                   elements.push_back(element.asRawValue());
                                 return rawFrom(std::move(elements));
                               },
                               [](const JSONObject& object) {
                                 RawValue::Dictionary dictionary;
                                 for (const auto& [key, value] : object)
                                   dictionary.emplace(key, value.asRawValue());
                                 return rawFrom(std::move(dictionary));
                               },
                               [](Null) { return RawValue(); },
                               [](const auto& scalar) { return rawFrom(scalar); }},
                    variant_);
}

JSONValueRawCoercionError::JSONValueRawCoercionError(RawValue invalidValue)
    : Error("Could not coerce value to JSON: " + invalidValue.description()),
      invalidValue_(std::move(invalidValue)) {}

std::string JSONValue::debugDescription() const {
  return std::visit(Overloaded{[](const std::string& text) { return quoted(text); },
                               [](const Array& array) {
                                 std::string text;
                                 for (const JSONValue& element : array)
                                   text += (text.empty() ? "" : ", ") + element.debugDescription();
                                 return '[' + text + ']';
                               },
                               [](const JSONObject& object) { return object.debugDescription(); },
                               [](Null) { return std::string("null"); },
                               [this](const auto&) { return coerceToText(); }},
                    variant_);
}

std::string JSONObject::debugDescription() const {
  std::string text;
  for (const auto& [key, value] : members_)
    text += (text.empty() ? "" : ", ") + quoted(key) + ": " + value.debugDescription();
  return '{' + text + '}';
}

std::ostream& operator<<(std::ostream& stream, const JSONValue& value) {
  return stream << value.debugDescription();
}

std::ostream& operator<<(std::ostream& stream, const JSONObject& object) {
  return stream << object.debugDescription();
}

} // namespace velmar

std::size_t std::hash<velmar::JSONValue>::operator()(const velmar::JSONValue& value) const {
  constexpr std::size_t factor = 31;
  const auto combined = [](std::size_t tag, std::size_t hash) { return hash * factor + tag; };
  return std::visit(
      velmar::Overloaded{
          [&](velmar::JSONValue::Null) { return combined(0, 0); },
          [&](bool boolean) { return combined(1, std::hash<bool>()(boolean)); },
          [&](double number) { return combined(2, std::hash<double>()(number)); },
          [&](const std::string& text) { return combined(3, std::hash<std::string>()(text)); },
          [&](const velmar::JSONValue::Array& array) {
            std::size_t hash = array.size();
            for (const velmar::JSONValue& element : array)
              hash = hash * factor + (*this)(element);
            return combined(4, hash);
          },
          [&](const velmar::JSONObject& object) {
            return combined(5, std::hash<velmar::JSONObject>()(object));
          }},
      value.variant());
}
