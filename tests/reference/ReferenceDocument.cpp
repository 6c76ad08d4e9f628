#include "tests/reference/ReferenceDocument.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

namespace velmar::reference {

struct Document::Layer {
  Layer(ParseConfiguration layerConfiguration, Layer* layerParent)
      : configuration(std::move(layerConfiguration)), parent(layerParent),
        depth(layerParent ? layerParent->depth + 1 : 0) {}
  ~Layer() { ts_tree_delete(tree); }
  Layer(const Layer&) = delete;
  Layer& operator=(const Layer&) = delete;

  ParseConfiguration configuration;
  Layer* parent;
  std::int64_t depth;
  bool isCombined = false;
  bool resetsHighlights = false;
  Ranges ranges;
  std::vector<Span> includedRanges;
  Ranges languageNameRanges;
  std::vector<std::shared_ptr<Layer>> sublayers;
  /// A copy of the engine's tree after the edit before.
  TSTree* tree = nullptr;
  /// The engine's layer that this one stands for; null for one just made.
  const void* identity = nullptr;
};

struct Document::Point {
  Span range;
  Ranges contentRanges;
  std::optional<Span> languageNameRange;
  ParseConfiguration configuration;
  bool isCombined;
  bool resetsHighlights;
};

struct Document::Edit {
  std::int64_t lower;
  std::int64_t oldUpper;
  std::int64_t newUpper;
  std::int64_t change;
  TSInputEdit input;
};

namespace {

using Ranges = std::vector<Span>;

Ranges normalized(Ranges ranges) {
  std::erase_if(ranges, [](const Span& range) { return range.first >= range.second; });
  std::ranges::sort(ranges);
  Ranges result;
  for (const Span& range : ranges) {
    if (!result.empty() && result.back().second >= range.first)
      result.back().second = std::max(result.back().second, range.second);
    else
      result.push_back(range);
  }
  return result;
}

Ranges united(Ranges left, const Ranges& right) {
  left.insert(left.end(), right.begin(), right.end());
  return normalized(std::move(left));
}

Ranges intersected(const Ranges& left, const Ranges& right) {
  Ranges result;
  for (const Span& a : left) {
    for (const Span& b : right)
      result.emplace_back(std::max(a.first, b.first), std::min(a.second, b.second));
  }
  return normalized(std::move(result));
}

Ranges rangesOf(const TextRangeSet& set) {
  Ranges ranges;
  for (const TextRange& range : set.ranges())
    ranges.emplace_back(range.lowerBound, range.upperBound);
  return ranges;
}

/// By start, the longer one first; equal ones in the order found.
template <class Element>
void sortByRange(std::vector<Element>& elements) {
  for (std::size_t sorted = 1; sorted < elements.size(); ++sorted) {
    for (std::size_t at = sorted; at > 0; --at) {
      const Span& a = elements[at - 1].range;
      const Span& b = elements[at].range;
      if (a.first < b.first || (a.first == b.first && a.second >= b.second))
        break;
      std::swap(elements[at - 1], elements[at]);
    }
  }
}

std::string shown(const Ranges& ranges) {
  std::ostringstream text;
  for (const Span& range : ranges)
    text << ' ' << range.first << "..<" << range.second;
  return text.str().empty() ? " none" : text.str();
}

[[noreturn]] void differ(const std::string& what, const std::string& engine,
                         const std::string& expected) {
  throw std::runtime_error(what + "\n  engine:   " + engine + "\n  expected: " + expected);
}

void expectSame(const std::string& what, const Ranges& engine, const Ranges& expected) {
  if (engine != expected)
    differ(what, shown(engine), shown(expected));
}

/// The four classes in their order of precedence.
std::optional<std::string> lexicalClassOf(const std::string& captureName) {
  if (captureName.empty() || captureName[0] == '_')
    return std::nullopt;
  std::set<std::string> parts{""};
  std::string part;
  for (const char letter : captureName + ".") {
    const bool allowed = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                         letter == '_' || letter == '-';
    if (letter != '.' && !allowed)
      return std::nullopt;
    if (letter != '.') {
      part += letter;
      continue;
    }
    if (part.empty())
      return std::nullopt;
    parts.insert(std::exchange(part, ""));
  }
  for (const char* const name : {"keyword", "comment", "string", "regex"}) {
    if (parts.contains(name))
      return name;
  }
  return std::nullopt;
}

TSPoint pointAt(const Text& text, std::int64_t offset, const Parse& engine) {
  (void)text;
  const TextPosition position = engine.text().positionOf(offset);
  return {static_cast<std::uint32_t>(position.line),
          static_cast<std::uint32_t>(position.column * 2)};
}

} // namespace

Document::Document(const Parse& engine)
    : engine_(engine), root_(std::make_unique<Layer>(engine.rootLayer().configuration(), nullptr)) {
  root_->identity = engine.rootLayer().identity();
}

Document::~Document() = default;

void Document::edit(TextRange range, const Text& text, const TextRangeSet& changed) {
  Edit edit{};
  edit.lower = range.lowerBound;
  edit.oldUpper = range.upperBound;
  edit.change = static_cast<std::int64_t>(text.size()) - range.length();
  edit.newUpper = edit.oldUpper + edit.change;
  // Rows are those of the line table, whose exactness is checked elsewhere; of the old text only
  // bytes matter to a tree that has been parsed again since.
  edit.input.start_byte = static_cast<std::uint32_t>(edit.lower * 2);
  edit.input.old_end_byte = static_cast<std::uint32_t>(edit.oldUpper * 2);
  edit.input.new_end_byte = static_cast<std::uint32_t>(edit.newUpper * 2);
  edit.input.start_point = pointAt(text_, edit.lower, engine_);
  edit.input.new_end_point = pointAt(text_, edit.newUpper, engine_);
  edit.input.old_end_point = edit.input.new_end_point;
  text_.replace(static_cast<std::size_t>(edit.lower), static_cast<std::size_t>(range.length()),
                text);

  layerCount_ = 0;
  root_->ranges = normalized({{0, static_cast<std::int64_t>(text_.size())}});
  Ranges expected = reparse(*root_, engine_.rootLayer(), edit);
  expected = united(std::move(expected), {{edit.lower, edit.newUpper}});
  expectSame("The changed ranges differ.", rangesOf(changed), expected);
}

Ranges Document::reparse(Layer& layer, const Parse::Layer& engine, const Edit& edit) {
  ++layerCount_;
  TSTree* const old = std::exchange(layer.tree, nullptr);
  if (old)
    ts_tree_edit(old, &edit.input);
  const auto root = engine.root();
  if (!root) { // a cancelled parse
    ts_tree_delete(old);
    layer.sublayers.clear();
    compareLayer(layer, engine);
    return {};
  }
  Ranges changed = changedBy(layer, old, engine, edit);
  ts_tree_delete(old);
  layer.tree = ts_tree_copy(root->base().tree);
  changed = united(std::move(changed), parseInjections(layer, engine, edit));
  compareLayer(layer, engine);
  compareSpans(layer, engine);
  return changed;
}

Ranges Document::changedBy(const Layer& layer, TSTree* old, const Parse::Layer& engine,
                           const Edit& edit) const {
  const Span range{edit.lower, edit.newUpper};
  if (layer.depth > 0) {
    bool intersects = false;
    for (const Ranges* const set : {&layer.ranges, &layer.languageNameRanges}) {
      for (const auto& [a, b] : *set) {
        if (range.first == range.second)
          intersects = intersects || (a <= range.first && range.first <= b);
        else
          intersects = intersects || std::max(a, range.first) < std::min(b, range.second);
      }
    }
    if (!intersects)
      return {};
  }
  if (!old)
    return layer.depth > 0 ? layer.ranges
                           : normalized({{0, static_cast<std::int64_t>(text_.size())}});

  std::uint32_t count = 0;
  TSRange* const reported = ts_tree_get_changed_ranges(old, engine.root()->base().tree, &count);
  Ranges changed;
  for (std::uint32_t index = 0; index < count; ++index)
    changed.emplace_back(reported[index].start_byte / 2, reported[index].end_byte / 2);
  std::free(reported);
  if (count > 0)
    return normalized(std::move(changed));

  const TSNode root = ts_tree_root_node(old);
  if (!ts_node_has_changes(root))
    return layer.depth > 0 ? intersected({range}, layer.ranges) : normalized({range});

  std::int64_t start = ts_node_start_byte(root);
  std::int64_t end = ts_node_end_byte(root);
  TSTreeCursor cursor = ts_tree_cursor_new(root);
  bool more = ts_tree_cursor_goto_first_child(&cursor);
  while (more) {
    const TSNode node = ts_tree_cursor_current_node(&cursor);
    if (!ts_node_is_null(node) && ts_node_has_changes(node))
      start = ts_node_start_byte(node);
    if (!ts_node_is_null(node) && !ts_node_has_changes(node) &&
        ts_tree_cursor_goto_next_sibling(&cursor))
      continue;
    more = ts_tree_cursor_goto_first_child(&cursor);
  }
  ts_tree_cursor_reset(&cursor, root);
  bool visit = true;
  while (true) {
    const TSNode node = ts_tree_cursor_current_node(&cursor);
    if (visit && ts_node_has_changes(node)) {
      end = ts_node_end_byte(node);
      if (ts_tree_cursor_goto_first_child(&cursor))
        continue;
    }
    visit = ts_tree_cursor_goto_next_sibling(&cursor);
    if (!visit && !ts_tree_cursor_goto_parent(&cursor))
      break;
  }
  ts_tree_cursor_delete(&cursor);
  return normalized({{start / 2, end / 2}});
}

std::shared_ptr<Query> Document::query(const Layer& layer, ParseQueryCategory category,
                                       const char* use) {
  const std::string key = layer.configuration.id().rawValue + "\n" + use;
  if (const auto found = queries_.find(key); found != queries_.end())
    return found->second;
  std::shared_ptr<Query> query;
  try {
    if (const auto text =
            layer.configuration.resolver()->queryTextFor(category, layer.configuration))
      query = Query::compiled(*text, layer.configuration.grammar()->base());
  } catch (const std::exception&) { // as good as absent
  }
  queries_[key] = query;
  return query;
}

std::vector<Document::Point> Document::points(const Layer& layer, TSNode root) {
  std::vector<Point> points;
  const auto query = this->query(layer, ParseQueryCategory::injections, "injections");
  for (const Match& match : query->matches(root, text_)) {
    const auto& properties = match.properties;
    std::optional<ParseConfiguration> configuration;
    std::optional<std::string> name;
    if (const auto language = properties.find("injection.language"); language != properties.end())
      name = language->second.value_or("");
    else if (properties.contains("injection.self"))
      configuration = layer.configuration;
    else if (properties.contains("injection.parent") && layer.parent)
      configuration = layer.parent->configuration;

    std::optional<Span> nameRange;
    Ranges nodes;
    std::optional<std::int64_t> start;
    std::optional<std::int64_t> end;
    for (const Capture& capture : match.captures) {
      const auto [a, b] = capture.range;
      if (capture.name == "injection.language" && !name) {
        name = utf8RepairingUTF16(textOf(capture.node, text_));
        nameRange = capture.range;
      }
      if (capture.name == "injection.content")
        nodes.push_back(capture.range);
      if (capture.name == "injection.content.start")
        start = std::max(start.value_or(b), b);
      if (capture.name == "injection.content.start.before")
        start = std::max(start.value_or(a), a);
      if (capture.name == "injection.content.end")
        end = std::min(end.value_or(a), a);
      if (capture.name == "injection.content.end.after")
        end = std::min(end.value_or(b), b);
    }
    if (start && end && *start < *end)
      nodes = {{*start, *end}};
    const Ranges content = intersected(normalized(nodes), layer.ranges);
    if (content.empty())
      continue;
    if (!configuration && name) {
      try {
        configuration =
            layer.configuration.resolver()->configurationMatching(*name, layer.configuration);
      } catch (const std::exception&) { // as good as unknown
      }
    }
    if (!configuration)
      continue;
    const Span range{content.front().first, content.back().second};
    if (configuration->id() == layer.configuration.id() &&
        layer.ranges.front().first == range.first && layer.ranges.back().second == range.second)
      continue;
    points.push_back({range, content, nameRange, *configuration,
                      properties.contains("injection.combined"),
                      properties.contains("injection.reset")});
  }
  sortByRange(points);
  return points;
}

Ranges Document::parseInjections(Layer& layer, const Parse::Layer& engine, const Edit& edit) {
  if (!query(layer, ParseQueryCategory::injections, "injections") || layer.depth >= 64) {
    layer.sublayers.clear();
    return {};
  }
  const std::vector<Point> points = this->points(layer, engine.root()->base());

  // Move what is there.
  std::map<const Layer*, Ranges> affected;
  for (const auto& sublayer : layer.sublayers) {
    Ranges ranges;
    Ranges touched;
    for (const auto& [a, b] : sublayer->ranges) {
      if (b <= edit.lower) {
        ranges.emplace_back(a, b);
        touched.emplace_back(a, b);
      } else if (a >= edit.oldUpper) {
        ranges.emplace_back(a + edit.change, b + edit.change);
        touched.emplace_back(a + edit.change, b + edit.change);
      } else {
        touched.emplace_back(std::min(a, edit.lower), std::max(b, edit.oldUpper) + edit.change);
      }
    }
    sublayer->ranges = normalized(ranges);
    affected[sublayer.get()] = normalized(touched);
    Ranges names;
    for (const auto& [a, b] : sublayer->languageNameRanges) {
      if (b <= edit.lower)
        names.emplace_back(a, b);
      else if (a >= edit.oldUpper)
        names.emplace_back(a + edit.change, b + edit.change);
    }
    sublayer->languageNameRanges = normalized(names);
  }

  // Find a sublayer for each point.
  const auto old = layer.sublayers;
  std::vector<std::shared_ptr<Layer>> now;
  std::map<std::string, std::shared_ptr<Layer>> combined;
  std::size_t cursor = 0;
  for (const Point& point : points) {
    const std::string id = point.configuration.id().rawValue;
    std::shared_ptr<Layer> sublayer;
    if (point.isCombined && combined.contains(id)) {
      sublayer = combined[id];
    } else {
      std::size_t at = cursor;
      std::size_t passed = cursor;
      for (; at < old.size(); ++at) {
        const Layer& candidate = *old[at];
        if (!candidate.ranges.empty()) {
          const Span first = candidate.ranges.front();
          const bool sameName =
              candidate.languageNameRanges.empty()
                  ? !point.languageNameRange
                  : point.languageNameRange == candidate.languageNameRanges.front();
          const bool fits = point.range == first && sameName;
          if (fits && candidate.configuration.id().rawValue == id) {
            sublayer = old[at];
            break;
          }
          const bool inside =
              first.first >= point.range.first && first.second <= point.range.second;
          if (!fits && (inside || first.first >= point.range.second))
            break;
        }
        passed = at;
      }
      cursor = sublayer ? at : passed;
      if (sublayer) {
        sublayer->ranges.clear();
        sublayer->includedRanges.clear();
        sublayer->languageNameRanges.clear();
      } else {
        const auto version = ts_language_abi_version(point.configuration.grammar()->base());
        if (version < 13 || version > 15)
          continue;
        sublayer = std::make_shared<Layer>(point.configuration, &layer);
      }
      sublayer->isCombined = point.isCombined;
      sublayer->resetsHighlights = point.resetsHighlights;
      now.push_back(sublayer);
      if (point.isCombined)
        combined[id] = sublayer;
    }
    sublayer->ranges = united(sublayer->ranges, point.contentRanges);
    sublayer->includedRanges.insert(sublayer->includedRanges.end(), point.contentRanges.begin(),
                                    point.contentRanges.end());
    if (point.languageNameRange)
      sublayer->languageNameRanges =
          united(sublayer->languageNameRanges, {*point.languageNameRange});
  }
  layer.sublayers = now;

  Ranges changed;
  for (const auto& sublayer : old) {
    if (std::ranges::find(now, sublayer) == now.end())
      changed = united(std::move(changed), affected[sublayer.get()]);
  }

  // The engine's sublayers must be these, the kept ones the same objects as before.
  const std::vector<Parse::Layer> there = engine.sublayers();
  if (there.size() != now.size())
    differ("The number of sublayers in a layer of " + layer.configuration.id().rawValue +
               " differs.",
           std::to_string(there.size()), std::to_string(now.size()));
  for (std::size_t index = 0; index < now.size(); ++index) {
    const bool wasThere = std::ranges::any_of(
        old, [&](const auto& each) { return each->identity == there[index].identity(); });
    if (now[index]->identity ? now[index]->identity != there[index].identity() : wasThere)
      differ("Sublayer " + std::to_string(index) + " is the wrong one.",
             wasThere ? "an old one" : "a new one",
             now[index]->identity ? "a certain old one" : "a new one");
    now[index]->identity = there[index].identity();
  }
  for (std::size_t index = 0; index < now.size(); ++index)
    changed = united(std::move(changed), reparse(*now[index], there[index], edit));
  return changed;
}

void Document::compareLayer(const Layer& layer, const Parse::Layer& engine) const {
  const std::string of = " of a layer of " + layer.configuration.id().rawValue + " differ.";
  if (engine.configuration().id() != layer.configuration.id())
    differ("The languages" + of, engine.configuration().id().rawValue,
           layer.configuration.id().rawValue);
  expectSame("The ranges" + of, rangesOf(engine.ranges()), layer.ranges);
  expectSame("The language name ranges" + of, rangesOf(engine.languageNameRanges()),
             layer.languageNameRanges);
  Ranges included;
  for (const TSRange& range : engine.includedRanges())
    included.emplace_back(range.start_byte / 2, range.end_byte / 2);
  expectSame("The included ranges" + of, included, layer.includedRanges);
  const auto flags = [](bool combined, bool resets, std::int64_t depth) {
    return std::string(combined ? "combined " : "") + (resets ? "resetting " : "") +
           std::to_string(depth);
  };
  const std::string there = flags(engine.isCombined(), engine.resetsHighlights(), engine.depth());
  const std::string expected = flags(layer.isCombined, layer.resetsHighlights, layer.depth);
  if (there != expected)
    differ("The flags" + of, there, expected);
}

void Document::compareSpans(const Layer& layer, const Parse::Layer& engine) {
  using Runs =
      std::vector<std::pair<std::int64_t, std::string>>; // where each begins, and its class
  const auto count = static_cast<std::int64_t>(text_.size());

  struct Pair {
    Span range;
    std::string lexicalClass;
  };
  std::vector<Pair> pairs;
  if (const auto query = this->query(layer, ParseQueryCategory::highlights, "lexical")) {
    const auto hasClass = [](const std::string& name) { return lexicalClassOf(name).has_value(); };
    for (const Match& match : query->matches(engine.root()->base(), text_, hasClass)) {
      for (const Capture& capture : match.captures)
        pairs.push_back({capture.range, *lexicalClassOf(capture.name)});
    }
  }
  sortByRange(pairs);

  std::map<std::int64_t, std::string> steps{{0, ""}};
  const auto write = [&](const Pair& pair) {
    if (pair.range.first == pair.range.second)
      return;
    const std::string behind = std::prev(steps.upper_bound(pair.range.second))->second;
    steps.erase(steps.lower_bound(pair.range.first), steps.upper_bound(pair.range.second));
    steps[pair.range.first] = pair.lexicalClass;
    steps[pair.range.second] = behind;
  };
  const Pair* current = nullptr;
  for (const Pair& next : pairs) {
    const bool overlap = current && std::max(current->range.first, next.range.first) <
                                        std::min(current->range.second, next.range.second);
    if (overlap && current->lexicalClass == next.lexicalClass)
      continue;
    current = &next;
    write(next);
  }

  const auto add = [](Runs& runs, std::int64_t start, const std::string& lexicalClass) {
    if (runs.empty() || runs.back().second != lexicalClass)
      runs.emplace_back(start, lexicalClass);
  };
  Runs expected;
  for (const auto& [start, lexicalClass] : steps) {
    if (start < count)
      add(expected, start, lexicalClass);
  }
  Runs there;
  for (const auto& run : engine.lexicalSpans().runs()) {
    if (!run.range.isEmpty())
      add(there, run.range.lowerBound, run.value ? std::string(run.value->rawValue()) : "");
  }
  const auto shownRuns = [](const Runs& runs) {
    std::ostringstream text;
    for (const auto& [start, lexicalClass] : runs)
      text << ' ' << start << ':' << (lexicalClass.empty() ? "-" : lexicalClass);
    return text.str();
  };
  if (engine.lexicalSpans().count() != count)
    differ("The length of the lexical spans differs.",
           std::to_string(engine.lexicalSpans().count()), std::to_string(count));
  if (there != expected)
    differ("The lexical spans of a layer of " + layer.configuration.id().rawValue + " differ.",
           shownRuns(there), shownRuns(expected));
}

} // namespace velmar::reference
