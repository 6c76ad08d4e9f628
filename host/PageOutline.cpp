#include "host/PageOutline.h"

#include "host/OutlineText.h"
#include "host/PagePicture.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

std::string outlineAsHTML(const std::vector<CodeSymbol>& symbols, const DocumentText& text,
                          TextRange range) {
  std::vector<CodeSymbol> shown;
  std::ranges::copy_if(symbols, std::back_inserter(shown), [&](const CodeSymbol& symbol) {
    return range.contains(symbol.range.lowerBound);
  });
  const auto depths = depthsOf(shown);
  std::string list;
  std::int64_t open = 0; // lists, each but the first in an item
  for (std::size_t index = 0; index < shown.size(); ++index) {
    const CodeSymbol& symbol = shown[index];
    for (; open > depths[index] + 1; --open)
      list += "</li></ul>";
    if (open == depths[index] + 1)
      list += "</li>";
    for (; open < depths[index] + 1; ++open)
      list += "\n<ul>";
    const bool isSeparator = symbol.traits.contains(CodeSymbol::Traits::separator);
    list += fmt::format("\n<li{}><a href=\"#L{}\"><i>{}</i> {}</a>",
                        isSeparator ? " class=\"separator\"" : "",
                        text.indexOfLineContaining(symbol.range.lowerBound) + 1,
                        escapedHTML(symbol.kind.description()), escapedHTML(titleOf(symbol)));
  }
  for (; open > 0; --open)
    list += "</li></ul>";
  return list;
}

std::map<std::int64_t, std::string> foldTitles(const std::vector<CodeFoldingRegion>& folds,
                                               const DocumentText& text) {
  std::map<std::int64_t, std::string> titles;
  for (const CodeFoldingRegion& fold : folds) {
    std::string& title = titles[text.indexOfLineContaining(fold.range.lowerBound) + 1];
    title += fmt::format(
        "{}{} to {}", title.empty() ? "" : ", ", fold.role ? fold.role->rawValue : "text",
        text.indexOfLineContaining(std::max(fold.range.lowerBound, fold.range.upperBound - 1)) + 1);
  }
  return titles;
}

} // namespace velmar::host
