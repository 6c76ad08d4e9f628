// What protocols write as a boolean or as a record of options.
#pragma once

#include "VelmarPlatform/Coding/Coder.h"

#include <concepts>
#include <functional>
#include <utility>
#include <variant>

namespace velmar {

/// Either a boolean or a `T`. A boolean in a document always is the boolean, even if `T` could be
/// read from one.
template <class T>
class ValueOrBool {
public:
  /// The boolean false.
  ValueOrBool() = default;
  template <std::same_as<bool> Boolean>
  ValueOrBool(Boolean boolean) // NOLINT(google-explicit-constructor): a boolean is one
      : value_(std::in_place_index<0>, boolean) {}
  ValueOrBool(T value) // NOLINT(google-explicit-constructor): so is a value
    requires(!std::same_as<T, bool>)
      : value_(std::in_place_index<1>, std::move(value)) {}

  /// The boolean, or null.
  [[nodiscard]] const bool* ifBool() const noexcept { return std::get_if<0>(&value_); }
  /// The value, or null.
  [[nodiscard]] const T* ifValue() const noexcept { return std::get_if<1>(&value_); }

  bool operator==(const ValueOrBool&) const = default;

private:
  std::variant<bool, T> value_;
};

template <class T>
struct Coder<ValueOrBool<T>> {
  static bool decode(Decoder from, ValueOrBool<T>& into) {
    bool boolean = false;
    if (from.tryRead(boolean)) {
      into = boolean;
      return true;
    }
    T value{};
    if (!from.read(value))
      return false;
    into = std::move(value);
    return true;
  }
  static void encode(const ValueOrBool<T>& value, Encoder& into) {
    if (const bool* boolean = value.ifBool())
      into.boolean(*boolean);
    else
      into.write(*value.ifValue());
  }
};

} // namespace velmar

template <class T>
  requires std::is_default_constructible_v<std::hash<T>>
struct std::hash<velmar::ValueOrBool<T>> {
  std::size_t operator()(const velmar::ValueOrBool<T>& value) const {
    const bool* const boolean = value.ifBool();
    return boolean != nullptr ? std::hash<bool>()(*boolean) : std::hash<T>()(*value.ifValue()) + 2;
  }
};
