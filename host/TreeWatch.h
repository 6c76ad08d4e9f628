// Keeps a document parsed while its file changes on disk, and says what changed.
#pragma once

#include "host/FileWatch.h"
#include "host/OpenDocument.h"

#include <string_view>

namespace velmar::host {

/// One edit that makes one text of another.
struct Replacement {
  TextRange range;
  std::u16string_view text;
};

/// What stands between the common start and the common end of the two texts, in `after`, which it
/// borrows. It never starts or ends between the halves of a pair or between CR and LF: so the lines
/// become those of a fresh document. O(n).
[[nodiscard]] Replacement replacementBetween(std::u16string_view before, std::u16string_view after);

/// Makes `after` the document's text by one edit and prints a line about it: what was replaced, the
/// changed ranges and the time. Prints nothing for an equal text.
void updateAndReport(OpenDocument& document, std::u16string_view after, Streams& streams);

/// Reads the file at `path` again whenever `watch` tells of a change, until it is interrupted.
/// A file that can't be read meanwhile is complained of and waited for.
void watchDocument(OpenDocument& document, const std::string& path, FileWatch& watch,
                   Streams& streams);

} // namespace velmar::host
