#include "VelmarPlatform/Concurrency/AsyncBytes.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "VelmarPlatform/Unicode/WholeScalars.h"

#include <algorithm>
#include <cstring>

namespace velmar {

AsyncBytes::AsyncBytes(std::shared_ptr<AsyncDescriptor> descriptor, std::function<void()> onEnd)
    : state_(std::make_shared<const State>(std::move(descriptor), std::move(onEnd))) {}

Task<std::optional<Bytes>> AsyncBytes::next(std::size_t maximum) const {
  return nextImpl(state_, maximum);
}
Task<std::size_t> AsyncBytes::readInto(std::span<std::byte> buffer) const {
  return readIntoImpl(state_, buffer);
}
AsyncLines AsyncBytes::lines(AsyncLinesOptions options) const {
  return AsyncLines(*this, options);
}

Task<std::optional<Bytes>> AsyncBytes::nextImpl(std::shared_ptr<const State> state,
                                                std::size_t maximum) {
  std::optional<Bytes> chunk = co_await state->descriptor->read(maximum);
  if (!chunk && state->onEnd)
    state->onEnd();
  co_return chunk;
}

Task<std::size_t> AsyncBytes::readIntoImpl(std::shared_ptr<const State> state,
                                           std::span<std::byte> buffer) {
  const std::size_t count = co_await state->descriptor->readInto(buffer);
  if (count == 0 && state->onEnd)
    state->onEnd();
  co_return count;
}

AsyncLines::AsyncLines(AsyncBytes bytes, AsyncLinesOptions options)
    : bytes_(std::move(bytes)), options_(options) {
  precondition(options.maximumLength >= 4, "A line must be allowed to hold one character.");
}

Task<std::optional<std::string>> AsyncLines::nextImpl(AsyncLines* self) {
  for (;;) {
    if (std::optional<std::string> line = self->takeLine())
      co_return line;
    if (self->isAtEnd_)
      co_return std::nullopt;
    co_await fill(self);
  }
}

Task<std::vector<std::string>> AsyncLines::nextBatchImpl(AsyncLines* self) {
  std::vector<std::string> lines;
  if (std::optional<std::string> first = co_await nextImpl(self)) {
    lines.push_back(std::move(*first));
    while (std::optional<std::string> line = self->takeLine())
      lines.push_back(std::move(*line));
  }
  co_return lines;
}

/// Reads more. What is left of the last line moves to the front first: it is shorter than the lines
/// that were taken, or the buffer grows for it.
Task<void> AsyncLines::fill(AsyncLines* self) {
  if (self->start_ > 0) {
    std::memmove(self->buffer_.data(), self->buffer_.data() + self->start_,
                 self->end_ - self->start_);
    self->end_ -= self->start_;
    self->start_ = 0;
  }
  if (self->buffer_.size() < self->end_ + AsyncBytes::chunkSize / 2)
    self->buffer_.resize(std::max(2 * self->end_, AsyncBytes::chunkSize));
  const std::size_t count =
      co_await self->bytes_.readInto(std::span(self->buffer_).subspan(self->end_));
  self->end_ += count;
  self->isAtEnd_ = count == 0;
}

std::optional<std::string> AsyncLines::takeLine() {
  const std::string_view text = unread();
  const std::size_t found = text.find('\n', searched_);
  const std::size_t length = found == std::string_view::npos ? text.size() : found;
  if (length > options_.maximumLength)
    return take(lengthOfWholeScalars(text.substr(0, options_.maximumLength)), 0);
  if (found != std::string_view::npos)
    return take(found + 1, 1);
  if (isAtEnd_ && !text.empty())
    return take(text.size(), 0);
  searched_ = text.size();
  return std::nullopt;
}

std::string AsyncLines::take(std::size_t length, std::size_t lineFeed) {
  const std::size_t kept = options_.lineFeeds == LineFeeds::keep ? length : length - lineFeed;
  std::string line = repairedUTF8(unread().substr(0, kept));
  start_ += length;
  searched_ = 0;
  return line;
}

} // namespace velmar
