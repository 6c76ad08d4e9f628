#include "VelmarParser/Structure/ScopingRegions.h"

#include "VelmarParser/Structure/CancellableAppend.h"
#include "VelmarParser/Structure/CancellableSort.h"
#include "VelmarParser/Structure/DisposedVector.h"

#include <map>

namespace velmar {

namespace {

using Kind = ScopingCandidate::PartialRange::Kind;

ScopingRegion startOf(ScopingCandidate&& candidate) {
  return {.range = candidate.span.range(),
          .level = candidate.level,
          .group = std::move(candidate.group),
          .byLine = candidate.byLine,
          .isIncomplete = candidate.isExtended,
          .attributes = std::move(candidate.attributes)};
}

/// The starts of one group that wait for an end.
///
/// Each lies on two stacks, one for all and one for those of its level, and is taken from the one
/// that is asked; the other finds it gone later. So an end costs no search.
class WaitingStarts {
public:
  void push(ScopingRegion start, CancellationTicks& ticks) {
    all_.push_back(starts_.size());
    byLevel_[start.level].push_back(starts_.size());
    append(std::optional(std::move(start)), starts_, ticks);
  }

  /// Takes out the last start of that level, or of any for level 0; absent if there is none.
  std::optional<ScopingRegion> take(std::int64_t level) {
    if (level == 0)
      return takeFrom(all_);
    const auto found = byLevel_.find(level);
    return found != byLevel_.end() ? takeFrom(found->second) : std::nullopt;
  }

  /// Those that are left and run on without an end.
  void moveExtendedTo(DisposedVector<ScopingRegion>& regions, CancellationTicks& ticks) {
    for (auto& start : starts_) {
      ticks.step();
      if (start && start->isIncomplete)
        append(*std::move(start), regions, ticks);
    }
  }

private:
  std::optional<ScopingRegion> takeFrom(std::vector<std::size_t>& stack) {
    while (!stack.empty()) {
      const std::size_t index = stack.back();
      stack.pop_back();
      if (starts_[index])
        return std::exchange(starts_[index], std::nullopt);
    }
    return std::nullopt;
  }

  DisposedVector<std::optional<ScopingRegion>> starts_; // in order of arrival
  std::vector<std::size_t> all_;
  std::map<std::int64_t, std::vector<std::size_t>> byLevel_;
};

/// One walk over the candidates of a layer.
class Pairing {
public:
  Pairing(const DocumentText& text, ScopingRegionsOptions options)
      : text_(text), options_(options), ticks_(options.cancel) {}

  std::vector<ScopingRegion> regionsFor(std::vector<ScopingCandidate> all) && {
    using Candidate = ScopingCandidate;
    DisposedVector<Candidate> candidates(std::move(all));
    sortInOrder(
        candidates, [](const Candidate& candidate) { return candidate.span.range(); },
        [](const Candidate& candidate) { return candidate.span.sortPriority(); }, ticks_);
    regions_.reserve(candidates.size());
    for (ScopingCandidate& candidate : candidates) {
      ticks_.step();
      add(std::move(candidate));
    }
    for (auto& [group, starts] : groups_)
      starts.moveExtendedTo(regions_, ticks_);
    sortInOrder(regions_, &ScopingRegion::range, ticks_);
    if (hasExtended_)
      extend();
    return std::move(regions_).take();
  }

private:
  void add(ScopingCandidate&& candidate) {
    hasExtended_ = hasExtended_ || candidate.isExtended;
    switch (candidate.span.kind()) {
    case Kind::range:
      append(ScopingRegion{.range = candidate.span.range(),
                           .level = candidate.level,
                           .attributes = std::move(candidate.attributes)},
             regions_, ticks_);
      return;
    case Kind::start:
      if (candidate.group)
        groups_[*candidate.group].push(startOf(std::move(candidate)), ticks_);
      else if (candidate.isExtended)
        append(startOf(std::move(candidate)), regions_, ticks_);
      else
        pending_ = startOf(std::move(candidate));
      return;
    case Kind::end:
      if (auto start = startFor(candidate))
        close(*std::move(start), candidate);
      return;
    }
  }

  std::optional<ScopingRegion> startFor(const ScopingCandidate& end) {
    if (!end.group)
      return std::exchange(pending_, std::nullopt);
    const auto starts = groups_.find(*end.group);
    return starts != groups_.end() ? starts->second.take(end.level) : std::nullopt;
  }

  void close(ScopingRegion&& start, const ScopingCandidate& end) {
    start.byLine = start.byLine || end.byLine;
    const auto range = rangeOf(start.range.lowerBound, end.span.range().lowerBound, start.byLine);
    if (!range)
      return;
    start.range = *range;
    start.isIncomplete = false;
    start.attributes.add(end.attributes);
    append(std::move(start), regions_, ticks_);
  }

