// The pieces of a layer's own text that are neither comment nor string nor anything else that has a
// lexical class.
#pragma once

#include "VelmarParser/Document/Parse.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace velmar::detail {

/// Calls `visit(text, offset)` for each piece, in order: a run without a class, cut at the ends of
/// lines and where sublayers are. `text` is good for the call. O(log n) for each range of the
/// layer, then a step for each line and run.
template <class Visit>
void forEachPlainRun(const Parse::Layer& layer, Visit visit) {
  const Parse& parse = layer.parse();
  const LexicalSpans& spans = layer.lexicalSpans();
  const TextRangeSet ranges = layer.rangesExcludingSublayers();
  for (const TextRange& range : ranges.ranges()) {
    const auto runs = spans.runsIn(range);
    std::size_t index = 0;
    for (const auto& line : parse.linesIntersecting(range)) {
      const auto part = line.range().intersection(range);
      if (!part)
        continue;
      for (; index < runs.size(); ++index) {
        const TextRange run = runs.range(index);
        if (const auto piece = run.intersection(*part);
            piece && !piece->isEmpty() && !runs.value(index))
          visit(line.codeUnits().substr(
                    static_cast<std::size_t>(piece->lowerBound - line.range().lowerBound),
                    static_cast<std::size_t>(piece->length())),
                piece->lowerBound);
        if (run.upperBound > part->upperBound)
          break; // goes on in the next line
      }
    }
  }
}

} // namespace velmar::detail
