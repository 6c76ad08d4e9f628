// What the property setters of a pattern have written about a match and its captures.
#pragma once

#include "VelmarParser/Query/QueryPredicate.h"
#include "VelmarParser/Query/QueryPropertyValue.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace velmar {

template <TextEnumeration K, class Metadata>
class KeyedQueryMatchMetadata;

/// Properties by key, of the match itself and of each of its captures. A value.
///
/// There are seldom more than three, so they lie in one short list. Clearing it keeps its memory:
/// metadata that is used for match after match allocates nothing.
class QueryMatchMetadata {
public:
  struct Property {
    /// Absent for a property of the match itself.
    std::optional<std::int64_t> captureID;
    std::string key;
    QueryPropertyValue value;
    bool operator==(const Property&) const = default;
  };

  /// All properties, in the order in which they were first set.
  [[nodiscard]] std::span<const Property> properties() const noexcept {
    return {slots_.data(), count_};
  }
  [[nodiscard]] bool isEmpty() const noexcept { return count_ == 0; }

  /// A property of the match, null if it isn't set. Like the next two, good until the next change.
  [[nodiscard]] const QueryPropertyValue* valueFor(std::string_view key) const {
    return valueWithID(std::nullopt, key);
  }
  /// A property of the capture, or of the match if there is none.
  [[nodiscard]] const QueryPropertyValue*
  valueFor(const std::optional<QueryPredicateCapture>& capture, std::string_view key) const {
    return valueWithID(idOf(capture), key);
  }
  [[nodiscard]] const QueryPropertyValue* valueWithID(std::optional<std::int64_t> captureID,
                                                      std::string_view key) const;

  /// Sets a property of the match; an absent value removes it.
  void setValue(const std::optional<QueryPropertyValue>& value, std::string_view key) {
    setValue(value, std::optional<QueryPredicateCapture>(), key);
  }
  /// Sets a property of the capture, or of the match if there is none.
  void setValue(const std::optional<QueryPropertyValue>& value,
                const std::optional<QueryPredicateCapture>& capture, std::string_view key);
  void set(std::optional<std::int64_t> captureID, std::string_view key,
           const QueryPropertyValue& value);
  /// Sets a text without making a value first.
  void setText(std::optional<std::int64_t> captureID, std::string_view key, std::string_view text);

  /// Takes over what `other` has, in the memory that this one has.
  void assign(const QueryMatchMetadata& other);

  /// Access by the cases of an enumeration instead of by text.
  template <TextEnumeration K>
  [[nodiscard]] KeyedQueryMatchMetadata<K, const QueryMatchMetadata> keyedBy() const;
  template <TextEnumeration K>
  [[nodiscard]] KeyedQueryMatchMetadata<K, QueryMatchMetadata> keyedBy();

  /// Whether both have the same properties, in whatever order.
  bool operator==(const QueryMatchMetadata& other) const;

private:
  [[nodiscard]] static std::optional<std::int64_t>
  idOf(const std::optional<QueryPredicateCapture>& capture) {
    return capture ? std::optional(capture->valueID) : std::nullopt;
  }
  [[nodiscard]] std::size_t indexOf(std::optional<std::int64_t> captureID,
                                    std::string_view key) const;
  QueryPropertyValue& slotFor(std::optional<std::int64_t> captureID, std::string_view key);

  /// The first `count_` are in use; the others only keep their memory.
  std::vector<Property> slots_;
  std::size_t count_ = 0;
};

/// A view of a match's metadata by the cases of `K`. Borrows it.
template <TextEnumeration K, class Metadata = const QueryMatchMetadata>
class KeyedQueryMatchMetadata {
public:
  explicit KeyedQueryMatchMetadata(Metadata& base) noexcept : base_(&base) {}

  [[nodiscard]] Metadata& base() const noexcept { return *base_; }

  /// Null if the property isn't set. Good until the next change.
  [[nodiscard]] const QueryPropertyValue* valueFor(K key) const {
    return base_->valueFor(rawValueOf(key));
  }
  [[nodiscard]] const QueryPropertyValue*
  valueFor(const std::optional<QueryPredicateCapture>& capture, K key) const {
    return base_->valueFor(capture, rawValueOf(key));
  }
  [[nodiscard]] bool isSet(K key) const { return valueFor(key) != nullptr; }

  /// An absent value removes the property.
  void setValue(const std::optional<QueryPropertyValue>& value, K key) const
    requires(!std::is_const_v<Metadata>)
  {
    base_->setValue(value, rawValueOf(key));
  }
  void setValue(const std::optional<QueryPropertyValue>& value,
                const std::optional<QueryPredicateCapture>& capture, K key) const
    requires(!std::is_const_v<Metadata>)
  {
    base_->setValue(value, capture, rawValueOf(key));
  }

private:
  Metadata* base_;
};

template <TextEnumeration K>
KeyedQueryMatchMetadata<K, const QueryMatchMetadata> QueryMatchMetadata::keyedBy() const {
  return KeyedQueryMatchMetadata<K, const QueryMatchMetadata>(*this);
}

template <TextEnumeration K>
KeyedQueryMatchMetadata<K, QueryMatchMetadata> QueryMatchMetadata::keyedBy() {
  return KeyedQueryMatchMetadata<K, QueryMatchMetadata>(*this);
}

} // namespace velmar
