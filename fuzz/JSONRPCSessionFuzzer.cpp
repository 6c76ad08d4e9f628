// A session whose peer says any bytes: it ends calmly, whoever waits is told, and what it answers
// are messages, one for each request at most.

#include "VelmarCore/JSONRPC/JSONRPCSession.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

using namespace velmar;

namespace {

/// Gives all bytes at once, and keeps what is written.
class FuzzedStream final : public StreamingIO {
public:
  explicit FuzzedStream(Bytes bytes) : bytes_(std::move(bytes)) {}

  Task<std::optional<Bytes>> read(std::int64_t) override { return readImpl(this); }
  Task<void> write(Bytes bytes) override { return writeImpl(this, std::move(bytes)); }

  /// How many messages were written. All of them are requests, responses or notifications.
  [[nodiscard]] std::int64_t checkWritten() {
    const std::scoped_lock lock(mutex_); // an answer may be on its way still
    std::int64_t count = 0;
    std::int64_t required = 0;
    while (const auto message = written_.readMessage(required)) {
      const JSONTape tape(charactersOf(message->data));
      static_cast<void>(decodeFrom<Message>(tape, tape.root(), {}));
      ++count;
    }
    return count;
  }

private:
  static Task<std::optional<Bytes>> readImpl(FuzzedStream* self) {
    if (self->bytes_.empty())
      co_return std::nullopt;
    co_return std::exchange(self->bytes_, {});
  }
  static Task<void> writeImpl(FuzzedStream* self, Bytes bytes) {
    const std::scoped_lock lock(self->mutex_);
    self->written_.append(bytes);
    co_return;
  }

  Bytes bytes_;
  std::mutex mutex_;
  BaseProtocolMessageFramer written_{nullptr};
};

Task<void> handle(const JSONRPCSession::IncomingRequest& request) {
  return request.decode([](std::optional<JSONValue> parameters) { return parameters; });
}

Task<void> ask(std::shared_ptr<JSONRPCSession> session) {
  try {
    static_cast<void>(co_await session->sendRequest("ask", std::nullopt,
                                                    {.timeout = std::chrono::milliseconds(1)}));
  } catch (const Error&) { // NOLINT(bugprone-empty-catch): any failure is a calm one
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  const auto stream = std::make_shared<FuzzedStream>(Bytes(bytes.begin(), bytes.end()));
  std::int64_t requests = 0;
  int ends = 0;
  mainExecutor().run([&] {
    return JSONRPCSession::run(
        {.messageFramer = std::make_unique<BaseProtocolMessageFramer>(stream),
         .incomingRequestHandler = handle,
         .incomingNotificationHandler =
             [](const JSONRPCSession::IncomingNotification& heard) {
               static_cast<void>(heard.debugDescription());
             },
         .transcriptHandler =
             [&](const JSONRPCSession::TranscriptEvent& event) {
               requests += std::holds_alternative<JSONRPCSession::RequestReceived>(event) ? 1 : 0;
             },
         .endHandler = [&](const std::exception_ptr&) { ++ends; }},
        ask);
  });
  precondition(ends == 1, "A session ends once.");
  precondition(stream->checkWritten() <= requests + 1, "A request has one answer at most.");
  return 0;
}
