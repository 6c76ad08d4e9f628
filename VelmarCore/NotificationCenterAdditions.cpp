#include "VelmarCore/NotificationCenterAdditions.h"

#include <cstdlib>
#include <cxxabi.h>

namespace velmar {

std::string detail::qualifiedName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  return status == 0 ? name.get() : type.name();
}

MessageObservation::Impl::Impl(NotificationCenter& center, NotificationCenter::Observer observer,
                               std::shared_ptr<std::atomic<bool>> isActive) noexcept
    : center_(center), observer_(std::move(observer)), isActive_(std::move(isActive)) {}

MessageObservation::Impl::~Impl() {
  cancel();
}

void MessageObservation::Impl::cancel() noexcept {
  isActive_->store(false);
  center_.removeObserver(observer_);
}

void MessageObservation::cancel() const noexcept {
  impl_->cancel();
}

} // namespace velmar
