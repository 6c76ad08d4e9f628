// Messages with a type over the notification centre.
//
//   struct DidStop : MainActorNotification<DidStop, LanguageClient> {
//     std::string reason;
//   };
//   MessageObservation observation = addObserver<DidStop>(
//       center, client, [](const DidStop& stop, const std::shared_ptr<LanguageClient>& who) { … });
//   post(center, DidStop{.reason = "crashed"}, client);
//
// The kind of a message says where its observers run. A `MainActorNotification` is handled on the
// main executor, in order; an `AsyncNotification` in a task of its own on the pool, so one message
// may overtake another.
#pragma once

#include "VelmarPlatform/Basics/Object.h"
#include "VelmarPlatform/Concurrency/Spawn.h"
#include "VelmarPlatform/Notifications/NotificationCenter.h"

#include <any>
#include <atomic>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace velmar {

namespace detail {

struct AnyAsyncNotification {};
struct AnyMainActorNotification {};

/// The name of a type with its namespaces and enclosing types, such as
/// "velmar::LanguageClient::DidStop".
[[nodiscard]] std::string qualifiedName(const std::type_info& type);

inline constexpr std::string_view asyncMessageKey = "$_AsyncNotification";
inline constexpr std::string_view mainActorMessageKey = "$_MainActorNotification";

} // namespace detail

/// The base of messages whose observers are asynchronous. `Self` is the message itself, a copyable
/// record; `Subject_` the kind of object that it is about. A message hides the functions that it
/// wants otherwise.
template <class Self, std::derived_from<Object> Subject_>
struct AsyncNotification : detail::AnyAsyncNotification {
  using Subject = Subject_;

  /// The notification's name.
  [[nodiscard]] static std::string name() {
    return "AsyncNotification::" + detail::qualifiedName(typeid(Self));
  }
  /// The message of a notification that wasn't posted as one: absent if it can't be made.
  [[nodiscard]] static std::optional<Self> makeMessage(const Notification&) { return std::nullopt; }
  /// The notification to post a message with, for observers that know nothing of the message's
  /// type.
  [[nodiscard]] static Notification makeNotification(const Self&) { return {.name = Self::name()}; }

  bool operator==(const AsyncNotification&) const { return true; }
};

/// The base of messages whose observers run on the main executor; else like AsyncNotification.
template <class Self, std::derived_from<Object> Subject_>
struct MainActorNotification : detail::AnyMainActorNotification {
  using Subject = Subject_;

  [[nodiscard]] static std::string name() {
    return "MainActorNotification::" + detail::qualifiedName(typeid(Self));
  }
  [[nodiscard]] static std::optional<Self> makeMessage(const Notification&) { return std::nullopt; }
  [[nodiscard]] static Notification makeNotification(const Self&) { return {.name = Self::name()}; }

  bool operator==(const MainActorNotification&) const { return true; }
};

template <class M>
concept AsyncMessage = std::derived_from<M, detail::AnyAsyncNotification>;
template <class M>
concept MainActorMessage = std::derived_from<M, detail::AnyMainActorNotification>;
template <class M>
concept NotificationMessage = AsyncMessage<M> || MainActorMessage<M>;

/// A registration that lasts as long as some copy of this is held. Copies are equal and hash alike.
/// Any thread.
class [[nodiscard]] MessageObservation {
public:
  class Impl;
  explicit MessageObservation(std::shared_ptr<Impl> impl) noexcept : impl_(std::move(impl)) {}

  /// Ends the registration now, for all copies. A handler that is running goes on; none begins
  /// afterwards.
  void cancel() const noexcept;

  /// Keeps a copy in a collection that lives as long as the observer: appends it, or inserts it
  /// into a set.
  template <class Collection>
  void storeIn(Collection& collection) const {
    if constexpr (requires { collection.push_back(*this); })
      collection.push_back(*this);
    else
      collection.insert(*this);
  }

  bool operator==(const MessageObservation&) const = default;

private:
  friend struct std::hash<MessageObservation>;
  std::shared_ptr<Impl> impl_;
};

/// The registration behind the copies of a MessageObservation.
class MessageObservation::Impl {
public:
  Impl(NotificationCenter& center, NotificationCenter::Observer observer,
       std::shared_ptr<std::atomic<bool>> isActive) noexcept;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  Impl(Impl&&) = delete;
  Impl& operator=(Impl&&) = delete;
  ~Impl();

  void cancel() noexcept;

private:
  NotificationCenter& center_;
  NotificationCenter::Observer observer_;
  std::shared_ptr<std::atomic<bool>> isActive_;
};

