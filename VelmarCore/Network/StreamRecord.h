// What went over a stream, as a file: one JSON object a line for each chunk, just as it came, so
// that noise and half messages are there to be read, and can be played again.
//
//     {"direction":"sent","milliseconds":0,"data":"Q29udGVudC1MZW5ndGg6IDIN…"}
//     {"direction":"received","milliseconds":12,"data":"…"}
#pragma once

#include "VelmarCore/Network/StreamingIO.h"
#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Coding/Forward.h"
#include "VelmarPlatform/Concurrency/Clock.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// A piece of a stream in one direction.
struct StreamChunk {
  /// As the one who recorded saw it.
  enum class Direction : std::uint8_t { received, sent };

  Direction direction = Direction::received;
  /// Since the recording began.
  std::int64_t milliseconds = 0;
  Bytes data;

  bool operator==(const StreamChunk&) const = default;
  static std::span<const FieldRow> rows();
};
[[nodiscard]] std::span<const Word<StreamChunk::Direction>> wordsOf(StreamChunk::Direction any);

/// The text isn't a record. The sentence names the line.
class StreamRecordError : public Error {
public:
  using Error::Error;
};

/// The chunk as a line, with its line feed.
[[nodiscard]] std::string lineOf(const StreamChunk& chunk);
/// Empty lines are passed over. Throws StreamRecordError.
[[nodiscard]] std::vector<StreamChunk> readStreamRecord(std::string_view text);

/// Another stream, of which each chunk is told to `record`: what was read, and what is about to be
/// written. The function may be called on any thread, for both directions at once, and doesn't
/// throw.
class RecordingStreamingIO final : public StreamingIO {
public:
  using Record = std::function<void(const StreamChunk&)>;

  RecordingStreamingIO(std::shared_ptr<StreamingIO> stream, Record record,
                       Clock& clock = monotonicClock());

  /// A read that waits for more bytes is recorded in the chunks in which they come.
  [[nodiscard]] Task<std::optional<Bytes>> read(std::int64_t minimumBytes) override;
  [[nodiscard]] Task<void> write(Bytes bytes) override;

private:
  void tell(StreamChunk::Direction direction, const Bytes& bytes) const;

  std::shared_ptr<StreamingIO> stream_;
  Record record_;
  Clock& clock_;
  Clock::Instant start_;
};

} // namespace velmar
