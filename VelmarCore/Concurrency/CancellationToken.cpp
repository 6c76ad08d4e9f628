#include "VelmarCore/Concurrency/CancellationToken.h"

#include "VelmarPlatform/Concurrency/Cancellation.h"

#include <utility>

namespace velmar {

bool CancellationToken::isCancelled() const noexcept {
  return shared_->isCancelled.load();
}

void CancellationToken::checkCancellation() const {
  if (isCancelled())
    throw CancellationError();
}

bool CancellationToken::cancel() const {
  if (shared_->isCancelled.exchange(true))
    return true;
  std::vector<Handler> handlers;
  {
    const std::scoped_lock lock(shared_->mutex);
    handlers.swap(shared_->onCancel);
  }
  for (const Handler& handler : handlers)
    handler();
  return false;
}

void CancellationToken::onCancellation(Handler handler) const {
  {
    // Inside of the lock either `cancel` hasn't set the flag, and will find the handler, or we see
    // the flag.
    const std::scoped_lock lock(shared_->mutex);
    if (!isCancelled()) {
      shared_->onCancel.push_back(std::move(handler));
      return;
    }
  }
  handler();
}

} // namespace velmar
