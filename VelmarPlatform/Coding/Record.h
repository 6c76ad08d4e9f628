// Records: plain structs that say once how their members are called in a document.
//
//   struct Item {                                       // in the header
//     std::string label;
//     std::optional<std::int64_t> kind;
//     bool preselect = false;
//     bool operator==(const Item&) const = default;
//     static std::span<const FieldRow> rows();
//   };
//
//   std::span<const FieldRow> Item::rows() {            // in the source
//     static constexpr auto table = rowsOf<Item>(row<&Item::label>("label"),
//     row<&Item::kind>("kind"),
//                                                row<&Item::preselect>("preselect").orDefault());
//     return table;
//   }
//
// That is all: such a record can be read, written and hashed. A member that no row names is a
// compile error, as are two rows with one key. Rows are walked by code that isn't a template, so
// hundreds of records stay small.
#pragma once

#include "VelmarPlatform/Coding/Coder.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <span>
#include <string_view>
#include <type_traits>

namespace velmar {

struct FieldRow;

/// A plain struct with rows.
template <class T>
concept Record = requires {
  { T::rows() } -> std::same_as<std::span<const FieldRow>>;
};

template <class T>
concept Hashable = requires(const T& value) {
  { std::hash<T>()(value) } -> std::convertible_to<std::size_t>;
};

/// What the rows know of a member's type; one for each type.
struct FieldCoding {
  bool (*decode)(const Decoder& from, void* member);
  void (*encode)(const void* member, Encoder& into);
  /// Null unless the type is an optional.
  bool (*isAbsent)(const void* member);
  /// Puts the type's default value there.
  void (*reset)(void* member);
  /// Null if values of the type can't be hashed.
  std::size_t (*hash)(const void* member);
  /// The rows of a member that is a record itself, or null.
  std::span<const FieldRow> (*rows)();
};

enum class Presence : std::uint8_t {
  required,      ///< The key must be there, and not null.
  optional,      ///< Missing and null read as absent; absent isn't written.
  orDefault,     ///< Missing and null leave what the struct's initialiser says; always written.
  writtenAsNull, ///< Missing and null read as absent; absent is written as a null.
  whole,         ///< The record is this member: no table, no key.
  flattened,     ///< The member is a record whose own members stand in the same table.
  uncoded,       ///< Neither read nor written.
};

/// One member of a record. Made by `row` and its like.
struct FieldRow {
  std::string_view key;
  void* (*locate)(void* record);
  const FieldCoding* coding;
  Presence presence;
  /// Which row of the same record takes this one's place where keys are sorted.
  std::uint8_t inKeyOrder = 0;

