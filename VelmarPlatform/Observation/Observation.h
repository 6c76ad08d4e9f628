// Watching the properties of objects, for whoever shows them: an observer is told which property of
// which object is about to change, or has changed.
//
//   class Step : public Object {
//   public:
//     static constexpr PropertyKey isFinishedKey{"isFinished"};
//     [[nodiscard]] Observation observe(PropertyObserver o) { return registrar_.add(std::move(o));
//     } void setFinished() { registrar_.set(*this, isFinishedKey, isFinished_, true); }
//   …
//   auto observation = step->observe({.didSet = [](const PropertyChange& change) { … }});
#pragma once

#include "VelmarPlatform/Basics/Object.h"

#include <atomic>
#include <concepts>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

/// The name of a property, as a value to tell properties apart by. Names are string literals.
struct PropertyKey {
  std::string_view name;
  bool operator==(const PropertyKey&) const = default;
};

struct PropertyChange {
  const Object& object;
  PropertyKey property;
};

/// Called on the thread that writes the property, around the write. Both may be empty.
struct PropertyObserver {
  std::function<void(const PropertyChange&)> willSet = {};
  std::function<void(const PropertyChange&)> didSet = {};
};

/// Ends the observation when it goes. Move-only; any thread. The object may go first.
class [[nodiscard]] Observation {
public:
  Observation() = default;
  Observation(Observation&& other) noexcept = default;
  Observation& operator=(Observation&& other) noexcept {
    if (this != &other) {
      cancel();
      isActive_ = std::move(other.isActive_);
    }
    return *this;
  }
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;
  ~Observation() { cancel(); }

  /// A handler that is running goes on; none begins afterwards.
  void cancel() noexcept {
    if (const auto isActive = std::exchange(isActive_, nullptr))
      isActive->store(false);
  }

private:
  friend class ObservationRegistrar;
  explicit Observation(std::shared_ptr<std::atomic<bool>> isActive) noexcept
      : isActive_(std::move(isActive)) {}

  std::shared_ptr<std::atomic<bool>> isActive_;
};

/// The observers of one object, which has this as a member. Observers may be added on any thread,
/// also by a handler; they see the writes that begin afterwards, in the order of their adding.
class ObservationRegistrar {
public:
  [[nodiscard]] Observation add(PropertyObserver observer);

  /// Runs `mutation` between the calls of the observers, even if it throws.
  template <std::invocable Mutation>
  void withMutation(const Object& object, PropertyKey property, Mutation mutation) {
    const Around around(observers(), PropertyChange{object, property});
    mutation();
  }

  /// Sets `field`, unless it has that value already: then nobody is told of anything.
  template <std::equality_comparable T>
  void set(const Object& object, PropertyKey property, T& field, std::type_identity_t<T> value) {
    if (!(field == value))
      withMutation(object, property, [&] { field = std::move(value); });
  }

private:
  struct Entry {
    PropertyObserver observer;
    std::shared_ptr<std::atomic<bool>> isActive;
  };
  using Entries = std::vector<std::shared_ptr<const Entry>>;

  class Around {
  public:
    Around(Entries entries, PropertyChange change);
    Around(const Around&) = delete;
    Around& operator=(const Around&) = delete;
    ~Around();

  private:
    Entries entries_;
    PropertyChange change_;
  };

  [[nodiscard]] Entries observers();

  std::mutex mutex_;
  Entries entries_; // guarded by `mutex_`
};

} // namespace velmar
