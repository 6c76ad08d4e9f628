// The owner of a descriptor that is used by plain, blocking system calls: a file, one end of a
// pipe. Tasks read and write through AsyncDescriptor, which takes one over.
#pragma once

#include <utility>

namespace velmar {

/// Closes its descriptor when it goes. Move-only; any one thread at a time.
class [[nodiscard]] FileDescriptor {
public:
  FileDescriptor() = default;
  /// Takes over `number`; a negative one is none, so that what a failed call gave can be asked
  /// about with `isOpen`.
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor();

  [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
  /// The number for system calls, negative if there is none.
  [[nodiscard]] int number() const noexcept { return number_; }
  /// Gives the number away: the caller closes it.
  [[nodiscard]] int release() noexcept { return std::exchange(number_, -1); }
  /// Closes it now; -1 and `errno` if the system reports a failure that it had kept to itself until
  /// then. It is closed all the same.
  int close() noexcept;

private:
  int number_ = -1;
};

/// Both ends of a new pipe. They close when a program is executed, and neither is 0, 1 or 2, even
/// where the process has closed these. Throws SystemError.
struct Pipe {
  FileDescriptor readingEnd;
  FileDescriptor writingEnd;

  [[nodiscard]] static Pipe make();
};

} // namespace velmar
