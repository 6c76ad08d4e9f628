#include "VelmarParser/Structure/Structure.h"

#include "VelmarCore/Text/TextTrimming.h"
#include "VelmarParser/Structure/CancellableAppend.h"
#include "VelmarParser/Structure/CancellableSort.h"
#include "VelmarParser/Structure/CommentReader.h"
#include "VelmarParser/Structure/DisposedVector.h"
#include "VelmarParser/Structure/ScopingRegions.h"
#include "VelmarParser/Structure/StructureKeys.h"
#include "VelmarParser/Structure/SymbolReader.h"

#include <algorithm>
#include <iterator>

namespace velmar {

using namespace StructureAttributes;

namespace {

using StructureQueries = std::shared_ptr<const QuerySet<ParseStructureKey>>;

struct Candidates {
  DisposedVector<ScopingCandidate> folds;
  DisposedVector<ScopingCandidate> symbols;
};

/// A layer's Structure in the making.
struct Found {
  DisposedVector<CodeSymbol> symbols;
  DisposedVector<CodeFoldingRegion> folds;
};

std::optional<ScopingCandidate> foldCandidateFor(const QueryMatches::Element& match,
                                                 const DocumentText& text) {
  auto candidate = scopingCandidateFor(match, text, true);
  if (!candidate)
    return std::nullopt;
  const auto* const role = match.metadata.keyedBy<FoldMetadata>().valueFor(FoldMetadata::role);
  candidate->attributes.set<FoldRole>(role ? std::optional(CodeFoldingRegion::Role(role->text()))
                                           : std::nullopt);
  return candidate;
}

/// A name as one line. Most are one already, and plain.
std::string inOneLine(const std::string& name) {
  const auto isPlain = [](char letter) { return letter >= ' ' && letter <= '~'; };
  if (std::ranges::all_of(name, isPlain))
    return std::string(trimmed(name));
  std::string line;
  for (const std::string_view piece :
       splitTrimmed(name, [](std::string_view character) { return isNewline(character); })) {
    line += line.empty() ? "" : " ";
    line += piece;
  }
  return line;
}

/// Absent for a region that lacks a kind or a name.
std::optional<CodeSymbol> symbolOf(const ScopingRegion& region, const LanguageID& language) {
  const ScopingAttributes& attributes = region.attributes;
  const bool isSpecial = attributes.valueFor<SymbolSpecialKind>();
  const auto* const kind = attributes.valueFor<SymbolKind>();
  const auto* const name = attributes.valueFor<SymbolName>();
  const auto* const nameRange = attributes.valueFor<SymbolNameRange>();
  if (!(isSpecial || (kind && *kind)) || !name || !nameRange)
    return std::nullopt;

  CodeSymbol symbol;
  symbol.kind = isSpecial ? CodeSymbolKind::function : **kind;
  if (isSpecial)
    symbol.traits |= CodeSymbol::Traits::functionOrMethod;
  symbol.range = region.range;
  symbol.name = inOneLine(*name);
  symbol.nameRange = *nameRange;
  symbol.languageID = language;
  if (const auto* const displayName = attributes.valueFor<SymbolDisplayName>())
    symbol.displayName = *displayName;
  if (const auto* const arguments = attributes.valueFor<SymbolArguments>())
    symbol.arguments = *arguments;
  if (const auto* const autoclose = attributes.valueFor<SymbolAutoclose>())
    symbol.autoclose = *autoclose;
  symbol.level = region.level;
  return symbol;
}

/// One call of `parseStructure`, which goes down through the layers.
class StructureReader {
public:
  explicit StructureReader(const CancellationToken& token) : token_(token), ticks_(&token) {}

  Structure structureOf(const Parse::Layer& layer) {
    Found found = foundIn(layer);
    return {.symbols = std::move(found.symbols).take(), .folds = std::move(found.folds).take()};
  }

private:
  Found foundIn(const Parse::Layer& layer) {
    const ParseConfiguration& configuration = layer.configuration();
    const StructureQueries queries =
        layer.parse().withErrorHandling([] { return std::string_view("structure"); }, configuration,
                                        [&] { return configuration.structureQuerySet(); });
    if (!queries)
      return {};

    CommentReader comments(layer, pass_, ticks_);
    comments.read();
    Candidates candidates = candidatesOf(layer, *queries);
    std::vector<Found> sublayers;
    for (const Parse::Layer& sublayer : layer.sublayers()) {
      Found found = foundIn(sublayer);
      if (!found.symbols.empty() || !found.folds.empty())
        sublayers.push_back(std::move(found));
    }
    // The outline of a sublayer stands in its place, so these come last.
    return {.symbols = symbolsOf(layer, std::move(candidates.symbols).take(),
                                 comments.takeBookmarks(), sublayers),
            .folds = foldsOf(layer, std::move(candidates.folds).take(), comments.takeFolds(),
                             sublayers)};
  }

