// JSON of no declared type: what protocols leave open, and what settings are made of. A value and
// the object that holds values are told together, since each holds the other.
//
//     JSONValue value = JSONObject{{"tab", JSONObject{{"width", 4}}}};
//     if (const JSONValue* width = value.find("tab"))  …           // null: nothing there
//     value.setAtKeyPath(keys, true);
//     value.coerceTo<std::int64_t>();
//
// Null in a document is a value, and not the same as a key that isn't there. Every number is a
// double: integers beyond 2^53 are rounded. Text is made of a value and read as one by JSONEncoder
// and JSONDecoder.
#pragma once

#include "VelmarCore/JSON/JSONPath.h"
#include "VelmarPlatform/Basics/DecimalText.h"
#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Coding/RawValue.h"

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

class DecodingSource;
struct CodedValue;
class JSONValue;
/// A member of an object.
struct JSONMember;

/// A map from texts to values that keeps the order in which its keys came. Two are equal only if
/// the order is, too.
///
/// Small ones are searched from end to end, large ones through an index.
class JSONObject {
public:
  JSONObject() noexcept;
  /// As if one was set after the other: a repeated key keeps its first place and its last value.
  JSONObject(std::initializer_list<JSONMember> members);
  /// The order is the dictionary's own, thus any.
  [[nodiscard]] static JSONObject
  fromDictionary(const std::unordered_map<std::string, JSONValue>& dictionary);
  JSONObject(const JSONObject& other);
  JSONObject(JSONObject&& other) noexcept;
  JSONObject& operator=(const JSONObject& other);
  JSONObject& operator=(JSONObject&& other) noexcept;
  ~JSONObject();

  /// The value at `key`, or null if the key isn't there. Valid until the object changes.
  [[nodiscard]] const JSONValue* find(std::string_view key) const;
  [[nodiscard]] JSONValue* find(std::string_view key);
  [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }
  /// Sets the value of a key, a new one at the end; without a value the key is removed.
  void set(std::string_view key, std::optional<JSONValue> value);
  /// Sets the value of a key and returns the one that it had.
  std::optional<JSONValue> updateValue(JSONValue value, std::string_view key);
  /// The value of a key, a new one with null.
  [[nodiscard]] JSONValue& valueForKey(std::string_view key);
  /// Returns what the key had. O(count).
  std::optional<JSONValue> removeValueForKey(std::string_view key);

  enum class Storage { released, kept };
  void removeAll(Storage storage = Storage::released);
  void reserveCapacity(std::int64_t capacity);
  [[nodiscard]] std::int64_t capacity() const noexcept;

  [[nodiscard]] std::int64_t count() const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return members_.empty(); }
  /// The members in their order. Valid until the object changes.
  [[nodiscard]] std::span<const JSONMember> members() const noexcept;
  [[nodiscard]] const JSONMember* begin() const noexcept;
  [[nodiscard]] const JSONMember* end() const noexcept;
  /// Stops the process if `position` isn't from 0 to the count.
  [[nodiscard]] const JSONMember& operator[](std::int64_t position) const;

  /// `transform(value)` for each value; the order is lost.
  template <class Function>
  [[nodiscard]] auto mapValues(Function&& transform) const;
  /// Likewise for a `transform` that gives an optional: absent ones are left out.
  template <class Function>
  [[nodiscard]] auto compactMapValues(Function&& transform) const;

  /// `{"key": 1.0}`, for people.
  [[nodiscard]] std::string debugDescription() const;

  bool operator==(const JSONObject& other) const;

private:
  /// Positions in `members_`, plus one; 0 is free. By hash, then the next free one; a power of two.
  using Slots = std::vector<std::uint32_t>;

  [[nodiscard]] std::size_t positionOf(std::string_view key) const;
  [[nodiscard]] std::uint32_t& slotFor(std::string_view key) const;
  void append(std::string_view key);
  void makeSlots(std::size_t count);

  std::vector<JSONMember> members_;
  std::unique_ptr<Slots> slots_; // of large objects only
};

/// A type that a JSON value can be taken for: a boolean, a number, a text.
template <class T>
concept JSONScalar = std::same_as<T, bool> || std::integral<T> || std::same_as<T, double> ||
                     std::same_as<T, float> || std::same_as<T, std::string>;

