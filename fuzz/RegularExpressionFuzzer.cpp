// Any pattern on any text: nothing hangs or overflows, the short cut for literal patterns gives the
// engine's answers, a string gives those of a document, and walking over all matches comes to an
// end.
//
// An input is one character for the options, the pattern up to the first line feed, and the text.

#include "VelmarCore/Text/RegularExpression.h"

#include "VelmarCore/Text/RegexScanner.h"
#include "VelmarCore/Text/RegularExpressionMatches.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace velmar;

namespace {

using Clock = std::chrono::steady_clock;
using Start = CompiledPattern::Start;
using Outcome = CompiledPattern::Outcome;

constexpr RegularExpressionPass::Limits limits = {.perSearch = std::chrono::milliseconds(20),
                                                  .perPattern = std::chrono::milliseconds(200)};

/// Bytes as units, so that there are lone surrogates of all kinds: a DEL makes a surrogate of the
/// byte behind it.
std::u16string unitsOf(std::string_view bytes) {
  std::u16string units = utf16RepairingUTF8(bytes);
  std::u16string result;
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (units[i] == 0x7F && i + 1 < units.size())
      result.push_back(static_cast<char16_t>(0xD800 | (units[++i] << 4 & 0x7FF)));
    else
      result.push_back(units[i]);
  }
  return result;
}

void checkShortCut(const CompiledPattern& pattern, std::u16string_view text) {
  for (const Start start : {Start::anywhere, Start::anchored}) {
    for (const std::size_t from : {std::size_t{0}, text.size()}) {
      CompiledPattern::Groups groups;
      CompiledPattern::Groups engineGroups;
      const auto search = pattern.search(text, from, start, limits.perSearch, &groups);
      const auto engine =
          PatternSession(pattern, text).search(from, start, limits.perSearch, &engineGroups);
      if (search.outcome == Outcome::stopped || engine.outcome == Outcome::stopped)
        return;
      precondition(search.outcome == engine.outcome, "The short cut finds what the engine finds.");
      precondition(groups == engineGroups, "The short cut finds it where the engine does.");
    }
  }
}

/// A document's match and a string's are the same text.
void checkEncodings(const RegularExpression& expression, const std::string& text) {
  RegularExpressionPass pass(limits);
  const std::u16string units = utf16RepairingUTF8(text);
  const auto inString = expression.firstMatchIn(text, &pass);
  const auto inDocument = expression.firstMatchIn(units, &pass);
  const bool found = expression.hasMatchIn(text, &pass);
  if (!pass.patternsOff().empty())
    return;
  precondition(found == inDocument.has_value(), "A string matches where a document does.");
  if (!inString)
    return; // half of a character may match in a document, and never in a string
  precondition(inDocument && inString->count() == inDocument->count(), "The groups are the same.");
  for (std::int64_t i = 0; i < inString->count(); ++i)
    if (const auto& group = (*inString)[i]; group.substring)
      precondition(*group.substring == utf8RepairingUTF16(*(*inDocument)[i].substring),
                   "A group holds the same text in both.");
  (void)expression.replacementFor(*inString, text);
  (void)expression.replacementFor(*inDocument, units);
}

template <class Text>
void checkMatches(const RegularExpression& expression, const Text& text) {
  RegularExpressionPass pass(limits);
  std::int64_t lastEnd = 0;
  std::size_t count = 0;
  for (const auto& match : expression.matchesIn(text, {.pass = &pass})) {
    precondition(match.range().lowerBound >= lastEnd, "Matches don't overlap.");
    lastEnd = match.range().upperBound;
    precondition(++count <= text.size(), "There are no more matches than characters.");
  }
  precondition(lastEnd <= static_cast<std::int64_t>(text.size()), "Matches lie in the text.");
}

void checkScanner(const RegularExpression& expression, const std::string& text) {
  RegularExpressionPass pass(limits);
  RegexScanner scanner(text);
  while (!scanner.isAtEnd()) {
    const std::int64_t before = scanner.currentIndex();
    const auto passed = scanner.scanUpTo(expression, &pass);
    precondition(passed.has_value() == (scanner.currentIndex() > before),
                 "What was passed over is told.");
    const std::int64_t atMatch = scanner.currentIndex();
    const auto match = scanner.scan(expression, &pass);
    precondition(scanner.currentIndex() == (match ? match->range().upperBound : atMatch),
                 "Only a match moves the scanner.");
    if (scanner.currentIndex() == before)
      scanner.advance();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Some of the checks search once for each character.
  if (size < 2 || size > 4096)
    return 0;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto options = RegularExpressionOptions(data[0] & 31);
  const std::size_t lineEnd = std::min(input.find('\n', 1), input.size());
  const std::string pattern = repairedUTF8(input.substr(1, lineEnd - 1));
  const std::string_view rest = input.substr(std::min(lineEnd + 1, input.size()));
  const std::string text = repairedUTF8(rest);

  const auto start = Clock::now();
  const auto expression = RegularExpression::compile(pattern, options);
  if (!expression) {
    precondition(expression.error().offset() <= static_cast<std::int64_t>(pattern.size()),
                 "An error lies in the pattern.");
    return 0;
  }
  (void)expression->captureNames();
  const std::u16string units = unitsOf(rest);
  checkShortCut(**CompiledPattern::compile(pattern, options), units);
  checkEncodings(*expression, text);
  checkMatches(*expression, text);
  checkMatches(*expression, units);
  checkScanner(*expression, text);
  precondition(Clock::now() - start < std::chrono::seconds(20), "Nothing hangs.");
  return 0;
}
