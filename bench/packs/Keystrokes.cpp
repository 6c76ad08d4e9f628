#include "bench/packs/Keystrokes.h"

#include "VelmarParser/Grammar/TreeUnits.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <stdexcept>

namespace velmar::bench {

namespace {

TSRange treeRange(TextRange range, const DocumentText& text) {
  return {.start_point = treePoint(text.positionOf(range.lowerBound)),
          .end_point = treePoint(text.positionOf(range.upperBound)),
          .start_byte = treeByte(range.lowerBound).value,
          .end_byte = treeByte(range.upperBound).value};
}

bool areInOrder(std::span<const TSRange> ranges) {
  return std::ranges::adjacent_find(ranges, [](const TSRange& left, const TSRange& right) {
           return left.end_byte > right.start_byte;
         }) == ranges.end();
}

/// What a layer's parser sees. Places that are combined may overlap and are then taken as a set.
std::vector<TSRange> parsedRanges(const Parse::Layer& layer) {
  const auto included = layer.includedRanges();
  if (areInOrder(included))
    return {included.begin(), included.end()};
  std::vector<TSRange> ranges;
  for (const TextRange& range : layer.ranges().ranges())
    ranges.push_back(treeRange(range, layer.parse().text()));
  return ranges;
}

const TSLanguage* languageOf(const Parse::Layer& layer) {
  return layer.configuration().grammar()->base();
}

std::int64_t unitsOf(const TextRangeSet& set) {
  std::int64_t units = 0;
  for (const TextRange& range : set.ranges())
    units += range.length();
  return units;
}

bool touches(const TextRangeSet& set, TextRange edited) {
  return std::ranges::any_of(set.ranges(), [&](const TextRange& range) {
    return range.lowerBound <= edited.upperBound && edited.lowerBound <= range.upperBound;
  });
}

/// What the runtime reads: a text into which something has been typed.
struct TypedText {
  std::u16string_view text;
  std::size_t place;
  std::u16string_view typed;

  static const char* read(void* payload, std::uint32_t byte, TSPoint, std::uint32_t* count) {
    const auto& [text, place, typed] = *static_cast<const TypedText*>(payload);
    const std::size_t unit = byte / sizeof(char16_t);
    std::u16string_view chunk;
    if (unit < place)
      chunk = text.substr(unit, place - unit);
    else if (unit < place + typed.size())
      chunk = typed.substr(unit - place);
    else if (unit - typed.size() < text.size())
      chunk = text.substr(unit - typed.size());
    *count = static_cast<std::uint32_t>(chunk.size() * sizeof(char16_t));
    return reinterpret_cast<const char*>(chunk.data());
  }
};

} // namespace

std::vector<Keystroke> keystrokesIn(std::int64_t length, std::size_t count, Keys keys) {
  static constexpr std::u16string_view plain[] = {u"a", u"e", u"i", u"o", u"n", u"t", u"s", u"r",
                                                  u"l", u"_", u"0", u"7", u" ", u".", u",", u"\n"};
  static constexpr std::u16string_view unbalancing[] = {u"\"", u"'", u"{", u"(", u"/*", u"`", u"<"};
  const auto choice = keys == Keys::plain ? std::span<const std::u16string_view>(plain)
                                          : std::span<const std::u16string_view>(unbalancing);
  std::mt19937_64 random(17);
  std::vector<Keystroke> keystrokes;
  for (std::size_t index = 0; index < count; ++index) {
    const auto place = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(length + 1));
    keystrokes.push_back({place, choice[random() % choice.size()]});
  }
  return keystrokes;
}

TextRange linesAround(const DocumentText& text, std::int64_t place) {
  const std::int64_t line = text.positionOf(place).line;
  const std::int64_t first = std::max<std::int64_t>(line - paintedLines / 2, 0);
  const std::int64_t last = std::min(first + paintedLines, text.lineCount()) - 1;
  return {text.rangeOfLine(first).lowerBound, text.rangeOfLine(last).upperBound};
}

/// Sees which layers an edit of a document changes.
class BareKeystrokes::Recorder {
public:
  explicit Recorder(Parse& document) : document_(document) { see({0, document.count()}); }

  /// All layers that there are in the beginning, as something to parse.
  std::vector<LayerParse> everything() const {
    std::vector<LayerParse> parses;
    for (const Known& known : known_)
      parses.push_back(parseOf(known));
    return parses;
  }

  Edit record(TextRange range, std::u16string_view text) {
    Edit edit;
    edit.typed = text;
    const Range<TextPosition> before = document_.text().positionsOf(range);
    document_.replaceSubrange(range, text);
    const TextRange now(range.lowerBound,
                        range.lowerBound + static_cast<std::int64_t>(text.size()));
    edit.edit = {.start_byte = treeByte(range.lowerBound).value,
                 .old_end_byte = treeByte(range.upperBound).value,
                 .new_end_byte = treeByte(now.upperBound).value,
                 .start_point = treePoint(before.lowerBound),
                 .old_end_point = treePoint(before.upperBound),
                 .new_end_point = treePoint(document_.text().positionOf(now.upperBound))};
    see(now);
    edit.painted = linesAround(document_.text(), now.lowerBound);
    for (const Known& known : known_) {
      if (known.isChanged)
        edit.parses.push_back(parseOf(known));
      if (known.layer.depth() > 0 && !known.layer.ranges().intersectsContentsOf(edit.painted))
        continue;
      if (auto query = known.layer.queryFor(ParseQueryCategory::highlights))
        edit.queries.push_back({known.slot, std::move(query)});
    }
    return edit;
  }

