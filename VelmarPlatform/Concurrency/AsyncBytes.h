// What comes out of a descriptor until its end, for tasks: chunk by chunk, or line by line.
//
//   AsyncLines lines = AsyncBytes(descriptor).lines();
//   while (std::optional<std::string> line = co_await lines.next())
//     log(*line);
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Concurrency/Descriptor.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

class AsyncLines;

/// Whether a line is given with the line feed that ends it. With it, the lines put together are the
/// text.
enum class LineFeeds { keep, drop };

struct AsyncLinesOptions {
  LineFeeds lineFeeds = LineFeeds::keep;
  /// In bytes, at least 4. A longer line comes in pieces, so that a line that never ends can't take
  /// all memory.
  std::size_t maximumLength = std::size_t{1} << 20;
};

/// The bytes that a descriptor gives. A handle: copies read from the same descriptor, each byte
/// goes to one of them. Any thread.
class AsyncBytes {
public:
  /// `onEnd` is called, on the executor of whoever reads, each time that somebody reads the end.
  explicit AsyncBytes(std::shared_ptr<AsyncDescriptor> descriptor,
                      std::function<void()> onEnd = nullptr);

  /// The next chunk, at least one byte and at most `maximum`, or absent at the end. Throws
  /// SystemError, or CancellationError in a cancelled task; nothing is lost then.
  [[nodiscard]] Task<std::optional<Bytes>> next(std::size_t maximum = chunkSize) const;
  /// The same into the caller's memory, which must stay until then: how many bytes came, 0 at the
  /// end.
  [[nodiscard]] Task<std::size_t> readInto(std::span<std::byte> buffer) const;

  /// A reader of lines. It reads ahead: read through it only from now on.
  [[nodiscard]] AsyncLines lines(AsyncLinesOptions options = {}) const;

  [[nodiscard]] const std::shared_ptr<AsyncDescriptor>& descriptor() const noexcept {
    return state_->descriptor;
  }

  /// As much as a pipe holds.
  static constexpr std::size_t chunkSize = 65536;

private:
  struct State {
    std::shared_ptr<AsyncDescriptor> descriptor;
    std::function<void()> onEnd;
  };
  static Task<std::optional<Bytes>> nextImpl(std::shared_ptr<const State> state,
                                             std::size_t maximum);
  static Task<std::size_t> readIntoImpl(std::shared_ptr<const State> state,
                                        std::span<std::byte> buffer);

  std::shared_ptr<const State> state_;
};

/// Lines end at a line feed; a carriage return is part of the line, and the last line may have no
/// line feed. They are valid UTF-8, with U+FFFD for what isn't; a line that is too long is cut
/// between two characters. Move-only; one task reads at a time, and it stays in its place
/// meanwhile.
class AsyncLines {
public:
  explicit AsyncLines(AsyncBytes bytes, AsyncLinesOptions options = {});
  AsyncLines(AsyncLines&&) noexcept = default;
  AsyncLines& operator=(AsyncLines&&) noexcept = default;
  AsyncLines(const AsyncLines&) = delete;
  AsyncLines& operator=(const AsyncLines&) = delete;
  ~AsyncLines() = default;

  /// The next line, or absent at the end. Throws like the bytes; what was read before stays for the
  /// next call.
  [[nodiscard]] Task<std::optional<std::string>> next() { return nextImpl(this); }
  /// All lines that are there, after waiting for the first; none at the end. For readers whom each
  /// call costs something, such as a hop to another executor. Throws likewise.
  [[nodiscard]] Task<std::vector<std::string>> nextBatch() { return nextBatchImpl(this); }

private:
  static Task<std::optional<std::string>> nextImpl(AsyncLines* self);
  static Task<std::vector<std::string>> nextBatchImpl(AsyncLines* self);
  static Task<void> fill(AsyncLines* self);

  /// The next line of what was read, absent if more must be read for it.
  [[nodiscard]] std::optional<std::string> takeLine();
  [[nodiscard]] std::string take(std::size_t length, std::size_t lineFeed);
  [[nodiscard]] std::string_view unread() const noexcept {
    return charactersOf(buffer_).substr(start_, end_ - start_);
  }

  AsyncBytes bytes_;
  AsyncLinesOptions options_;
  Bytes buffer_;
  std::size_t start_ = 0;    // of what nobody has taken yet…
  std::size_t end_ = 0;      // …and its end
  std::size_t searched_ = 0; // from `start_` on, without a line feed
  bool isAtEnd_ = false;
};

} // namespace velmar
