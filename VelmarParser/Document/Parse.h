// An open document that stays parsed: its text, and a tree of language layers kept current under
// edits.
//
// The application feeds edits; each one updates the text, reparses what it touches in every layer,
// finds the languages nested inside each again, and tells which ranges may have to be painted anew.
// Everything else is read from the layers afterwards.
//
//     Parse document(configuration);
//     document.replaceSubrange({0, 0}, u"<script>1</script>");
//     for (const Parse::Layer& layer : document.layers())
//       …                                            // the page, then the script in it
//
// All of it runs on the caller's thread, one owner at a time, and no reading goes on during an
// edit. Only `cancelParsing()` may come from another thread. Offsets are UTF-16 code units; an
// offset outside the text stops the process. Nothing that a query, a resolver or a grammar does
// wrong reaches the caller: it goes to the error handler, and the answer counts as absent.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Document/DocumentMemory.h"
#include "VelmarParser/Document/EditLog.h"
#include "VelmarParser/Document/EditTimes.h"
#include "VelmarParser/Document/LayerImpl.h"
#include "VelmarParser/Document/ParseConfiguration.h"
#include "VelmarParser/Grammar/ParseTree.h"
#include "VelmarPlatform/Basics/AtomicFlag.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

namespace detail {
struct AskedRange;
class ChangedMatches;
class LayerChange;
struct InjectionPoint;
struct MovedSublayer;
template <class Found>
struct RegionPart;
} // namespace detail

class Parse {
public:
  class Layer;

  /// Hears of every failure that the engine swallows: the layer's language, what was being done
  /// ("highlights" and the like, "injections", "lexicalSpans", "predicates", "structure") and the
  /// failure, good for the call. Called on the document's thread in the middle of an edit or a
  /// reading, so it must not come back to the document.
  using ErrorHandler = std::function<void(const ParseConfiguration& configuration,
                                          std::string_view label, const std::exception& error)>;

  /// An empty text, not yet parsed. Throws ParseError if the grammar's format isn't supported.
  explicit Parse(ParseConfiguration configuration);
  Parse(const Parse&) = delete;
  Parse& operator=(const Parse&) = delete;
  Parse(Parse&&) = delete;
  Parse& operator=(Parse&&) = delete;
  /// Large trees are freed on a background thread.
  ~Parse();

  [[nodiscard]] const ErrorHandler& errorHandler() const noexcept { return errorHandler_; }
  void setErrorHandler(ErrorHandler handler) { errorHandler_ = std::move(handler); }

  /// Hears at the end of each edit, also of a cancelled one, how long its steps took, and may read
  /// the document. Without one, which is how a document begins, no clock is read.
  using EditObserver = std::function<void(const EditTimes& times)>;
  void setEditObserver(EditObserver observer) { editObserver_ = std::move(observer); }

  /// What the document takes at this moment. O(lines + nodes + layers).
  [[nodiscard]] DocumentMemory memory() const;

  /// The document's text, with all that it can answer.
  [[nodiscard]] const DocumentText& text() const noexcept { return lines_; }
  [[nodiscard]] std::int64_t count() const noexcept { return lines_.count(); }
  [[nodiscard]] bool isEmpty() const noexcept { return lines_.isEmpty(); }
  [[nodiscard]] LineView<UTF16LineArrayStringStorage> lines() const { return lines_.lines(); }
  [[nodiscard]] LineView<UTF16LineArrayStringStorage> linesIntersecting(TextRange range) const {
    return lines_.linesIntersecting(range);
  }
  [[nodiscard]] LineBoundaries<std::int64_t> lineBoundariesFor(TextRange range) const {
    return lines_.lineBoundariesFor(range);
  }
  [[nodiscard]] LineBoundaries<std::int64_t> lineBoundariesFor(std::int64_t offset,
                                                               LineAffinity affinity) const {
    return lines_.lineBoundariesFor(offset, affinity);
  }
  [[nodiscard]] std::u16string textFor(TextRange range) const { return lines_.substringFor(range); }
  [[nodiscard]] std::u16string textFor(Range<TextPosition> range) const {
    return lines_.substringFor(range);
  }
  /// The text of a node of the current trees.
  [[nodiscard]] std::u16string textFor(const ParseNode& node) const {
    return lines_.substringFor(node.textRange());
  }

