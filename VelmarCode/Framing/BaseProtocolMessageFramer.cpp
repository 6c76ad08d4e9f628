#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"

#include "VelmarCore/JSONRPC/JSONRPCError.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmar {

namespace {

constexpr std::string_view lineBreak = "\r\n";
constexpr std::string_view separator = ": ";

using Headers = std::map<std::string, std::string, std::less<>>;

/// The lines of `block`, each of which ends in CR LF.
Headers headersOf(std::string_view block) {
  Headers headers;
  while (!block.empty()) {
    const std::size_t end = block.find(lineBreak);
    const std::string line = repairedUTF8(block.substr(0, end));
    block.remove_prefix(end + lineBreak.size());
    if (const std::size_t at = line.find(separator); at != std::string::npos)
      headers.insert_or_assign(line.substr(0, at), line.substr(at + separator.size()));
  }
  return headers;
}

/// A decimal number with or without a sign, and at least 1.
std::optional<std::int64_t> lengthOf(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-"))
    text.remove_prefix(1);
  std::int64_t length = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, length);
  if (error != std::errc() || stop != end || length < 1)
    return std::nullopt;
  return length;
}

std::int64_t lengthIn(const Headers& headers) {
  const auto found = headers.find("Content-Length");
  const auto length = found == headers.end() ? std::nullopt : lengthOf(found->second);
  if (!length)
    throw JSONRPCError<JSONRPCVoid>(
        JSONRPCErrorCode::parseError,
        "Message received did not include a valid Content-Length header.");
  return *length;
}

} // namespace

BaseProtocolMessageFramer::BaseProtocolMessageFramer(std::shared_ptr<StreamingIO> stream)
    : stream_(std::move(stream)) {}

Task<std::optional<Bytes>> BaseProtocolMessageFramer::read() {
  std::int64_t bytesRequired = 0;
  for (;;) {
    if (auto message = readMessage(bytesRequired))
      co_return std::move(message->data);
    const auto bytes = co_await stream_->read(bytesRequired);
    if (!bytes)
      co_return std::nullopt;
    append(*bytes);
  }
}

Task<void> BaseProtocolMessageFramer::write(Bytes message) {
  const std::string header = "Content-Length: " + std::to_string(message.size()) + "\r\n\r\n";
  const auto headerBytes = bytesOf(header);
  message.insert(message.begin(), headerBytes.begin(), headerBytes.end());
  return stream_->write(std::move(message));
}

void BaseProtocolMessageFramer::append(std::span<const std::byte> bytes) {
  // What was taken goes when it is the larger part: each byte moves once at most on average.
  if (start_ > buffer_.size() / 2) {
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
  }
  buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

std::optional<BaseProtocolMessageFramer::Message>
BaseProtocolMessageFramer::readMessage(std::int64_t& bytesRequired) {
  const auto bodyStart = endOfHeaders();
  if (!bodyStart) {
    bytesRequired = 0;
    return std::nullopt;
  }
  const std::string_view headerLines =
      charactersOf(unread()).substr(0, *bodyStart - lineBreak.size());
  Headers headers = headersOf(headerLines);
  const std::int64_t length = lengthIn(headers);
  const std::int64_t available = std::ssize(unread()) - static_cast<std::int64_t>(*bodyStart);
  if (available < length) {
    bytesRequired = length - available;
    return std::nullopt;
  }
  const auto body = unread().subspan(*bodyStart, static_cast<std::size_t>(length));
  Message message{Bytes(body.begin(), body.end()), std::move(headers)};
  take(*bodyStart + body.size());
  return message;
}

std::optional<std::size_t> BaseProtocolMessageFramer::endOfHeaders() {
  const std::string_view text = charactersOf(unread());
  if (text.starts_with(lineBreak)) // no header at all
    return lineBreak.size();
  constexpr std::string_view end = "\r\n\r\n";
  const std::size_t from = searched_ < end.size() ? 0 : searched_ - (end.size() - 1);
  const std::size_t at = text.find(end, from);
  searched_ = at == std::string_view::npos ? text.size() : at;
  if (at == std::string_view::npos)
    return std::nullopt;
  return at + end.size();
}

void BaseProtocolMessageFramer::take(std::size_t length) {
  start_ += length;
  position_ += static_cast<std::int64_t>(length);
  searched_ = 0;
}

} // namespace velmar
