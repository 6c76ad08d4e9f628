// Finding the languages inside a layer after its parse, and keeping, making and dropping sublayers
// for them.

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/TreeUnits.h"
#include "VelmarParser/Query/QueryMatches.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <map>
#include <unordered_set>

namespace velmar {

using detail::InjectionPoint;
using detail::LayerEdit;
using detail::LayerImpl;
using detail::treeRange;

std::span<const std::string_view> rawValuesOf(InjectionCapture) {
  static constexpr std::string_view texts[] = {
      "injection.language",      "injection.content",
      "injection.content.start", "injection.content.start.before",
      "injection.content.end",   "injection.content.end.after"};
  return texts;
}

std::span<const std::string_view> rawValuesOf(InjectionMetadata) {
  static constexpr std::string_view texts[] = {"injection.language", "injection.self",
                                               "injection.parent", "injection.combined",
                                               "injection.reset"};
  return texts;
}

namespace {

/// A document is nested no deeper than this: layers at this depth have no sublayers.
constexpr std::int64_t deepestLayer = 64;

using LayerPtr = std::shared_ptr<LayerImpl>;
using Metadata = KeyedQueryMatchMetadata<InjectionMetadata, QueryMatchMetadata>;

/// What the captures of one match say.
struct InjectionCaptures {
  std::optional<TextRange> languageNode;
  std::vector<TextRange> contentNodes;
  std::optional<std::int64_t> start;
  std::optional<std::int64_t> end;

  explicit InjectionCaptures(const Query::Match& match) {
    for (const auto& capture : match.capturesNamed<InjectionCapture>())
      add(capture.name, capture.node().utf16Range());
  }

  /// From the start to the end if both are there and in order; else what content nodes there are.
  [[nodiscard]] TextRangeSet content() const {
    if (start && end && *start < *end)
      return TextRangeSet({*start, *end});
    return TextRangeSet(contentNodes);
  }

private:
  void add(InjectionCapture kind, TextRange node) {
    const auto startAt = [&](std::int64_t offset) {
      start = std::max(start.value_or(offset), offset);
    };
    const auto endAt = [&](std::int64_t offset) { end = std::min(end.value_or(offset), offset); };
    switch (kind) {
    case InjectionCapture::language:
      if (!languageNode)
        languageNode = node;
      break;
    case InjectionCapture::content:
      contentNodes.push_back(node);
      break;
    case InjectionCapture::contentStart:
      startAt(node.upperBound);
      break;
    case InjectionCapture::contentStartBefore:
      startAt(node.lowerBound);
      break;
    case InjectionCapture::contentEnd:
      endAt(node.lowerBound);
      break;
    case InjectionCapture::contentEndAfter:
      endAt(node.upperBound);
      break;
    }
  }
};

/// The language that a match injects, as far as its properties say, or the name of one that is
/// still to be resolved.
struct InjectedLanguage {
  std::optional<ParseConfiguration> configuration;
  std::optional<std::string> name;

  InjectedLanguage(const Metadata& metadata, const LayerImpl& layer) {
    if (const auto* const value = metadata.valueFor(InjectionMetadata::language)) {
      name = value->text();
    } else if (metadata.isSet(InjectionMetadata::languageSelf)) {
      configuration = layer.configuration;
    } else if (metadata.isSet(InjectionMetadata::languageParent)) {
      if (const LayerPtr parent = layer.parent.lock())
        configuration = parent->configuration;
    }
  }
};

/// Moves sublayers along with an edit, before it is known which of them stay.
class MovedSublayers {
public:
  explicit MovedSublayers(const LayerEdit& edit) : edit_(edit) {}

