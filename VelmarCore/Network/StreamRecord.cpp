#include "VelmarCore/Network/StreamRecord.h"

#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

#include <chrono>

namespace velmar {

std::span<const FieldRow> StreamChunk::rows() {
  static constexpr auto table = rowsOf<StreamChunk>(row<&StreamChunk::direction>("direction"),
                                                    row<&StreamChunk::milliseconds>("milliseconds"),
                                                    row<&StreamChunk::data>("data"));
  return table;
}

std::span<const Word<StreamChunk::Direction>> wordsOf(StreamChunk::Direction /*any*/) {
  static constexpr std::array words{Word{StreamChunk::Direction::received, "received"},
                                    Word{StreamChunk::Direction::sent, "sent"}};
  return words;
}

std::string lineOf(const StreamChunk& chunk) {
  return JSONEncoder().encode(chunk) + '\n';
}

std::vector<StreamChunk> readStreamRecord(std::string_view text) {
  std::vector<StreamChunk> chunks;
  for (std::int64_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.find_first_not_of(" \t\r") == std::string_view::npos)
      continue;
    try {
      chunks.push_back(JSONDecoder().decode<StreamChunk>(line));
    } catch (const DecodingError& error) {
      throw StreamRecordError("Line " + std::to_string(number) +
                              " of the record: " + error.message());
    }
  }
  return chunks;
}

RecordingStreamingIO::RecordingStreamingIO(std::shared_ptr<StreamingIO> stream, Record record,
                                           Clock& clock)
    : stream_(std::move(stream)), record_(std::move(record)), clock_(clock), start_(clock.now()) {}

Task<std::optional<Bytes>> RecordingStreamingIO::read(std::int64_t minimumBytes) {
  std::optional<Bytes> gathered;
  do {
    std::optional<Bytes> chunk = co_await stream_->read(0);
    if (!chunk)
      break;
    tell(StreamChunk::Direction::received, *chunk);
    if (gathered)
      gathered->insert(gathered->end(), chunk->begin(), chunk->end());
    else
      gathered = std::move(chunk);
  } while (std::ssize(*gathered) < minimumBytes);
  co_return gathered;
}

Task<void> RecordingStreamingIO::write(Bytes bytes) {
  tell(StreamChunk::Direction::sent, bytes);
  co_await stream_->write(std::move(bytes));
}

void RecordingStreamingIO::tell(StreamChunk::Direction direction, const Bytes& bytes) const {
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(clock_.now() - start_);
  record_({direction, elapsed.count(), bytes});
}

} // namespace velmar
