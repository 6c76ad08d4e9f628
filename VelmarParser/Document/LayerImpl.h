// A language layer's own state, inside the engine. Callers see it through `Parse::Layer`.
#pragma once

#include "VelmarCode/Syntax/LexicalClass.h"
#include "VelmarCore/Text/RangeSet.h"
#include "VelmarCore/Text/RegularExpressionPass.h"
#include "VelmarCore/Text/RunArray.h"
#include "VelmarParser/Document/EditTimes.h"
#include "VelmarParser/Document/ParseConfiguration.h"
#include "VelmarParser/Document/SettledPlaces.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarParser/Grammar/TreeDisposal.h"
#include "VelmarPlatform/Basics/AtomicFlag.h"

#include <tree_sitter/api.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace velmar {

/// For each code unit of a document, what kind of token it lies in, where one layer knows.
using LexicalSpans = RunArray<std::optional<LexicalClass>,
                              OptionalRunComparator<EquatableRunComparator<LexicalClass>>>;

namespace detail {

/// One language's part of a document. Belongs to its parent's list of sublayers, or to the document
/// if it is the root; a `Parse::Layer` can keep it alive longer.
struct LayerImpl {
  /// Throws ParseError if the language has no usable grammar.
  LayerImpl(ParseConfiguration layerConfiguration, const std::shared_ptr<LayerImpl>& layerParent,
            const std::shared_ptr<const AtomicFlag>& isCancelled)
      : configuration(std::move(layerConfiguration)),
        parser(configuration.id().rawValue, configuration.grammar(), isCancelled),
        depth(layerParent ? layerParent->depth + 1 : 0), parent(layerParent) {}

  LayerImpl(const LayerImpl&) = delete;
  LayerImpl& operator=(const LayerImpl&) = delete;
  ~LayerImpl() {
    if (tree)
      disposeTree(std::move(*tree));
  }

  /// Whether an edit of `range` can matter to this layer: it overlaps the layer's text or the name
  /// of its language. An empty range does where it touches either, ends included, so an insertion
  /// at a layer's edge counts.
  [[nodiscard]] bool intersects(TextRange range) const;
  [[nodiscard]] ParseNode rootNode() const { return tree->rootNode(); }

  ParseConfiguration configuration;
  Parser parser;
  std::int64_t depth;
  bool isCombined = false;
  bool resetsHighlights = false;
  /// The text that the layer covers; for the root, all of it.
  TextRangeSet ranges;
  /// What the parser may see; empty for the root, which means everything.
  std::vector<TSRange> includedRanges;
  TextRangeSet languageNameRanges;
  /// Absent before the first parse and after a cancelled one.
  std::optional<ParseTree> tree;
  /// As long as the document.
  LexicalSpans lexicalSpans;
  /// Whether the spans of a part of the layer can be told from that part.
  bool spansArePiecewise = false;
  std::weak_ptr<LayerImpl> parent;
  /// In the order of the first place of each.
  std::vector<std::shared_ptr<LayerImpl>> sublayers;

  /// How many of the document's edits the members above have seen (EditLog.h). A layer that isn't
  /// part of the document any more sees none.
  std::uint64_t editsSeen = 0;
  static constexpr std::uint64_t isRetired = std::numeric_limits<std::uint64_t>::max();
  /// Whether an edit that doesn't touch the layer can do no more than move it: it has a tree, each
  /// of its sublayers is sure to be found again where it stands and is quiet itself, and neither it
  /// nor they gave the error handler something to hear.
  bool isQuiet = false;
  /// Whether that holds of the sublayers.
  bool hasQuietSublayers = false;
  /// Where they lie, if that is settled. An edit then needs to look only at those around it.
  std::optional<SettledPlaces> settled;
  /// Whether the layer's tree or one below it was told by the column at which it stands.
  bool columnsMatter = false;
};

/// One edit, as every layer has to hear of it.
struct LayerEdit {
  /// Where the new text stands now.
  TextRange range;
  std::int64_t changeInLength = 0;
  TSInputEdit edit{};
  /// A pattern that runs away is off for the rest of the edit, in all layers.
  RegularExpressionPass* pass = nullptr;
  /// Null where nobody wants to know how long the edit takes.
  EditClock* clock = nullptr;

  /// Says that what follows belongs to `phase`.
  void enter(EditPhase phase) const noexcept {
    if (clock)
      clock->enter(phase);
  }

  /// Where the edited text ended before.
  [[nodiscard]] std::int64_t oldUpperBound() const { return range.upperBound - changeInLength; }
};

} // namespace detail

} // namespace velmar
