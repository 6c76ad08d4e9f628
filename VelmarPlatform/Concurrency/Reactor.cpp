// The only file that knows Asio. It serves as a portable way to wait for descriptors and a timer,
// and no more.

#include "VelmarPlatform/Concurrency/Reactor.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/Turn.h"

#define ASIO_STANDALONE
#define ASIO_NO_DEPRECATED
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

namespace velmar {

namespace {

/// The reactor's thread and context, which last as long as the process.
class Reactor {
public:
  static Reactor& shared() {
    static auto& reactor = *new Reactor;
    return reactor;
  }
  [[nodiscard]] asio::io_context& context() noexcept { return context_; }

private:
  Reactor() : context_(1), work_(context_.get_executor()) {
    std::thread([this] {
      detail::blockSignals();
      detail::threadState().kind = detail::ThreadKind::reactor;
      context_.run();
    }).detach();
  }

  asio::io_context context_;
  asio::executor_work_guard<asio::io_context::executor_type> work_;
};

/// The monotonic clock: all deadlines share one timer, which is set anew only when somebody's comes
/// before all others'.
class MonotonicClock final : public Clock {
public:
  [[nodiscard]] Instant now() const noexcept override { return std::chrono::steady_clock::now(); }

private:
  void deadlineMovedUp(Instant) noexcept override {
    asio::post(Reactor::shared().context(), [this] { setTimer(); });
  }

  // On the reactor's thread from here on.

  void setTimer() {
    const std::optional<Instant> deadline = earliestDeadline();
    if (!deadline || (isSet_ && setTo_ == *deadline))
      return;
    isSet_ = true;
    setTo_ = *deadline;
    timer_.expires_at(std::chrono::time_point_cast<std::chrono::steady_clock::duration>(*deadline));
    timer_.async_wait([this](const asio::error_code& error) {
      if (!error) // else it was set to another time
        timerFired();
    });
  }

  void timerFired() {
    isSet_ = false;
    detail::ThreadState& thread = detail::threadState();
    wakeDue(now(), [&](detail::Waiter& waiter) { waiter.answerHere(thread); });
    setTimer();
  }

  asio::steady_timer timer_{Reactor::shared().context()};
  bool isSet_ = false;
  Instant setTo_{};
};

class Watch final : public detail::DescriptorWatch {
public:
  explicit Watch(int descriptor) : descriptor_(Reactor::shared().context()) {
    asio::error_code error;
    descriptor_.assign(descriptor, error);
    if (error)
      throw SystemError("The descriptor can't be waited for: " + systemErrorText(error.value()) +
                            ".",
                        error.value());
  }

  void request(detail::Direction direction,
               std::shared_ptr<detail::DescriptorListener> listener) override {
    const auto kind = direction == detail::Direction::reading
                          ? asio::posix::stream_descriptor::wait_read
                          : asio::posix::stream_descriptor::wait_write;
    // Errors are answers too: a regular file, which can't be waited for, is always ready.
    descriptor_.async_wait(kind, [direction, listener = std::move(listener)](
                                     const asio::error_code&) { listener->ready(direction); });
  }

  void close() noexcept override {
    asio::error_code ignored;
    descriptor_.close(ignored);
  }

private:
  asio::posix::stream_descriptor descriptor_;
};

} // namespace

Clock& monotonicClock() noexcept {
  static auto& clock = *new MonotonicClock;
  return clock;
}

std::unique_ptr<detail::DescriptorWatch> detail::watchDescriptor(int descriptor) {
  return std::make_unique<Watch>(descriptor);
}

} // namespace velmar