  Candidates candidatesOf(const Parse::Layer& layer, const QuerySet<ParseStructureKey>& queries) {
    Candidates found;
    if (queries.query()->patternCount() == 0)
      return found;
    const DocumentText& text = layer.parse().text();
    const SymbolReader reader(layer, pass_);
    const auto add = [&](std::optional<ScopingCandidate> candidate,
                         DisposedVector<ScopingCandidate>& candidates) {
      if (candidate)
        append(*std::move(candidate), candidates, ticks_);
    };
    for (const QueryMatches::Element& match :
         QueryMatches(queries.query(), layer.root(), {0, text.count()}, text, {}, &pass_)
             .cancelledBy(token_)) {
      ticks_.look();
      switch (queries.patternKeyAt(match.patternIndex())) {
      case ParseStructureKey::folds:
        add(foldCandidateFor(match, text), found.folds);
        break;
      case ParseStructureKey::symbols:
        add(reader.candidateFor(match), found.symbols);
        break;
      case ParseStructureKey::locals:
        break;
      }
    }
    ticks_.look();
    return found;
  }

  DisposedVector<CodeFoldingRegion> foldsOf(const Parse::Layer& layer,
                                            std::vector<ScopingCandidate> candidates,
                                            DisposedVector<ScopingRegion> comments,
                                            const std::vector<Found>& sublayers) {
    DisposedVector<ScopingRegion> regions(
        scopingRegionsFor(layer.parse().text(), std::move(candidates),
                          {.enforceMultiline = true, .cancel = &token_}));
    append(std::move(comments), regions, ticks_);
    for (const Found& found : sublayers) {
      for (const CodeFoldingRegion& fold : found.folds) {
        ScopingRegion region{.range = fold.range};
        region.attributes.set<FoldRole>(fold.role);
        append(std::move(region), regions, ticks_);
      }
    }
    sortInOrder(regions, &ScopingRegion::range, ticks_);

    DisposedVector<CodeFoldingRegion> folds;
    folds.reserve(regions.size());
    std::vector<TextRange> enclosing;
    for (const ScopingRegion& region : regions) {
      ticks_.step();
      while (!enclosing.empty() && !enclosing.back().contains(region.range.lowerBound))
        enclosing.pop_back();
      const auto* const role = region.attributes.valueFor<FoldRole>();
      folds.push_back({.range = region.range,
                       .role = role ? *role : std::nullopt,
                       .level = std::ssize(enclosing)});
      enclosing.push_back(region.range);
    }
    return folds;
  }

  DisposedVector<CodeSymbol> symbolsOf(const Parse::Layer& layer,
                                       std::vector<ScopingCandidate> candidates,
                                       DisposedVector<CodeSymbol> bookmarks,
                                       std::vector<Found>& sublayers) {
    const DisposedVector<ScopingRegion> regions(
        scopingRegionsFor(layer.parse().text(), std::move(candidates), {.cancel = &token_}));
    DisposedVector<CodeSymbol> symbols;
    symbols.reserve(regions.size() + bookmarks.size());
    for (const ScopingRegion& region : regions) {
      ticks_.step();
      if (auto symbol = symbolOf(region, layer.configuration().id()))
        symbols.push_back(*std::move(symbol));
    }
    append(std::move(bookmarks), symbols, ticks_);
    for (Found& found : sublayers)
      append(std::move(found.symbols), symbols, ticks_);
    sortInOrder(symbols, &CodeSymbol::range, ticks_);
    return symbols;
  }

  const CancellationToken& token_;
  CancellationTicks ticks_;
  RegularExpressionPass pass_;
};

} // namespace

Structure parseStructure(const Parse::Layer& layer, const CancellationToken& token) {
  return StructureReader(token).structureOf(layer);
}

} // namespace velmar
