// What a query's `set!` writes and its `is?` reads.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace velmar {

/// A whole text read as a signed decimal number; absent for anything else, also for one that
/// doesn't fit.
[[nodiscard]] std::optional<std::int64_t> wholeNumberIn(std::string_view text);

/// A text, or the mere fact that the key is set.
class QueryPropertyValue {
public:
  /// A key without a value.
  QueryPropertyValue() = default;
  static QueryPropertyValue string(std::string text) { return QueryPropertyValue(std::move(text)); }
  static QueryPropertyValue isSet() { return {}; }

  /// Absent for `isSet`, which is not the same as the empty text.
  [[nodiscard]] std::optional<std::string_view> string() const {
    return hasText_ ? std::optional<std::string_view>(text_) : std::nullopt;
  }
  /// The text, empty for `isSet`.
  [[nodiscard]] const std::string& text() const noexcept { return text_; }

  /// The text as a number; 0 where it is none, or there is no text.
  [[nodiscard]] std::int64_t number() const { return wholeNumberIn(text_).value_or(0); }

  /// Makes this the text, in the memory that it has.
  void setString(std::string_view text) {
    text_ = text;
    hasText_ = true;
  }

  bool operator==(const QueryPropertyValue&) const = default;

private:
  explicit QueryPropertyValue(std::string text) : text_(std::move(text)), hasText_(true) {}

  std::string text_;
  bool hasText_ = false;
};

inline std::ostream& operator<<(std::ostream& stream, const QueryPropertyValue& value) {
  return value.string() ? stream << '"' << value.text() << '"' : stream << "set";
}

} // namespace velmar
