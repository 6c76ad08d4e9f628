#include "VelmarPlatform/Notifications/NotificationCenter.h"

#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace velmar {

class NotificationObserver {
public:
  NotificationObserver(std::string_view n, const std::shared_ptr<Object>& object, Delivery d,
                       NotificationCenter::Handler h)
      : name(n), delivery(d), filters_(object != nullptr), object_(object), handler_(std::move(h)) {
  }

  /// Whether a notification about `object` is for us. A filter whose object has gone fits nothing
  /// any more, whatever stands at its address now.
  [[nodiscard]] bool wants(const std::shared_ptr<Object>& object) const noexcept {
    return !filters_ || (object != nullptr && object_.lock() == object);
  }
  void remove() noexcept { isRemoved_.store(true, std::memory_order_release); }
  void handle(const Notification& notification) const {
    if (!isRemoved_.load(std::memory_order_acquire))
      handler_(notification);
  }

  const std::string name;
  const Delivery delivery;

private:
  const bool filters_;
  const std::weak_ptr<Object> object_;
  const NotificationCenter::Handler handler_;
  std::atomic<bool> isRemoved_{false};
};

NotificationCenter& NotificationCenter::shared() noexcept {
  static auto& center = *new NotificationCenter;
  return center;
}

NotificationCenter::Observer NotificationCenter::addObserver(std::string_view name,
                                                             const std::shared_ptr<Object>& object,
                                                             Delivery delivery, Handler handler) {
  auto observer =
      std::make_shared<NotificationObserver>(name, object, delivery, std::move(handler));
  const std::scoped_lock lock(mutex_);
  std::shared_ptr<const Observers>& list = observers_[observer->name];
  Observers longer = list == nullptr ? Observers() : *list;
  longer.push_back(observer);
  list = std::make_shared<const Observers>(std::move(longer));
  return observer;
}

void NotificationCenter::removeObserver(const Observer& observer) noexcept {
  observer->remove();
  std::shared_ptr<const Observers> replaced; // what handlers captured goes without the lock
  const std::scoped_lock lock(mutex_);
  const auto place = observers_.find(observer->name);
  if (place == observers_.end())
    return;
  Observers shorter = *place->second;
  std::erase(shorter, observer);
  replaced = std::move(place->second);
  if (shorter.empty())
    observers_.erase(place);
  else
    place->second = std::make_shared<const Observers>(std::move(shorter));
}

void NotificationCenter::post(Notification notification) {
  std::shared_ptr<const Observers> observers;
  {
    const std::scoped_lock lock(mutex_);
    const auto place = observers_.find(notification.name);
    if (place == observers_.end())
      return;
    observers = place->second;
  }
  const auto shared = std::make_shared<const Notification>(std::move(notification));
  const bool isOnMain = mainExecutor().isCurrent();
  for (const Observer& observer : *observers) {
    if (!observer->wants(shared->object))
      continue;
    if (observer->delivery == Delivery::postingThread || isOnMain)
      observer->handle(*shared);
    else
      mainExecutor().post([observer, shared] { observer->handle(*shared); });
  }
}

} // namespace velmar
