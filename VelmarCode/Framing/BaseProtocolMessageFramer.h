// The framing that language servers, build servers and debug adapters share: a block of header
// lines, an empty line, and a body whose length the header "Content-Length" tells.
#pragma once

#include "VelmarCore/JSONRPC/JSONRPCMessageFramer.h"
#include "VelmarCore/Network/StreamingIO.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace velmar {

/// Memory is taken for bytes that have come, whatever length a header announces. Lines without ": "
/// and headers of other names are skipped.
class BaseProtocolMessageFramer final : public JSONRPCMessageFramer {
public:
  explicit BaseProtocolMessageFramer(std::shared_ptr<StreamingIO> stream);

  /// Throws JSONRPCError<JSONRPCVoid> with the code `parseError` for a header block without a
  /// valid length.
  [[nodiscard]] Task<std::optional<Bytes>> read() override;
  [[nodiscard]] Task<void> write(Bytes message) override;

  // What `read` is made of, for sessions that get their bytes otherwise.

  struct Message {
    Bytes data;
    /// As they stand, repaired to valid UTF-8; of a name that comes twice, the last value.
    std::map<std::string, std::string, std::less<>> headers;
  };
  /// Adds bytes behind those that wait to be read.
  void append(std::span<const std::byte> bytes);
  /// Takes the first message out of what was appended. Absent if it isn't all there: then
  /// `bytesRequired` is how many bytes of the body are missing, or 0 while the headers are. Throws
  /// like `read`, and takes nothing then. O(bytes that weren't seen before, and the message).
  [[nodiscard]] std::optional<Message> readMessage(std::int64_t& bytesRequired);

  /// What was received and isn't taken yet; valid until the next call. After a failure it starts
  /// with the headers that are to blame.
  [[nodiscard]] std::span<const std::byte> unread() const noexcept {
    return std::span(buffer_).subspan(start_);
  }
  /// How many bytes of the stream were taken: where `unread()` starts.
  [[nodiscard]] std::int64_t position() const noexcept { return position_; }

private:
  /// Where the body starts in `unread()`, absent if the empty line hasn't come.
  [[nodiscard]] std::optional<std::size_t> endOfHeaders();
  void take(std::size_t length);

  std::shared_ptr<StreamingIO> stream_;
  Bytes buffer_;
  std::size_t start_ = 0;    // of what nobody has taken
  std::size_t searched_ = 0; // from `start_` on, without the end of the headers
  std::int64_t position_ = 0;
};

} // namespace velmar
