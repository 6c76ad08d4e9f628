// What a form of text or bytes must offer so that records can be decoded from it: a document that
// is already parsed, seen as a tree of values. JSON, TOML and property lists each have one;
// everything above it (Decoder, Coder, FieldRow) is the same for all.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Coding/DecodingError.h"
#include "VelmarPlatform/Dates/ISO8601.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// What stands at a place. A source has the kinds that its form has: JSON knows no dates, TOML no
/// nil.
enum class ValueKind : std::uint8_t {
  nil,
  boolean,
  integer,         ///< Fits std::int64_t.
  unsignedInteger, ///< A whole number above that, up to 2^64-1.
  floating,
  text,
  date,
  data,
  array,
  table,
};

/// "a boolean", "a text": the kind as a word in a sentence.
[[nodiscard]] std::string_view describe(ValueKind kind);

/// A value of a source. What the number means is the source's own affair.
struct CodedValue {
  std::uint64_t handle = 0;
};

/// A walk over the children of an array or a table; the numbers are the source's own affair, but
/// that both are the same behind the last child.
struct CodedChildren {
  std::uint64_t next = 0;
  std::uint64_t end = 0;
};

/// Immutable while anybody decodes from it, so several threads may. Each accessor is called only
/// where `kind` is the one that it reads. Nothing throws.
class DecodingSource {
public:
  DecodingSource() = default;
  DecodingSource(const DecodingSource&) = delete;
  DecodingSource& operator=(const DecodingSource&) = delete;
  virtual ~DecodingSource() = default;

  [[nodiscard]] virtual ValueKind kind(CodedValue value) const = 0;
  [[nodiscard]] virtual bool boolean(CodedValue value) const = 0;
  [[nodiscard]] virtual std::int64_t integer(CodedValue value) const = 0;
  [[nodiscard]] virtual std::uint64_t unsignedInteger(CodedValue value) const = 0;
  [[nodiscard]] virtual double floating(CodedValue value) const = 0;
  /// Valid UTF-8, as long as the source lives.
  [[nodiscard]] virtual std::string_view text(CodedValue value) const = 0;
  /// For sources that have the kind; a precondition otherwise.
  [[nodiscard]] virtual Date date(CodedValue value) const;
  [[nodiscard]] virtual std::span<const std::byte> data(CodedValue value) const;

  /// How many children an array or a table has; O(children) at worst.
  [[nodiscard]] virtual std::int64_t count(CodedValue value) const = 0;
  /// A walk from the first child, in the document's order.
  [[nodiscard]] virtual CodedChildren children(CodedValue value) const = 0;
  /// The next element of an array; false, and `element` untouched, behind the last.
  virtual bool nextElement(CodedChildren& walk, CodedValue& element) const = 0;
  /// The next member of a table, with a key that lives as long as the source. Repeated keys come as
  /// often as they stand there.
  virtual bool nextMember(CodedChildren& walk, std::string_view& key, CodedValue& member) const = 0;

  // The commonest reads as one call in place of two. What they read is left alone on false.

  /// A walk over the members of `value`, if it is a table.
  [[nodiscard]] virtual bool enterTable(CodedValue value, CodedChildren& walk) const;
  /// The integer at `value`, if it is of the kind integer.
  [[nodiscard]] virtual bool readInteger(CodedValue value, std::int64_t& into) const;
  /// The text at `value`, if it is one.
  [[nodiscard]] virtual bool readText(CodedValue value, std::string_view& into) const;
  /// Appends the elements of an array of integers to `integers` as long as they are of the kind
  /// integer, and says whether all were. For long arrays, which this spares a call for each
  /// element.
  [[nodiscard]] virtual bool readIntegers(CodedValue array,
                                          std::vector<std::int64_t>& integers) const;

  // How the form words its failures.

  /// That something else than `expected` ("a boolean") stands at `value`.
  [[nodiscard]] virtual DecodingFailure mismatch(CodedValue value, ValueKind expected) const;
  /// That the number at `value` isn't one of the type named `type` ("Int8").
  [[nodiscard]] virtual DecodingFailure notRepresentable(CodedValue value,
                                                         std::string_view type) const;
  /// That a table lacks a key that must be there.
  [[nodiscard]] virtual DecodingFailure missingKey(std::string_view key) const;
  /// That an array has ended where one more element is wanted.
  [[nodiscard]] virtual DecodingFailure atEnd() const;
};

} // namespace velmar