class JSONValue {
public:
  struct Null {
    bool operator==(const Null&) const = default;
  };
  using Array = std::vector<JSONValue>;
  /// A boolean, a number, a text, an array, an object or null.
  using Variant = std::variant<bool, double, std::string, Array, JSONObject, Null>;

  // NOLINTBEGIN(google-explicit-constructor): each of these is a JSON value.

  /// Null.
  JSONValue() noexcept : variant_(Null()) {}
  JSONValue(std::nullptr_t) noexcept : variant_(Null()) {}
  template <std::same_as<bool> T>
  JSONValue(T boolean) noexcept : variant_(boolean) {}
  template <class T>
    requires(std::is_arithmetic_v<T> && !std::same_as<T, bool> && !std::same_as<T, char>)
  JSONValue(T number) noexcept : variant_(static_cast<double>(number)) {}
  JSONValue(std::string text) noexcept : variant_(std::move(text)) {}
  JSONValue(std::string_view text) : variant_(std::string(text)) {}
  JSONValue(const char* text) : variant_(std::string(text)) {}
  JSONValue(Array array) noexcept : variant_(std::move(array)) {}
  JSONValue(JSONObject object) noexcept : variant_(std::move(object)) {}

  // NOLINTEND(google-explicit-constructor)

  JSONValue(const JSONValue& other) = default;
  JSONValue(JSONValue&& other) noexcept = default;
  JSONValue& operator=(const JSONValue& other) = default;
  JSONValue& operator=(JSONValue&& other) noexcept = default;
  /// However deep the value is, this takes a bounded piece of stack. Copying, comparing, hashing
  /// and writing go down with the value: for them it is the caller who bounds what he nests.
  ~JSONValue() {
    const Array* const array = ifArray();
    const JSONObject* const object = ifObject();
    if ((array != nullptr && !array->empty()) || (object != nullptr && !object->isEmpty()))
      endContainer();
  }

  /// A raw value as JSON. Throws JSONValueRawCoercionError for what JSON can't hold, dates and
  /// bytes.
  [[nodiscard]] static JSONValue fromRaw(const RawValue& raw);
  /// Null becomes nothing, and objects lose their order.
  [[nodiscard]] RawValue asRawValue() const;

  /// What it is, for std::visit.
  [[nodiscard]] const Variant& variant() const noexcept { return variant_; }
  [[nodiscard]] bool isNull() const noexcept { return std::holds_alternative<Null>(variant_); }
  // Null where the value is something else.
  [[nodiscard]] const std::string* ifString() const { return std::get_if<std::string>(&variant_); }
  [[nodiscard]] const Array* ifArray() const { return std::get_if<Array>(&variant_); }
  [[nodiscard]] Array* ifArray() { return std::get_if<Array>(&variant_); }
  [[nodiscard]] const JSONObject* ifObject() const { return std::get_if<JSONObject>(&variant_); }
  [[nodiscard]] JSONObject* ifObject() { return std::get_if<JSONObject>(&variant_); }

  /// The value if it is of that shape, else absent. A number becomes an integer by leaving out its
  /// fraction, and is absent if that doesn't fit; a float isn't checked.
  template <JSONScalar T>
  [[nodiscard]] std::optional<T> as() const;
  /// The value, made a `T` by all means: "12" is 12, 1 is true, an array is 0. What can't be is
  /// false, 0 or empty.
  template <JSONScalar T>
  [[nodiscard]] T coerceTo() const;

  /// False for false, 0, NaN, the empty text and null; arrays and objects are true, also empty
  /// ones.
  [[nodiscard]] bool isTruthy() const;
  [[nodiscard]] bool isFalsy() const { return !isTruthy(); }

  // Looking up. Each gives null where there is nothing, and is valid until the value changes.

  /// An element of an array.
  [[nodiscard]] const JSONValue* find(std::int64_t index) const;
  /// A member of an object.
  [[nodiscard]] const JSONValue* find(std::string_view key) const;
  /// In an array a key that is a decimal number stands for the position. The empty path leads here.
  [[nodiscard]] const JSONValue* find(std::span<const JSONPath::Component> path) const;
  [[nodiscard]] const JSONValue* find(const JSONPath& path) const {
    return find(path.components());
  }
  /// Through objects only, one key after the other; without keys nothing is found.
  [[nodiscard]] const JSONValue* findAtKeyPath(std::span<const std::string> keys) const;
  /// Sets or removes what stands there. A value makes the objects on its way, also in the place of
  /// what isn't one. Nothing removes the last key; where the way there leads through something that
  /// isn't an object, that is removed if only one key is left behind it. Objects that become empty
  /// stay. Does nothing without keys or if this isn't an object.
  void setAtKeyPath(std::span<const std::string> keys, std::optional<JSONValue> value);