  /// What `layer` covered, in the new text, with the edit where it touched one of its ranges.
  TextRangeSet move(LayerImpl& layer) const {
    TextRangeSet affected;
    TextRangeSet untouched;
    for (const TextRange& range : layer.ranges.ranges()) {
      if (const auto moved = movedUntouched(range)) {
        untouched.insertContentsOf(*moved);
        affected.insertContentsOf(*moved);
      } else {
        affected.insertContentsOf(
            {std::min(range.lowerBound, edit_.range.lowerBound),
             std::max(range.upperBound, edit_.oldUpperBound()) + edit_.changeInLength});
      }
    }
    layer.ranges = std::move(untouched);

    TextRangeSet names;
    for (const TextRange& range : layer.languageNameRanges.ranges()) {
      if (const auto moved = movedUntouched(range))
        names.insertContentsOf(*moved);
    }
    layer.languageNameRanges = std::move(names);
    return affected;
  }

private:
  /// Where a range lies now; absent if the edit touched it.
  [[nodiscard]] std::optional<TextRange> movedUntouched(TextRange range) const {
    if (range.upperBound <= edit_.range.lowerBound)
      return range;
    if (range.lowerBound >= edit_.oldUpperBound())
      return TextRange(range.lowerBound + edit_.changeInLength,
                       range.upperBound + edit_.changeInLength);
    return std::nullopt;
  }

  const LayerEdit& edit_;
};

/// Searches the old sublayers for those that can be kept, forward only: points and sublayers are
/// both in text order.
class KeptSublayers {
public:
  explicit KeptSublayers(std::span<const LayerPtr> old) : old_(old) {}

  /// The old sublayer that stands where `point` is, emptied; null if there is none.
  LayerPtr take(const InjectionPoint& point) {
    std::size_t index = cursor_;
    for (; index < old_.size(); ++index) {
      LayerImpl& layer = *old_[index];
      if (layer.ranges.isEmpty())
        continue;
      const TextRange first = layer.ranges.ranges().front();
      if (fits(layer, first, point)) {
        if (layer.configuration.id() != point.configuration.id())
          continue;
        cursor_ = index;
        layer.ranges = {};
        layer.includedRanges.clear();
        layer.languageNameRanges = {};
        return old_[index];
      }
      if (point.range.containsRange(first) || first.lowerBound >= point.range.upperBound)
        break;
    }
    if (index > cursor_)
      cursor_ = index - 1; // the last one passed: another language at the same place may want it
    return nullptr;
  }

private:
  static bool fits(const LayerImpl& layer, TextRange first, const InjectionPoint& point) {
    if (point.range != first)
      return false;
    const auto names = layer.languageNameRanges.ranges();
    return names.empty() ? !point.languageNameRange : point.languageNameRange == names.front();
  }

