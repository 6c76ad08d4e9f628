// What protocols write as a value or as a null that must be there, such as a result.
#pragma once

#include "VelmarPlatform/Coding/Coder.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

namespace velmar {

/// A `T`, or null. Never left out of a document: an absent value is written as a null.
template <class T>
struct ValueOrNull {
  std::optional<T> value;

  ValueOrNull() = default;
  ValueOrNull(std::nullptr_t) {} // NOLINT(google-explicit-constructor): a null is one
  ValueOrNull(T full)            // NOLINT(google-explicit-constructor): so is a value
      : value(std::move(full)) {}

  bool operator==(const ValueOrNull&) const = default;
};

template <class T>
struct Coder<ValueOrNull<T>> {
  static bool decode(Decoder from, ValueOrNull<T>& into) {
    return Coder<std::optional<T>>::decode(from, into.value);
  }
  static void encode(const ValueOrNull<T>& value, Encoder& into) {
    Coder<std::optional<T>>::encode(value.value, into);
  }
};

} // namespace velmar

template <class T>
  requires std::is_default_constructible_v<std::hash<T>>
struct std::hash<velmar::ValueOrNull<T>> {
  std::size_t operator()(const velmar::ValueOrNull<T>& value) const {
    return value.value ? std::hash<T>()(*value.value) + 1 : 0;
  }
};
