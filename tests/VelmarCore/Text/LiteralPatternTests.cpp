#include "VelmarCore/Text/LiteralPattern.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <gtest/gtest.h>
#include <unicode/uregex.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

std::ostream& operator<<(std::ostream& stream, const LiteralPattern::Hit& hit) {
  return stream << hit.start << "..<" << hit.end;
}

namespace {

using namespace std::string_literals;
using Hit = LiteralPattern::Hit;
using Options = RegularExpressionOptions;

/// The engine, asked directly: the model for everything here.
class Oracle {
public:
  Oracle(std::u16string_view pattern, std::uint32_t flags) {
    UErrorCode status = U_ZERO_ERROR;
    regex_.reset(uregex_open(pattern.data(), static_cast<std::int32_t>(pattern.size()), flags,
                             nullptr, &status));
    if (U_FAILURE(status))
      regex_.reset();
  }
  [[nodiscard]] bool isValid() const { return regex_ != nullptr; }

  /// The range of the match, and of the group if there is one.
  [[nodiscard]] std::vector<Hit> find(std::u16string_view text, std::size_t from, bool anchored) {
    UErrorCode status = U_ZERO_ERROR;
    const auto place = static_cast<std::int32_t>(from);
    uregex_setText(regex_.get(), text.data(), static_cast<std::int32_t>(text.size()), &status);
    const bool found = anchored ? uregex_lookingAt(regex_.get(), place, &status)
                                : uregex_find(regex_.get(), place, &status);
    std::vector<Hit> hits;
    for (std::int32_t group = 0; found && group <= uregex_groupCount(regex_.get(), &status);
         ++group)
      hits.push_back({static_cast<std::size_t>(uregex_start(regex_.get(), group, &status)),
                      static_cast<std::size_t>(uregex_end(regex_.get(), group, &status))});
    EXPECT_TRUE(U_SUCCESS(status));
    return hits;
  }

private:
  struct Deleter {
    void operator()(URegularExpression* regex) const { uregex_close(regex); }
  };
  std::unique_ptr<URegularExpression, Deleter> regex_;
};

/// Pieces that make many literal patterns, and some that only look like it.
const std::vector<std::u16string> patternPieces = {
    u"^",   u"^(",     u"^(?:", u"^(?<x>", u"(",   u")",    u")$",  u"$",  u"|",
    u"|",   u"|",      u"a",    u"a",      u"b",   u"ab",   u"ba",  u"é",  u"😀",
    u"\\.", u"\\$",    u"\\-",  u"\\\\",   u"\n",  u"\r\n", u"]",   u"-",  u"#",
    u" ",   u"\u2028", u".",    u"*",      u"\\b", u"\\n",  u"(?=", u"[a]"};

const std::vector<std::u16string> textPieces = {
    u"a",  u"a",  u"b",  u"ab", u"é",    u"😀",     u".",      u"$",
    u"-",  u"\\", u"\n", u"\r", u"\r\n", u"\u0085", u"\u2028", u"\u2029",
    u"\v", u"\f", u"]",  u"#",  u" ",    u"\xD83D", u"\xDE00", u"\0"s};

std::u16string join(const std::vector<std::u16string>& pieces, std::mt19937& random,
                    std::size_t most) {
  std::u16string result;
  for (std::size_t count = random() % (most + 1); count > 0; --count)
    result += pieces[random() % pieces.size()];
  return result;
}

TEST(LiteralPattern, AgreesWithTheEngineOnRandomPatternsAndTexts) {
  std::mt19937 random(20'240'711);
  int literals = 0;
  int found = 0;
  for (int round = 0; round < 120'000; ++round) {
    std::u16string pattern = join(patternPieces, random, 6);
    if (random() % 2 == 0) {
      // Well-formed more often than chance would have it.
      pattern =
          u"^(" + join({u"a", u"b", u"ab", u"|", u"|", u"é", u"\\.", u"\n"}, random, 6) + u")";
      pattern += random() % 2 == 0 ? u"$" : u"";
    }
    const auto options = random() % 4 == 0 ? Options(random() % 32) : Options::none;
    const auto bits = static_cast<std::uint32_t>(options);
    Oracle oracle(pattern,
                  ((bits & 1) ? UREGEX_CASE_INSENSITIVE : 0U) |
                      ((bits & 2) ? UREGEX_COMMENTS : 0U) | ((bits & 4) ? UREGEX_LITERAL : 0U) |
                      ((bits & 8) ? UREGEX_DOTALL : 0U) | ((bits & 16) ? UREGEX_MULTILINE : 0U));
    if (!oracle.isValid())
      continue;
    const auto literal = LiteralPattern::fromPattern(pattern, options);
    if (!literal)
      continue;
    ++literals;
    for (int repeat = 0; repeat < 8; ++repeat) {
      std::u16string text = join(textPieces, random, 5);
      if (repeat % 2 == 0) // the pattern's own letters, so that there is something to find
        text = join({u"a", u"b", u"ab", u"é", u".", u"\n", u"\r\n"}, random, 4);
      std::size_t from = random() % 3 == 0 ? random() % (text.size() + 1) : 0;
      if (from > 0 && from < text.size() && isTrailSurrogate(text[from]))
        --from;
      const bool anchored = random() % 2 == 0;
      SCOPED_TRACE(testing::Message() << "/" << utf8RepairingUTF16(pattern) << "/" << bits
                                      << " in '" << utf8RepairingUTF16(text) << "' from " << from
                                      << (anchored ? " anchored" : ""));
      const std::vector<Hit> expected = oracle.find(text, from, anchored);
      const std::optional<Hit> hit = literal->find(std::u16string_view(text), from, anchored);
      ASSERT_EQ(hit.has_value(), !expected.empty());
      found += hit ? 1 : 0;
      for (const Hit& range : expected)
        ASSERT_EQ(*hit, range);
      // In UTF-8 the same piece of the text must be found.
      if (isValidUTF16(text)) {
        const auto bytesBefore = [&](std::size_t unit) {
          return utf8RepairingUTF16(std::u16string_view(text).substr(0, unit)).size();
        };
        const auto inBytes =
            literal->find(std::string_view(utf8RepairingUTF16(text)), bytesBefore(from), anchored);
        ASSERT_EQ(inBytes.has_value(), hit.has_value());
        if (hit)
          ASSERT_EQ(*inBytes, (Hit{bytesBefore(hit->start), bytesBefore(hit->end)}));
      }
    }
  }
  EXPECT_GT(literals, 10'000);
  EXPECT_GT(found, 5'000);
}

TEST(LiteralPattern, AllASCIICharactersMeanToTheEngineWhatTheyMeanHere) {
  for (char16_t unit = 0; unit < 0x80; ++unit) {
    for (const std::u16string& pattern :
         {std::u16string{unit}, std::u16string{u'a', unit}, std::u16string{u'\\', unit},
          std::u16string{u'^', u'(', u'x', u'|', u'\\', unit, u')', u'$'}}) {
      Oracle oracle(pattern, 0);
      const auto literal =
          oracle.isValid() ? LiteralPattern::fromPattern(pattern, Options::none) : std::nullopt;
      if (!literal)
        continue;
      for (const std::u16string& text :
           {std::u16string{unit}, std::u16string{u'a', unit}, std::u16string(u"a"),
            std::u16string(u"x"), std::u16string(u"\\"), std::u16string{u'\\', unit}}) {
        const std::vector<Hit> expected = oracle.find(text, 0, false);
        EXPECT_EQ(literal->find(std::u16string_view(text), 0, false),
                  expected.empty() ? std::nullopt : std::optional(expected.front()))
            << "unit " << int(unit) << " pattern size " << pattern.size();
      }
    }
  }
}

struct ShapeCase {
  const char* name;
  const char16_t* pattern;
  bool isLiteral;
};
class LiteralPatternShapes : public testing::TestWithParam<ShapeCase> {};

TEST_P(LiteralPatternShapes, AreToldApart) {
  EXPECT_EQ(LiteralPattern::fromPattern(GetParam().pattern, Options::none).has_value(),
            GetParam().isLiteral);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LiteralPatternShapes,
    testing::Values(
        ShapeCase{"Word", u"foo", true}, ShapeCase{"AnchoredWord", u"^foo$", true},
        ShapeCase{"AnchoredStart", u"^foo", true}, ShapeCase{"Alternatives", u"^(a|b|c)$", true},
        ShapeCase{"UnnamedAlternatives", u"^(?:self|super)$", true},
        ShapeCase{"NamedAlternatives", u"^(?<n>self|super)", true},
        ShapeCase{"EscapedDot", u"^\\.foo$", true},
        ShapeCase{"FreeAlternatives", u"foo|bar", false},
        ShapeCase{"UnanchoredGroup", u"(foo|bar)", false}, ShapeCase{"Class", u"^[A-Z]", false},
        ShapeCase{"Quantifier", u"fo+", false}, ShapeCase{"EmptyAlternative", u"^(a|)$", false},
        ShapeCase{"NestedGroup", u"^(a|(b))$", false}, ShapeCase{"LookBehind", u"(?<!a)", false}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace

} // namespace velmar
