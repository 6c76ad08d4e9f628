// Vocabularies: values that a document writes as one of a few texts or numbers.
//
// A closed one is an enumeration, and a value outside it fails the decoding. It names its words
// next to itself, where the compiler finds them by the argument's type:
//
//   enum class ColumnType : std::uint8_t { string, number };
//   std::span<const Word<ColumnType>> wordsOf(ColumnType);   // {{ColumnType::string, "string"}, …}
//
//   enum class MessageType : std::uint8_t { error = 1, warning, info };
//   std::span<const MessageType> numbersOf(MessageType);         // their own numbers are written
//
// An open one is a struct over the raw value, so that what nobody foresaw survives a round trip:
//
//   struct MarkupKind : OpenVocabulary<MarkupKind, std::string> {
//     using OpenVocabulary::OpenVocabulary;
//     static const MarkupKind plainText, markdown;
//   };
#pragma once

#include "VelmarPlatform/Coding/Coder.h"

#include <compare>
#include <concepts>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace velmar {

/// A value of a closed vocabulary, and the text that stands for it.
template <class E>
struct Word {
  E value;
  std::string_view text;
};

template <class E>
concept ClosedTextVocabulary = std::is_enum_v<E> && requires(E value) {
  { wordsOf(value) } -> std::same_as<std::span<const Word<E>>>;
};
template <class E>
concept ClosedNumberVocabulary = std::is_enum_v<E> && requires(E value) {
  { numbersOf(value) } -> std::same_as<std::span<const E>>;
};

/// That `found` is none of the words, of which the sentence tells the first few.
bool failForUnknownWord(Decoder from, std::string_view found, std::string_view words);
bool failForUnknownNumber(Decoder from, std::int64_t found);

template <ClosedTextVocabulary E>
struct Coder<E> {
  static bool decode(Decoder from, E& into) {
    std::string_view text;
    if (!from.readText(text))
      return false;
    std::string words;
    for (const Word<E>& word : wordsOf(E{})) {
      if (word.text == text) {
        into = word.value;
        return true;
      }
    }
    for (const Word<E>& word : wordsOf(E{}))
      words.append(words.empty() ? "“" : ", “").append(word.text).append("”");
    return failForUnknownWord(from, text, words);
  }
  static void encode(E value, Encoder& into) {
    for (const Word<E>& word : wordsOf(value))
      if (word.value == value)
        return into.text(word.text);
    precondition(false, "A value of a closed vocabulary has no word.");
  }
};

template <ClosedNumberVocabulary E>
struct Coder<E> {
  static bool decode(Decoder from, E& into) {
    std::int64_t number = 0;
    if (!Coder<std::int64_t>::decode(from, number))
      return false;
    for (const E value : numbersOf(E{})) {
      if (static_cast<std::int64_t>(value) == number) {
        into = value;
        return true;
      }
    }
    return failForUnknownNumber(from, number);
  }
  static void encode(E value, Encoder& into) { into.integer(static_cast<std::int64_t>(value)); }
};

/// The raw value as a value of its own; `Self` is the vocabulary, so that words of different ones
/// can't be compared. `Raw` is std::string or std::int64_t.
template <class Self, class Raw>
struct OpenVocabulary {
  using RawValue = Raw;
  Raw rawValue{};

  OpenVocabulary() = default;
  explicit OpenVocabulary(Raw raw) : rawValue(std::move(raw)) {}

  friend bool operator==(const Self& left, const Self& right) {
    return left.rawValue == right.rawValue;
  }
  friend auto operator<=>(const Self& left, const Self& right) {
    return left.rawValue <=> right.rawValue;
  }
};

/// A type that is written as its raw value.
template <class T>
concept RawRepresentable =
    std::is_class_v<T> && requires(const T& value, typename T::RawValue raw) {
      { value.rawValue } -> std::convertible_to<typename T::RawValue>;
      T{std::move(raw)};
    };

template <RawRepresentable T>
struct Coder<T> {
  static bool decode(Decoder from, T& into) {
    typename T::RawValue raw{};
    if (!from.read(raw))
      return false;
    into = T{std::move(raw)};
    return true;
  }
  static void encode(const T& value, Encoder& into) { into.write(value.rawValue); }
};

} // namespace velmar

template <class T>
  requires std::derived_from<T, velmar::OpenVocabulary<T, typename T::RawValue>>
struct std::hash<T> {
  std::size_t operator()(const T& value) const {
    return std::hash<typename T::RawValue>()(value.rawValue);
  }
};