namespace detail {

template <NotificationMessage M>
constexpr std::string_view messageKey = AsyncMessage<M> ? asyncMessageKey : mainActorMessageKey;

/// The message that a notification carries, or that can be made of it.
template <NotificationMessage M>
[[nodiscard]] std::optional<M> messageOf(const Notification& notification) {
  const auto entry = notification.userInfo.find(std::string(messageKey<M>));
  if (entry != notification.userInfo.end())
    if (const M* message = std::any_cast<M>(&entry->second))
      return *message;
  return M::makeMessage(notification);
}

/// What every form of `addObserver` comes to: `handler(message, object)` for each message, once it
/// is known that it is wanted.
template <NotificationMessage M, class Handler>
[[nodiscard]] MessageObservation observe(NotificationCenter& center,
                                         const std::shared_ptr<Object>& object, Handler handler) {
  auto isActive = std::make_shared<std::atomic<bool>>(true);
  // Shared, because a task may run the handler while the observation goes.
  auto shared = std::make_shared<Handler>(std::move(handler));
  NotificationCenter::Handler receive;
  if constexpr (AsyncMessage<M>)
    receive = [isActive, shared](const Notification& notification) {
      spawn([isActive, shared, notification]() -> Task<void> {
        if (!*isActive)
          co_return;
        if (std::optional<M> message = messageOf<M>(notification))
          co_await (*shared)(std::move(*message), notification.object);
      });
    };
  else
    receive = [shared](const Notification& notification) {
      if (std::optional<M> message = messageOf<M>(notification))
        (*shared)(std::move(*message), notification.object);
    };
  auto observer = center.addObserver(
      M::name(), object, AsyncMessage<M> ? Delivery::postingThread : Delivery::mainExecutor,
      std::move(receive));
  return MessageObservation(
      std::make_shared<MessageObservation::Impl>(center, std::move(observer), std::move(isActive)));
}

} // namespace detail

/// Has `handler(message)` called for each message of type M, whatever its subject. For an
/// AsyncNotification it gives a `Task<void>` or nothing and runs on the pool, several at a time;
/// for a MainActorNotification it is a plain function on the main executor.
///
/// The centre outlives the observation.
template <NotificationMessage M, class Handler>
  requires std::invocable<Handler&, M>
[[nodiscard]] MessageObservation addObserver(NotificationCenter& center, Handler handler) {
  if constexpr (AsyncMessage<M>)
    return detail::observe<M>(
        center, nullptr,
        [handler = std::move(handler)](M message, std::shared_ptr<Object>) mutable {
          return detail::invokeAsTask<Handler, M>(handler, std::move(message));
        });
  else
    return detail::observe<M>(
        center, nullptr, [handler = std::move(handler)](M message, const std::shared_ptr<Object>&) {
          handler(std::move(message));
        });
}

/// Has `handler(message, subject)` called for each message of type M about `subject`, or about any
/// subject if that is null. Messages without a subject of the right kind are left out. Else like
/// the other form.
template <NotificationMessage M, class Handler>
  requires std::invocable<Handler&, M, std::shared_ptr<typename M::Subject>>
[[nodiscard]] MessageObservation addObserver(NotificationCenter& center,
                                             const std::shared_ptr<typename M::Subject>& subject,
                                             Handler handler) {
  using Subject = typename M::Subject;
  if constexpr (AsyncMessage<M>)
    return detail::observe<M>(
        center, subject,
        [handler = std::move(handler)](M message,
                                       std::shared_ptr<Object> object) mutable -> Task<void> {
          if (auto who = std::dynamic_pointer_cast<Subject>(std::move(object)))
            co_await detail::invokeAsTask<Handler, M, std::shared_ptr<Subject>>(
                handler, std::move(message), std::move(who));
        });
  else
    return detail::observe<M>(
        center, subject,
        [handler = std::move(handler)](M message, const std::shared_ptr<Object>& object) {
          if (auto who = std::dynamic_pointer_cast<Subject>(object))
            handler(std::move(message), std::move(who));
        });
}

/// Posts a message, about `subject` unless that is null.
template <NotificationMessage M>
void post(NotificationCenter& center, const M& message,
          const std::shared_ptr<typename M::Subject>& subject = nullptr) {
  Notification notification = M::makeNotification(message);
  if (subject != nullptr)
    notification.object = subject;
  notification.userInfo.insert_or_assign(std::string(detail::messageKey<M>), message);
  center.post(std::move(notification));
}

} // namespace velmar

template <>
struct std::hash<velmar::MessageObservation> {
  std::size_t operator()(const velmar::MessageObservation& observation) const noexcept {
    return std::hash<std::shared_ptr<velmar::MessageObservation::Impl>>()(observation.impl_);
  }
};
