#include "VelmarParser/Structure/ScopingCandidate.h"

#include <algorithm>

namespace velmar {

namespace {

using PartialRange = ScopingCandidate::PartialRange;

/// The positions that the captures of one match give.
struct Positions {
  std::optional<TextRange> whole;
  std::optional<std::int64_t> start;
  std::optional<std::int64_t> end;

  /// The narrowest range wins.
  void addStart(std::int64_t offset) { start = std::max(offset, start.value_or(offset)); }
  void addEnd(std::int64_t offset) { end = std::min(offset, end.value_or(offset)); }
};

Positions positionsIn(const QueryMatches::Element& match, const DocumentText& text,
                      ScopingOptions options) {
  Positions positions;
  for (const auto capture : match.capturesNamed<ScopingCapture>()) {
    const TextRange range = capture.node().utf16Range();
    switch (capture.name) {
    case ScopingCapture::subtree:
      if (const auto whole =
              rangeForScopingRegion(text, range.lowerBound, range.upperBound, options))
        positions.whole = whole;
      break;
    case ScopingCapture::start:
      positions.addStart(range.upperBound);
      break;
    case ScopingCapture::startBefore:
      positions.addStart(range.lowerBound);
      break;
    case ScopingCapture::end:
      positions.addEnd(range.lowerBound);
      break;
    case ScopingCapture::endAfter:
      positions.addEnd(range.upperBound);
      break;
    }
  }
  return positions;
}

std::optional<PartialRange> spanOf(const Positions& positions, const DocumentText& text,
                                   ScopingOptions options) {
  if (positions.whole)
    return PartialRange::whole(*positions.whole);
  if (positions.start && positions.end) {
    const auto range = rangeForScopingRegion(text, *positions.start, *positions.end, options);
    return range ? std::optional(PartialRange::whole(*range)) : std::nullopt;
  }
  if (positions.start)
    return PartialRange::startingAt(*positions.start);
  if (positions.end)
    return PartialRange::endingAt(*positions.end);
  return std::nullopt;
}

} // namespace

std::optional<TextRange> rangeForScopingRegion(const DocumentText& text, std::int64_t lower,
                                               std::int64_t upper, ScopingOptions options) {
  const auto lineOf = [&](std::int64_t offset) {
    return text.lineBoundariesFor(offset, LineAffinity::downstream);
  };
  if (options.byLine) {
    if (lower < text.count())
      lower = lineOf(lower).contentsEnd;
    if (upper < text.count()) {
      // Text behind the end keeps its line in sight, and the break in front of that line too.
      const auto line = lineOf(upper);
      if (upper < line.contentsEnd)
        upper = line.start > 0 ? lineOf(line.start - 1).contentsEnd : line.start;
    }
  }
  if (lower >= upper)
    return std::nullopt;
  if (options.enforceMultiline && lineOf(lower).start == lineOf(upper).start)
    return std::nullopt;
  return TextRange(lower, upper);
}

std::optional<ScopingCandidate> scopingCandidateFor(const QueryMatches::Element& match,
                                                    const DocumentText& text,
                                                    bool enforceMultiline) {
  const auto metadata = match.metadata.keyedBy<ScopeMetadata>();
  const ScopingOptions options{.byLine = metadata.isSet(ScopeMetadata::byLine),
                               .enforceMultiline = enforceMultiline};
  const auto span = spanOf(positionsIn(match, text, options), text, options);
  if (!span)
    return std::nullopt;

  ScopingCandidate candidate;
  candidate.span = *span;
  candidate.byLine = options.byLine;
  candidate.isExtended =
      span->kind() == PartialRange::Kind::start && metadata.isSet(ScopeMetadata::extend);
  if (const auto* const group = metadata.valueFor(ScopeMetadata::group))
    candidate.group = group->text();
  else
    candidate.groupByName = metadata.isSet(ScopeMetadata::groupByName);
  if (const auto* const level = metadata.valueFor(ScopeMetadata::level))
    candidate.level = level->number();
  return candidate;
}

} // namespace velmar
