// When two neighbouring values of a run array may share a run: the comparators.
//
// A comparator is a small value with a type `Compared` and an operation `canMerge`. Each is made by
// its constructor, which most don't need to be told: a run array makes its own where the comparator
// has no state.
//
//     RunArray<int>                                                  equal values share a run
//     RunArray<std::shared_ptr<Style>, ObjectRunComparator<...>>     references to one object do
//     RunArray<std::optional<Kind>, OptionalRunComparator<...>>      so do two absent ones
//     RunArray<Token, KeyPathRunComparator<Token, Kind Token::*>>    tokens of one kind do
//
// A key path is a member pointer or any other projection, and the comparator of the key's type is a
// template argument. So there is no comparator with its type erased: the compiler sees through to
// the comparison of the keys.
#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace velmar {

/// Says whether two neighbouring values of the type `Compared` may share a run. Must give the same
/// answer each time.
template <class Comparator>
concept RunComparator =
    std::copyable<Comparator> && std::equality_comparable<Comparator> &&
    requires(const Comparator& comparator, const typename Comparator::Compared& value) {
      { comparator.canMerge(value, value) } -> std::convertible_to<bool>;
      { comparator.hashValue() } -> std::convertible_to<std::size_t>;
    };

/// Merges values that are equal.
template <std::equality_comparable T>
struct EquatableRunComparator {
  using Compared = T;

  [[nodiscard]] bool canMerge(const T& left, const T& right) const { return left == right; }
  [[nodiscard]] std::size_t hashValue() const noexcept { return 1; }
  bool operator==(const EquatableRunComparator&) const = default;
};

/// Merges references to one object, whatever equality says. `Pointer` is a raw or a smart pointer.
template <class Pointer>
struct ObjectRunComparator {
  using Compared = Pointer;

  [[nodiscard]] bool canMerge(const Pointer& left, const Pointer& right) const {
    return address(left) == address(right);
  }
  [[nodiscard]] std::size_t hashValue() const noexcept { return 2; }
  bool operator==(const ObjectRunComparator&) const = default;

private:
  static const void* address(const Pointer& pointer) {
    if constexpr (std::is_pointer_v<Pointer>)
      return pointer;
    else
      return pointer.get();
  }
};

/// Merges two absent values, never a present and an absent one, and two present ones as `Base`
/// says.
template <RunComparator Base>
struct OptionalRunComparator {
  using Compared = std::optional<typename Base::Compared>;

  [[no_unique_address]] Base comparator;

  [[nodiscard]] bool canMerge(const Compared& left, const Compared& right) const {
    if (!left || !right)
      return !left && !right;
    return comparator.canMerge(*left, *right);
  }
  [[nodiscard]] std::size_t hashValue() const noexcept { return comparator.hashValue() * 31 + 3; }
  bool operator==(const OptionalRunComparator&) const = default;
};

/// Merges nothing.
template <class T>
struct NeverRunComparator {
  using Compared = T;

  [[nodiscard]] bool canMerge(const T&, const T&) const { return false; }
  [[nodiscard]] std::size_t hashValue() const noexcept { return 4; }
  bool operator==(const NeverRunComparator&) const = default;
};

/// References to one object merge, and so do two that are absent.
template <class Pointer>
using OptionalObjectRunComparator = OptionalRunComparator<ObjectRunComparator<Pointer>>;
/// Only absent values merge.
template <class T>
using OptionalNeverRunComparator = OptionalRunComparator<NeverRunComparator<T>>;

namespace detail {

template <class Key>
struct DefaultRunComparator {
  using Type = EquatableRunComparator<Key>;
};
template <class Object>
struct DefaultRunComparator<Object*> {
  using Type = ObjectRunComparator<Object*>;
};
template <class Object>
struct DefaultRunComparator<std::shared_ptr<Object>> {
  using Type = ObjectRunComparator<std::shared_ptr<Object>>;
};
template <class Key>
struct DefaultRunComparator<std::optional<Key>> {
  using Type = OptionalRunComparator<typename DefaultRunComparator<Key>::Type>;
};

template <class T, class KeyPath>
using KeyOf = std::remove_cvref_t<std::invoke_result_t<const KeyPath&, const T&>>;

} // namespace detail

/// How keys of a type are compared if nobody says otherwise: pointers by object, the rest by `==`,
/// optional ones accordingly.
template <class Key>
using DefaultRunComparator = typename detail::DefaultRunComparator<Key>::Type;

/// Merges values whose keys merge as `Base` says. The run that comes of it keeps the value in
/// front, whatever else the values hold.
///
/// `KeyPath` is a member pointer, or any copyable callable that gives a key of a `T`; one that
/// can't be compared itself, such as a closure, counts as equal to every other of its type.
template <class T, class KeyPath, class Base = DefaultRunComparator<detail::KeyOf<T, KeyPath>>>
struct KeyPathRunComparator {
  using Compared = T;
  static_assert(std::same_as<typename Base::Compared, detail::KeyOf<T, KeyPath>>);

  KeyPath keyPath;
  [[no_unique_address]] Base comparator;

  // Not explicit: a key path alone says all there is to say.
  KeyPathRunComparator(KeyPath path, Base base = {}) // NOLINT(google-explicit-constructor)
      : keyPath(std::move(path)), comparator(std::move(base)) {}

  [[nodiscard]] bool canMerge(const T& left, const T& right) const {
    return comparator.canMerge(std::invoke(keyPath, left), std::invoke(keyPath, right));
  }
  [[nodiscard]] std::size_t hashValue() const noexcept { return comparator.hashValue() * 31 + 5; }
  bool operator==(const KeyPathRunComparator& other) const {
    if constexpr (std::equality_comparable<KeyPath>)
      return keyPath == other.keyPath && comparator == other.comparator;
    else
      return comparator == other.comparator;
  }
};

template <class T, class Key>
KeyPathRunComparator(Key T::*) -> KeyPathRunComparator<T, Key T::*>;
template <class T, class Key, class Base>
KeyPathRunComparator(Key T::*, Base) -> KeyPathRunComparator<T, Key T::*, Base>;

} // namespace velmar

template <velmar::RunComparator Comparator>
struct std::hash<Comparator> {
  std::size_t operator()(const Comparator& comparator) const noexcept {
    return comparator.hashValue();
  }
};
