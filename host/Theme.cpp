#include "host/Theme.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace velmar::host {

namespace {

constexpr Color rgb(std::uint32_t hex) {
  return {.red = static_cast<std::uint8_t>(hex >> 16),
          .green = static_cast<std::uint8_t>(hex >> 8 & 0xFF),
          .blue = static_cast<std::uint8_t>(hex & 0xFF)};
}

// Each keeps a contrast of 4.5 to 1 or more on the two backgrounds of the pages.
constexpr Ink inkTable[] = {
    {"keyword", rgb(0xD18BE8), rgb(0x8A2BAE)},   {"comment", rgb(0x8B96A5), rgb(0x626C78)},
    {"doc", rgb(0x8FB39F), rgb(0x3F6E53)},       {"string", rgb(0x9CCC7A), rgb(0x357218)},
    {"escape", rgb(0xE0B060), rgb(0x8F5200)},    {"regex", rgb(0xF09A86), rgb(0xA83B22)},
    {"constant", rgb(0xE8A76C), rgb(0x9A4D08)},  {"function", rgb(0x72B6F5), rgb(0x1B5DAE)},
    {"type", rgb(0x5FC9C0), rgb(0x0B706A)},      {"parameter", rgb(0xE3C9A0), rgb(0x75551A)},
    {"builtin", rgb(0xEE8E98), rgb(0xAE2C3B)},   {"property", rgb(0xA9C7EF), rgb(0x2C5A8E)},
    {"tag", rgb(0xF2858F), rgb(0xB22B40)},       {"attribute", rgb(0xD9B36C), rgb(0x805506)},
    {"operator", rgb(0xA8BCCF), rgb(0x475D70)},  {"punctuation", rgb(0x9FAAB6), rgb(0x56616D)},
    {"namespace", rgb(0xB5B0F0), rgb(0x5349B5)}, {"heading", rgb(0x7FC1FF), rgb(0x144F99)},
    {"link", rgb(0x6FC3DF), rgb(0x0A6985)},      {"error", rgb(0xFF7B7B), rgb(0xC01E1E)},
};

struct Row {
  std::string_view selectors; ///< With blanks between them.
  std::string_view ink;       ///< Empty leaves the colour as it is.
  Look style = {};
};

constexpr Look bold{.isBold = true};
constexpr Look italic{.isItalic = true};
constexpr Look boldItalic{.isBold = true, .isItalic = true};
constexpr Look underlined{.isUnderlined = true};
constexpr Look struck{.isStruck = true};

// clang-format off: a table.
constexpr Row ruleTable[] = {
    {"attribute", "attribute"},
    {"character escape", "escape"},
    {"comment", "comment", italic},
    {"comment.doc", "doc", italic},
    {"comment.doc.annotation", "doc", boldItalic},
    {"doc", "doc", italic},
    {"constant number boolean float", "constant"},
    {"constant.builtin", "constant"},
    {"function method", "function"},
    {"function.builtin function.macro", "builtin"},
    {"function.constructor constructor", "type"},
    {"keyword conditional repeat include exception storageclass", "keyword"},
    {"keyword.directive preproc", "attribute"},
    {"label", "namespace"},
    {"namespace module", "namespace"},
    {"operator", "operator"},
    {"property field", "property"},
    {"property.definition", "property"},
    {"punctuation delimiter", "punctuation"},
    {"punctuation.special punctuation.bracket.substitution", "escape"},
    {"regex string.regex string.regexp", "regex"},
    {"regex.escape regex.class regex.quantifier regex.anchor regex.group", "escape"},
    {"regex.flag regex.name", "keyword"},
    {"selector", "attribute"},
    {"selector.class selector.id", "function"},
    {"string", "string"},
    {"string.escape string.special", "escape"},
    {"string.key", "property"},
    {"string.url string.path", "string", underlined},
    {"tag", "tag"},
    {"tag.component tag.custom", "type"},
    {"tag.invalid error", "error", underlined},
    {"type", "type"},
    {"type.builtin", "type", italic},
    {"variable.builtin", "builtin", italic},
    {"variable.custom variable.member", "property"},
    {"variable.parameter parameter", "parameter"},
    {"markup.bold text.strong", "", bold},
    {"markup.italic text.emphasis", "", italic},
    {"markup.bold.italic", "", boldItalic},
    {"markup.strikethrough", "", struck},
    {"markup.code markup.math text.literal", "string"},
    {"markup.heading text.title", "heading", bold},
    {"markup.info", "comment"},
    {"markup.info.language", "keyword"},
    {"markup.link markup.image", "link"},
    {"markup.reference text.reference", "namespace"},
    {"markup.url text.uri", "link", underlined},
    {"markup.list", "builtin", bold},
    {"markup.list.checked markup.list.unchecked", "constant", bold},
    {"markup.metadata markup.rule", "punctuation"},
    {"markup.quote", "doc", italic},
    {"markup.table.header", "", bold},
};
// clang-format on

std::int32_t inkNamed(std::string_view name) {
  const auto found = std::ranges::find(inkTable, name, &Ink::name);
  precondition(found != std::ranges::end(inkTable),
               "A rule of the theme names an ink there isn't.");
  return static_cast<std::int32_t>(found - std::ranges::begin(inkTable));
}

/// The rules of one row.
void append(std::vector<Theme::Rule>& rules, const Row& row) {
  Look look = row.style;
  if (!row.ink.empty())
    look.ink = inkNamed(row.ink);
  std::string_view rest = row.selectors;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    const auto selector = LexicalSelector::fromString(rest.substr(0, end));
    precondition(selector.has_value(), "A rule of the theme has a bad selector.");
    rules.push_back({*selector, look});
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

int distance(Color a, Color b) noexcept {
  const auto squared = [](int difference) { return difference * difference; };
  return squared(a.red - b.red) + squared(a.green - b.green) + squared(a.blue - b.blue);
}

} // namespace

Look Look::over(const Look& below) const noexcept {
  return {.ink = ink ? ink : below.ink,
          .isBold = isBold || below.isBold,
          .isItalic = isItalic || below.isItalic,
          .isUnderlined = isUnderlined || below.isUnderlined,
          .isStruck = isStruck || below.isStruck};
}

const Theme& Theme::builtIn() {
  static const Theme theme = [] {
    std::vector<Rule> rules;
    for (const Row& row : ruleTable)
      append(rules, row);
    return Theme({std::begin(inkTable), std::end(inkTable)}, std::move(rules));
  }();
  return theme;
}

std::optional<Look> Theme::lookFor(const LexicalSelector& selector) const {
  const Rule* best = nullptr;
  for (const Rule& rule : rules_) {
    if (rule.selector.matches(selector) &&
        (!best || rule.selector.specificity() >= best->selector.specificity()))
      best = &rule;
  }
  return best ? std::optional(best->look) : std::nullopt;
}

std::uint8_t nearestOf256(Color color) noexcept {
  // The six levels of a channel in the cube.
  constexpr std::array<int, 6> levels{0, 95, 135, 175, 215, 255};
  const auto nearestLevel = [&](int value) {
    return static_cast<int>(
        std::ranges::min_element(levels, {}, [&](int level) { return std::abs(level - value); }) -
        levels.begin());
  };
  const auto levelAt = [&](int index) {
    return static_cast<std::uint8_t>(levels[static_cast<std::size_t>(index)]);
  };
  const int red = nearestLevel(color.red);
  const int green = nearestLevel(color.green);
  const int blue = nearestLevel(color.blue);

  // The greys are 8, 18, 28, … 238.
  const int average = (color.red + color.green + color.blue) / 3;
  const int grey = std::clamp((average - 3) / 10, 0, 23);
  const auto greyLevel = static_cast<std::uint8_t>(8 + 10 * grey);

  const int cubeDistance = distance(color, {levelAt(red), levelAt(green), levelAt(blue)});
  const int greyDistance = distance(color, {greyLevel, greyLevel, greyLevel});
  const int index = greyDistance < cubeDistance ? 232 + grey : 16 + 36 * red + 6 * green + blue;
  return static_cast<std::uint8_t>(index);
}

} // namespace velmar::host
