// Paths of files as values: taken apart and put together by their text alone, without asking the
// file system.
#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

class FilePathAncestors;

/// A path: components with "/" between them, and "/" in front if it is absolute. The root counts as
/// a component, and its only name is "/".
///
/// Repeated slashes and those at the end are dropped when a path is made, so equal paths have equal
/// texts; "." and ".." are components like others until `standardized()`. The empty path is the
/// place that a relative path starts from. Usually a path is valid UTF-8, but a file's name may be
/// any bytes, so these are kept as they are.
class FilePath {
public:
  FilePath() = default;
  explicit FilePath(std::string_view path);
  /// `path` itself if it is absolute, else the path that it leads to from `relativeTo`.
  FilePath(std::string_view path, const FilePath& relativeTo);
  FilePath(const FilePath& path, const FilePath& relativeTo);

  /// The path's bytes, as the system takes them. They may hold a NUL, if whoever made the path let
  /// one in.
  [[nodiscard]] const std::string& string() const noexcept { return path_; }
  /// The path for people and for protocols: valid UTF-8, with U+FFFD for bytes that aren't.
  [[nodiscard]] std::string description() const;

  [[nodiscard]] bool isEmpty() const noexcept { return path_.empty(); }
  [[nodiscard]] bool isAbsolute() const noexcept { return path_.starts_with('/'); }
  [[nodiscard]] bool isRoot() const noexcept { return path_ == "/"; }

  /// "/usr/lib" has "/", "usr" and "lib".
  [[nodiscard]] std::vector<std::string> components() const;
  /// "c" of "a/b/c", "/" of "/"; empty for the empty path.
  [[nodiscard]] std::string lastComponent() const;

  /// What stands behind the last component's last dot: "gz" of "a.tar.gz". Absent where nothing
  /// does, and for dots that a name starts with: ".profile" and ".." have no extension.
  [[nodiscard]] std::optional<std::string> extension() const;
  /// The last two extensions, or the only one: "tar.gz" of "a.tar.gz" and of "a-1.2.tar.gz", "d.ts"
  /// of "my.module.d.ts", "c" of "a.c". Absent where `extension` is.
  [[nodiscard]] std::optional<std::string> compoundExtension() const;
  /// The last component without the extension and its dot: "a.tar" of "b/a.tar.gz", ".profile" of
  /// ".profile".
  [[nodiscard]] std::string stem() const;

  /// The path of `path` beneath this one. A slash in front of it is ignored: what is appended never
  /// leads to the root, though ".." can lead out.
  [[nodiscard]] FilePath appending(std::string_view path) const;
  [[nodiscard]] FilePath appending(const FilePath& path) const;
  /// The path without its last component: "a" of "a/b", "/" of "/a", and the empty path of "a", of
  /// "/" and of itself.
  [[nodiscard]] FilePath removingLastComponent() const;
  /// This path and the ones above it: see `FilePathAncestors`.
  [[nodiscard]] FilePathAncestors ancestors() const;

  /// Without "." and without ".." as far as the text tells: a component goes with the ".." behind
  /// it, "/.." is "/", and a relative path keeps the ".." that it starts with. What leads nowhere
  /// ("." or "a/..") gives the empty path. Symbolic links aren't looked at, so behind one of them
  /// ".." may have led elsewhere.
  [[nodiscard]] FilePath standardized() const;

  /// Whether the first components are those of `prefix`: "/a/b" starts with "/a" and with "/a/b",
  /// but not with "/a/bc". Every path starts with the empty one.
  [[nodiscard]] bool startsWith(const FilePath& prefix) const;
  /// What is left behind `prefix`, empty if that is all; absent if the path doesn't start with it.
  [[nodiscard]] std::optional<FilePath> removingPrefix(const FilePath& prefix) const;
  /// The way from the folder `base` to this path, over ".." where it must leave: "../c" from "/a/b"
  /// to "/a/c". Both are taken as standardized. Absent where no way can be told: if only one is
  /// absolute, or `base` starts with more ".." than the two have in common.
  [[nodiscard]] std::optional<FilePath> relativePathFrom(const FilePath& base) const;

  /// Equal texts are equal paths. The order is by components, each by its bytes: a folder comes
  /// right before all that lies beneath it.
  bool operator==(const FilePath&) const = default;
  [[nodiscard]] std::strong_ordering operator<=>(const FilePath& other) const noexcept;

private:
  std::string path_; // no repeated and no last slash, but for "/" itself
};

/// A path itself, then each one above it, from the nearest on: "/a/b", "/a", "/"; "a/b", "a".
/// Nothing for the empty path.
///
///   for (const FilePath& folder : path.removingLastComponent().ancestors())
class FilePathAncestors {
public:
  class Iterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = FilePath;
    using difference_type = std::ptrdiff_t;
    using pointer = const FilePath*;
    using reference = const FilePath&;

    Iterator() = default;
    explicit Iterator(FilePath path) : path_(std::move(path)) {}

    /// Valid until the iterator moves on.
    [[nodiscard]] const FilePath& operator*() const noexcept { return path_; }
    [[nodiscard]] const FilePath* operator->() const noexcept { return &path_; }
    Iterator& operator++() {
      path_ = path_.removingLastComponent();
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator&) const = default;

  private:
    FilePath path_; // empty at the end
  };

  explicit FilePathAncestors(FilePath start) : path(std::move(start)) {}

  /// Where the walk starts.
  FilePath path;

  [[nodiscard]] Iterator begin() const { return Iterator(path); }
  [[nodiscard]] Iterator end() const { return {}; }
};

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const FilePath& path);

} // namespace velmar

template <>
struct std::hash<velmar::FilePath> {
  std::size_t operator()(const velmar::FilePath& path) const noexcept {
    return std::hash<std::string>()(path.string());
  }
};
