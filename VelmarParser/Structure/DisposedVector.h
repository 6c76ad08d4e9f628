// A vector that doesn't keep its owner waiting when it goes.
#pragma once

#include "VelmarParser/Grammar/ObjectDisposal.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace velmar {

/// A vector whose elements are freed on a background thread where they are many: those of a large
/// document take 100 ms, which somebody who has given up on its outline shouldn't have to wait for.
template <class Element>
class DisposedVector : public std::vector<Element> {
public:
  DisposedVector() = default;
  explicit DisposedVector(std::vector<Element> elements)
      : std::vector<Element>(std::move(elements)) {}
  DisposedVector(DisposedVector&&) noexcept = default;
  DisposedVector& operator=(DisposedVector&&) = delete;
  DisposedVector(const DisposedVector&) = delete;
  DisposedVector& operator=(const DisposedVector&) = delete;
  ~DisposedVector() {
    if (this->size() > many)
      disposeInBackground(std::make_shared<std::vector<Element>>(std::move(*this)));
  }

  /// Gives the elements away.
  [[nodiscard]] std::vector<Element> take() && { return std::move(*this); }

private:
  static constexpr std::size_t many = 4096;
};

} // namespace velmar
