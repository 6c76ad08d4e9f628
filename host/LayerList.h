// The language layers of a document as lines for people.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "host/Streams.h"

#include <string>

namespace velmar::host {

/// "html", or "javascript, combined, resets colours".
[[nodiscard]] std::string layerTitle(const Parse::Layer& layer);

/// "2:9-4:1", lines and columns from 1, the end behind the last unit.
[[nodiscard]] std::string placeOf(const DocumentText& text, TextRange range);

/// The first few ranges of a set as places, and how many more there are.
[[nodiscard]] std::string placesOf(const DocumentText& text, const TextRangeSet& set);

/// One line for each layer that has text in `range`, parents before their sublayers, these moved to
/// the right.
void writeLayers(const Parse& parse, TextRange range, Output& output);

} // namespace velmar::host
