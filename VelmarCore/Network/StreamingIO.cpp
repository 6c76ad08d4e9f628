#include "VelmarCore/Network/StreamingIO.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace velmar {

namespace {

/// A descriptor of our own for one of the process's standard streams. Reads and writes that don't
/// block are a property of the open file, which the shell or a sibling may share; so pipes and
/// terminals are opened anew. A file isn't, as it has a position to be shared.
FileDescriptor ownDescriptorFor(int number, int access) {
  struct stat status{};
  if (::fstat(number, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode))) {
    const std::string path = "/dev/fd/" + std::to_string(number);
    FileDescriptor opened(::open(path.c_str(), access | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (opened.isOpen())
      return opened;
  }
  FileDescriptor copy(::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!copy.isOpen()) {
    const int code = errno;
    throw SystemError("A standard stream can't be used: " + systemErrorText(code) + ".", code);
  }
  return copy;
}

} // namespace

std::shared_ptr<StreamingIO> StreamingIO::standardIO() {
  return fileDescriptor(ownDescriptorFor(STDIN_FILENO, O_RDONLY),
                        ownDescriptorFor(STDOUT_FILENO, O_WRONLY));
}

std::shared_ptr<StreamingIO> StreamingIO::fileDescriptor(FileDescriptor input,
                                                         FileDescriptor output) {
  return std::make_shared<FileDescriptorStreamingIO>(std::move(input), std::move(output));
}

std::shared_ptr<StreamingIO> StreamingIO::subprocess(AsyncBytes input, InputWriter output) {
  return std::make_shared<SubprocessStreamingIO>(std::move(input), std::move(output));
}

Task<std::optional<Bytes>> detail::readAtLeast(AsyncBytes input, std::int64_t minimumBytes) {
  precondition(minimumBytes >= 0, "A read can't ask for fewer than 0 bytes.");
  const auto minimum = static_cast<std::size_t>(minimumBytes);
  std::optional<Bytes> bytes = co_await input.next();
  if (!bytes || bytes->size() >= minimum)
    co_return bytes;
  std::size_t filled = bytes->size(); // what is behind is room for more
  while (filled < minimum) {
    // At most as much again as has come: whoever announces more than he sends costs nothing. Room
    // that isn't full yet is used up first: making it costs a pass over it.
    if (filled == bytes->size())
      bytes->resize(filled + std::min(minimum - filled, std::max(filled, AsyncBytes::chunkSize)));
    const std::size_t more = co_await input.readInto(std::span(*bytes).subspan(filled));
    if (more == 0)
      break;
    filled += more;
  }
  bytes->resize(filled);
  co_return bytes;
}

} // namespace velmar
