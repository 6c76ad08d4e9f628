#include "host/PagePicture.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::string_view styleSheet = R"(:root {
  color-scheme: light dark;
  --paper: #ffffff; --text: #24292f; --faint: #6b7480; --rule: #d8dde3; --tint: 40, 90, 200;
}
@media (prefers-color-scheme: dark) {
  :root { --paper: #15191f; --text: #dbe1e8; --faint: #7d8794; --rule: #2c333c; --tint: 120, 170, 255; }
}
body { margin: 0; background: var(--paper); color: var(--text); font: 14px/1.5 ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; }
header { padding: 1em 1.5em 0.8em; border-bottom: 1px solid var(--rule); }
h1 { margin: 0; font-size: 1.15em; }
header p { margin: 0.2em 0 0; color: var(--faint); }
pre { margin: 0; padding: 1em 1.5em 3em 0; font: inherit; tab-size: 4; overflow-x: auto; }
.n { display: inline-block; width: 5ch; padding-right: 2ch; text-align: right; background: var(--paper); color: var(--faint); text-decoration: none; user-select: none; font-style: normal; font-weight: normal; }
.n::before { counter-increment: line; content: counter(line); }
.layer:hover, .shown .layer { background: rgba(var(--tint), 0.09); }
.shown .layer:hover { background: rgba(var(--tint), 0.2); }
.n:target::before { color: var(--text); font-weight: bold; }
.f::after { content: "▾"; position: absolute; }
nav { padding: 0.8em 1.5em; border-bottom: 1px solid var(--rule); max-height: 50vh; overflow: auto; }
nav ul { margin: 0; padding-left: 1.5em; list-style: none; }
nav a { color: inherit; text-decoration: none; }
nav i { color: var(--faint); }
nav .separator { border-top: 1px solid var(--rule); }
.b { font-weight: bold; } .i { font-style: italic; } .u { text-decoration: underline; } .s { text-decoration: line-through; } .u.s { text-decoration: underline line-through; }
.stand-in { border: 1px solid currentColor; border-radius: 3px; font-size: 0.85em; opacity: 0.8; }
)";

std::string hex(Color color) {
  return fmt::format("#{:02x}{:02x}{:02x}", color.red, color.green, color.blue);
}

std::string inkRules(const Theme& theme) {
  std::string rules;
  for (const Ink& ink : theme.inks())
    rules += fmt::format(".{} {{ color: {}; }}\n", ink.name, hex(ink.onLight));
  rules += "@media (prefers-color-scheme: dark) {\n";
  for (const Ink& ink : theme.inks())
    rules += fmt::format("  .{} {{ color: {}; }}\n", ink.name, hex(ink.onDark));
  return rules + "}\n";
}

} // namespace

std::string escapedHTML(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char letter : text) {
    switch (letter) {
    case '&':
      escaped += "&amp;";
      break;
    case '<':
      escaped += "&lt;";
      break;
    case '>':
      escaped += "&gt;";
      break;
    case '"':
      escaped += "&quot;";
      break;
    case '\'':
      escaped += "&#39;";
      break;
    default:
      escaped += letter;
    }
  }
  return escaped;
}

void PagePicture::writeHead(std::string_view summary) {
  const std::string title = escapedHTML(options_.title);
  output_.write("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width\">\n");
  output_.write(fmt::format("<title>{}</title>\n<style>\n", title));
  output_.write(styleSheet);
  output_.write(inkRules(theme_));
  output_.write(fmt::format("pre {{ counter-reset: line {}; }}\n", options_.firstLine - 1));
  // The sheet's gutter holds numbers of four digits with a blank in front.
  if (const auto digits = std::to_string(parse().text().lineCount()).size(); digits > 4)
    output_.write(fmt::format(".n {{ width: {}ch; }}\n", digits + 1));
  output_.write(fmt::format("</style>\n</head>\n<body{}>\n<header>\n<h1>{}</h1>\n<p>{}</p>\n",
                            options_.showsLayers ? " class=\"shown\"" : "", title,
                            escapedHTML(summary)));
  // A line feed right behind the tag wouldn't count, so an empty first line needs one to spare.
  output_.write("</header>\n");
  if (!options_.outline.empty())
    output_.write(fmt::format("<nav>{}\n</nav>\n", options_.outline));
  output_.write("<pre>\n");
}

void PagePicture::writeFoot() {
  enterLayer(0);
  output_.write("</pre>\n</body>\n</html>\n");
}

void PagePicture::startLine() {
  const auto fold = options_.folds.find(options_.firstLine);
  output_.write(fmt::format(
      "<a class=\"n{1}\" id=\"L{0}\" href=\"#L{0}\"{2}></a>", options_.firstLine,
      fold != options_.folds.end() ? " f" : "",
      fold != options_.folds.end() ? fmt::format(" title=\"{}\"", escapedHTML(fold->second)) : ""));
  ++options_.firstLine;
}

/// Closes and opens elements so that those of `layer` and the layers above it are open, and no
/// others.
void PagePicture::enterLayer(std::int32_t layer) {
  if ((open_.empty() ? 0 : open_.back()) == layer)
    return;
  std::vector<std::int32_t> chain;
  for (std::int32_t above = layer; above > 0; above = painter().parentOf(above))
    chain.push_back(above);
  std::ranges::reverse(chain);

  const auto common = std::ranges::mismatch(open_, chain);
  for (auto closed = open_.end(); closed != common.in1; --closed)
    output_.write("</span>");
  for (auto opened = common.in2; opened != chain.end(); ++opened)
    output_.write(openingTagOf(*opened));
  open_ = std::move(chain);
}

std::string PagePicture::openingTagOf(std::int32_t layer) const {
  const Parse::Layer& entered = painter().layers()[static_cast<std::size_t>(layer)];
  const std::string language = escapedHTML(entered.configuration().id().rawValue);
  return fmt::format("<span class=\"layer\" data-language=\"{0}\" data-depth=\"{1}\" "
                     "data-layer=\"{2}\" title=\"{0}, depth {1}{3}{4}\">",
                     language, entered.depth(), layer, entered.isCombined() ? ", combined" : "",
                     entered.resetsHighlights() ? ", resets colours" : "");
}

std::string PagePicture::classesOf(const Look& look) const {
  std::string classes;
  const auto add = [&](bool isSet, std::string_view name) {
    if (!isSet)
      return;
    classes += classes.empty() ? "" : " ";
    classes += name;
  };
  if (look.ink)
    add(true, theme_.inks()[static_cast<std::size_t>(*look.ink)].name);
  add(look.isBold, "b");
  add(look.isItalic, "i");
  add(look.isUnderlined, "u");
  add(look.isStruck, "s");
  return classes;
}

void PagePicture::writePiece(const PaintedRun& run, const VisibleText::Piece& piece) {
  enterLayer(run.layer);
  const std::string text = escapedHTML(piece.text);
  const std::string classes = classesOf(run.look);
  if (piece.isStandIn) {
    output_.write(fmt::format("<span class=\"stand-in\">{}</span>", text));
  } else if (classes.empty() && run.capture < 0) {
    output_.write(text);
  } else {
    const Parse::Layer& layer = painter().layers()[static_cast<std::size_t>(run.layer)];
    const std::string name =
        run.capture < 0 ? std::string()
                        : painter().captureNames()[static_cast<std::size_t>(run.capture)] + " · ";
    output_.write(fmt::format("<span class=\"{}\" title=\"{}{}\">{}</span>", classes, name,
                              escapedHTML(layer.configuration().id().rawValue), text));
  }
}

} // namespace velmar::host
