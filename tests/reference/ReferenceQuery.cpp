#include "tests/reference/ReferenceQuery.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <set>

namespace velmar::reference {

namespace {

bool removePrefix(std::string& text, std::string_view prefix) {
  if (!text.starts_with(prefix))
    return false;
  text.erase(0, prefix.size());
  return true;
}

std::optional<std::string> typeOf(TSNode node) {
  if (ts_node_is_null(node))
    return std::nullopt;
  return ts_node_type(node);
}

std::optional<std::string> fieldInParent(TSNode node) {
  const TSNode parent = ts_node_parent(node);
  if (ts_node_is_null(parent))
    return std::nullopt;
  for (std::uint32_t index = 0; index < ts_node_child_count(parent); ++index) {
    if (ts_node_eq(ts_node_child(parent, index), node)) {
      const char* const field = ts_node_field_name_for_child(parent, index);
      return field ? std::optional<std::string>(field) : std::nullopt;
    }
  }
  return std::nullopt;
}

} // namespace

Span rangeOf(TSNode node) {
  return {ts_node_start_byte(node) / 2, ts_node_end_byte(node) / 2};
}

Text textOf(TSNode node, const Text& text) {
  const auto [start, end] = rangeOf(node);
  return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

std::shared_ptr<Query> Query::compiled(const std::string& text, const TSLanguage* language) {
  std::uint32_t offset = 0;
  TSQueryError error = TSQueryErrorNone;
  TSQuery* const base =
      ts_query_new(language, text.data(), static_cast<std::uint32_t>(text.size()), &offset, &error);
  if (!base)
    return nullptr;
  std::shared_ptr<Query> query(new Query(base));
  const auto stringAt = [&](std::uint32_t id) {
    std::uint32_t length = 0;
    const char* const value = ts_query_string_value_for_id(base, id, &length);
    return std::string(value, length);
  };
  for (std::uint32_t pattern = 0; pattern < ts_query_pattern_count(base); ++pattern) {
    query->predicates_.emplace_back();
    std::uint32_t count = 0;
    const TSQueryPredicateStep* const steps =
        ts_query_predicates_for_pattern(base, pattern, &count);
    std::vector<Argument> arguments;
    for (std::uint32_t index = 0; index < count; ++index) {
      if (steps[index].type == TSQueryPredicateStepTypeCapture) {
        std::uint32_t length = 0;
        const char* const name = ts_query_capture_name_for_id(base, steps[index].value_id, &length);
        arguments.push_back({true, std::string(name, length)});
      } else if (steps[index].type == TSQueryPredicateStepTypeString) {
        arguments.push_back({false, stringAt(steps[index].value_id)});
      } else {
        query->predicates_.back().push_back(
            {arguments.front().text, {arguments.begin() + 1, arguments.end()}});
        arguments.clear();
      }
    }
  }
  return query;
}

std::vector<Match> Query::matches(TSNode root, const Text& text,
                                  const std::function<bool(const std::string&)>& enabled) {
  const auto nameOf = [&](std::uint32_t id) {
    std::uint32_t length = 0;
    const char* const name = ts_query_capture_name_for_id(base_.get(), id, &length);
    return std::string(name, length);
  };
  if (enabled && !capturesChosen_) {
    std::vector<std::string> disabled;
    for (std::uint32_t id = 0; id < ts_query_capture_count(base_.get()); ++id) {
      if (!enabled(nameOf(id)))
        disabled.push_back(nameOf(id));
    }
    for (const std::string& name : disabled)
      ts_query_disable_capture(base_.get(), name.data(), static_cast<std::uint32_t>(name.size()));
    capturesChosen_ = true;
  }

  std::vector<Match> found;
  TSQueryCursor* const cursor = ts_query_cursor_new();
  ts_query_cursor_exec(cursor, base_.get(), root);
  TSQueryMatch base;
  while (ts_query_cursor_next_match(cursor, &base)) {
    Match match{.pattern = base.pattern_index, .captures = {}, .properties = {}};
    for (std::uint16_t index = 0; index < base.capture_count; ++index) {
      const TSQueryCapture& capture = base.captures[index];
      match.captures.push_back({nameOf(capture.index), capture.node, rangeOf(capture.node)});
    }
    const auto& predicates = predicates_[base.pattern_index];
    bool passing = std::ranges::all_of(
        predicates, [&](const Predicate& each) { return passes(each, match, text); });
    if (!passing)
      continue;
    std::map<std::string, std::optional<std::string>> onCaptures; // keyed by "capture\nkey"
    for (const Predicate& predicate : predicates)
      set(predicate, match, onCaptures, text);
    for (const Predicate& predicate : predicates) {
      if (predicate.name != "is?" && predicate.name != "is-not?")
        continue;
      const bool negated = predicate.name == "is-not?";
      std::size_t at = predicate.arguments[0].isCapture ? 1 : 0;
      const std::string key =
          at == 0 ? predicate.arguments[0].text
                  : predicate.arguments[0].text + "\n" + predicate.arguments[1].text;
      const auto& properties = at == 0 ? match.properties : onCaptures;
      const auto stored = properties.find(key);
      if (at + 1 == predicate.arguments.size())
        passing = passing && (stored != properties.end()) != negated;
      else if (stored == properties.end())
        passing = passing && negated;
      else
        passing = passing && stored->second &&
                  (*stored->second == predicate.arguments[at + 1].text) != negated;
    }
    if (passing)
      found.push_back(std::move(match));
  }
  ts_query_cursor_delete(cursor);
  return found;
}

// One filter; everything else passes here.
bool Query::passes(const Predicate& predicate, const Match& match, const Text& text) {
  static const std::set<std::string> families{"eq?",
                                              "contains?",
                                              "match?",
                                              "has-type?",
                                              "has-parent?",
                                              "has-ancestor?",
                                              "has-parent-field?",
                                              "has-ancestor-field?",
                                              "nth?"};
  std::string family = predicate.name;
  const bool any = removePrefix(family, "any-");
  const bool negated = removePrefix(family, "not-");
  if (!families.contains(family))
    return true;
  bool all = true;
  bool some = false;
  for (const Capture& capture : match.captures) {
    if (capture.name != predicate.arguments[0].text)
      continue;
    const bool pass =
        passesFilter(family, predicate.arguments, capture.node, match, text) != negated;
    all = all && pass;
    some = some || pass;
  }
  return any ? some : all;
}

bool Query::passesFilter(const std::string& family, const std::vector<Argument>& arguments,
                         TSNode node, const Match& match, const Text& text) {
  const Text own = textOf(node, text);
  const auto named = [&](const std::optional<std::string>& name) {
    return name && std::any_of(arguments.begin() + 1, arguments.end(),
                               [&](const Argument& argument) { return argument.text == *name; });
  };
  if (family == "eq?")
    return someTextPasses(arguments, 1, arguments.size(), match, text,
                          [&](const Text& other) { return own == other; });
  if (family == "contains?")
    return someTextPasses(arguments, 1, arguments.size(), match, text,
                          [&](const Text& other) { return own.find(other) != Text::npos; });
  if (family == "match?")
    return hasMatch(arguments[1].text, own);
  if (family == "has-type?")
    return named(typeOf(node));
  if (family == "has-parent?")
    return named(typeOf(ts_node_parent(node)));
  if (family == "has-parent-field?")
    return named(fieldInParent(node));
  if (family == "has-ancestor?" || family == "has-ancestor-field?") {
    for (TSNode at = node; !ts_node_is_null(ts_node_parent(at)); at = ts_node_parent(at)) {
      if (named(family == "has-ancestor?" ? typeOf(ts_node_parent(at)) : fieldInParent(at)))
        return true;
    }
    return false;
  }
  const TSNode parent = ts_node_parent(node);
  if (ts_node_is_null(parent))
    return false;
  const std::int64_t count = ts_node_named_child_count(parent);
  std::int64_t index = std::stoll(arguments[1].text);
  index = index < 0 ? index + count : index;
  return index >= 0 && index < count &&
         ts_node_eq(ts_node_named_child(parent, static_cast<std::uint32_t>(index)), node);
}

bool Query::someTextPasses(const std::vector<Argument>& arguments, std::size_t from, std::size_t to,
                           const Match& match, const Text& text,
                           const std::function<bool(const Text&)>& test) {
  for (std::size_t index = from; index < to; ++index) {
    if (!arguments[index].isCapture) {
      if (test(utf16RepairingUTF8(arguments[index].text)))
        return true;
      continue;
    }
    for (const Capture& capture : match.captures) {
      if (capture.name == arguments[index].text && test(textOf(capture.node, text)))
        return true;
    }
  }
  return false;
}

bool Query::hasMatch(const std::string& pattern, const Text& text) {
  const auto expression = expressions_.try_emplace(pattern, pattern).first;
  return expression->second.hasMatchIn(text);
}

// One property setter; everything else does nothing here.
void Query::set(const Predicate& predicate, Match& match,
                std::map<std::string, std::optional<std::string>>& onCaptures, const Text& text) {
  const auto& arguments = predicate.arguments;
  const auto write = [&](std::size_t target, std::size_t key,
                         const std::optional<std::string>& value) {
    if (target != key)
      onCaptures[arguments[target].text + "\n" + arguments[key].text] = value;
    else
      match.properties[arguments[key].text] = value;
  };
  const auto keyBehind = [&](std::size_t at) { return arguments[at].isCapture ? at + 1 : at; };
  const auto valueBehind = [&](std::size_t key) {
    return key + 1 < arguments.size() ? std::optional(arguments[key + 1].text) : std::nullopt;
  };

  std::string family = predicate.name;
  if (family == "set!") {
    write(0, keyBehind(0), valueBehind(keyBehind(0)));
  } else if (removePrefix(family, "set-if-")) {
    const bool any = removePrefix(family, "any-");
    const bool negated = removePrefix(family, "not-");
    bool all = true;
    bool some = false;
    bool none = true;
    for (const Capture& capture : match.captures) {
      if (capture.name != arguments[0].text)
        continue;
      none = false;
      const Text own = textOf(capture.node, text);
      const bool test =
          family == "match!"
              ? hasMatch(arguments[1].text, own)
              : someTextPasses(arguments, 1, 2, match, text, [&](const Text& other) {
                  return family == "eq!" ? own == other : own.find(other) != Text::npos;
                });
      all = all && test != negated;
      some = some || test != negated;
    }
    if (any ? some : none ? negated : all)
      write(2, keyBehind(2), valueBehind(keyBehind(2)));
  } else if (removePrefix(family, "set-by-case-")) {
    const std::size_t key = keyBehind(1);
    const std::size_t cases = (arguments.size() - key - 1) / 2;
    const Capture* last = nullptr;
    for (const Capture& capture : match.captures) {
      if (capture.name == arguments[0].text)
        last = &capture;
    }
    for (std::size_t index = 0; last && index < cases; ++index) {
      const std::size_t at = key + 1 + index * 2;
      const Text own = textOf(last->node, text);
      const bool test = family == "match!"
                            ? hasMatch(arguments[at].text, own)
                            : someTextPasses(arguments, at, at + 1, match, text,
                                             [&](const Text& other) { return own == other; });
      if (test) {
        write(1, key, arguments[at + 1].text);
        return;
      }
    }
    if ((arguments.size() - key - 1) % 2 == 1)
      write(1, key, arguments.back().text);
  }
}

} // namespace velmar::reference