  /// Gives the regions that have no end theirs, and drops those of which nothing is left.
  void extend() {
    const std::vector<std::size_t> next = nextOfLevel();
    DisposedVector<ScopingRegion> extended;
    extended.reserve(regions_.size());
    std::vector<TextRange> enclosing;
    for (std::size_t index = 0; index < regions_.size(); ++index) {
      ticks_.step();
      ScopingRegion& region = regions_[index];
      while (!enclosing.empty() && !enclosing.back().contains(region.range.lowerBound))
        enclosing.pop_back();
      if (region.isIncomplete) {
        const std::int64_t around = enclosing.empty() ? text_.count() : enclosing.back().upperBound;
        const std::int64_t start = region.range.lowerBound;
        const auto range =
            rangeOf(start, endInFrontOf(next[index], start).value_or(around), region.byLine);
        if (!range)
          continue;
        region.range = *range; // but it encloses nothing here
        region.isIncomplete = false;
      } else {
        enclosing.push_back(region.range);
      }
      extended.push_back(std::move(region));
    }
    regions_.swap(extended);
  }

  /// For each region that has a level the next one behind it whose level isn't deeper; the number
  /// of regions where there is none.
  std::vector<std::size_t> nextOfLevel() {
    std::vector<std::size_t> next(regions_.size(), regions_.size());
    std::vector<std::size_t> ends; // what can end others, ever deeper from the bottom up
    for (std::size_t index = regions_.size(); index-- > 0;) {
      ticks_.step();
      if (regions_[index].level <= 0)
        continue;
      while (!ends.empty() && regions_[ends.back()].level > regions_[index].level)
        ends.pop_back();
      if (!ends.empty())
        next[index] = ends.back();
      ends.push_back(index);
    }
    return next;
  }

  /// The end of the last line in front of the region at `index`, or of the one before if that is
  /// blank; absent if there is no such region, or it ends nothing that starts at `start`.
  std::optional<std::int64_t> endInFrontOf(std::size_t index, std::int64_t start) const {
    if (index == regions_.size())
      return std::nullopt;
    const auto lineOf = [&](std::int64_t offset) {
      return text_.lineBoundariesFor(offset, LineAffinity::downstream);
    };
    const std::int64_t lineStart = lineOf(regions_[index].range.lowerBound).start;
    if (lineStart < 1)
      return std::nullopt;
    auto line = lineOf(lineStart - 1);
    if (line.start == line.contentsEnd && line.start > 0)
      line = lineOf(line.start - 1);
    return line.contentsEnd > start ? std::optional(line.contentsEnd) : std::nullopt;
  }

  std::optional<TextRange> rangeOf(std::int64_t lower, std::int64_t upper, bool byLine) const {
    return rangeForScopingRegion(text_, lower, upper,
                                 {.byLine = byLine, .enforceMultiline = options_.enforceMultiline});
  }

  const DocumentText& text_;
  ScopingRegionsOptions options_;
  CancellationTicks ticks_;
  std::optional<ScopingRegion> pending_; // of those without a group, only the last can be ended
  std::map<std::string, WaitingStarts, std::less<>> groups_;
  DisposedVector<ScopingRegion> regions_;
  bool hasExtended_ = false; // at first; an end may have come since
};

} // namespace

std::vector<ScopingRegion> scopingRegionsFor(const DocumentText& text,
                                             std::vector<ScopingCandidate> candidates,
                                             ScopingRegionsOptions options) {
  return Pairing(text, options).regionsFor(std::move(candidates));
}

std::optional<ScopingRegion> scopingRegionFor(const DocumentText& text, TextRange range,
                                              ScopingOptions options) {
  const auto found = rangeForScopingRegion(text, range.lowerBound, range.upperBound, options);
  return found ? std::optional(ScopingRegion{.range = *found}) : std::nullopt;
}

std::vector<ScopingRegion> scopingRegionsIn(std::optional<ParseNode> node, TextRange range,
                                            const DocumentText& text,
                                            const std::shared_ptr<const Query>& query,
                                            const ScopingCandidateBuilder& candidateBuilder,
                                            RegularExpressionPass* pass) {
  std::vector<ScopingCandidate> candidates;
  for (const QueryMatches::Element& match : QueryMatches(query, node, range, text, {}, pass)) {
    auto candidate = scopingCandidateFor(match, text, false);
    if (!candidate)
      continue;
    if (candidateBuilder)
      candidateBuilder(*candidate, match);
    candidates.push_back(*std::move(candidate));
  }
  return scopingRegionsFor(text, std::move(candidates));
}

std::vector<ScopingRegion> scopingRegions(const Parse::Layer& layer,
                                          const std::shared_ptr<const Query>& query,
                                          std::optional<TextRange> range,
                                          const ScopingCandidateBuilder& candidateBuilder,
                                          RegularExpressionPass* pass) {
  const DocumentText& text = layer.parse().text();
  return scopingRegionsIn(layer.root(), range.value_or(TextRange(0, text.count())), text, query,
                          candidateBuilder, pass);
}

} // namespace velmar
