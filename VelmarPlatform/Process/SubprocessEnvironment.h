// The environment variables of a child: all of them, not additions to those of this process.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"

#include <concepts>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

/// Names and values. A plain value.
class SubprocessEnvironment {
public:
  using Values = std::map<std::string, std::string, std::less<>>;

  /// Where programs are looked for if there is no `PATH`.
  static constexpr std::string_view standardPath = "/usr/bin:/bin:/usr/sbin:/sbin";

  SubprocessEnvironment() = default;
  explicit SubprocessEnvironment(Values values) : values_(std::move(values)) {}
  SubprocessEnvironment(std::initializer_list<Values::value_type> values) : values_(values) {}
  /// What this process has now. Nobody may change that at the same time.
  [[nodiscard]] static SubprocessEnvironment inherited();

  [[nodiscard]] const Values& values() const noexcept { return values_; }
  [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
  void setValue(std::string_view name, std::string value);
  void removeValue(std::string_view name);
  /// Replaces one variable by what `body` makes of its old value, which may be absent.
  template <std::invocable<std::optional<std::string>> Body>
  void transform(std::string_view name, Body body) {
    setValue(name, body(value(name)));
  }
  /// Sets all of `values`, over what is there.
  void overlay(const Values& values);

  /// Put `paths`, in their order, in front of those in `PATH`, or behind them. A missing `PATH`
  /// counts as the standard one.
  void prependPaths(std::span<const FilePath> paths);
  void appendPaths(std::span<const FilePath> paths);
  /// The same in a copy.
  [[nodiscard]] SubprocessEnvironment prependingPaths(std::span<const FilePath> paths) const;
  [[nodiscard]] SubprocessEnvironment appendingPaths(std::span<const FilePath> paths) const;
  /// The folders in `PATH`, without empty ones; those of the standard one if there is none.
  [[nodiscard]] std::vector<FilePath> paths() const;

  bool operator==(const SubprocessEnvironment&) const = default;

private:
  Values values_;
};

/// The folders of a search path: its pieces between colons, without empty ones.
[[nodiscard]] std::vector<FilePath> splitSearchPath(std::string_view searchPath);

} // namespace velmar
