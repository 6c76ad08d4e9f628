// What the injections query of a layer says about the languages inside it.

#include "VelmarParser/Document/ChangedRegion.h"
#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/TreeUnits.h"
#include "VelmarParser/Query/QueryMatches.h"
#include "VelmarPlatform/Unicode/UTF.h"

namespace velmar {

using detail::AskedRange;
using detail::ChangedMatches;
using detail::InjectionPoint;
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

} // namespace

TSRange detail::treeRange(TextRange range, const DocumentText& text) {
  return {.start_point = treePoint(text.positionOf(range.lowerBound)),
          .end_point = treePoint(text.positionOf(range.upperBound)),
          .start_byte = treeByte(range.lowerBound).value,
          .end_byte = treeByte(range.upperBound).value};
}

bool Parse::findInjections(const LayerImpl& layer, RegularExpressionPass& pass,
                           const std::shared_ptr<const Query>& query, const AskedRange& asked,
                           ChangedMatches changed, std::vector<InjectionPoint>& points) const {
  for (const ParseNode& root : asked.roots) {
    const QueryMatches matches =
        QueryMatches(query, root, asked.searched, lines_, {}, &pass).seenBy(changed);
    auto found = matches.begin();
    for (; found != matches.end(); ++found) {
      const Metadata metadata(found->metadata);
      const InjectionCaptures captures(found->base);
      TextRangeSet content = captures.content();
      content.formIntersection(layer.ranges);
      const auto hull = [](const TextRangeSet& set) {
        return TextRange(set.ranges().front().lowerBound, set.ranges().back().upperBound);
      };
      if (content.isEmpty() || !changed.matters(hull(content), asked.range))
        continue;

      InjectedLanguage language(metadata, layer);
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

      // A language that injects itself over all of itself would never end.
      if (language.configuration->id() == layer.configuration.id() &&
          hull(content) == hull(layer.ranges))
        continue;
      const TextRange whole = hull(content);
      points.push_back({.range = whole,
                        .contentRanges = std::move(content),
                        .languageNameRange = nameRange,
                        .configuration = std::move(*language.configuration),
                        .isCombined = metadata.isSet(InjectionMetadata::combined),
                        .resetsHighlights = metadata.isSet(InjectionMetadata::reset)});
    }
    if (found.hasDroppedMatches())
      return false;
  }
  return true;
}

} // namespace velmar
