#include "VelmarPlatform/Basics/Version.h"

#include <algorithm>
#include <charconv>
#include <ostream>
#include <system_error>

namespace velmar {

namespace {

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool isIdentifierCharacter(char character) {
  return isDigit(character) || (character >= 'a' && character <= 'z') ||
         (character >= 'A' && character <= 'Z') || character == '-';
}

bool isNumeric(std::string_view identifier) {
  return std::ranges::all_of(identifier, isDigit);
}

bool hasLeadingZero(std::string_view digits) {
  return digits.size() > 1 && digits.front() == '0';
}

/// Takes the number that `text` starts with; absent if there is none, or one that isn't written
/// plainly.
std::optional<std::int64_t> takeNumber(std::string_view& text) {
  const auto end = std::ranges::find_if_not(text, isDigit);
  const auto digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  if (digits.empty() || hasLeadingZero(digits))
    return std::nullopt;
  std::int64_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec != std::errc())
    return std::nullopt;
  text.remove_prefix(digits.size());
  return number;
}

bool take(std::string_view& text, char character) {
  if (!text.starts_with(character))
    return false;
  text.remove_prefix(1);
  return true;
}

enum class LeadingZeros { allowed, refused };

/// Takes one or more identifiers with dots between them; absent if one is empty or not well
/// written.
std::optional<std::vector<std::string>> takeIdentifiers(std::string_view& text,
                                                        LeadingZeros zeros) {
  std::vector<std::string> identifiers;
  do {
    const auto end = std::ranges::find_if_not(text, isIdentifierCharacter);
    const auto identifier = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    if (identifier.empty())
      return std::nullopt;
    if (zeros == LeadingZeros::refused && isNumeric(identifier) && hasLeadingZero(identifier))
      return std::nullopt;
    identifiers.emplace_back(identifier);
    text.remove_prefix(identifier.size());
  } while (take(text, '.'));
  return identifiers;
}

/// Numeric identifiers may have any number of digits, so their length decides first.
std::strong_ordering compareIdentifiers(std::string_view left, std::string_view right) {
  const bool leftIsNumeric = isNumeric(left);
  if (leftIsNumeric != isNumeric(right))
    return leftIsNumeric ? std::strong_ordering::less : std::strong_ordering::greater;
  if (leftIsNumeric && left.size() != right.size())
    return left.size() <=> right.size();
  return left.compare(right) <=> 0;
}

void appendIdentifiers(std::string& text, char mark, const std::vector<std::string>& identifiers) {
  for (const std::string& identifier : identifiers) {
    text += mark;
    text += identifier;
    mark = '.';
  }
}

} // namespace

std::optional<Version> Version::parse(std::string_view text) {
  Version version;
  take(text, 'v');
  const auto major = takeNumber(text);
  if (!major)
    return std::nullopt;
  version.major = *major;
  for (std::int64_t* part : {&version.minor, &version.patch}) {
    if (!take(text, '.'))
      break;
    const auto number = takeNumber(text);
    if (!number)
      return std::nullopt;
    *part = *number;
  }
  if (take(text, '-')) {
    auto identifiers = takeIdentifiers(text, LeadingZeros::refused);
    if (!identifiers)
      return std::nullopt;
    version.preRelease = *std::move(identifiers);
  }
  if (take(text, '+')) {
    auto identifiers = takeIdentifiers(text, LeadingZeros::allowed);
    if (!identifiers)
      return std::nullopt;
    version.build = *std::move(identifiers);
  }
  if (!text.empty())
    return std::nullopt;
  return version;
}

std::string Version::description() const {
  std::string text =
      std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
  appendIdentifiers(text, '-', preRelease);
  appendIdentifiers(text, '+', build);
  return text;
}

std::weak_ordering operator<=>(const Version& left, const Version& right) {
  if (const auto order = left.major <=> right.major; order != 0)
    return order;
  if (const auto order = left.minor <=> right.minor; order != 0)
    return order;
  if (const auto order = left.patch <=> right.patch; order != 0)
    return order;
  if (left.preRelease.empty() || right.preRelease.empty())
    return left.preRelease.empty() <=> right.preRelease.empty(); // the release is the greater
  return std::lexicographical_compare_three_way(left.preRelease.begin(), left.preRelease.end(),
                                                right.preRelease.begin(), right.preRelease.end(),
                                                compareIdentifiers);
}

std::ostream& operator<<(std::ostream& stream, const Version& version) {
  return stream << version.description();
}

} // namespace velmar

std::size_t std::hash<velmar::Version>::operator()(const velmar::Version& version) const noexcept {
  std::size_t hash = 0;
  const auto mix = [&hash](std::size_t part) {
    hash ^= part + 0x9e3779b97f4a7c15ULL + (hash << 6) + (hash >> 2);
  };
  for (const std::int64_t number : {version.major, version.minor, version.patch})
    mix(static_cast<std::size_t>(number));
  for (const std::string& identifier : version.preRelease)
    mix(std::hash<std::string>()(identifier));
  return hash;
}
