// How values are read and written, by type. Scalars, texts, dates, bytes, optionals, arrays and
// maps have their coders here; records, vocabularies and unions get theirs from how they are
// declared (Record.h, Vocabulary.h, TaggedUnion.h). Any other shape gets a specialisation of its
// own:
//
//   template <>
//   struct Coder<Shape> {
//     static bool decode(Decoder from, Shape& into);      // false: see Decoder.h
//     static void encode(const Shape& value, Encoder& into);
//   };
//
// `into` is as its type's default constructor leaves it, so a coder needn't clear it. A type that
// is read has one.
#pragma once

#include "VelmarPlatform/Basics/Range.h"
#include "VelmarPlatform/Basics/UUID.h"
#include "VelmarPlatform/Coding/Decoder.h"
#include "VelmarPlatform/Coding/Encoder.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

/// What `Coder` can do. An error that names this concept means that the type has neither rows nor
/// words nor cases nor a coder of its own.
template <class T>
concept Codable = requires(Decoder from, T& into, const T& value, Encoder& encoder) {
  { Coder<T>::decode(from, into) } -> std::same_as<bool>;
  Coder<T>::encode(value, encoder);
};

template <>
struct Coder<bool> {
  static bool decode(Decoder from, bool& into) { return from.readBoolean(into); }
  static void encode(bool value, Encoder& into) { into.boolean(value); }
};

/// "Int8" to "UInt64", and "Int" for the 64-bit one, which is what records mean by an integer.
template <std::integral T>
[[nodiscard]] constexpr std::string_view integerTypeName() {
  constexpr std::array<std::string_view, 4> signedNames{"Int8", "Int16", "Int32", "Int"};
  constexpr std::array<std::string_view, 4> unsignedNames{"UInt8", "UInt16", "UInt32", "UInt"};
  constexpr std::size_t place = sizeof(T) == 1 ? 0 : sizeof(T) == 2 ? 1 : sizeof(T) == 4 ? 2 : 3;
  return std::signed_integral<T> ? signedNames[place] : unsignedNames[place];
}

template <std::signed_integral T>
struct Coder<T> {
  static bool decode(Decoder from, T& into) {
    std::int64_t number = 0;
    if (!from.readInteger(number, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(),
                          integerTypeName<T>()))
      return false;
    into = static_cast<T>(number);
    return true;
  }
  static void encode(T value, Encoder& into) { into.integer(value); }
};

template <std::unsigned_integral T>
  requires(!std::same_as<T, bool>)
struct Coder<T> {
  static bool decode(Decoder from, T& into) {
    std::uint64_t number = 0;
    if (!from.readUnsigned(number, std::numeric_limits<T>::max(), integerTypeName<T>()))
      return false;
    into = static_cast<T>(number);
    return true;
  }
  static void encode(T value, Encoder& into) { into.unsignedInteger(value); }
};

template <>
struct Coder<double> {
  static bool decode(Decoder from, double& into) { return from.readDouble(into); }
  static void encode(double value, Encoder& into) { into.floating(value); }
};

template <>
struct Coder<float> {
  static bool decode(Decoder from, float& into);
  static void encode(float value, Encoder& into) { into.floating(value); }
};

template <>
struct Coder<std::string> {
  static bool decode(Decoder from, std::string& into) {
    std::string_view text;
    if (!from.readText(text))
      return false;
    if (text.size() > into.capacity())
      into = std::string(text); // cheaper than growing
    else
      into.assign(text);
    return true;
  }
  static void encode(const std::string& value, Encoder& into) { into.text(value); }
};

template <>
struct Coder<Date> {
  static bool decode(Decoder from, Date& into) { return from.readDate(into); }
  static void encode(Date value, Encoder& into) { into.date(value); }
};

template <>
struct Coder<Bytes> {
  static bool decode(Decoder from, Bytes& into) { return from.readData(into); }
  static void encode(const Bytes& value, Encoder& into) { into.data(value); }
};

template <>
struct Coder<UUID> {
  static bool decode(Decoder from, UUID& into);
  static void encode(const UUID& value, Encoder& into) { into.text(value.string()); }
};

/// The path as a text.
template <>
struct Coder<FilePath> {
  static bool decode(Decoder from, FilePath& into);
  static void encode(const FilePath& value, Encoder& into);
};

