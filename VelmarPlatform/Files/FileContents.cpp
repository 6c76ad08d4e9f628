#include "VelmarPlatform/Files/FileContents.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Files/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace velmar {

namespace {

std::string quoted(const FilePath& path) {
  return "“" + path.description() + "”";
}

/// "Could not open “x”: Permission denied." `action` is the verb with what it was to be done to.
[[noreturn]] void fail(const std::string& action, int code) {
  throw SystemError("Could not " + action + ": " + systemErrorText(code) + ".", code);
}

[[noreturn]] void refuse(const std::string& action, std::string_view reason, int code) {
  throw SystemError("Could not " + action + ": " + std::string(reason), code);
}

/// A path that the system would cut short at a NUL names another file.
void refuseNUL(const std::string& action, const FilePath& path) {
  if (path.string().find('\0') != std::string::npos)
    refuse(action, "The name holds a NUL.", EINVAL);
}

/// Repeats a system call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
  while (true) {
    const auto result = call();
    if (result >= 0 || errno != EINTR)
      return result;
  }
}

/// The file's size, where it tells one; 0 for pipes and devices, and also for the system's made-up
/// files.
std::int64_t announcedSize(int descriptor, const std::string& action) {
  struct stat status{};
  if (fstat(descriptor, &status) != 0)
    fail(action, errno);
  if (S_ISDIR(status.st_mode))
    refuse(action, "It is a folder.", EISDIR);
  return S_ISREG(status.st_mode) ? std::max<std::int64_t>(status.st_size, 0) : 0;
}

void checkSize(std::int64_t size, const ReadOptions& options, const std::string& action) {
  if (options.sizeLimit && size > *options.sizeLimit)
    refuse(action, "It is larger than " + std::to_string(*options.sizeLimit) + " bytes.", EFBIG);
}

/// Reads until the end, which may come earlier or later than the file's size had it: files change
/// while they are read.
Bytes readUntilEnd(int descriptor, const ReadOptions& options, const std::string& action) {
  constexpr std::size_t smallestPiece = std::size_t{1} << 16;
  const std::int64_t announced = announcedSize(descriptor, action);
  checkSize(announced, options, action);

  Bytes bytes;
  std::size_t count = 0;
  bytes.resize(static_cast<std::size_t>(announced) +
               1); // one more, so that the end is seen at once
  while (true) {
    if (count == bytes.size())
      bytes.resize(count + std::max(count / 2, smallestPiece));
    const ssize_t got = uninterrupted(
        [&] { return ::read(descriptor, bytes.data() + count, bytes.size() - count); });
    if (got < 0)
      fail(action, errno);
    if (got == 0)
      break;
    count += static_cast<std::size_t>(got);
    checkSize(static_cast<std::int64_t>(count), options, action);
  }
  bytes.resize(count);
  return bytes;
}

Bytes readAll(int descriptor, const ReadOptions& options, const std::string& action) {
  precondition(options.sizeLimit.value_or(0) >= 0, "A size limit is at least 0.");
  try {
    return readUntilEnd(descriptor, options, action);
  } catch (const std::bad_alloc&) { // a file can announce any size
    fail(action, ENOMEM);
  } catch (const std::length_error&) {
    fail(action, ENOMEM);
  }
}

