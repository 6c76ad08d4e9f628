#include "VelmarPlatform/Files/FileDescriptor.h"

#include "VelmarPlatform/Basics/Error.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace velmar {

namespace {

[[noreturn]] void failToMakePipe() {
  throw SystemError("No pipe can be made: " + systemErrorText(errno) + ".", errno);
}

/// A number above those of the standard streams, which a child's own streams will replace.
FileDescriptor movedUp(FileDescriptor descriptor) {
  if (descriptor.number() > STDERR_FILENO)
    return descriptor;
  FileDescriptor moved(::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!moved.isOpen())
    failToMakePipe();
  return moved;
}

} // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    number_ = other.release();
  }
  return *this;
}

FileDescriptor::~FileDescriptor() {
  close();
}

int FileDescriptor::close() noexcept {
  return isOpen() ? ::close(release()) : 0;
}

Pipe Pipe::make() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0)
    failToMakePipe();
  FileDescriptor reading(ends[0]);
  FileDescriptor writing(ends[1]);
  return {movedUp(std::move(reading)), movedUp(std::move(writing))};
}

} // namespace velmar
