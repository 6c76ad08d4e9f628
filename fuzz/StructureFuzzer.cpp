// Structure and the answers at the cursor: whatever text a document of the packs holds, its outline
// is in order and lies in the text, brackets come in pairs, and every place has an answer.

#include "VelmarParser/Structure/Structure.h"

#include "VelmarParser/Cursor/Brackets.h"
#include "VelmarParser/Cursor/Checking.h"
#include "VelmarParser/Cursor/Indents.h"
#include "VelmarParser/Cursor/Tags.h"
#include "VelmarParser/Cursor/Words.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "host/Languages.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace velmar;

ParseConfiguration language(std::uint8_t choice) {
  static constexpr std::array<const char*, 8> names{"html", "markdown",   "javascript", "tsx",
                                                    "cpp",  "typescript", "css",        "c"};
  // Never destroyed: configurations refer to it.
  static auto& languages = *new host::Languages({.packs = FilePath(sourcePath("packs")),
                                                 .shipped = FilePath(sourcePath("packs")),
                                                 .note = ""});
  return *languages.configurationFor(LanguageID(names[choice % names.size()]));
}

bool holds(TextRange outer, TextRange inner) {
  return outer.lowerBound <= inner.lowerBound && inner.upperBound <= outer.upperBound;
}

template <class Element>
bool isInOrder(const std::vector<Element>& elements) {
  return std::ranges::is_sorted(elements, {},
                                [](const Element& each) { return each.range.lowerBound; });
}

void checkStructure(const Parse& document) {
  const TextRange whole(0, document.count());
  const Structure structure = parseStructure(document.rootLayer());
  precondition(isInOrder(structure.symbols) && isInOrder(structure.folds),
               "The outline isn't in order.");
  for (const CodeSymbol& symbol : structure.symbols) {
    precondition(holds(whole, symbol.range) && holds(whole, symbol.nameRange),
                 "A symbol lies outside the text.");
    precondition(symbol.name.find('\n') == std::string::npos, "A name has several lines.");
    precondition(isValidUTF8(symbol.name), "A name isn't text.");
  }
  std::vector<TextRange> around;
  for (const CodeFoldingRegion& fold : structure.folds) {
    while (!around.empty() && !around.back().contains(fold.range.lowerBound))
      around.pop_back();
    precondition(fold.level == std::ssize(around), "A fold's level isn't its depth.");
    precondition(holds(whole, fold.range) && !fold.range.isEmpty(),
                 "A fold lies outside the text.");
    around.push_back(fold.range);
  }
}

void checkCursor(const Parse& document) {
  std::int64_t brackets = 0;
  for (const TextRangeSet& depth : bracketDepths(document)) {
    precondition(!depth.isEmpty(), "A depth has no brackets.");
    for (const TextRange& range : depth.ranges())
      brackets += range.length();
  }
  precondition(brackets <= document.count(), "A bracket was counted twice.");
  for (const auto& [word, ranges] : identifierWordsIn(document, {0, document.count()})) {
    for (const TextRange& range : ranges)
      precondition(utf8RepairingUTF16(document.textFor(range)) == word, "A word isn't there.");
  }
  // As many as keep an input fast; all places of a small text.
  const std::int64_t step = 1 + document.count() / 64;
  for (std::int64_t offset = 0; offset <= document.count(); offset += step) {
    precondition(lineIndentAt(document, offset).levels >= 0, "A line is indented to the left.");
    for (const Parse::Layer& layer : document.layersIntersecting({offset, offset})) {
      const auto tags = matchingTagsAt(layer, offset);
      precondition(tags.empty() || tags.size() == 2, "Tags don't come in pairs.");
    }
  }
  for (const Parse::Layer& layer : document.layers()) {
    static_cast<void>(textCheckingRangesIntersecting(layer, {0, document.count()}));
    static_cast<void>(colorCandidatesIn(layer, {0, document.count()}));
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t longestText = 4000;
  if (size < 1)
    return 0;
  Parse document(language(data[0]));
  document.replaceSubrange({0, 0}, utf16RepairingUTF8({reinterpret_cast<const char*>(data + 1),
                                                       std::min(size - 1, longestText)}));
  checkStructure(document);
  checkCursor(document);
  return 0;
}
