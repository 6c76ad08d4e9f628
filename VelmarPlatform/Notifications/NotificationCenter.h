// The notification centre: telling whoever listens that something happened, without knowing who
// does.
//
//   NotificationCenter center;
//   auto observer = center.addObserver("DidSave", document, Delivery::mainExecutor,
//                                      [](const Notification& notification) { … });
//   center.post({.name = "DidSave", .object = document});
//   center.removeObserver(observer);
//
// Messages with types of their own are built on this one by name
// (VelmarCore/NotificationCenterAdditions.h).
#pragma once

#include "VelmarPlatform/Basics/Object.h"

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velmar {

/// What is posted.
struct Notification {
  std::string name;
  std::shared_ptr<Object> object = {};           ///< Whom it is about; may be null.
  std::map<std::string, std::any> userInfo = {}; ///< Whatever the poster wants to add.
};

/// Where an observer's handler is called.
enum class Delivery {
  postingThread, ///< By `post`, before it returns, whatever thread that is.
  mainExecutor,  ///< On the main executor: by `post` if that is called there, and queued in order
                 ///< otherwise.
};

/// A registration, as a token to remove it with.
class NotificationObserver;

/// Hands notifications to observers. Any thread, and also from inside of handlers. A centre may go
/// while observers of it are still held; there is nothing left to remove then.
class NotificationCenter {
public:
  using Handler = std::function<void(const Notification&)>;
  using Observer = std::shared_ptr<NotificationObserver>;

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;
  NotificationCenter(NotificationCenter&&) = delete;
  NotificationCenter& operator=(NotificationCenter&&) = delete;
  ~NotificationCenter() = default;

  /// The one that everybody uses who has no reason to have another.
  [[nodiscard]] static NotificationCenter& shared() noexcept;

  /// Has `handler` called for each notification of this name, and about `object` alone unless that
  /// is null. The object isn't kept alive. Handlers of one notification are called in the order of
  /// their registration.
  [[nodiscard]] Observer addObserver(std::string_view name, const std::shared_ptr<Object>& object,
                                     Delivery delivery, Handler handler);

  /// Ends a registration; doing so twice is nothing. No call of the handler begins afterwards, also
  /// not for what is on its way to the main executor; one that runs on another thread right now
  /// goes on.
  void removeObserver(const Observer& observer) noexcept;

  /// Tells the observers. O(observers of the name).
  void post(Notification notification);

private:
  using Observers = std::vector<Observer>;

  std::mutex mutex_;
  /// Lists are replaced and never changed, so that posting goes through one without the lock.
  std::unordered_map<std::string, std::shared_ptr<const Observers>> observers_;
};

} // namespace velmar
