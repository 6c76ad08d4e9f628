// Unions whose case is told by the one key of a table: {"only": …} or {"except": …}.
//
//   struct Filter {
//     std::variant<Only, Except> value;
//     static std::span<const CaseRow> cases();
//   };
//   std::span<const CaseRow> Filter::cases() {
//     static constexpr std::array table{caseRow<&Filter::value, Only>("only").underscored(),
//                                       caseRow<&Filter::value, Except>("except").underscored()};
//     return table;
//   }
//
// A case without a payload is an alternative that is a record without rows: {"none": {}}.
#pragma once

#include "VelmarPlatform/Coding/Record.h"

#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>
#include <variant>

namespace velmar {

/// One case of a union. Made by `caseRow`.
struct CaseRow {
  std::string_view key;
  /// Puts a fresh payload there, for reading into.
  void* (*make)(void* taggedUnion);
  /// The payload if the union holds this case, else null.
  const void* (*payload)(const void* taggedUnion);
  const FieldCoding* coding;
  /// The payload stands one table deeper, under the key "_0".
  bool isUnderscored = false;

  [[nodiscard]] consteval CaseRow underscored() const {
    CaseRow row = *this;
    row.isUnderscored = true;
    return row;
  }
};

template <class T>
concept TaggedUnion = requires {
  { T::cases() } -> std::same_as<std::span<const CaseRow>>;
};

template <auto Member, class Alternative>
consteval CaseRow caseRow(std::string_view key) {
  using Union = typename rowDetail::MemberOf<decltype(Member)>::Record;
  return {key,
          [](void* taggedUnion) -> void* {
            return &(static_cast<Union*>(taggedUnion)->*Member).template emplace<Alternative>();
          },
          [](const void* taggedUnion) -> const void* {
            return std::get_if<Alternative>(&(static_cast<const Union*>(taggedUnion)->*Member));
          },
          &rowDetail::fieldCoding<Alternative>};
}

/// Fails with a type mismatch where the table has other than one key or a key of no case.
[[nodiscard]] bool decodeUnion(Decoder from, void* taggedUnion, std::span<const CaseRow> cases);
void encodeUnion(const void* taggedUnion, std::span<const CaseRow> cases, Encoder& into);

template <TaggedUnion T>
struct Coder<T> {
  static bool decode(Decoder from, T& into) { return decodeUnion(from, &into, T::cases()); }
  static void encode(const T& value, Encoder& into) { encodeUnion(&value, T::cases(), into); }
};

} // namespace velmar
