// What there is to paint, for programs: the layers of a document with their spans, before merging.
#pragma once

#include "host/OpenDocument.h"

namespace velmar::host {

/// Writes an object with the document's language, the range asked for and all layers that have text
/// in it, breadth first, each with the number of its parent. Offsets are UTF-16 code units.
void writePictureAsJSON(const OpenDocument& document, TextRange range, Output& output);

} // namespace velmar::host
