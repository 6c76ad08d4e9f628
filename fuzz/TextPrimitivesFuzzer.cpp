// The small things that read text from outside, on any bytes at all: the collator of streams,
// trimming and splitting, characters, indentation, versions and paths. Each is held to the laws
// that its header states.

#include "VelmarCore/Text/Indentation.h"
#include "VelmarCore/Text/TextStreamCollator.h"
#include "VelmarCore/Text/TextTrimming.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Version.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Unicode/Characters.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using namespace velmar;

namespace {

template <class TextView>
void checkCharacters(TextView text) {
  std::vector<std::int64_t> forwards = {0};
  while (forwards.back() < std::ssize(text)) {
    const std::int64_t next = nextCharacterBoundary(text, forwards.back());
    precondition(next > forwards.back() && next <= std::ssize(text), "A character has a length.");
    precondition(isCharacterBoundary(text, next), "A character ends at a boundary.");
    forwards.push_back(next);
  }
  std::vector<std::int64_t> backwards = {std::ssize(text)};
  while (backwards.back() > 0)
    backwards.push_back(previousCharacterBoundary(text, backwards.back()));
  precondition(
      std::ranges::equal(forwards.rbegin(), forwards.rend(), backwards.begin(), backwards.end()),
      "The characters are the same both ways.");
}

void checkIndentation(std::string_view text, std::int64_t tabWidth, std::int64_t most) {
  const Indentation all = indentationForTabWidth(text, tabWidth);
  precondition(all.range.length() == all.tabCount + all.spaceCount, "Blanks are tabs or spaces.");
  precondition(tabWidth < 1 || all.effectiveSpaces == all.tabCount * tabWidth + all.spaceCount,
               "The width is that of all the blanks.");
  const Indentation some = indentationForTabWidth(text, tabWidth, most);
  precondition(all.range.containsRange(some.range), "A limit measures no more.");
}

void checkTrimming(std::string_view text) {
  const std::string_view rest = trimmed(text);
  precondition(rest.empty() ||
                   (!isWhitespace(firstCharacter(rest)) && !isWhitespace(lastCharacter(rest))),
               "No white space is left at the ends.");
  precondition(trimmed(rest) == rest, "Trimming twice is trimming once.");
  for (const bool omitting : {false, true}) {
    const auto parts = splitTrimmed(text, ",", {.omittingEmptySubsequences = omitting});
    for (const std::string_view part : parts)
      precondition(!part.empty() && trimmed(part) == part, "Every part is trimmed and not empty.");
    const auto few =
        splitTrimmed(text, ",", {.maxSplits = 2, .omittingEmptySubsequences = omitting});
    precondition(few.size() <= 3, "Two splits make three parts at most.");
  }
}

/// Feeds `bytes` in pieces of the lengths that `cuts` gives, over and over.
void checkCollator(std::string_view bytes, std::string_view cuts) {
  TextStreamCollator collator;
  std::string delivered;
  for (std::size_t at = 0, piece = 0; at < bytes.size(); ++piece) {
    const auto length = cuts.empty()
                            ? bytes.size()
                            : std::size_t{static_cast<unsigned char>(cuts[piece % cuts.size()])};
    // A length of 0 is a piece too, but bytes must come some time.
    const std::string_view next = bytes.substr(at, piece % 7 == 0 ? length + 1 : length);
    if (const auto lines = collator.append(next)) {
      precondition(lines->ends_with('\n'), "A delivery ends a line.");
      delivered += *lines;
    }
    precondition(charactersOf(collator.buffer()).find('\n') == std::string_view::npos,
                 "No complete line is kept.");
    at += next.size();
  }
  delivered += collator.flush().value_or("");
  precondition(delivered == repairedUTF8(bytes), "Nothing is lost or torn by the cuts.");
  precondition(!collator.flush(), "Everything was delivered.");
}

void checkVersions(std::string_view left, std::string_view right) {
  const auto version = Version::parse(left);
  if (!version)
    return;
  const auto again = Version::parse(version->description());
  precondition(again && again->description() == version->description() && *again == *version,
               "A description reads as the same version.");
  const auto other = Version::parse(right);
  if (other) {
    precondition((*version <=> *other) == (0 <=> (*other <=> *version)),
                 "The order is the same from both sides.");
  }
}

void checkPaths(std::string_view left, std::string_view right) {
  const FilePath path(left);
  const FilePath other(right);
  precondition(FilePath(path.string()) == path, "A path's text makes the same path.");
  precondition((path == other) == ((path <=> other) == 0), "Order and equality agree.");

  FilePath built(path.isAbsolute() ? "/" : "");
  for (const std::string& component : path.components())
    built = built.appending(component);
  precondition(built == path, "The components make the path.");
  std::size_t ancestors = 0;
  for (const FilePath& ancestor : path.ancestors()) {
    precondition(path.startsWith(ancestor), "A path starts with what is above it.");
    ++ancestors;
  }
  precondition(ancestors == path.components().size(), "Each component has its ancestor.");
  if (const auto extension = path.extension())
    precondition(path.stem() + "." + *extension == path.lastComponent(), "A name has two halves.");

  const FilePath standard = path.standardized();
  precondition(standard.standardized() == standard, "Standardizing twice changes nothing more.");
  precondition(path.appending(other).startsWith(path), "What is appended lies beneath.");
  if (const auto rest = path.removingPrefix(other))
    precondition(FilePath(*rest, other) == path, "Prefix and rest make the path.");
  if (const auto way = path.relativePathFrom(other))
    precondition(FilePath(*way, other).standardized() == standard, "The way leads to the path.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t half = std::min(bytes.find('\n'), bytes.size());
  const std::string_view head = bytes.substr(0, half);
  const std::string_view tail = bytes.substr(std::min(half + 1, bytes.size()));

  checkCharacters(bytes);
  checkCharacters(std::u16string_view(utf16RepairingUTF8(bytes)));
  checkIndentation(bytes, size % 10, static_cast<std::int64_t>(half));
  checkTrimming(bytes);
  checkCollator(bytes, head);
  checkVersions(head, tail);
  checkPaths(head, tail);
  return 0;
}
