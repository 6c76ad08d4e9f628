// All that the layers of a document know of one place, for the author of a language pack.
#pragma once

#include "host/OpenDocument.h"

#include <cstdint>

namespace velmar::host {

/// Writes, for each layer at `offset`, from the root: the language and its ranges, the path of
/// nodes with their fields, and every capture of the highlights and injections queries that covers
/// the place: selector, priority, file and line of the pattern, and its predicates. Captures stand
/// in the order in which they are painted, the last one on top. At the text's end there are no
/// nodes.
void writePlaceReport(const OpenDocument& document, std::int64_t offset, Output& output);

} // namespace velmar::host