  /// Of the layers that there are, in their order.
  std::vector<std::size_t> slots() const {
    std::vector<std::size_t> slots;
    for (const Known& known : known_)
      slots.push_back(known.slot);
    return slots;
  }
  std::size_t slotCount() const { return slotCount_; }

private:
  /// A layer as it was after the last edit. Keeps it alive, so that no other gets its address.
  struct Known {
    Parse::Layer layer;
    std::size_t slot;
    const TSTree* tree;
    std::size_t places;
    std::int64_t units;
    bool isNew = false;
    bool isChanged = false;
  };

  static LayerParse parseOf(const Known& known) {
    return {known.slot, languageOf(known.layer), known.isNew, parsedRanges(known.layer)};
  }

  void see(TextRange edited) {
    std::unordered_map<const void*, const Known*> before;
    for (const Known& known : known_)
      before.emplace(known.layer.identity(), &known);
    std::vector<Known> now;
    for (const Parse::Layer& layer : document_.layers()) {
      const auto root = layer.root();
      if (!root)
        throw std::runtime_error("A layer has no tree.");
      const auto found = before.find(layer.identity());
      const Known* const old = found == before.end() ? nullptr : found->second;
      Known known{layer, old ? old->slot : slotCount_++, root->base().tree,
                  layer.includedRanges().size(), unitsOf(layer.ranges())};
      known.isNew = !old;
      // A layer that was parsed though nothing in it has changed is none of the least.
      known.isChanged = !old || (old->tree != known.tree &&
                                 (layer.depth() == 0 || old->places != known.places ||
                                  old->units != known.units || touches(layer.ranges(), edited)));
      now.push_back(std::move(known));
    }
    known_ = std::move(now);
  }

  Parse& document_;
  std::vector<Known> known_;
  std::size_t slotCount_ = 0;
};

BareKeystrokes::BareKeystrokes(Parse& document, std::span<const Keystroke> keystrokes)
    : text_(document.textFor(TextRange(0, document.count()))), cursor_(ts_query_cursor_new()) {
  Recorder recorder(document);
  const std::vector<LayerParse> all = recorder.everything();
  for (const auto& [place, text] : keystrokes) {
    const auto length = static_cast<std::int64_t>(text.size());
    edits_.push_back(recorder.record({place, place}, text));
    edits_.push_back(recorder.record({place, place + length}, u""));
  }
  finalSlots_ = recorder.slots();
  if (finalSlots_.size() != all.size())
    throw std::runtime_error("The document has other layers than before the keystrokes.");
  slots_.resize(recorder.slotCount());
  for (const LayerParse& layer : all)
    slots_[layer.slot].tree = parse(layer, nullptr, {});
}

TSParser& BareKeystrokes::parserFor(const TSLanguage* language) {
  auto& parser = parsers_[language];
  if (!parser) {
    parser.reset(ts_parser_new());
    ts_parser_set_language(parser.get(), language);
  }
  return *parser;
}

BareKeystrokes::Tree BareKeystrokes::parse(const LayerParse& layer, const TSTree* old,
                                           const Edit& edit) {
  TSParser& parser = parserFor(layer.language);
  const bool accepted = ts_parser_set_included_ranges(
      &parser, layer.ranges.data(), static_cast<std::uint32_t>(layer.ranges.size()));
  precondition(accepted, "What a layer sees is in order.");
  TypedText text{text_, edit.edit.start_byte / sizeof(char16_t), edit.typed};
  const TSInput input{.payload = &text,
                      .read = TypedText::read,
                      .encoding = TSInputEncodingUTF16LE,
                      .decode = nullptr};
  return Tree(ts_parser_parse(&parser, old, input));
}

// Edits of other layers come in pairs that leave nothing behind, so at most the first or the second
// of a pair is missing.
void BareKeystrokes::catchUp(Slot& slot, std::size_t index) {
  if (slot.editsSeen % 2 == 1 && slot.editsSeen < index)
    ts_tree_edit(slot.tree.get(), &edits_[slot.editsSeen++].edit);
  if (index % 2 == 1 && slot.editsSeen < index)
    ts_tree_edit(slot.tree.get(), &edits_[index - 1].edit);
}

void BareKeystrokes::playEdit(std::size_t index) {
  const Edit& edit = edits_[index];
  for (const LayerParse& layer : edit.parses) {
    Slot& slot = slots_[layer.slot];
    if (layer.isNew) {
      slot.tree = parse(layer, nullptr, edit);
    } else {
      catchUp(slot, index);
      ts_tree_edit(slot.tree.get(), &edit.edit);
      Tree tree = parse(layer, slot.tree.get(), edit);
      std::uint32_t count = 0;
      std::free(ts_tree_get_changed_ranges(slot.tree.get(), tree.get(), &count));
      slot.tree = std::move(tree);
    }
    slot.editsSeen = index + 1;
  }
}

void BareKeystrokes::paint(const Edit& edit) {
  for (const auto& [slot, query] : edit.queries) {
    ts_query_cursor_set_byte_range(cursor_.get(), treeByte(edit.painted.lowerBound).value,
                                   treeByte(edit.painted.upperBound).value);
    ts_query_cursor_exec(cursor_.get(), query->base(), ts_tree_root_node(slots_[slot].tree.get()));
    TSQueryMatch match;
    while (ts_query_cursor_next_match(cursor_.get(), &match))
      continue;
  }
}

void BareKeystrokes::beginAnew() {
  std::vector<Slot> slots(slots_.size());
  for (std::size_t index = 0; index < finalSlots_.size(); ++index) {
    Slot& last = slots_[finalSlots_[index]];
    catchUp(last, edits_.size());
    slots[index].tree = std::move(last.tree);
  }
  slots_ = std::move(slots);
}

} // namespace velmar::bench
