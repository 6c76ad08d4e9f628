// How a set of ranges stands in a document: an array of its ranges, each an array of its two
// bounds.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarPlatform/Coding/Coder.h"

#include <vector>

namespace velmar {

/// Stored ranges may come in any order, touch and overlap; empty ones are dropped.
template <class T>
struct Coder<RangeSet<T>> {
  static bool decode(Decoder from, RangeSet<T>& into) {
    std::vector<Range<T>> ranges;
    if (!from.read(ranges))
      return false;
    into = RangeSet<T>(ranges);
    return true;
  }
  static void encode(const RangeSet<T>& value, Encoder& into) {
    into.array([&](ArrayEncoder& array) {
      for (const Range<T>& range : value.ranges())
        array.write(range);
    });
  }
};

} // namespace velmar
