// Records from JSON text and back:
//
//   const auto item = JSONDecoder().decode<Item>(R"({"label": "swap"})");   // throws DecodingError
//   const std::string text = JSONEncoder({.sortedKeys = true}).encode(item);
//
// How a type is read and written is said by the type (Coder.h, Record.h and their neighbours).
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Coding/Coder.h"
#include "VelmarPlatform/Coding/JSON/JSONTape.h"
#include "VelmarPlatform/Coding/JSON/JSONTextWriter.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace velmar {

/// Immutable, so it can be shared between threads.
class JSONDecoder {
public:
  explicit JSONDecoder(DecodingOptions options = {}) : options_(std::move(options)) {}

  /// The text as a `T`. Throws DecodingError: with the offset of the byte where the text isn't
  /// JSON, or with the path of the value that doesn't fit. O(size).
  template <Codable T>
  [[nodiscard]] T decode(std::string_view text) const {
    return decode<T>(JSONTape(text));
  }
  template <Codable T>
  [[nodiscard]] T decode(std::span<const std::byte> text) const {
    return decode<T>(charactersOf(text));
  }
  /// Likewise, for a text that is read as several types.
  template <Codable T>
  [[nodiscard]] T decode(const JSONTape& tape) const {
    return decodeFrom<T>(tape, tape.root(), options_);
  }

private:
  DecodingOptions options_;
};

/// Immutable, so it can be shared between threads.
class JSONEncoder {
public:
  explicit JSONEncoder(JSONTextOptions text = {}, EncodingOptions options = {})
      : text_(text), options_(std::move(options)) {}

  /// Throws EncodingError where `value` holds a number that isn't finite. O(size).
  template <Codable T>
  [[nodiscard]] std::string encode(const T& value) const {
    std::string text;
    appendTo(text, value);
    return text;
  }
  /// Likewise behind what `text` holds already; untouched if that fails.
  template <Codable T>
  void appendTo(std::string& text, const T& value) const {
    JSONTextWriter writer(text, text_);
    encodeInto(writer, value, options_);
  }

private:
  JSONTextOptions text_;
  EncodingOptions options_;
};

} // namespace velmar
