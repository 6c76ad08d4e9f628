// Version numbers in the manner of semantic versioning: 1.10.0 is later than 1.9.3, and 1.0.0-beta
// earlier than 1.0.0.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// A version of something, such as a grammar or an installed tool.
///
/// Versions order, and are equal, by precedence: by the three numbers, then a pre-release comes
/// before its release, and pre-releases compare identifier by identifier (numbers by value and
/// before words, words by their bytes, a shorter list before a longer one that starts alike). Build
/// metadata count for nothing there, not for equality either.
struct Version {
  std::int64_t major = 0;
  std::int64_t minor = 0;
  std::int64_t patch = 0;
  /// The identifiers behind "-", which are separated by dots: {"beta", "2"}. Empty for a release.
  std::vector<std::string> preRelease = {};
  /// The identifiers behind "+".
  std::vector<std::string> build = {};

  /// Reads "1.2.3-beta.2+linux". The minor number and the patch may be missing and count as 0:
  /// "1.10", "2-rc.1". One "v" may stand in front, as in the tags of releases. Else as strict as
  /// semantic versioning: no blanks, no signs, no leading zeros in numbers, identifiers of ASCII
  /// letters, digits and hyphens. Absent for anything else, and for numbers beyond 64 bits.
  [[nodiscard]] static std::optional<Version> parse(std::string_view text);

  /// All three numbers and what else there is: "1.10.0", "1.2.3-beta.2+linux".
  [[nodiscard]] std::string description() const;

  friend std::weak_ordering operator<=>(const Version& left, const Version& right);
  friend bool operator==(const Version& left, const Version& right) {
    return (left <=> right) == 0;
  }
};

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const Version& version);

} // namespace velmar

/// Agrees with equality: blind to build metadata.
template <>
struct std::hash<velmar::Version> {
  std::size_t operator()(const velmar::Version& version) const noexcept;
};
