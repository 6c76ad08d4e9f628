// Waits until a file has new contents, or until the user has had enough.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <set>
#include <string>

namespace velmar::host {

/// An open descriptor of the process, closed with its owner.
class Descriptor {
public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor();
  [[nodiscard]] int number() const noexcept { return number_; }

private:
  int number_;
};

/// Watches the folder that the file is in rather than the file, for editors write a new file and
/// put it in the place of the old one; and of a symbolic link also that of its target.
///
/// As long as one exists, Ctrl-C and SIGTERM don't end the process but the waiting. It must be made
/// and destroyed on one thread, and before other threads are, which inherit that.
class FileWatch {
public:
  enum class Event {
    /// The file was written and closed, replaced or removed.
    changed,
    interrupted,
    timedOut,
  };

  /// Throws SystemError.
  explicit FileWatch(FilePath file);
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;
  ~FileWatch();

  /// The next thing that happens; what happens to the file several times before this is called is
  /// told once, and before an interruption. Waits for ever without a `limit`. Throws SystemError,
  /// also if a folder that is watched goes.
  [[nodiscard]] Event wait(std::optional<std::chrono::milliseconds> limit = std::nullopt);

private:
  void watchFolders();
  [[nodiscard]] bool takeChanges();

  FilePath file_;
  Descriptor notifications_;
  sigset_t signalsBefore_;
  Descriptor signals_;
  /// The last components of the names that the file goes by.
  std::set<std::string> names_;
};

} // namespace velmar::host
