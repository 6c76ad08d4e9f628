#include "host/FileWatch.h"

#include "VelmarPlatform/Basics/Error.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace velmar::host {

namespace {

// Not IN_MODIFY: in the middle of writing there is only half a text.
constexpr std::uint32_t interesting = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
constexpr std::uint32_t folderIsGone = IN_DELETE_SELF | IN_MOVE_SELF;

[[noreturn]] void fail(std::string_view what, const FilePath& path) {
  const int code = errno;
  throw SystemError(
      fmt::format("Could not {} “{}”: {}.", what, path.description(), systemErrorText(code)), code);
}

sigset_t interruptions() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

/// Gives what was blocked before.
sigset_t blockInterruptions() {
  const sigset_t signals = interruptions();
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  return before;
}

int openSignals() {
  const sigset_t signals = interruptions();
  return signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
}

FilePath folderOf(const FilePath& file) {
  const FilePath folder = file.removingLastComponent();
  return folder.isEmpty() ? FilePath(".") : folder;
}

} // namespace

Descriptor::~Descriptor() {
  if (number_ >= 0)
    close(number_);
}

FileWatch::FileWatch(FilePath file)
    : file_(std::move(file)), notifications_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      signalsBefore_(blockInterruptions()), signals_(openSignals()) {
  try {
    if (notifications_.number() < 0 || signals_.number() < 0)
      fail("watch", file_);
    watchFolders();
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
    throw;
  }
}

FileWatch::~FileWatch() {
  // An interruption that nobody has waited for would end the process now.
  signalfd_siginfo taken;
  while (read(signals_.number(), &taken, sizeof taken) > 0) {
  }
  pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
}

/// Watching a folder once more does nothing, so this can be called whenever a link may have moved.
void FileWatch::watchFolders() {
  std::error_code failure;
  const auto target = std::filesystem::canonical(file_.string(), failure);
  std::set<FilePath> paths{file_};
  if (!failure)
    paths.insert(FilePath(target.string()));
  names_.clear();
  for (const FilePath& path : paths) {
    names_.insert(path.lastComponent());
    const FilePath folder = folderOf(path);
    if (inotify_add_watch(notifications_.number(), folder.string().c_str(),
                          interesting | folderIsGone | IN_ONLYDIR) < 0)
      fail("watch the folder", folder);
  }
}

FileWatch::Event FileWatch::wait(std::optional<std::chrono::milliseconds> limit) {
  std::array<pollfd, 2> polled{{{.fd = notifications_.number(), .events = POLLIN, .revents = 0},
                                {.fd = signals_.number(), .events = POLLIN, .revents = 0}}};
  const int timeout = limit ? static_cast<int>(limit->count()) : -1;
  for (;;) {
    const int ready = poll(polled.data(), polled.size(), timeout);
    if (ready < 0 && errno != EINTR)
      fail("wait for", file_);
    if (ready == 0)
      return Event::timedOut;
    if (polled[0].revents != 0 && takeChanges()) {
      watchFolders();
      return Event::changed;
    }
    if (ready > 0 && polled[1].revents != 0)
      return Event::interrupted;
  }
}

/// Reads all that has been reported; whether the file is concerned.
bool FileWatch::takeChanges() {
  bool changed = false;
  alignas(inotify_event) std::array<char, 8192> buffer;
  for (;;) {
    const ssize_t count = read(notifications_.number(), buffer.data(), buffer.size());
    if (count <= 0)
      return changed;
    for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
      inotify_event event;
      std::memcpy(&event, buffer.data() + at, sizeof event);
      const char* const name = buffer.data() + at + sizeof event;
      if ((event.mask & folderIsGone) != 0) {
        errno = ENOENT;
        fail("go on watching the folder of", file_);
      }
      changed |= (event.mask & IN_Q_OVERFLOW) != 0 || (event.len != 0 && names_.contains(name));
      at += sizeof event + event.len;
    }
  }
}

} // namespace velmar::host
