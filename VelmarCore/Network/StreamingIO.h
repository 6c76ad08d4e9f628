// Byte streams to a peer, whatever carries them: pipes, a child process, a socket.
//
//   std::shared_ptr<StreamingIO> stream = StreamingIO::standardIO();
//   while (std::optional<Bytes> bytes = co_await stream->read(0))
//     co_await stream->write(std::move(*bytes));
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"
#include "VelmarPlatform/Concurrency/AsyncBytes.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Files/FileDescriptor.h"
#include "VelmarPlatform/Process/InputWriter.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velmar {

/// A stream in both directions. Any thread. One task reads at a time; any number write, and what
/// each writes comes out whole, in the order of the calls. A read that waits holds up no write.
class StreamingIO {
public:
  StreamingIO() = default;
  StreamingIO(const StreamingIO&) = delete;
  StreamingIO& operator=(const StreamingIO&) = delete;
  StreamingIO(StreamingIO&&) = delete;
  StreamingIO& operator=(StreamingIO&&) = delete;
  virtual ~StreamingIO() = default;

  /// At least `minimumBytes` bytes, fewer only if the stream ends first, and absent if it has
  /// ended; with 0, whatever comes next. Memory is taken for what has come, not for what was asked
  /// for. Throws what the stream fails with, and CancellationError; the bytes that this read had
  /// gathered are lost then.
  [[nodiscard]] virtual Task<std::optional<Bytes>> read(std::int64_t minimumBytes) = 0;
  /// Writes all of the bytes. Throws what the stream fails with, and CancellationError; a part may
  /// have been written then.
  [[nodiscard]] virtual Task<void> write(Bytes bytes) = 0;

  /// Standard input and output of this process, which stay open. Throws SystemError if one is
  /// closed.
  [[nodiscard]] static std::shared_ptr<StreamingIO> standardIO();
  /// Takes over two descriptors. Throws SystemError if one can't be used.
  [[nodiscard]] static std::shared_ptr<StreamingIO> fileDescriptor(FileDescriptor input,
                                                                   FileDescriptor output);
  /// A child's standard output, to be read, and its standard input, to be written.
  [[nodiscard]] static std::shared_ptr<StreamingIO> subprocess(AsyncBytes input,
                                                               InputWriter output);
};

namespace detail {

/// Reads chunks until `minimumBytes` are there: what every stream over a descriptor does.
[[nodiscard]] Task<std::optional<Bytes>> readAtLeast(AsyncBytes input, std::int64_t minimumBytes);

} // namespace detail

/// The stream of a child process.
class SubprocessStreamingIO : public StreamingIO {
public:
  SubprocessStreamingIO(AsyncBytes input, InputWriter output)
      : input_(std::move(input)), output_(std::move(output)) {}

  [[nodiscard]] Task<std::optional<Bytes>> read(std::int64_t minimumBytes) override {
    return detail::readAtLeast(input_, minimumBytes);
  }
  [[nodiscard]] Task<void> write(Bytes bytes) override { return output_.write(std::move(bytes)); }

private:
  AsyncBytes input_;
  InputWriter output_;
};

/// The stream of two descriptors.
class FileDescriptorStreamingIO final : public SubprocessStreamingIO {
public:
  FileDescriptorStreamingIO(FileDescriptor input, FileDescriptor output)
      : SubprocessStreamingIO(AsyncBytes(AsyncDescriptor::adopt(std::move(input))),
                              InputWriter(AsyncDescriptor::adopt(std::move(output)))) {}
};

} // namespace velmar
