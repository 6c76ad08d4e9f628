// A look at a cancellation token every so many steps of a loop.
#pragma once

#include "VelmarCore/Concurrency/CancellationToken.h"

namespace velmar {

/// For loops over all of a document, each step of which takes far less than a microsecond. One
/// thread.
class CancellationTicks {
public:
  /// Null for work that can't be cancelled. `token` must outlive this object.
  explicit CancellationTicks(const CancellationToken* token) noexcept : token_(token) {}

  /// Throws CancellationError, at the latest some hundred steps after the cancellation.
  void step() {
    if (--left_ == 0)
      look();
  }
  /// Throws CancellationError if the token is cancelled.
  void look() {
    left_ = stepsBetween;
    if (token_)
      token_->checkCancellation();
  }
  [[nodiscard]] const CancellationToken* token() const noexcept { return token_; }

private:
  static constexpr int stepsBetween = 512;

  const CancellationToken* token_;
  int left_ = stepsBetween;
};

} // namespace velmar
