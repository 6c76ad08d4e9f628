// The writing end of a child's standard input.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Concurrency/Descriptor.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace velmar {

/// Writes one message after the other: what several tasks write at once comes out whole, in the
/// order of the calls, and what tasks of one serial executor write in a row goes out in one piece.
/// A handle: copies write to the same place. Any thread.
class InputWriter {
public:
  explicit InputWriter(std::shared_ptr<AsyncDescriptor> descriptor);

  /// Writes all of it. Throws SystemError, with EPIPE once nobody reads any more; and
  /// CancellationError in a cancelled task; a part or all may be written even so.
  [[nodiscard]] Task<void> write(Bytes bytes) const;
  [[nodiscard]] Task<void> write(std::string_view text) const;
  /// Lets the reader come to the end, behind what has been written. Writes that wait throw
  /// SystemError with ECANCELED, as do all that come later.
  void finish() const noexcept;

private:
  class State;
  static Task<void> writeImpl(std::shared_ptr<State> state, Bytes bytes);
  static Task<void> writeBatch(std::shared_ptr<State> state);
  static Task<void> writeInTurn(std::shared_ptr<State> state, std::span<const std::byte> bytes);
  static Task<void> takeTurn(std::shared_ptr<State> state);

  std::shared_ptr<State> state_;
};

} // namespace velmar
