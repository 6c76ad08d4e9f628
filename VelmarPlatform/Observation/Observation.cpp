#include "VelmarPlatform/Observation/Observation.h"

namespace velmar {

Observation ObservationRegistrar::add(PropertyObserver observer) {
  auto isActive = std::make_shared<std::atomic<bool>>(true);
  auto entry = std::make_shared<const Entry>(Entry{std::move(observer), isActive});
  const std::scoped_lock lock(mutex_);
  entries_.push_back(std::move(entry));
  return Observation(std::move(isActive));
}

ObservationRegistrar::Entries ObservationRegistrar::observers() {
  Entries gone; // destroyed without the lock: with a handler may go whatever it holds
  const std::scoped_lock lock(mutex_);
  std::erase_if(entries_, [&](const std::shared_ptr<const Entry>& entry) {
    if (entry->isActive->load())
      return false;
    gone.push_back(entry);
    return true;
  });
  return entries_;
}

ObservationRegistrar::Around::Around(Entries entries, PropertyChange change)
    : entries_(std::move(entries)), change_(change) {
  for (const auto& entry : entries_)
    if (entry->observer.willSet && entry->isActive->load())
      entry->observer.willSet(change_);
}

ObservationRegistrar::Around::~Around() {
  for (const auto& entry : entries_)
    if (entry->observer.didSet && entry->isActive->load())
      entry->observer.didSet(change_);
}

} // namespace velmar
