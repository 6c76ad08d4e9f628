// What `velmar rpc` says to a peer: requests typed as lines, and what comes back as lines.
#pragma once

#include "VelmarCore/Network/NetworkEndpoint.h"
#include "VelmarCore/Network/StreamingIO.h"
#include "VelmarPlatform/Concurrency/Clock.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar::host {

struct RPCConversation {
  /// `initialize {"processId": null}` is a request, `!exit` a notification; absent at the end.
  std::function<Task<std::optional<std::string>>()> nextLine;
  /// What the peer says, a line at a time. Called on any thread, as is the next.
  std::function<void(std::string)> print;
  /// What goes wrong, a sentence or two lines of bytes at a time.
  std::function<void(std::string)> complain;
  Clock::Duration timeout = std::chrono::seconds(30);
  Clock* clock = &monotonicClock();
};

/// Sends one line after the other, each when the one before has its response, until there are no
/// more or the session has ended. Whether nothing went wrong.
[[nodiscard]] Task<bool> converse(std::shared_ptr<StreamingIO> stream,
                                  RPCConversation conversation);

struct FloodResult {
  std::int64_t answered = 0;
  std::int64_t wrong = 0; ///< Answers that are another's, or failures.
};

/// Sends `count` requests of the method "echo", `inFlight` at a time, and compares what comes back.
[[nodiscard]] Task<FloodResult> flood(std::shared_ptr<StreamingIO> stream, std::int64_t count,
                                      int inFlight);

/// Answers each request with its parameters until the stream ends.
[[nodiscard]] Task<void> echo(std::shared_ptr<StreamingIO> stream);

/// The bytes around a place on one line, what can't be shown as escapes, and below it a mark.
/// `offset` is at most the size.
[[nodiscard]] std::string excerptOf(std::span<const std::byte> bytes, std::int64_t offset);

/// "unix:PATH", "HOST:PORT" or "[ADDRESS]:PORT". Throws UsageError.
[[nodiscard]] NetworkEndpoint endpointFromText(std::string_view text);

} // namespace velmar::host