  /// Puts `text` in place of `range`, parses, and gives the ranges of the new text whose syntax may
  /// have changed; the new text itself is among them. The first edit of an empty document loads it
  /// and gives all of it.
  ///
  /// After `cancelParsing()` the layers that weren't finished have no tree; the next edit parses
  /// them from scratch and gives all of their text. The text must stay below
  /// `largestParsableCount`, or the process stops.
  TextRangeSet replaceSubrange(TextRange range, std::u16string_view text);
  /// The same with valid UTF-8; what isn't valid is replaced by U+FFFD.
  TextRangeSet replaceSubrange(TextRange range, std::string_view utf8);

  /// Makes the edit that is running, if one is, give up its parse within milliseconds. Nothing of
  /// it is left for a later edit. Any thread.
  void cancelParsing() noexcept { isCancelled_->store(true); }

  [[nodiscard]] Layer rootLayer() const;
  /// All layers, breadth first, the root first.
  [[nodiscard]] std::vector<Layer> layers() const;
  /// The root always, and then, breadth first, those sublayers of each layer taken that have text
  /// in `range`.
  [[nodiscard]] std::vector<Layer> layersIntersecting(TextRange range) const;
  /// From the root down into the first sublayer that covers `offset`, as long as there is one.
  [[nodiscard]] Layer deepestLayerContaining(std::int64_t offset) const;

  /// The language's query of a category; null if it has none or it can't be had, which the error
  /// handler then hears of.
  [[nodiscard]] std::shared_ptr<const Query>
  queryFor(ParseQueryCategory category, const ParseConfiguration& configuration) const;

  /// Stops the process with a message if the line table, a range set or a run array isn't what it
  /// must be. O(document) for each layer; builds with VELMAR_CHECKED do it after each edit.
  void checkInvariants() const;

  /// What `operation` gives; absent if it throws, and then the error handler hears of it under
  /// `label()`. An operation that gives an optional or a pointer gives that, empty where it throws.
  template <class Label, class Operation>
  auto withErrorHandling(Label&& label, const ParseConfiguration& configuration,
                         Operation&& operation) const;

private:
  using LayerPtr = std::shared_ptr<detail::LayerImpl>;

  void reportError(const ParseConfiguration& configuration, std::string_view label) const;

  // One edit's way through the layers, top down (Reparse.cpp), with the two steps that plug into
  // it.
  TextRangeSet reparse(const LayerPtr& layer, const detail::LayerEdit& edit);
  void setIncludedRanges(detail::LayerImpl& layer) const;
  void giveUpParse(detail::LayerImpl& layer, std::optional<ParseTree> old);
  TextRangeSet parseInjections(const LayerPtr& layer, const detail::LayerEdit& edit,
                               const detail::LayerChange& change);
  /// Adds the places that an injections query finds in a part of a layer, but for those elsewhere
  /// that can't have changed. Gives false if the runtime had to drop matches.
  bool findInjections(const detail::LayerImpl& layer, RegularExpressionPass& pass,
                      const std::shared_ptr<const Query>& query, const detail::AskedRange& asked,
                      detail::ChangedMatches changed,
                      std::vector<detail::InjectionPoint>& points) const;
  TextRangeSet parseAllInjections(const LayerPtr& layer, const detail::LayerEdit& edit,
                                  const std::shared_ptr<const Query>& query);
  [[nodiscard]] std::optional<std::vector<detail::RegionPart<detail::InjectionPoint>>>
  changedInjections(detail::LayerImpl& layer, const detail::LayerEdit& edit,
                    const detail::LayerChange& change, const std::shared_ptr<const Query>& query,
                    TextRangeSet region);
  TextRangeSet parseInjectionsIn(std::span<const detail::RegionPart<detail::InjectionPoint>> parts,
                                 const LayerPtr& layer, const detail::LayerEdit& edit);
  [[nodiscard]] std::vector<detail::MovedSublayer>
  movedSublayers(std::span<const LayerPtr> sublayers, const detail::LayerEdit& edit) const;
  [[nodiscard]] std::vector<LayerPtr> sublayersAt(std::span<const detail::InjectionPoint> points,
                                                  std::span<const detail::MovedSublayer> old,
                                                  const LayerPtr& layer);
  TextRangeSet reparseSublayers(std::span<const LayerPtr> now,
                                std::span<const detail::MovedSublayer> old,
                                const detail::LayerEdit& edit);
  [[nodiscard]] bool canCarry(const detail::MovedSublayer& moved,
                              const detail::LayerEdit& edit) const;
  void carry(const detail::MovedSublayer& moved);
  [[nodiscard]] std::optional<detail::MovedSublayer>
  rejoinCombined(const detail::SettledPlaces& settled, std::size_t combined, bool isTouched,
                 const detail::LayerEdit& edit) const;
  void cancelSublayers(detail::LayerImpl& layer, const LayerPtr& first,
                       std::span<const LayerPtr> alreadySeen);
  static void dropSublayers(detail::LayerImpl& layer);
  void updateLexicalSpans(detail::LayerImpl& layer, const detail::LayerEdit& edit,
                          const detail::LayerChange& change);
  [[nodiscard]] LexicalSpans noLexicalSpans() const { return {std::nullopt, lines_.count()}; }

