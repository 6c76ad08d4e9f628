#include "VelmarParser/Document/Parse.h"

#include "VelmarParser/Grammar/TreeUnits.h"
#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

namespace velmar {

Parse::Parse(ParseConfiguration configuration)
    : isCancelled_(std::make_shared<AtomicFlag>()),
      root_(std::make_shared<detail::LayerImpl>(std::move(configuration), nullptr, isCancelled_)) {
  root_->lexicalSpans = noLexicalSpans();
}

Parse::~Parse() = default;

TextRangeSet Parse::replaceSubrange(TextRange range, std::u16string_view text) {
  std::optional<detail::EditClock> clock;
  if (editObserver_)
    clock.emplace();
  const auto length = static_cast<std::int64_t>(text.size());
  RegularExpressionPass pass;
  const detail::LayerEdit edit = [&] {
    const std::int64_t changeInLength = length - range.length();
    precondition(lines_.count() + changeInLength <= largestParsableCount,
                 "A document can't hold more than 1,073,741,823 code units.");
    const Range<TextPosition> before = lines_.positionsOf(range);
    lines_.replaceSubrange(range, text);
    const TextRange now(range.lowerBound, range.upperBound + changeInLength);
    return detail::LayerEdit{
        .range = now,
        .changeInLength = changeInLength,
        .edit = {.start_byte = treeByte(range.lowerBound).value,
                 .old_end_byte = treeByte(range.upperBound).value,
                 .new_end_byte = treeByte(now.upperBound).value,
                 .start_point = treePoint(before.lowerBound),
                 .old_end_point = treePoint(before.upperBound),
                 .new_end_point = treePoint(lines_.positionOf(now.upperBound))},
        .pass = &pass,
        .clock = clock ? &*clock : nullptr,
    };
  }();
  log_.append(edit);
  isCancelled_->store(false);
  root_->ranges = TextRangeSet({0, lines_.count()});
  TextRangeSet changed = reparse(root_, edit);
  edit.enter(EditPhase::text);
  changed.insertContentsOf(edit.range);
  if (log_.isLong())
    letAllCatchUp();
  if (clock)
    editObserver_(clock->stop());
#ifdef VELMAR_CHECKED
  checkInvariants();
  changed.checkInvariants();
#endif
  return changed;
}

TextRangeSet Parse::replaceSubrange(TextRange range, std::string_view utf8) {
  return replaceSubrange(range, utf16RepairingUTF8(utf8));
}

Parse::Layer Parse::rootLayer() const {
  return {*this, root_};
}

std::vector<Parse::Layer> Parse::layers() const {
  std::vector<Layer> found{rootLayer()};
  for (std::size_t index = 0; index < found.size(); ++index) {
    const LayerPtr layer = found[index].base_;
    for (const LayerPtr& sublayer : layer->sublayers)
      found.emplace_back(*this, sublayer);
  }
  return found;
}

std::vector<Parse::Layer> Parse::layersIntersecting(TextRange range) const {
  std::vector<Layer> found{rootLayer()};
  for (std::size_t index = 0; index < found.size() && !range.isEmpty(); ++index) {
    const LayerPtr layer = found[index].base_;
    for (const LayerPtr& sublayer : sublayersIn(layer, range))
      found.emplace_back(*this, sublayer);
  }
  return found;
}

Parse::Layer Parse::deepestLayerContaining(std::int64_t offset) const {
  LayerPtr layer = root_;
  while (true) {
    const auto inside = sublayersIn(layer, {offset, offset + 1});
    if (inside.empty())
      return {*this, layer};
    layer = inside.front();
  }
}

std::vector<Parse::LayerPtr> Parse::sublayersIn(const LayerPtr& layer, TextRange range) const {
  const detail::LayerImpl& parent = current(*layer);
  if (parent.settled) {
    std::vector<LayerPtr> found;
    for (const std::size_t index :
         parent.settled->sublayerIndicesAt(parent.settled->indicesIn(range)))
      found.push_back(parent.sublayers[index]);
    return found;
  }
  std::vector<LayerPtr> found;
  for (const LayerPtr& sublayer : parent.sublayers) {
    if (current(*sublayer).ranges.intersectsContentsOf(range))
      found.push_back(sublayer);
  }
  return found;
}

std::shared_ptr<const Query> Parse::queryFor(ParseQueryCategory category,
                                             const ParseConfiguration& configuration) const {
  return withErrorHandling([&] { return rawValueOf(category); }, configuration,
                           [&] { return configuration.queryFor(category); });
}

void Parse::checkInvariants() const {
  lines_.checkInvariants();
  for (const Layer& each : layers()) {
    const detail::LayerImpl& layer = *each.base_; // as it is: looking mustn't move it
    layer.ranges.checkInvariants();
    layer.languageNameRanges.checkInvariants();
    layer.lexicalSpans.checkInvariants();
    precondition(layer.editsSeen < log_.count() || layer.lexicalSpans.count() == count(),
                 "Lexical spans are as long as the document.");
  }
}

void Parse::letAllCatchUp() {
  for (const Layer& layer : layers())
    log_.catchUp(*layer.base_);
  log_.forget();
}

void Parse::reportError(const ParseConfiguration& configuration, std::string_view label) const {
  ++errorCount_;
  if (!errorHandler_ || hidesErrors_)
    return;
  try {
    throw;
  } catch (const std::exception& error) {
    errorHandler_(configuration, label, error);
  } catch (...) {
    errorHandler_(configuration, label,
                  Error("The application failed with an error that says nothing."));
  }
}

std::optional<Parse::Layer> Parse::Layer::parent() const {
  const LayerPtr parent = base_->parent.lock();
  return parent ? std::optional(Layer(*parse_, parent)) : std::nullopt;
}

std::vector<Parse::Layer> Parse::Layer::sublayers() const {
  std::vector<Layer> layers;
  for (const LayerPtr& sublayer : base_->sublayers)
    layers.emplace_back(*parse_, sublayer);
  return layers;
}

std::optional<ParseNode> Parse::Layer::root() const {
  const detail::LayerImpl& layer = current();
  return layer.tree ? std::optional(layer.rootNode()) : std::nullopt;
}

TextRangeSet Parse::Layer::rangesExcludingSublayers() const {
  TextRangeSet ranges = current().ranges;
  if (base_->settled) {
    ranges.subtract(TextRangeSet(base_->settled->ranges()));
    return ranges;
  }
  for (const LayerPtr& sublayer : base_->sublayers)
    ranges.subtract(parse_->current(*sublayer).ranges);
  return ranges;
}

} // namespace velmar