  std::span<const LayerPtr> old_;
  std::size_t cursor_ = 0;
};

} // namespace

TSRange detail::treeRange(TextRange range, const DocumentText& text) {
  return {.start_point = treePoint(text.positionOf(range.lowerBound)),
          .end_point = treePoint(text.positionOf(range.upperBound)),
          .start_byte = treeByte(range.lowerBound).value,
          .end_byte = treeByte(range.upperBound).value};
}

std::vector<InjectionPoint>
Parse::injectionPoints(const LayerImpl& layer, RegularExpressionPass& pass,
                       const std::shared_ptr<const Query>& query) const {
  std::vector<InjectionPoint> points;
  const ParseNode root = layer.rootNode();
  const QueryMatches matches(query, root, root.utf16Range(), lines_, {}, &pass);
  for (const auto& match : matches.withMetadataKeyedBy<InjectionMetadata>()) {
    const InjectionCaptures captures(match.base);
    TextRangeSet content = captures.content();
    content.formIntersection(layer.ranges);
    if (content.isEmpty())
      continue;

    InjectedLanguage language(match.metadata, layer);
    std::optional<TextRange> nameRange;
    if (!language.name && captures.languageNode) {
      language.name = utf8RepairingUTF16(lines_.substringFor(*captures.languageNode));
      nameRange = captures.languageNode;
    }
    if (!language.configuration && language.name) {
      language.configuration = withErrorHandling(
          [] { return "injections"; }, layer.configuration,
          [&] { return layer.configuration.injectionConfigurationMatching(*language.name); });
    }
    if (!language.configuration)
      continue;

    const auto hull = [](const TextRangeSet& set) {
      return TextRange(set.ranges().front().lowerBound, set.ranges().back().upperBound);
    };
    // A language that injects itself over all of itself would never end.
    if (language.configuration->id() == layer.configuration.id() &&
        hull(content) == hull(layer.ranges))
      continue;
    const TextRange range = hull(content);
    points.push_back({.range = range,
                      .contentRanges = std::move(content),
                      .languageNameRange = nameRange,
                      .configuration = std::move(*language.configuration),
                      .isCombined = match.metadata.isSet(InjectionMetadata::combined),
                      .resetsHighlights = match.metadata.isSet(InjectionMetadata::reset)});
  }
  return points;
}

TextRangeSet Parse::parseInjections(const LayerPtr& layer, const LayerEdit& edit) {
  const auto query = queryFor(ParseQueryCategory::injections, layer->configuration);
  if (!query || !layer->tree || layer->depth >= deepestLayer) {
    layer->sublayers.clear();
    return {};
  }

  std::vector<InjectionPoint> points = injectionPoints(*layer, *edit.pass, query);
  sortBy(points, &InjectionPoint::range);

  const std::vector<LayerPtr> old = std::move(layer->sublayers);
  std::vector<TextRangeSet> affected;
  affected.reserve(old.size());
  for (const LayerPtr& sublayer : old)
    affected.push_back(MovedSublayers(edit).move(*sublayer));

  layer->sublayers = sublayersAt(points, old, layer);

  // What a dropped sublayer covered gets painted again.
  TextRangeSet changed;
  const std::unordered_set<const LayerImpl*> kept = [&] {
    std::unordered_set<const LayerImpl*> set;
    for (const LayerPtr& sublayer : layer->sublayers)
      set.insert(sublayer.get());
    return set;
  }();
  for (std::size_t index = 0; index < old.size(); ++index) {
    if (!kept.contains(old[index].get()))
      changed.formUnion(affected[index]);
  }
  for (const LayerPtr& sublayer : layer->sublayers) {
    const TextRangeSet below = reparse(sublayer, edit);
    edit.enter(EditPhase::injections);
    changed.formUnion(below);
  }
  return changed;
}

// One sublayer for each point, or for all points of a language that asks to be combined, in the
// order of the points.
std::vector<Parse::LayerPtr> Parse::sublayersAt(std::span<const InjectionPoint> points,
                                                std::span<const LayerPtr> old,
                                                const LayerPtr& layer) {
  std::vector<LayerPtr> sublayers;
  std::map<LanguageID, LayerPtr> combined;
  KeptSublayers keptSublayers(old);
  for (const InjectionPoint& point : points) {
    LayerPtr sublayer;
    if (point.isCombined) {
      if (const auto found = combined.find(point.configuration.id()); found != combined.end())
        sublayer = found->second;
    }
    if (!sublayer) {
      sublayer = keptSublayers.take(point);
      if (!sublayer) {
        sublayer = withErrorHandling(
            [] { return "injections"; }, layer->configuration,
            [&] { return std::make_shared<LayerImpl>(point.configuration, layer, isCancelled_); });
      }
      if (!sublayer)
        continue;
      sublayer->isCombined = point.isCombined;
      sublayer->resetsHighlights = point.resetsHighlights;
      sublayers.push_back(sublayer);
      if (point.isCombined)
        combined.emplace(point.configuration.id(), sublayer);
    }
    sublayer->ranges.formUnion(point.contentRanges);
    for (const TextRange& range : point.contentRanges.ranges())
      sublayer->includedRanges.push_back(treeRange(range, lines_));
    if (point.languageNameRange)
      sublayer->languageNameRanges.insertContentsOf(*point.languageNameRange);
  }
  return sublayers;
}

} // namespace velmar
