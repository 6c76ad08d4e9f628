#include "VelmarPlatform/Process/SubprocessEnvironment.h"

#include <algorithm>
#include <unistd.h>

namespace velmar {

namespace {

constexpr std::string_view pathName = "PATH";

/// A colon stands only where there is something on both sides.
std::string joined(std::string_view first, std::string_view second) {
  std::string text(first);
  if (!first.empty() && !second.empty())
    text += ':';
  return text.append(second);
}

std::string searchPathOf(std::span<const FilePath> paths) {
  std::string text;
  for (const FilePath& path : paths) {
    if (&path != paths.data())
      text += ':';
    text += path.string();
  }
  return text;
}

} // namespace

SubprocessEnvironment SubprocessEnvironment::inherited() {
  SubprocessEnvironment environment;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const std::size_t equals = text.find('=');
    if (equals != std::string_view::npos) // the first of two counts, as for getenv
      environment.values_.try_emplace(std::string(text.substr(0, equals)), text.substr(equals + 1));
  }
  return environment;
}

std::optional<std::string> SubprocessEnvironment::value(std::string_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void SubprocessEnvironment::setValue(std::string_view name, std::string value) {
  values_.insert_or_assign(std::string(name), std::move(value));
}

void SubprocessEnvironment::removeValue(std::string_view name) {
  if (const auto found = values_.find(name); found != values_.end())
    values_.erase(found);
}

void SubprocessEnvironment::overlay(const Values& values) {
  for (const auto& [name, value] : values)
    setValue(name, value);
}

void SubprocessEnvironment::prependPaths(std::span<const FilePath> paths) {
  transform(pathName, [&](const std::optional<std::string>& old) {
    return joined(searchPathOf(paths), old ? std::string_view(*old) : standardPath);
  });
}

void SubprocessEnvironment::appendPaths(std::span<const FilePath> paths) {
  transform(pathName, [&](const std::optional<std::string>& old) {
    return joined(old ? std::string_view(*old) : standardPath, searchPathOf(paths));
  });
}

SubprocessEnvironment
SubprocessEnvironment::prependingPaths(std::span<const FilePath> paths) const {
  SubprocessEnvironment copy = *this;
  copy.prependPaths(paths);
  return copy;
}

SubprocessEnvironment SubprocessEnvironment::appendingPaths(std::span<const FilePath> paths) const {
  SubprocessEnvironment copy = *this;
  copy.appendPaths(paths);
  return copy;
}

std::vector<FilePath> SubprocessEnvironment::paths() const {
  const std::optional<std::string> searchPath = value(pathName);
  return splitSearchPath(searchPath ? std::string_view(*searchPath) : standardPath);
}

std::vector<FilePath> splitSearchPath(std::string_view searchPath) {
  std::vector<FilePath> paths;
  while (!searchPath.empty()) {
    const std::size_t length = std::min(searchPath.find(':'), searchPath.size());
    if (length > 0)
      paths.emplace_back(searchPath.substr(0, length));
    searchPath.remove_prefix(std::min(length + 1, searchPath.size()));
  }
  return paths;
}

} // namespace velmar
