#include "host/SourceText.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/Wording.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// No code unit of UTF-16 takes more bytes than this in UTF-8.
constexpr std::int64_t mostBytesPerUnit = 3;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// The number of UTF-16 code units that valid UTF-8 makes: one for each first byte, two where that
/// starts a sequence of four. Hardly more than repairing makes of invalid bytes.
std::int64_t utf16Count(std::string_view bytes) {
  std::int64_t count = 0;
  for (const char letter : bytes) {
    const auto byte = static_cast<unsigned char>(letter);
    count += ((byte & 0xC0) != 0x80 ? 1 : 0) + (byte >= 0xF0 ? 1 : 0);
  }
  return count;
}

void refuseBeyond(std::int64_t limit, std::int64_t count, const std::string& name) {
  if (count > limit)
    throw Error(
        fmt::format("Could not take in {}: a text can have {} code units at most.", name, limit));
}

/// The units of `bytes`, with what there is to say about them in `notes`.
std::u16string unitsOf(std::string_view bytes, const std::string& name,
                       std::vector<std::string>& notes) {
  std::size_t repairs = 0;
  std::u16string units = utf16RepairingUTF8(bytes, &repairs);
  if (repairs != 0)
    notes.push_back(fmt::format("Repaired {}: {} became U+FFFD.", name,
                                counted(static_cast<std::int64_t>(repairs),
                                        "piece that isn’t UTF-8", "pieces that aren’t UTF-8")));
  if (const auto zeros = std::ranges::count(bytes, '\0'); zeros != 0)
    notes.push_back(
        fmt::format("Found {} in {}; is it text?", counted(zeros, "NUL character"), name));
  return units;
}

} // namespace

SourceText readSource(const std::string& path, const Streams& streams, std::int64_t limit) {
  const bool isStandardInput = path == "-";
  const FilePath file(path);
  SourceText source{
      .name = isStandardInput ? "standard input" : fmt::format("“{}”", file.description()),
      .filename = isStandardInput ? std::nullopt : std::optional(file.lastComponent()),
      .text = std::make_unique<DocumentText>(),
      .notes = {},
  };
  std::u16string units;
  {
    // The bytes go before the lines come: of a large file there are never three copies at once.
    const std::int64_t sizeLimit = limit * mostBytesPerUnit;
    const Bytes bytes =
        isStandardInput ? streams.readInput(sizeLimit) : readFile(file, {.sizeLimit = sizeLimit});
    std::string_view content = charactersOf(bytes);
    if (content.starts_with(byteOrderMark))
      content.remove_prefix(byteOrderMark.size());
    refuseBeyond(limit, utf16Count(content), source.name);
    units = unitsOf(content, source.name, source.notes);
  }
  refuseBeyond(limit, static_cast<std::int64_t>(units.size()), source.name);
  source.text->replaceSubrange({0, 0}, units);
  return source;
}

} // namespace velmar::host
