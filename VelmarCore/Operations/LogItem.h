// The flat log of clients of tools: a line with a severity, a source and a date.
//
//   log({.message = LogItemMessage("The server ended with ", status, ".").text,   // values quoted
//        .severity = LogItemSeverity::error,
//        .source = {"language-client", "clangd"},
//        .date = now});
#pragma once

#include "VelmarCore/Operations/Description.h"
#include "VelmarPlatform/Coding/Forward.h"
#include "VelmarPlatform/Dates/ISO8601.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmar {

/// How much a line matters. The numbers are what protocols carry.
enum class LogItemSeverity : int { debug = -1, info = 0, warning = 5, error = 9 };

/// The severity of that number; absent if there is none.
[[nodiscard]] std::optional<LogItemSeverity> logItemSeverityOf(std::int64_t rawValue) noexcept;
/// "ERROR", "WARN ", "INFO ", "DEBUG": five characters wide.
/// All of them; a document has the raw value.
[[nodiscard]] std::span<const LogItemSeverity> numbersOf(LogItemSeverity severity) noexcept;
[[nodiscard]] std::string_view descriptionOf(LogItemSeverity severity) noexcept;

/// Where a line comes from, from the outside in.
struct LogItemSource {
  std::vector<std::string> components;

  LogItemSource() = default;
  LogItemSource(const char* component) // NOLINT(google-explicit-constructor): a name is a source
      : components{component} {}
  LogItemSource(std::initializer_list<std::string> names) : components(names) {}
  explicit LogItemSource(std::vector<std::string> names) : components(std::move(names)) {}

  [[nodiscard]] auto begin() noexcept { return components.begin(); }
  [[nodiscard]] auto end() noexcept { return components.end(); }
  [[nodiscard]] auto begin() const noexcept { return components.begin(); }
  [[nodiscard]] auto end() const noexcept { return components.end(); }
  [[nodiscard]] std::size_t size() const noexcept { return components.size(); }
  /// `index` is less than `size()`.
  [[nodiscard]] std::string& operator[](std::size_t index) { return components[index]; }
  [[nodiscard]] const std::string& operator[](std::size_t index) const { return components[index]; }

  /// The components with "::" between them.
  [[nodiscard]] std::string description() const;
  bool operator==(const LogItemSource&) const = default;
  static std::span<const FieldRow> rows();
};

/// A value that stands in a message without quotes. Refers to `value`: for arguments only.
template <class T>
struct Verbatim {
  const T& value;
};
template <class T>
[[nodiscard]] Verbatim<T> verbatim(const T& value) {
  return {value};
}

/// A list of values that know their text: a range that isn't itself one.
template <class T>
concept DescribableList = !Describable<T> && std::ranges::input_range<const T> &&
                          Describable<std::remove_cvref_t<std::ranges::range_reference_t<const T>>>;

/// The text of a log line in which values stand out: literals are taken as they are, and so are
/// failures; any other value is put between quotation marks, each element of a list for itself. So
/// a text that isn't a literal is a value.
struct LogItemMessage {
  std::string text;

  LogItemMessage() = default;
  template <class... Pieces>
  explicit LogItemMessage(const Pieces&... pieces) {
    (append(pieces), ...);
  }

  bool operator==(const LogItemMessage&) const = default;

private:
  template <std::size_t n>
  void append(const char (&literal)[n]) {
    text += std::string_view(literal, n - 1);
  }
  template <FailureValue T>
  void append(const T& failure) {
    text += descriptionOf(failure);
  }
  template <Describable T>
  void append(const T& value) {
    appendQuoted(value, "\"");
  }
  template <DescribableList T>
  void append(const T& list) {
    appendList(list, "\"");
  }
  template <Describable T>
  void append(const Verbatim<T>& value) {
    appendQuoted(value.value, "");
  }
  template <DescribableList T>
  void append(const Verbatim<T>& list) {
    appendList(list.value, "");
  }

  template <class T>
  void appendQuoted(const T& value, std::string_view quote) {
    text += quote;
    text += descriptionOf(value);
    text += quote;
  }
  template <class T>
  void appendList(const T& list, std::string_view quote) {
    text += "[";
    std::string_view separator;
    for (const auto& element : list) {
      text += std::exchange(separator, ", ");
      appendQuoted(element, quote);
    }
    text += "]";
  }
};

/// One line of a log.
struct LogItem {
  std::string message;
  LogItemSeverity severity = LogItemSeverity::info;
  LogItemSource source;
  Date date;

  /// "2024-02-29T12:30:05Z WARN  [a::b] message", ending in a line feed: that of the message, or
  /// one of its own.
  [[nodiscard]] std::string description() const;
  bool operator==(const LogItem&) const = default;
  static std::span<const FieldRow> rows();
};

} // namespace velmar

template <>
struct std::hash<velmar::LogItemSource> {
  std::size_t operator()(const velmar::LogItemSource& source) const noexcept;
};

template <>
struct std::hash<velmar::LogItem> {
  std::size_t operator()(const velmar::LogItem& item) const noexcept;
};
