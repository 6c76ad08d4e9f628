// Where in a coded document something stands: a path of keys and positions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmar {

/// One step of a coding path: a key of a table, a key that is a number, or a position in an array.
class CodingKey {
public:
  /// A key of a table.
  explicit CodingKey(std::string key) : step_(std::move(key)) {}
  /// A key of a table that is a number.
  [[nodiscard]] static CodingKey fromInt(std::int64_t key) { return CodingKey(Number{key}); }
  /// A position in an array, from 0.
  [[nodiscard]] static CodingKey fromIndex(std::int64_t index) { return CodingKey(Index{index}); }

  /// The key; a number in decimal; "Index 3" for a position.
  [[nodiscard]] std::string stringValue() const;
  /// The number or the position, or nothing for a key that is a text.
  [[nodiscard]] std::optional<std::int64_t> intValue() const;
  [[nodiscard]] bool isIndex() const noexcept { return std::holds_alternative<Index>(step_); }

  bool operator==(const CodingKey&) const = default;

private:
  struct Number {
    std::int64_t value;
    bool operator==(const Number&) const = default;
  };
  struct Index {
    std::int64_t value;
    bool operator==(const Index&) const = default;
  };
  explicit CodingKey(Number key) : step_(key) {}
  explicit CodingKey(Index index) : step_(index) {}

  std::variant<std::string, Number, Index> step_;
};

/// From the root down; empty at the root.
using CodingPath = std::vector<CodingKey>;

/// A path for people: "items[3].label", and nothing for the root. Keys that aren't plain words are
/// put in quotes.
[[nodiscard]] std::string describe(const CodingPath& path);

/// Where a decoder or an encoder stands, as a chain up to the root that costs nothing until
/// somebody asks. The links live on the stack of those who walk down: one never outlives its
/// parent.
class CodingPathNode {
public:
  /// The root.
  CodingPathNode() = default;
  /// A member of a table. `key` is borrowed.
  CodingPathNode(const CodingPathNode& parent, std::string_view key)
      : parent_(&parent), key_(key) {}
  /// An element of an array.
  CodingPathNode(const CodingPathNode& parent, std::int64_t index)
      : parent_(&parent), index_(index) {}

  /// How many steps there are above this one; 0 for the root. O(depth).
  [[nodiscard]] int depth() const noexcept;
  [[nodiscard]] CodingPath path() const;

private:
  const CodingPathNode* parent_ = nullptr;
  std::string_view key_;
  std::int64_t index_ = -1;
};

} // namespace velmar
