#include "VelmarPlatform/Process/InputWriter.h"

#include "VelmarPlatform/Concurrency/Wait.h"

#include <mutex>
#include <utility>

namespace velmar {

/// The descriptor and the queue in front of it.
class InputWriter::State {
public:
  explicit State(std::shared_ptr<AsyncDescriptor> d) : descriptor(std::move(d)) {}

  const std::shared_ptr<AsyncDescriptor> descriptor;

  /// A wait for the right to write, which whoever has it hands on.
  struct Turn {
    State* state;
    bool* isMine; // written under the lock, so that a wait that was cancelled knows
    [[nodiscard]] bool park(detail::Waiter& waiter) const noexcept {
      const std::scoped_lock lock(state->mutex_);
      if (!state->isBusy_) {
        state->isBusy_ = true;
        *isMine = true;
        return false;
      }
      state->waiters_.append(waiter);
      return true;
    }
    void unpark(detail::Waiter& waiter) const noexcept {
      const std::scoped_lock lock(state->mutex_);
      state->waiters_.remove(waiter);
    }
  };

  void handOn() noexcept {
    detail::Waiter* next = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      next = waiters_.claimFirst();
      isBusy_ = next != nullptr;
    }
    if (next != nullptr)
      next->answer();
  }

private:
  std::mutex mutex_;
  bool isBusy_ = false;
  detail::WaiterList waiters_;
};

InputWriter::InputWriter(std::shared_ptr<AsyncDescriptor> descriptor)
    : state_(std::make_shared<State>(std::move(descriptor))) {}

Task<void> InputWriter::write(Bytes bytes) const {
  return writeImpl(state_, std::move(bytes));
}

Task<void> InputWriter::write(std::string_view text) const {
  const auto bytes = bytesOf(text);
  return write(Bytes(bytes.begin(), bytes.end()));
}

void InputWriter::finish() const noexcept {
  state_->descriptor->close();
}

Task<void> InputWriter::writeImpl(std::shared_ptr<State> state, Bytes bytes) {
  struct HandOn {
    State* state;
    explicit HandOn(State* s) noexcept : state(s) {}
    HandOn(const HandOn&) = delete;
    HandOn& operator=(const HandOn&) = delete;
    ~HandOn() { state->handOn(); }
  };
  bool isMine = false;
  const bool isMyTurn =
      co_await detail::Wait(State::Turn{state.get(), &isMine}, detail::Cancellable::yes);
  if (!isMyTurn && isMine) // cancelled at the moment when it came
    state->handOn();
  if (!isMyTurn)
    throw CancellationError();
  const HandOn turn(state.get());
  co_await state->descriptor->writeFrom(bytes);
}

} // namespace velmar
