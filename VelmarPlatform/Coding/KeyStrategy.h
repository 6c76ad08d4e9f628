// How keys of a document become keys of a record, and back.
#pragma once

#include "VelmarPlatform/Coding/CodingKey.h"

#include <functional>
#include <string>
#include <string_view>

namespace velmar {

/// From a document's key to a record's. By default they are the same.
class KeyDecodingStrategy {
public:
  /// Gets the path with the document's key as its last step, and gives the record's key.
  using Function = std::function<CodingKey(const CodingPath&)>;

  KeyDecodingStrategy() = default;
  /// "base_url" becomes "baseUrl" (see `camelCaseFromSnakeCase`).
  [[nodiscard]] static KeyDecodingStrategy convertFromSnakeCase();
  [[nodiscard]] static KeyDecodingStrategy custom(Function function);

  [[nodiscard]] bool keepsKeys() const noexcept { return kind_ == Kind::keep; }
  /// `key` of a table that stands at `table`.
  [[nodiscard]] std::string convert(std::string_view key, const CodingPathNode& table) const;

private:
  enum class Kind : unsigned char { keep, snakeCase, custom };
  Kind kind_ = Kind::keep;
  Function function_;
};

/// From a record's key to a document's.
enum class KeyEncodingStrategy : unsigned char {
  useDefaultKeys,
  convertToSnakeCase, ///< "isPinned" becomes "is_pinned" (see `snakeCaseFromCamelCase`).
};

/// "foo_bar" becomes "fooBar". Underscores in front and behind stay, as does a text without any
/// between words: "_foo_bar__" becomes "_fooBar__", "Foo" stays "Foo". Letters beyond ASCII stay as
/// they are.
[[nodiscard]] std::string camelCaseFromSnakeCase(std::string_view text);

/// "fooBar" becomes "foo_bar", and "myURLProperty" "my_url_property": a run of capitals is a word,
/// less its last letter where a small one follows. Letters beyond ASCII stay as they are.
[[nodiscard]] std::string snakeCaseFromCamelCase(std::string_view text);

} // namespace velmar
