#include "VelmarPlatform/Process/InputWriter.h"

#include "VelmarPlatform/Concurrency/Spawn.h"
#include "VelmarPlatform/Concurrency/Wait.h"

#include <exception>
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

  /// Has the right to write, and hands it on in the end.
  class HandOn {
  public:
    explicit HandOn(State& state) noexcept : state_(state) {}
    HandOn(const HandOn&) = delete;
    HandOn& operator=(const HandOn&) = delete;
    HandOn(HandOn&&) = delete;
    HandOn& operator=(HandOn&&) = delete;
    ~HandOn() { state_.handOn(); }

  private:
    State& state_;
  };

  /// Messages that are to be written in one piece.
  struct Batch {
    Bytes bytes;
    detail::WaiterList writers;
    bool isWritten = false;
    std::exception_ptr failure;
  };

  /// A wait until a batch has been written.
  struct Written {
    State* state;
    Batch* batch;
    [[nodiscard]] bool park(detail::Waiter& waiter) const noexcept {
      const std::scoped_lock lock(state->mutex_);
      if (!batch->isWritten)
        batch->writers.append(waiter);
      return !batch->isWritten;
    }
    void unpark(detail::Waiter& waiter) const noexcept {
      const std::scoped_lock lock(state->mutex_);
      batch->writers.remove(waiter);
    }
  };

  struct Joined {
    std::shared_ptr<Batch> batch; ///< Null where the message is to be written by itself.
    bool isFirst = false;
  };

  /// Adds a message to the batch that is about to be written. A new one is begun only if more jobs
  /// of the caller's executor wait, which may well write something too.
  Joined join(Bytes& message) {
    const std::scoped_lock lock(mutex_);
    if (open_ != nullptr) {
      open_->bytes.insert(open_->bytes.end(), message.begin(), message.end());
      return {open_};
    }
    if (message.size() > largestFirstMessage || !Executor::current()->hasMoreInTurn())
      return {};
    open_ = std::make_shared<Batch>();
    open_->bytes = std::move(message);
    return {open_, true};
  }
  [[nodiscard]] std::shared_ptr<Batch> closeBatch() noexcept {
    const std::scoped_lock lock(mutex_);
    return std::exchange(open_, nullptr);
  }
  void end(Batch& batch, std::exception_ptr failure) noexcept {
    detail::Waiter* writers = nullptr;
    {
      const std::scoped_lock lock(mutex_);
      batch.isWritten = true;
      batch.failure = std::move(failure);
      writers = batch.writers.claimAll();
    }
    detail::answerAll(writers);
  }

private:
  static constexpr std::size_t largestFirstMessage = 16'384;

  std::mutex mutex_;
  bool isBusy_ = false;
  detail::WaiterList waiters_;
  std::shared_ptr<Batch> open_;
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
  checkCancellation();
  const auto [batch, isFirst] = state->join(bytes);
  if (batch == nullptr) {
    co_await writeInTurn(state, bytes);
    co_return;
  }
  // Behind the jobs that wait now. A writer that is cancelled meanwhile takes nothing with it.
  if (isFirst)
    spawn(*Executor::current(), [state] { return writeBatch(state); });
  if (!co_await detail::Wait(State::Written{state.get(), batch.get()}, detail::Cancellable::yes))
    throw CancellationError();
  if (batch->failure != nullptr)
    std::rethrow_exception(batch->failure);
}

Task<void> InputWriter::writeBatch(std::shared_ptr<State> state) {
  co_await takeTurn(state); // nobody holds this task, so nobody cancels it
  const State::HandOn turn(*state);
  const auto batch = state->closeBatch();
  std::exception_ptr failure;
  try {
    co_await state->descriptor->writeFrom(batch->bytes);
  } catch (...) {
    failure = std::current_exception();
  }
  state->end(*batch, std::move(failure));
}

Task<void> InputWriter::writeInTurn(std::shared_ptr<State> state,
                                    std::span<const std::byte> bytes) {
  co_await takeTurn(state);
  const State::HandOn turn(*state);
  co_await state->descriptor->writeFrom(bytes);
}

/// Throws CancellationError, without the turn, in a cancelled task.
Task<void> InputWriter::takeTurn(std::shared_ptr<State> state) {
  bool isMine = false;
  const bool isMyTurn =
      co_await detail::Wait(State::Turn{state.get(), &isMine}, detail::Cancellable::yes);
  if (!isMyTurn && isMine) // cancelled at the moment when it came
    state->handOn();
  if (!isMyTurn)
    throw CancellationError();
}

} // namespace velmar
