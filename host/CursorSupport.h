// What the commands on places of a cursor share.
#pragma once

#include "host/NamedPlace.h"
#include "host/OpenDocument.h"

#include <memory>
#include <string>
#include <vector>

namespace velmar::host {

/// The one file that `command` takes. Throws UsageError for none and for several.
[[nodiscard]] std::unique_ptr<OpenDocument>
onlyDocument(const Arguments& arguments, std::string_view command, Streams& streams);

/// A document and an offset in it.
struct DocumentPlace {
  std::unique_ptr<OpenDocument> document;
  std::int64_t offset = 0;

  /// The layers at the place, the innermost first.
  [[nodiscard]] std::vector<Parse::Layer> layers() const;
};

/// The one place that `command` takes.
[[nodiscard]] DocumentPlace onlyPlace(const Arguments& arguments, std::string_view command,
                                      Streams& streams);

/// The text of `range` in one line that can't act on a terminal: "↵" for the ends of lines.
[[nodiscard]] std::string shownText(const DocumentText& text, TextRange range);

} // namespace velmar::host
