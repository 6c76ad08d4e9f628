// Brings a file or standard input into a document's text, whatever bytes are in it.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Grammar/TreeUnits.h"
#include "host/Streams.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmar::host {

struct SourceText {
  /// How to call it in a sentence: the path in quotation marks, or "standard input".
  std::string name;
  /// The last component of the path; absent for standard input.
  std::optional<std::string> filename;
  std::unique_ptr<DocumentText> text;
  /// What had to be said about the bytes, a sentence each.
  std::vector<std::string> notes;
};

/// Reads the file at `path`, or standard input where `path` is "-".
///
/// Bytes that aren't UTF-8 are replaced by U+FFFD, and a note says how many; a byte order mark at
/// the start is left out. Throws Error where there is nothing to read, and for a text of more than
/// `limit` code units: as far as that shows beforehand, before it is read.
[[nodiscard]] SourceText readSource(const std::string& path, const Streams& streams,
                                    std::int64_t limit = largestParsableCount);

} // namespace velmar::host