  /// `[1.0, "a", null]`, for people.
  [[nodiscard]] std::string debugDescription() const;

  bool operator==(const JSONValue& other) const;

private:
  friend struct Coder<JSONValue>;
  void endContainer() noexcept;
  [[nodiscard]] bool coerceToBoolean() const;
  [[nodiscard]] double coerceToNumber() const;
  [[nodiscard]] std::string coerceToText() const;

  Variant variant_;
};

struct JSONMember {
  std::string key;
  JSONValue value;
  bool operator==(const JSONMember&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const JSONValue& value);
std::ostream& operator<<(std::ostream& stream, const JSONObject& object);

/// A raw value that JSON has nothing for.
class JSONValueRawCoercionError : public Error {
public:
  explicit JSONValueRawCoercionError(RawValue invalidValue);

  [[nodiscard]] const RawValue& invalidValue() const noexcept { return invalidValue_; }

private:
  RawValue invalidValue_;
};

/// Keys stand as they are, whatever strategy converts those of records: they are data.
template <>
struct Coder<JSONValue> {
  static bool decode(Decoder from, JSONValue& into);
  static void encode(const JSONValue& value, Encoder& into);

private:
  static bool read(const DecodingSource& source, CodedValue at, JSONValue& into);
  static bool readArray(const DecodingSource& source, CodedValue at, JSONValue::Array& into);
  static bool readObject(const DecodingSource& source, CodedValue at, JSONObject& into);
};
template <>
struct Coder<JSONObject> {
  static bool decode(Decoder from, JSONObject& into);
  static void encode(const JSONObject& value, Encoder& into);
};

namespace detail {

/// Without its fraction, if that fits.
template <std::integral Integer>
[[nodiscard]] std::optional<Integer> truncatedTo(double number) noexcept {
  constexpr int bits = std::numeric_limits<Integer>::digits;
  constexpr double beyond = 2.0 * static_cast<double>(std::uint64_t{1} << (bits - 1));
  constexpr double lowest = std::is_signed_v<Integer> ? -beyond : 0.0;
  const double whole = std::trunc(number);
  if (whole >= lowest && whole < beyond)
    return static_cast<Integer>(whole);
  return std::nullopt;
}

} // namespace detail

template <JSONScalar T>
std::optional<T> JSONValue::as() const {
  using Case = std::conditional_t<std::is_arithmetic_v<T> && !std::same_as<T, bool>, double, T>;
  const Case* const found = std::get_if<Case>(&variant_);
  if (found == nullptr)
    return std::nullopt;
  if constexpr (std::same_as<T, Case>)
    return *found;
  else if constexpr (std::integral<T>)
    return detail::truncatedTo<T>(*found);
  else
    return static_cast<T>(*found);
}

template <JSONScalar T>
T JSONValue::coerceTo() const {
  if constexpr (std::same_as<T, bool>) {
    return coerceToBoolean();
  } else if constexpr (std::same_as<T, std::string>) {
    return coerceToText();
  } else if constexpr (std::floating_point<T>) {
    return static_cast<T>(coerceToNumber());
  } else {
    if (const std::string* text = ifString())
      return parseDecimal<T>(*text).value_or(0);
    return detail::truncatedTo<T>(coerceToNumber()).value_or(0);
  }
}

template <class Function>
auto JSONObject::mapValues(Function&& transform) const {
  std::unordered_map<std::string, std::invoke_result_t<Function, const JSONValue&>> values;
  for (const JSONMember& member : members_)
    values.emplace(member.key, transform(member.value));
  return values;
}

template <class Function>
auto JSONObject::compactMapValues(Function&& transform) const {
  using Value = typename std::invoke_result_t<Function, const JSONValue&>::value_type;
  std::unordered_map<std::string, Value> values;
  for (const JSONMember& member : members_)
    if (auto value = transform(member.value))
      values.emplace(member.key, *std::move(value));
  return values;
}

} // namespace velmar

template <>
struct std::hash<velmar::JSONValue> {
  std::size_t operator()(const velmar::JSONValue& value) const;
};
template <>
struct std::hash<velmar::JSONObject> {
  std::size_t operator()(const velmar::JSONObject& object) const;
};