/// A null reads as absent. As a member of a record an absent value isn't written; anywhere else, as
/// in an array, it is a null.
template <class T>
struct Coder<std::optional<T>> {
  static bool decode(Decoder from, std::optional<T>& into) {
    if (from.isNil()) {
      into.reset();
      return true;
    }
    // With an argument: a struct inside of another can't be made from nothing in the eyes of an
    // optional that is a member of the outer one.
    return Coder<T>::decode(from, into.emplace(T{}));
  }
  static void encode(const std::optional<T>& value, Encoder& into) {
    if (value)
      Coder<T>::encode(*value, into);
    else
      into.nil();
  }
};

template <class T>
struct Coder<std::vector<T>> {
  static bool decode(Decoder from, std::vector<T>& into) {
    into.reserve(into.size() + static_cast<std::size_t>(from.count()));
    if constexpr (std::same_as<T, std::int64_t>) {
      if (from.kind() == ValueKind::array && from.source().readIntegers(from.value(), into))
        return true;
      into.clear();
    }
    return from.forEachElement([&](Decoder element) {
      if constexpr (std::same_as<T, bool>) {
        bool value = false;
        const bool isRead = element.readBoolean(value);
        into.push_back(value);
        return isRead;
      } else {
        return Coder<T>::decode(element, into.emplace_back());
      }
    });
  }
  static void encode(const std::vector<T>& value, Encoder& into) {
    if constexpr (std::same_as<T, std::int64_t>)
      return into.integers(value);
    into.array([&](ArrayEncoder& array) {
      for (const auto& element : value)
        array.write(static_cast<const T&>(element));
    });
  }
};

/// An array of exactly two elements.
template <class A, class B>
struct Coder<std::pair<A, B>> {
  static bool decode(Decoder from, std::pair<A, B>& into) {
    UnkeyedDecodingContainer array;
    if (!from.open(array) || !array.read(into.first) || !array.read(into.second))
      return false;
    return array.isAtEnd() ||
           from.fail(DecodingErrorKind::dataCorrupted, "Expected an array of two elements.");
  }
  static void encode(const std::pair<A, B>& value, Encoder& into) {
    into.array([&](ArrayEncoder& array) {
      array.write(value.first);
      array.write(value.second);
    });
  }
};

/// An array of the two bounds, the lower one first.
template <class Bound>
struct Coder<Range<Bound>> {
  static bool decode(Decoder from, Range<Bound>& into) {
    std::pair<Bound, Bound> bounds;
    if (!from.read(bounds))
      return false;
    if (bounds.second < bounds.first)
      return from.fail(DecodingErrorKind::dataCorrupted,
                       "The upper bound of a range lies before its lower bound.");
    into = Range<Bound>(std::move(bounds.first), std::move(bounds.second));
    return true;
  }
  static void encode(const Range<Bound>& value, Encoder& into) {
    into.write(std::pair(value.lowerBound, value.upperBound));
  }
};

/// A table with any keys. They are data, and no strategy converts them; of repeated ones the last
/// counts.
template <class Map>
struct MapCoder {
  static bool decode(Decoder from, Map& into) {
    using Value = typename Map::mapped_type;
    return from.forEachMember([&](std::string_view key, Decoder member) {
      Value value{};
      if (!Coder<Value>::decode(member, value))
        return false;
      into.insert_or_assign(std::string(key), std::move(value));
      return true;
    });
  }
  static void encode(const Map& value, Encoder& into) {
    into.table([&](TableEncoder& table) {
      for (const auto& [key, mapped] : value)
        table.atExactly(key, [&](Encoder& member) { member.write(mapped); });
    });
  }
};

template <class T>
struct Coder<std::map<std::string, T>> : MapCoder<std::map<std::string, T>> {};
template <class T>
struct Coder<std::unordered_map<std::string, T>> : MapCoder<std::unordered_map<std::string, T>> {};

/// One of several shapes, told by what can be read: the alternatives are tried in their order, and
/// the last one's reason is the one that is reported.
template <class... Alternatives>
struct Coder<std::variant<Alternatives...>> {
  static bool decode(Decoder from, std::variant<Alternatives...>& into) {
    return tryFrom<0>(from, into);
  }
  static void encode(const std::variant<Alternatives...>& value, Encoder& into) {
    std::visit([&](const auto& alternative) { into.write(alternative); }, value);
  }

private:
  template <std::size_t I>
  static bool tryFrom(Decoder from, std::variant<Alternatives...>& into) {
    if constexpr (I + 1 == sizeof...(Alternatives)) {
      return from.read(into.template emplace<I>());
    } else {
      return from.tryRead(into.template emplace<I>()) || tryFrom<I + 1>(from, into);
    }
  }
};

} // namespace velmar
