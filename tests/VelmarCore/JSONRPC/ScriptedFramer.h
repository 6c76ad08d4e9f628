// The peer of a session under test: what it says and hears are messages without frames, in memory.
#pragma once

#include "VelmarCore/JSONRPC/JSONRPCMessageFramer.h"
#include "VelmarPlatform/Concurrency/AsyncStream.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velmar::testing {

[[nodiscard]] inline Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

/// The peer's end, for the test.
class Wire {
public:
  /// The session reads this message.
  void say(std::string text) const { toSession_.source.yield(std::move(text)); }
  void hangUp() const { toSession_.source.finish(); }
  void fail(std::exception_ptr failure) const { toSession_.source.fail(std::move(failure)); }
  /// The next message that the session has written; empty at the end.
  Task<std::string> hear() { return hearImpl(this); }
  [[nodiscard]] int writeCount() const { return writes_; }

  /// Awaited inside of each write, behind what it writes.
  std::function<Task<void>()> whileWriting;

private:
  friend class ScriptedFramer;
  static Task<std::string> hearImpl(Wire* self) {
    auto heard = co_await self->fromSession_.stream.next();
    co_return heard ? *heard : "";
  }

  AsyncStreamEnds<std::string> toSession_ = makeAsyncStream<std::string>();
  AsyncStreamEnds<std::string> fromSession_ = makeAsyncStream<std::string>();
  std::atomic<int> writes_ = 0;
};

class ScriptedFramer final : public JSONRPCMessageFramer {
public:
  explicit ScriptedFramer(std::shared_ptr<Wire> wire) : wire_(std::move(wire)) {}

  Task<std::optional<Bytes>> read() override { return readImpl(wire_); }
  Task<void> write(Bytes message) override { return writeImpl(wire_, std::move(message)); }

private:
  static Task<std::optional<Bytes>> readImpl(std::shared_ptr<Wire> wire) {
    const auto text = co_await wire->toSession_.stream.next();
    co_return text ? std::optional(bytes(*text)) : std::nullopt;
  }
  static Task<void> writeImpl(std::shared_ptr<Wire> wire, Bytes message) {
    ++wire->writes_;
    wire->fromSession_.source.yield(std::string(charactersOf(message)));
    if (wire->whileWriting)
      co_await wire->whileWriting();
  }

  std::shared_ptr<Wire> wire_;
};

} // namespace velmar::testing
