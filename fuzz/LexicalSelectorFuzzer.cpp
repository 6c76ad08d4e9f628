// Selectors: any two texts are read or refused; a selector's own text reads as itself; matching and
// order keep their laws.

#include "VelmarCode/Syntax/LexicalSelector.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

using velmar::LexicalSelector;
using velmar::precondition;

void check(const LexicalSelector& a, const LexicalSelector& b) {
  precondition(LexicalSelector::fromString(a.string()) == a,
               "A selector's text doesn't read as that selector.");
  precondition(a.matches(a) == (a != LexicalSelector::null), "A selector doesn't match itself.");
  precondition(((a <=> b) == 0) == (a == b), "Order and equality disagree.");
  precondition(((a <=> b) < 0) == ((b <=> a) > 0), "The order isn't one.");
  // The less specific can't be matched by the more specific, and both match each other only if they
  // have the same names.
  if (!a.components().empty() && !b.components().empty()) {
    precondition(!a.matches(b) || a.specificity() <= b.specificity(),
                 "More names are among fewer.");
    precondition((a.matches(b) && b.matches(a)) == (a.components() == b.components()),
                 "Names aren't matched by names.");
    precondition(a.matches(b) == a.matchesComponents(b.components()),
                 "A selector and its names are matched differently.");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t split = input.find('|');
  const auto a = LexicalSelector::fromString(input.substr(0, split));
  const auto b =
      split == std::string_view::npos ? a : LexicalSelector::fromString(input.substr(split + 1));
  if (a && b)
    check(*a, *b);
  return 0;
}