  /// The layer with all edits seen.
  detail::LayerImpl& current(detail::LayerImpl& layer) const {
    log_.catchUp(layer);
    return layer;
  }
  /// The layer's sublayers with text in `range`, which isn't empty. If they are settled, the others
  /// aren't looked at.
  [[nodiscard]] std::vector<LayerPtr> sublayersIn(const LayerPtr& layer, TextRange range) const;
  void letAllCatchUp();

  DocumentText lines_;
  std::shared_ptr<AtomicFlag> isCancelled_;
  LayerPtr root_;
  detail::EditLog log_;
  ErrorHandler errorHandler_;
  EditObserver editObserver_;
  mutable std::int64_t errorCount_ = 0; // heard or not
  bool hidesErrors_ = false;
};

/// One language's part of a document, to read.
///
/// A value, equal to another of the same layer. It keeps its layer alive, but after an edit the
/// layer may have been dropped from the document. It must not outlive the document.
class Parse::Layer {
public:
  Layer(const Parse& parse, LayerPtr base) : parse_(&parse), base_(std::move(base)) {}

  [[nodiscard]] const Parse& parse() const noexcept { return *parse_; }
  [[nodiscard]] const ParseConfiguration& configuration() const noexcept {
    return base_->configuration;
  }
  /// 0 for the root.
  [[nodiscard]] std::int64_t depth() const noexcept { return base_->depth; }
  /// Whether all places of this language in the parent are parsed as one text.
  [[nodiscard]] bool isCombined() const noexcept { return base_->isCombined; }
  /// Whether the colours of the layers above shouldn't show through.
  [[nodiscard]] bool resetsHighlights() const noexcept { return base_->resetsHighlights; }
  [[nodiscard]] const TextRangeSet& ranges() const { return current().ranges; }
  /// The text that its grammar was shown, in the tree's units; empty for the root, which is shown
  /// everything.
  [[nodiscard]] std::span<const TSRange> includedRanges() const { return current().includedRanges; }
  /// Where the text names the layer's language.
  [[nodiscard]] const TextRangeSet& languageNameRanges() const {
    return current().languageNameRanges;
  }
  /// As long as the document; absent outside the layer's ranges.
  [[nodiscard]] const LexicalSpans& lexicalSpans() const { return current().lexicalSpans; }
  /// Absent for the root.
  [[nodiscard]] std::optional<Layer> parent() const;
  [[nodiscard]] std::vector<Layer> sublayers() const;
  /// Absent without a tree. Valid until the next edit.
  [[nodiscard]] std::optional<ParseNode> root() const;
  [[nodiscard]] bool containsIndex(std::int64_t offset) const {
    return current().ranges.contains(offset);
  }
  /// The layer's ranges less those of its direct sublayers.
  [[nodiscard]] TextRangeSet rangesExcludingSublayers() const;
  [[nodiscard]] std::shared_ptr<const Query> queryFor(ParseQueryCategory category) const {
    return parse_->queryFor(category, configuration());
  }
  /// Tells layers apart, also as a key.
  [[nodiscard]] const void* identity() const noexcept { return base_.get(); }

  bool operator==(const Layer& other) const noexcept { return base_ == other.base_; }

private:
  friend class Parse;
  [[nodiscard]] detail::LayerImpl& current() const { return parse_->current(*base_); }

  const Parse* parse_;
  LayerPtr base_;
};

template <class Label, class Operation>
auto Parse::withErrorHandling(Label&& label, const ParseConfiguration& configuration,
                              Operation&& operation) const {
  using Value = decltype(operation());
  constexpr bool canBeAbsent = requires(Value value) {
    static_cast<bool>(value);
    *value;
  };
  using Answer = std::conditional_t<canBeAbsent, Value, std::optional<Value>>;
  try {
    return Answer(operation());
  } catch (...) { // Whatever an application's resolver throws.
    reportError(configuration, label());
    return Answer();
  }
}

} // namespace velmar

template <>
struct std::hash<velmar::Parse::Layer> {
  std::size_t operator()(const velmar::Parse::Layer& layer) const noexcept {
    return std::hash<const void*>()(layer.identity());
  }
};
