#include "VelmarCode/Framing/StreamPlayer.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"

#include <algorithm>
#include <chrono>

namespace velmar {

namespace {

/// Counts whole messages in pieces of a stream.
class MessageCounter {
public:
  void add(const Bytes& bytes) {
    framer_.append(bytes);
    std::int64_t bytesRequired = 0;
    while (framer_.readMessage(bytesRequired))
      ++count_;
  }
  [[nodiscard]] std::int64_t count() const noexcept { return count_; }

private:
  BaseProtocolMessageFramer framer_{nullptr};
  std::int64_t count_ = 0;
};

} // namespace

Task<void> playStreamRecord(std::vector<StreamChunk> record, std::shared_ptr<StreamingIO> stream,
                            StreamPlayOptions options) {
  MessageCounter recorded;
  MessageCounter heard;
  const auto mustListen = [&] { return heard.count() < recorded.count(); };
  std::int64_t time = 0;
  for (StreamChunk& chunk : record) {
    const std::int64_t pause = std::max<std::int64_t>(0, chunk.milliseconds - time);
    time = chunk.milliseconds;
    if (chunk.direction == StreamChunk::Direction::sent) {
      recorded.add(chunk.data);
      continue;
    }
    while (mustListen()) {
      const std::optional<Bytes> bytes = co_await stream->read(0);
      if (!bytes)
        co_return;
      heard.add(*bytes);
    }
    if (options.keepsPauses && pause > 0)
      co_await options.clock->sleepFor(std::chrono::milliseconds(pause));
    co_await stream->write(std::move(chunk.data));
  }
  while (mustListen()) { // to the end, so that nobody's last words fail
    const std::optional<Bytes> bytes = co_await stream->read(0);
    if (!bytes)
      co_return;
    heard.add(*bytes);
  }
}

} // namespace velmar
