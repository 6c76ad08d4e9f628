// A value of no declared type, as it comes out of a property list or goes into one: what a document
// of any form can hold.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Dates/ISO8601.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace velmar {

struct RawValue {
  using Array = std::vector<RawValue>;
  using Dictionary = std::map<std::string, RawValue>;
  struct Nothing {
    bool operator==(const Nothing&) const = default;
  };
  using Variant = std::variant<Nothing, bool, std::int64_t, std::uint64_t, float, double,
                               std::string, Date, Bytes, Array, Dictionary>;

  Variant value;

  RawValue() = default;
  explicit RawValue(Variant variant) : value(std::move(variant)) {}

  bool operator==(const RawValue& other) const { return value == other.value; }
  /// For people: texts in quotes, dates in ISO 8601, bytes by how many there are.
  [[nodiscard]] std::string description() const;
};

} // namespace velmar
