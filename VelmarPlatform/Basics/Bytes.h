// Byte buffers: what files, pipes and sockets give before anybody has said what it means.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace velmar {

using Bytes = std::vector<std::byte>;

/// The bytes of `text`, borrowed.
[[nodiscard]] inline std::span<const std::byte> bytesOf(std::string_view text) noexcept {
  return std::as_bytes(std::span(text.data(), text.size()));
}

/// `bytes` seen as characters, borrowed; not checked to be UTF-8.
[[nodiscard]] inline std::string_view charactersOf(std::span<const std::byte> bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace velmar
