// Cuts a byte stream into messages.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Concurrency/Task.h"

#include <optional>

namespace velmar {

/// Owned by a session, and used by it alone: one read at a time, and the framer stays in its place
/// meanwhile. Writes may go beside it.
class JSONRPCMessageFramer {
public:
  JSONRPCMessageFramer() = default;
  JSONRPCMessageFramer(const JSONRPCMessageFramer&) = delete;
  JSONRPCMessageFramer& operator=(const JSONRPCMessageFramer&) = delete;
  JSONRPCMessageFramer(JSONRPCMessageFramer&&) = delete;
  JSONRPCMessageFramer& operator=(JSONRPCMessageFramer&&) = delete;
  virtual ~JSONRPCMessageFramer() = default;

  /// The next whole message, without its frame; absent when the stream has ended, be it inside of a
  /// message. Throws what the stream fails with, and an Error for bytes that are no message; after
  /// that there is nothing to be read any more.
  [[nodiscard]] virtual Task<std::optional<Bytes>> read() = 0;
  /// Frames one message and writes it. Throws what the stream fails with.
  [[nodiscard]] virtual Task<void> write(Bytes message) = 0;
};

} // namespace velmar
