// The text of a value in a message for people.
#pragma once

#include "VelmarPlatform/Unicode/UTF.h"

#include <concepts>
#include <exception>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmar {

/// What the failure says of itself; a few words for one that isn't a `std::exception`, and nothing
/// for null.
[[nodiscard]] std::string descriptionOfFailure(const std::exception_ptr& failure);

/// A value that knows its own text.
template <class T>
concept Described = requires(const T& value) {
  { value.description() } -> std::convertible_to<std::string_view>;
};

/// A failure, be it caught or kept.
template <class T>
concept FailureValue = std::derived_from<T, std::exception> || std::same_as<T, std::exception_ptr>;

template <class T>
concept Printable = requires(std::ostream& stream, const T& value) { stream << value; };

/// A value that can stand in a message.
template <class T>
concept Describable = std::convertible_to<const T&, std::string_view> || FailureValue<T> ||
                      Described<T> || Printable<T>;

/// The text itself; what a failure says; `description()`; "true" and "false"; or what the value
/// writes to a stream. Valid UTF-8.
template <Describable T>
[[nodiscard]] std::string descriptionOf(const T& value) {
  if constexpr (std::convertible_to<const T&, std::string_view>) {
    return repairedUTF8(std::string_view(value));
  } else if constexpr (std::same_as<T, std::exception_ptr>) {
    return descriptionOfFailure(value);
  } else if constexpr (FailureValue<T>) {
    return repairedUTF8(value.what());
  } else if constexpr (Described<T>) {
    return std::string(value.description());
  } else {
    std::ostringstream stream;
    stream << std::boolalpha << value;
    return repairedUTF8(stream.view());
  }
}

} // namespace velmar
