#include "VelmarPlatform/Concurrency/Descriptor.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/Turn.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace velmar {

namespace {

[[noreturn]] void fail(std::string_view what, int code) {
  throw SystemError(std::string(what) + ": " + systemErrorText(code) + ".", code);
}

/// The memory of a read that finds little.
constexpr std::size_t firstPiece = 4096;

bool wouldBlock(int code) {
  return code == EAGAIN || code == EWOULDBLOCK;
}

/// A write to a pipe whose reader is gone must not kill a process whose signals aren't ours to
/// change. Sockets have a flag for that; for others SIGPIPE is held back on this thread, and taken
/// off if it came.
ssize_t writeQuietly(int descriptor, bool isSocket, std::span<const std::byte> bytes) {
  if (isSocket)
    return ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  sigset_t pipe;
  sigset_t before;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, &before);
  const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
  if (sigismember(&before, SIGPIPE) == 0) {
    const int code = errno;
    if (count < 0 && code == EPIPE) {
      const timespec atOnce{};
      while (sigtimedwait(&pipe, nullptr, &atOnce) < 0 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = code;
  }
  return count;
}

} // namespace

/// Who waits for the descriptor, shared with the reactor, which may call after the object has gone.
class AsyncDescriptor::State final : public detail::DescriptorListener,
                                     public std::enable_shared_from_this<State> {
public:
  explicit State(int descriptor) : watch_(detail::watchDescriptor(descriptor)) {}

  void ready(detail::Direction direction) noexcept override {
    detail::Waiter* waiters = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      Side& side = sideOf(direction);
      side.isRequested = false;
      waiters = side.waiters.claimAll();
    }
    detail::ThreadState& thread = detail::threadState();
    while (waiters != nullptr) {
      detail::Waiter* next = waiters->next;
      waiters->answerHere(thread);
      waiters = next;
    }
  }

  /// A cancelled wait leaves its request with the reactor, for whoever waits next.
  [[nodiscard]] bool park(detail::Direction direction, detail::Waiter& waiter) {
    const std::scoped_lock lock(mutex_);
    if (isClosed_ || (isReadingEnded_ && direction == detail::Direction::reading))
      return false;
    Side& side = sideOf(direction);
    side.waiters.append(waiter);
    if (!side.isRequested) {
      side.isRequested = true;
      watch_->request(direction, shared_from_this());
    }
    return true;
  }
  void unpark(detail::Direction direction, detail::Waiter& waiter) noexcept {
    const std::scoped_lock lock(mutex_);
    sideOf(direction).waiters.remove(waiter);
  }

  /// Whether the descriptor may be used; it stays open until `leave` then.
  [[nodiscard]] bool enter() noexcept {
    const std::scoped_lock lock(mutex_);
    if (!isClosed_)
      ++users_;
    return !isClosed_;
  }
  void leave() noexcept {
    const std::scoped_lock lock(mutex_);
    if (--users_ == 0 && isClosed_)
      watch_->close();
  }
  [[nodiscard]] bool isClosed() const noexcept {
    const std::scoped_lock lock(mutex_);
    return isClosed_;
  }

  [[nodiscard]] bool isReadingEnded() const noexcept {
    const std::scoped_lock lock(mutex_);
    return isReadingEnded_;
  }
  void endReading() noexcept {
    detail::Waiter* readers = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      isReadingEnded_ = true;
      readers = sideOf(detail::Direction::reading).waiters.claimAll();
    }
    detail::answerAll(readers);
  }

  void close() noexcept {
    detail::Waiter* readers = nullptr;
    detail::Waiter* writers = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      if (isClosed_)
        return;
      isClosed_ = true;
      readers = sides_[0].waiters.claimAll();
      writers = sides_[1].waiters.claimAll();
      if (users_ == 0)
        watch_->close();
    }
    detail::answerAll(readers);
    detail::answerAll(writers);
  }

