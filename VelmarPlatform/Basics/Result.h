// A value or the reason why there is none, for tries whose failure is usually dropped or kept:
// either-or decoding, query caches. A failure that travels is thrown instead (see Error.h). Shaped
// like std::expected, which our standard library doesn't have yet.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"

#include <utility>
#include <variant>

namespace velmar {

/// Wraps an error so that it can't be taken for a value: `return Failure(error);`.
template <class E>
struct Failure {
  explicit Failure(E failure) : error(std::move(failure)) {}
  E error;
};

/// Either a `T` or an `E`. Reading the one that isn't there stops the process.
template <class T, class E>
class [[nodiscard]] Result {
public:
  Result(T value) // NOLINT(google-explicit-constructor): a value is a result
      : storage_(std::in_place_index<0>, std::move(value)) {}
  Result(Failure<E> failure) // NOLINT(google-explicit-constructor): likewise
      : storage_(std::in_place_index<1>, std::move(failure.error)) {}

  [[nodiscard]] bool hasValue() const noexcept { return storage_.index() == 0; }
  explicit operator bool() const noexcept { return hasValue(); }

  [[nodiscard]] const T& value() const& {
    precondition(hasValue(), "This result holds a failure and no value.");
    return *std::get_if<0>(&storage_);
  }
  [[nodiscard]] T& value() & {
    precondition(hasValue(), "This result holds a failure and no value.");
    return *std::get_if<0>(&storage_);
  }
  [[nodiscard]] T&& value() && { return std::move(value()); }

  [[nodiscard]] const E& error() const& {
    precondition(!hasValue(), "This result holds a value and no failure.");
    return *std::get_if<1>(&storage_);
  }

  const T& operator*() const& { return value(); }
  T& operator*() & { return value(); }
  const T* operator->() const { return &value(); }
  T* operator->() { return &value(); }

  bool operator==(const Result&) const = default;

private:
  std::variant<T, E> storage_;
};

} // namespace velmar