  /// The key may be missing or null, and the initialiser in the struct then holds.
  [[nodiscard]] consteval FieldRow orDefault() const {
    return with(Presence::orDefault, presence == Presence::required);
  }
  /// An absent value is written as a null. For optionals.
  [[nodiscard]] consteval FieldRow writtenAsNull() const {
    return with(Presence::writtenAsNull, presence == Presence::optional);
  }

private:
  [[nodiscard]] consteval FieldRow with(Presence changed, bool isAllowed) const {
    if (!isAllowed)
      throw "An optional has no default to fall back on, and only an optional can be null.";
    return {key, locate, coding, changed, inKeyOrder};
  }
};

// The walks over rows. Records get them through Coder and std::hash.

[[nodiscard]] bool decodeRecord(Decoder from, void* record, std::span<const FieldRow> rows);
void encodeRecord(const void* record, std::span<const FieldRow> rows, Encoder& into);
/// Equal records give equal hashes. Members whose type can't be hashed don't count.
[[nodiscard]] std::size_t hashRecord(const void* record, std::span<const FieldRow> rows);

template <Record T>
struct Coder<T> {
  static bool decode(Decoder from, T& into) { return decodeRecord(from, &into, T::rows()); }
  static void encode(const T& value, Encoder& into) { encodeRecord(&value, T::rows(), into); }
};

// Making rows.

namespace rowDetail {

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;

/// A hash for members of the standard's containers as well, which have none of their own.
template <class T>
inline constexpr bool canHash = Hashable<T>;
template <class T>
inline constexpr bool canHash<std::vector<T>> = canHash<T>;
template <class T>
inline constexpr bool canHash<std::optional<T>> = canHash<T>;

// Told beforehand, so that each finds the others, whichever is in which.
template <class T>
std::size_t hashOf(const std::optional<T>& value);
template <class T>
std::size_t hashOf(const std::vector<T>& values);

template <class T>
std::size_t hashOf(const T& value) {
  return std::hash<T>()(value);
}
template <class T>
std::size_t hashOf(const std::optional<T>& value) {
  return value ? hashOf(*value) + 1 : 0;
}
template <class T>
std::size_t hashOf(const std::vector<T>& values) {
  std::size_t hash = values.size();
  for (const T& value : values)
    hash = hash * 31 + hashOf(value);
  return hash;
}

template <class T>
consteval FieldCoding makeFieldCoding() {
  FieldCoding coding{};
  coding.decode = [](const Decoder& from, void* member) {
    return Coder<T>::decode(from, *static_cast<T*>(member));
  };
  coding.encode = [](const void* member, Encoder& into) {
    Coder<T>::encode(*static_cast<const T*>(member), into);
  };
  if constexpr (isOptional<T>)
    coding.isAbsent = [](const void* member) {
      return !static_cast<const T*>(member)->has_value();
    };
  coding.reset = [](void* member) { *static_cast<T*>(member) = T{}; };
  if constexpr (canHash<T>)
    coding.hash = [](const void* member) { return hashOf(*static_cast<const T*>(member)); };
  if constexpr (Record<T>)
    coding.rows = &T::rows;
  return coding;
}

template <class T>
inline constexpr FieldCoding fieldCoding = makeFieldCoding<T>();

template <class Member>
struct MemberOf;
template <class RecordType, class Type>
struct MemberOf<Type RecordType::*> {
  using Record = RecordType;
  using Value = Type;
};

template <auto Member>
consteval FieldRow makeRow(std::string_view key, Presence presence) {
  using RecordType = typename MemberOf<decltype(Member)>::Record;
  using Value = typename MemberOf<decltype(Member)>::Value;
  return {key, [](void* record) -> void* { return &(static_cast<RecordType*>(record)->*Member); },
          &fieldCoding<Value>, presence};
}

/// Would become any type, for finding out how many members an aggregate has. Never made.
struct Anything {
  template <class T>
  operator T() const { // NOLINT(google-explicit-constructor): that is its use
    std::abort();
  }
};
template <class T, std::size_t... Is>
consteval bool isMadeOf(std::index_sequence<Is...> /*count*/) {
  return requires { T{(static_cast<void>(Is), Anything())...}; };
}

} // namespace rowDetail

/// A member and its key. Optional by its type, else required.
template <auto Member>
consteval FieldRow row(std::string_view key) {
  using Value = typename rowDetail::MemberOf<decltype(Member)>::Value;
  return rowDetail::makeRow<Member>(key, rowDetail::isOptional<Value> ? Presence::optional
                                                                      : Presence::required);
}

/// The member that the record is in a document: a record of one row.
template <auto Member>
consteval FieldRow wholeRow() {
  return rowDetail::makeRow<Member>("", Presence::whole);
}

/// A member that is a record itself and whose members stand beside the others in the same table.
template <auto Member>
  requires Record<typename rowDetail::MemberOf<decltype(Member)>::Value>
consteval FieldRow flattenedRow() {
  return rowDetail::makeRow<Member>("", Presence::flattened);
}

/// A member that stays out of documents.
template <auto Member>
consteval FieldRow uncodedRow() {
  FieldRow row = rowDetail::makeRow<Member>("", Presence::uncoded);
  return row;
}

/// The rows of `T`, in the order in which they are written. Refuses to compile if a member is
/// missing (which can't be seen where `T` has constructors), if two have one key, and if there are
/// too many.
template <class T, std::same_as<FieldRow>... Rows>
consteval auto rowsOf(Rows... rows) {
  static_assert(sizeof...(Rows) <= 128, "A record has at most 128 members.");
  static_assert(!std::is_aggregate_v<T> ||
                    !rowDetail::isMadeOf<T>(std::make_index_sequence<sizeof...(Rows) + 1>()),
                "A member of the record has no row; uncodedRow names one that stays out.");
  std::array<FieldRow, sizeof...(Rows)> table{rows...};
  for (std::size_t i = 0; i < table.size(); ++i)
    for (std::size_t j = i + 1; j < table.size(); ++j)
      if (!table[i].key.empty() && table[i].key == table[j].key)
        throw "Two rows have one key.";
  std::array<std::uint8_t, sizeof...(Rows)> order{};
  for (std::size_t i = 0; i < order.size(); ++i)
    order[i] = static_cast<std::uint8_t>(i);
  std::ranges::sort(order, {}, [&](std::uint8_t at) { return table[at].key; });
  for (std::size_t i = 0; i < order.size(); ++i)
    table[i].inKeyOrder = order[i];
  return table;
}

} // namespace velmar

template <velmar::Record T>
struct std::hash<T> {
  std::size_t operator()(const T& record) const { return velmar::hashRecord(&record, T::rows()); }
};