private:
  struct Side {
    detail::WaiterList waiters;
    bool isRequested = false;
  };
  [[nodiscard]] Side& sideOf(detail::Direction direction) noexcept {
    return sides_[direction == detail::Direction::reading ? 0 : 1];
  }

  mutable std::mutex mutex_;
  std::array<Side, 2> sides_;
  int users_ = 0;
  bool isClosed_ = false;
  bool isReadingEnded_ = false;
  std::unique_ptr<detail::DescriptorWatch> watch_;
};

/// An operation that is inside of the descriptor, so that its number can't be given to another file
/// meanwhile.
class AsyncDescriptor::Use {
public:
  explicit Use(State& state) : state_(state) {
    if (!state.enter())
      fail("The descriptor is closed", ECANCELED);
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;
  Use(Use&&) = delete;
  Use& operator=(Use&&) = delete;
  ~Use() { state_.leave(); }

private:
  State& state_;
};

struct AsyncDescriptor::Readiness {
  State* state;
  detail::Direction direction;
  [[nodiscard]] bool park(detail::Waiter& waiter) const { return state->park(direction, waiter); }
  void unpark(detail::Waiter& waiter) const noexcept { state->unpark(direction, waiter); }
};

std::shared_ptr<AsyncDescriptor> AsyncDescriptor::adopt(FileDescriptor descriptor) {
  const int number = descriptor.number();
  struct stat status{};
  const int flags = ::fcntl(number, F_GETFL);
  if (flags < 0 || ::fstat(number, &status) < 0 ||
      ::fcntl(number, F_SETFL, flags | O_NONBLOCK) < 0 || ::fcntl(number, F_SETFD, FD_CLOEXEC) < 0)
    fail("The descriptor can't be used", errno);
  auto object = std::make_shared<AsyncDescriptor>(Private(), number, S_ISSOCK(status.st_mode));
  static_cast<void>(descriptor.release());
  return object;
}

std::shared_ptr<AsyncDescriptor> AsyncDescriptor::adopt(int descriptor) {
  return adopt(FileDescriptor(descriptor));
}

AsyncDescriptor::AsyncDescriptor(Private, int descriptor, bool isSocket)
    : descriptor_(descriptor), isSocket_(isSocket), state_(std::make_shared<State>(descriptor)) {}

AsyncDescriptor::~AsyncDescriptor() {
  state_->close();
}

void AsyncDescriptor::endReading() noexcept {
  state_->endReading();
}

bool AsyncDescriptor::isHungUp() const noexcept {
  if (!state_->enter())
    return true;
  pollfd question{.fd = descriptor_, .events = 0, .revents = 0};
  const bool answered = ::poll(&question, 1, 0) > 0;
  state_->leave();
  return answered;
}

void AsyncDescriptor::close() noexcept {
  state_->close();
}

Task<std::optional<Bytes>> AsyncDescriptor::read(std::size_t maximum) {
  return readImpl(shared_from_this(), maximum);
}
Task<std::size_t> AsyncDescriptor::readInto(std::span<std::byte> buffer) {
  return readIntoImpl(shared_from_this(), buffer);
}
Task<void> AsyncDescriptor::write(Bytes bytes) {
  return writeImpl(shared_from_this(), std::move(bytes));
}
Task<void> AsyncDescriptor::writeFrom(std::span<const std::byte> bytes) {
  return writeFromImpl(shared_from_this(), bytes);
}
Task<void> AsyncDescriptor::waitUntilReadable() {
  return waitUntilReady(shared_from_this(), detail::Direction::reading);
}
Task<void> AsyncDescriptor::waitUntilWritable() {
  return waitUntilReady(shared_from_this(), detail::Direction::writing);
}

Task<std::int64_t> AsyncDescriptor::perform(detail::Direction direction, std::string failure,
                                            std::function<std::int64_t(int)> attempt) {
  return performImpl(shared_from_this(), direction, std::move(failure), std::move(attempt));
}

Task<std::size_t> AsyncDescriptor::readIntoImpl(std::shared_ptr<AsyncDescriptor> self,
                                                std::span<std::byte> buffer) {
  co_await detail::SharedTurn();
  const Use use(*self->state_);
  checkCancellation();
  for (;;) {
    const bool isLast = self->state_->isReadingEnded(); // asked before the bytes are
    const ssize_t count = ::read(self->descriptor_, buffer.data(), buffer.size());
    if (count >= 0)
      co_return static_cast<std::size_t>(count);
    if (wouldBlock(errno) && isLast)
      co_return 0;
    if (wouldBlock(errno))
      co_await waitImpl(self, detail::Direction::reading);
    else if (errno != EINTR)
      fail("Reading failed", errno);
  }
}

Task<std::optional<Bytes>> AsyncDescriptor::readImpl(std::shared_ptr<AsyncDescriptor> self,
                                                     std::size_t maximum) {
  // Most messages are short: room for more is made when the first piece is full.
  Bytes bytes(std::min(maximum, firstPiece));
  std::size_t count = co_await readIntoImpl(self, bytes);
  const Use use(*self->state_);
  while (count == bytes.size() && count < maximum) {
    bytes.resize(std::min(maximum, 4 * count));
    const ssize_t more = ::read(self->descriptor_, bytes.data() + count, bytes.size() - count);
    if (more <= 0) // the next read finds the same end or failure
      break;
    count += static_cast<std::size_t>(more);
  }
  bytes.resize(count);
  if (bytes.empty())
    co_return std::nullopt;
  co_return bytes;
}

Task<std::int64_t> AsyncDescriptor::performImpl(std::shared_ptr<AsyncDescriptor> self,
                                                detail::Direction direction, std::string failure,
                                                std::function<std::int64_t(int)> attempt) {
  co_await detail::SharedTurn();
  const Use use(*self->state_);
  checkCancellation();
  for (;;) {
    const std::int64_t result = attempt(self->descriptor_);
    if (result >= 0)
      co_return result;
    if (wouldBlock(errno))
      co_await waitImpl(self, direction);
    else if (errno != EINTR)
      fail(failure, errno);
  }
}

Task<void> AsyncDescriptor::writeFromImpl(std::shared_ptr<AsyncDescriptor> self,
                                          std::span<const std::byte> bytes) {
  const Use use(*self->state_);
  checkCancellation();
  while (!bytes.empty()) {
    co_await detail::SharedTurn();
    checkCancellation();
    const ssize_t count = writeQuietly(self->descriptor_, self->isSocket_, bytes);
    if (count >= 0)
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    else if (wouldBlock(errno))
      co_await waitImpl(self, detail::Direction::writing);
    else if (errno != EINTR)
      fail("Writing failed", errno);
  }
}

Task<void> AsyncDescriptor::writeImpl(std::shared_ptr<AsyncDescriptor> self, Bytes bytes) {
  co_await writeFromImpl(std::move(self), bytes);
}

Task<void> AsyncDescriptor::waitImpl(std::shared_ptr<AsyncDescriptor> self,
                                     detail::Direction direction) {
  const Use use(*self->state_);
  if (!co_await detail::Wait(Readiness{self->state_.get(), direction}, detail::Cancellable::yes))
    throw CancellationError();
  if (self->state_->isClosed())
    fail("The descriptor was closed", ECANCELED);
}

// The reactor may still hold an event of a descriptor that was closed, and give it to the next one.
Task<void> AsyncDescriptor::waitUntilReady(std::shared_ptr<AsyncDescriptor> self,
                                           detail::Direction direction) {
  const Use use(*self->state_);
  do
    co_await waitImpl(self, direction);
  while (!self->isReady(direction));
}

bool AsyncDescriptor::isReady(detail::Direction direction) const noexcept {
  const bool isReading = direction == detail::Direction::reading;
  pollfd question{
      .fd = descriptor_, .events = static_cast<short>(isReading ? POLLIN : POLLOUT), .revents = 0};
  return (isReading && state_->isReadingEnded()) || ::poll(&question, 1, 0) != 0;
}

} // namespace velmar
