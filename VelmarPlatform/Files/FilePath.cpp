#include "VelmarPlatform/Files/FilePath.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <ostream>
#include <span>

namespace velmar {

namespace {

constexpr auto npos = std::string_view::npos;

/// `path` without repeated slashes and without those at its end.
std::string withSingleSlashes(std::string_view path) {
  std::string result;
  result.reserve(path.size());
  for (const char character : path)
    if (character != '/' || !result.ends_with('/'))
      result.push_back(character);
  if (result.size() > 1 && result.ends_with('/'))
    result.pop_back();
  return result;
}

std::string_view lastComponentOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == npos || path.size() == 1 ? path : path.substr(slash + 1);
}

/// Where the extension's dot stands in a component; `npos` if it has none. Dots at the start belong
/// to the name.
std::size_t extensionDot(std::string_view component) {
  const std::size_t nameStart = component.find_first_not_of('.');
  const std::size_t dot = component.rfind('.');
  if (nameStart == npos || dot == npos || dot < nameStart || dot + 1 == component.size())
    return npos;
  return dot;
}

/// The components as views into `path`.
std::vector<std::string_view> split(std::string_view path) {
  std::vector<std::string_view> components;
  if (path.starts_with('/')) {
    components.push_back(path.substr(0, 1));
    path.remove_prefix(1);
  }
  while (!path.empty()) {
    const std::size_t slash = std::min(path.find('/'), path.size());
    components.push_back(path.substr(0, slash));
    path.remove_prefix(std::min(slash + 1, path.size()));
  }
  return components;
}

std::vector<std::string_view> standardizedComponents(std::string_view path) {
  std::vector<std::string_view> kept;
  for (const std::string_view component : split(path)) {
    if (component == ".")
      continue;
    if (component == ".." && !kept.empty() && kept.back() != "..") {
      if (kept.back() != "/")
        kept.pop_back();
      continue;
    }
    kept.push_back(component);
  }
  return kept;
}

FilePath joined(std::span<const std::string_view> components) {
  std::string path;
  for (const std::string_view component : components) {
    if (!path.empty() && path != "/")
      path += '/';
    path += component;
  }
  return FilePath(path);
}

} // namespace

FilePath::FilePath(std::string_view path) : path_(withSingleSlashes(path)) {}

FilePath::FilePath(std::string_view path, const FilePath& relativeTo)
    : FilePath(FilePath(path), relativeTo) {}

FilePath::FilePath(const FilePath& path, const FilePath& relativeTo)
    : FilePath(path.isAbsolute() ? path : relativeTo.appending(path)) {}

std::string FilePath::description() const {
  return repairedUTF8(path_);
}

std::vector<std::string> FilePath::components() const {
  const auto views = split(path_);
  return {views.begin(), views.end()};
}

std::string FilePath::lastComponent() const {
  return std::string(lastComponentOf(path_));
}

std::optional<std::string> FilePath::extension() const {
  const std::string_view component = lastComponentOf(path_);
  const std::size_t dot = extensionDot(component);
  if (dot == npos)
    return std::nullopt;
  return std::string(component.substr(dot + 1));
}

std::optional<std::string> FilePath::compoundExtension() const {
  const std::string_view component = lastComponentOf(path_);
  const std::size_t dot = extensionDot(component);
  if (dot == npos)
    return std::nullopt;
  const std::size_t dotBefore = extensionDot(component.substr(0, dot));
  return std::string(component.substr((dotBefore == npos ? dot : dotBefore) + 1));
}

std::string FilePath::stem() const {
  const std::string_view component = lastComponentOf(path_);
  return std::string(component.substr(0, extensionDot(component)));
}

FilePath FilePath::appending(std::string_view path) const {
  return appending(FilePath(path));
}

FilePath FilePath::appending(const FilePath& path) const {
  const std::string_view tail = std::string_view(path.path_).substr(path.isAbsolute() ? 1 : 0);
  if (tail.empty())
    return *this;
  FilePath result = *this;
  if (!isEmpty() && !isRoot())
    result.path_ += '/';
  result.path_ += tail;
  return result;
}

FilePath FilePath::removingLastComponent() const {
  FilePath result;
  const std::size_t slash = path_.rfind('/');
  if (slash == npos || isRoot())
    return result;
  result.path_ = path_.substr(0, std::max<std::size_t>(slash, 1)); // of "/a" the slash stays
  return result;
}

FilePathAncestors FilePath::ancestors() const {
  return FilePathAncestors(*this);
}

FilePath FilePath::standardized() const {
  return joined(standardizedComponents(path_));
}

bool FilePath::startsWith(const FilePath& prefix) const {
  if (!path_.starts_with(prefix.path_))
    return false;
  return prefix.isEmpty() || prefix.isRoot() || path_.size() == prefix.path_.size() ||
         path_[prefix.path_.size()] == '/';
}

std::optional<FilePath> FilePath::removingPrefix(const FilePath& prefix) const {
  if (!startsWith(prefix))
    return std::nullopt;
  if (prefix.isEmpty())
    return *this;
  std::string_view rest = std::string_view(path_).substr(prefix.path_.size());
  if (rest.starts_with('/'))
    rest.remove_prefix(1);
  return FilePath(rest);
}

std::optional<FilePath> FilePath::relativePathFrom(const FilePath& base) const {
  if (isAbsolute() != base.isAbsolute())
    return std::nullopt;
  const auto to = standardizedComponents(path_);
  const auto from = standardizedComponents(base.path_);
  const auto [toRest, fromRest] = std::ranges::mismatch(to, from);
  // What lies on the other side of ".." has no name here, so there is no way back down.
  if (std::find(fromRest, from.end(), "..") != from.end())
    return std::nullopt;
  std::vector<std::string_view> way(static_cast<std::size_t>(from.end() - fromRest), "..");
  way.insert(way.end(), toRest, to.end());
  return joined(way);
}

std::strong_ordering FilePath::operator<=>(const FilePath& other) const noexcept {
  // A slash sorts before every byte of a name: then comparing texts compares components.
  const auto [left, right] = std::ranges::mismatch(path_, other.path_);
  const auto rank = [](std::string::const_iterator at, const std::string& text) {
    if (at == text.end())
      return -2;
    return *at == '/' ? -1 : static_cast<int>(static_cast<unsigned char>(*at));
  };
  return rank(left, path_) <=> rank(right, other.path_);
}

std::ostream& operator<<(std::ostream& stream, const FilePath& path) {
  return stream << path.description();
}

} // namespace velmar
