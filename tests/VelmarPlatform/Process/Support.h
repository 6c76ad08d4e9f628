// What the tests of child processes share: short ways to run a shell, and what is left afterwards.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Process/Subprocess.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace velmar::testing_support {

/// A folder of its own for one test, removed with it.
class TemporaryFolder {
public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmar-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  [[nodiscard]] FilePath path() const { return FilePath(path_.string()); }
  FilePath write(std::string_view name, std::string_view contents, int permissions = 0644) const {
    const auto file = path_ / name;
    std::ofstream(file) << contents;
    std::filesystem::permissions(file, static_cast<std::filesystem::perms>(permissions));
    return FilePath(file.string());
  }

private:
  std::filesystem::path path_;
};

/// `sh -c script`.
inline Subprocess::Configuration shell(std::string script) {
  return {.executable = Subprocess::Executable::path(FilePath("/bin/sh")),
          .arguments = {"-c", std::move(script)},
          .environment = {{"PATH", "/usr/bin:/bin"}}};
}

inline std::size_t openDescriptorCount() {
  std::size_t count = 0;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc/self/fd"), ::closedir);
  while (::readdir(folder.get()) != nullptr) // NOLINT(concurrency-mt-unsafe): a folder of our own
    ++count;
  return count;
}

/// Whether this process has any child, be it one that has ended.
inline bool hasChildren() {
  siginfo_t info{};
  return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

/// Whether a process lives: one that has ended but isn't collected yet by whoever it belongs to
/// doesn't.
inline bool isAlive(pid_t id) {
  std::ifstream file("/proc/" + std::to_string(id) + "/stat");
  std::string text;
  if (!std::getline(file, text))
    return false;
  const std::size_t name = text.rfind(')');
  return name != std::string::npos && text.substr(name + 2, 1) != "Z" &&
         text.substr(name + 2, 1) != "X";
}

} // namespace velmar::testing_support
