#include "VelmarParser/Cursor/Words.h"

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarCore/Text/RegularExpressionPass.h"
#include "VelmarParser/Cursor/PlainRuns.h"
#include "VelmarPlatform/Unicode/Characters.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <array>
#include <optional>

namespace velmar {

namespace {

using Units = std::u16string_view;

constexpr bool isDigit(char16_t unit) {
  return unit >= u'0' && unit <= u'9';
}

constexpr bool isASCIIWordUnit(char16_t unit) {
  return isDigit(unit) || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
         unit == u'_';
}

bool isASCII(Units text) {
  char16_t all = 0;
  for (const char16_t unit : text)
    all |= unit;
  return all < 0x80;
}

/// The pattern of a language whose identifiers may have these characters, too.
RegularExpression patternWith(std::string_view characters) {
  static const RegularExpression plain(R"(\w+)");
  if (characters.empty())
    return plain;
  std::string pattern = R"([\w)";
  for (const char character : characters) {
    if (character == '^' || character == '-')
      pattern += '\\';
    pattern += character;
  }
  auto compiled = RegularExpression::compile(pattern + "]+");
  return compiled ? *std::move(compiled) : plain;
}

/// Finds the words of one language in pieces of text.
class WordReader {
public:
  WordReader(std::string_view characters, WordRanges& words)
      : pattern_(patternWith(characters)), words_(words) {
    isSimple_ = characters.find_first_not_of(simpleSigns) == std::string_view::npos;
    for (char16_t unit = 0; unit < 0x80; ++unit)
      belongs_[unit] = isASCIIWordUnit(unit) ||
                       characters.find(static_cast<char>(unit)) != std::string_view::npos;
  }

  void read(Units text, std::int64_t offset) {
    if (isSimple_ && isASCII(text))
      readASCII(text, offset);
    else
      readAny(text, offset);
  }

private:
  /// Mean nothing but themselves between the brackets of a pattern.
  static constexpr std::string_view simpleSigns = "$_-?!@#%'.:*+/<>=~;,^";

  void readASCII(Units text, std::int64_t offset) {
    for (std::size_t start = 0; start < text.size(); ++start) {
      if (!belongs_[text[start]])
        continue;
      std::size_t end = start;
      bool isNumber = true;
      for (; end < text.size() && belongs_[text[end]]; ++end)
        isNumber = isNumber && (isDigit(text[end]) || text[end] == u'.');
      if (end - start >= 2 && !isNumber) {
        ascii_.assign(text.begin() + static_cast<std::ptrdiff_t>(start),
                      text.begin() + static_cast<std::ptrdiff_t>(end));
        add(ascii_,
            {offset + static_cast<std::int64_t>(start), offset + static_cast<std::int64_t>(end)});
      }
      start = end;
    }
  }

  void readAny(Units text, std::int64_t offset) {
    static const RegularExpression number(R"([\d.]+)");
    std::size_t from = 0;
    while (from < text.size()) {
      const Units rest = text.substr(from);
      const auto match = pattern_.firstMatchIn(rest, &pass_);
      if (!match || match->range().isEmpty())
        return;
      const Units word = match->substring();
      if (characterCount(word) >= 2 && !number.wholeMatchIn(word, &pass_)) {
        const std::int64_t start =
            offset + static_cast<std::int64_t>(from) + match->range().lowerBound;
        add(utf8RepairingUTF16(word), {start, start + std::ssize(word)});
      }
      from += static_cast<std::size_t>(match->range().upperBound);
    }
  }

  void add(std::string_view word, TextRange range) {
    auto entry = words_.find(word);
    if (entry == words_.end())
      entry = words_.try_emplace(std::string(word)).first;
    entry->second.push_back(range);
  }

  RegularExpression pattern_;
  WordRanges& words_;
  RegularExpressionPass pass_;
  bool isSimple_ = false;
  std::array<bool, 0x80> belongs_{};
  std::string ascii_;
};

} // namespace

WordRanges identifierWordsIn(const Parse& parse, TextRange range) {
  WordRanges words;
  for (const Parse::Layer& layer : parse.layersIntersecting(range)) {
    WordReader reader(layer.configuration().syntax().identifiers.characters.value_or(""), words);
    detail::forEachPlainRun(layer,
                            [&](Units text, std::int64_t offset) { reader.read(text, offset); });
  }
  return words;
}

} // namespace velmar