/// The file that is really meant: behind a symbolic link, the one that it leads to, if there is
/// one.
FilePath behindLinks(const FilePath& path, const std::string& action) {
  struct FreeMemory {
    void operator()(char* memory) const noexcept { std::free(memory); }
  };
  struct stat status{};
  if (lstat(path.string().c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
    return path;
  const std::unique_ptr<char, FreeMemory> real(realpath(path.string().c_str(), nullptr));
  if (real)
    return FilePath(real.get());
  if (errno != ENOENT)
    fail(action, errno);
  return path;
}

/// The permissions of the file that is to be replaced; absent if there is none.
std::optional<mode_t> permissionsToKeep(const FilePath& path, const std::string& action) {
  struct stat status{};
  if (stat(path.string().c_str(), &status) != 0) {
    if (errno == ENOENT)
      return std::nullopt;
    fail(action, errno);
  }
  if (S_ISDIR(status.st_mode))
    refuse(action, "It is a folder.", EISDIR);
  if (!S_ISREG(status.st_mode))
    refuse(action, "It is not a regular file.", EINVAL);
  return status.st_mode & 07777;
}

/// A new file with a name of its own, which is removed again unless it is kept.
class PassingFile {
public:
  PassingFile(const FilePath& folder, const std::string& action) {
    constexpr int mostTries = 100;
    int code = 0;
    for (int tries = 0; tries < mostTries; ++tries) {
      path_ = folder.appending(".velmar-" + randomName(action));
      const int opened = uninterrupted([&] {
        return ::open(path_.string().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      });
      code = errno;
      if (opened >= 0) {
        descriptor_ = FileDescriptor(opened);
        return;
      }
      if (code != EEXIST)
        break;
    }
    fail(action, code); // nothing was made, and without an object nothing is removed
  }
  ~PassingFile() {
    if (!path_.isEmpty())
      ::unlink(path_.string().c_str());
  }
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;

  [[nodiscard]] const FilePath& path() const { return path_; }
  [[nodiscard]] FileDescriptor& descriptor() { return descriptor_; }
  void keep() { path_ = FilePath(); }

private:
  static std::string randomName(const std::string& action) {
    std::uint64_t number = 0;
    if (uninterrupted([&] { return getrandom(&number, sizeof number, 0); }) !=
        static_cast<ssize_t>(sizeof number))
      fail(action, errno);
    return std::to_string(number);
  }

  FilePath path_; // empty once there is nothing to remove
  FileDescriptor descriptor_;
};

void writeAll(int descriptor, std::span<const std::byte> bytes, const std::string& action) {
  while (!bytes.empty()) {
    const ssize_t written =
        uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
    if (written < 0)
      fail(action, errno);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

/// Brings the names in `folder` to the disk, where the file system can.
void syncFolder(const FilePath& folder, const std::string& action) {
  const FileDescriptor descriptor(uninterrupted(
      [&] { return ::open(folder.string().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!descriptor.isOpen()) {
    if (errno == EACCES) // writable but not readable: allowed, only not to be synced
      return;
    fail(action, errno);
  }
  if (uninterrupted([&] { return fsync(descriptor.number()); }) != 0 && errno != EINVAL &&
      errno != ENOTSUP)
    fail(action, errno);
}

} // namespace

Bytes readFile(const FilePath& path, ReadOptions options) {
  const std::string name = quoted(path);
  const std::string opening = "open " + name;
  refuseNUL(opening, path);
  const FileDescriptor descriptor(uninterrupted(
      [&] { return ::open(path.string().c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
  if (!descriptor.isOpen())
    fail(opening, errno);
  return readAll(descriptor.number(), options, "read " + name);
}

Bytes readStandardInput(ReadOptions options) {
  return readAll(STDIN_FILENO, options, "read the standard input");
}

void writeFileAtomically(const FilePath& path, std::span<const std::byte> bytes) {
  const std::string action = "write " + quoted(path);
  refuseNUL(action, path);
  const FilePath target = behindLinks(path, action);
  const std::optional<mode_t> permissions = permissionsToKeep(target, action);
  const FilePath parent = target.removingLastComponent();
  const FilePath folder = parent.isEmpty() ? FilePath(".") : parent;

  PassingFile file(folder, action);
  const int descriptor = file.descriptor().number();
  writeAll(descriptor, bytes, action);
  if (permissions && fchmod(descriptor, *permissions) != 0)
    fail(action, errno);
  // The contents must be on the disk before the name is, else a halt could leave an empty file
  // under it.
  if (uninterrupted([&] { return fsync(descriptor); }) != 0)
    fail(action, errno);
  if (file.descriptor().close() != 0)
    fail(action, errno);
  if (::rename(file.path().string().c_str(), target.string().c_str()) != 0)
    fail(action, errno);
  file.keep();
  syncFolder(folder, action);
}

} // namespace velmar
