#include "host/Painter.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Languages.h"

#include <gmock/gmock.h>

namespace velmar::host {
namespace {

using ::testing::ElementsAre;
using velmar::testing::TestLanguages;

LexicalSelector selector(std::string_view text) {
  return LexicalSelector::fromString(text).value();
}

/// "bold", "italic" and so on are the looks of the captures of these names.
const Theme& theme() {
  static const Theme made({}, {{selector("bold"), {.isBold = true}},
                               {selector("italic"), {.isItalic = true}},
                               {selector("underlined"), {.isUnderlined = true}},
                               {selector("ink"), {.ink = 1}},
                               {selector("ink.two"), {.ink = 2}}});
  return made;
}

std::string lookText(const Look& look) {
  std::string text;
  text += look.isBold ? "b" : "";
  text += look.isItalic ? "i" : "";
  text += look.isUnderlined ? "u" : "";
  return look.ink ? text + std::to_string(*look.ink) : text;
}

/// A JSON document with these highlights; texts of strings are "inner", JSON again, if `inner` is
/// given.
class PainterTest : public ::testing::Test {
protected:
  void open(std::u16string_view text, std::string highlights, std::string innerHighlights = "",
            std::string injections = "") {
    const auto languages = TestLanguages::of(
        {{"outer",
          {.grammar = Grammar::BuiltIn::json,
           .queries = {{ParseQueryCategory::highlights, std::move(highlights)},
                       {ParseQueryCategory::injections, std::move(injections)}},
           .named = {}}},
         {"inner",
          {.grammar = Grammar::BuiltIn::json,
           .queries = {{ParseQueryCategory::highlights, std::move(innerHighlights)}},
           .named = {}}}});
    parse = std::make_unique<Parse>(languages->configuration("outer"));
    parse->replaceSubrange({0, 0}, text);
  }

  /// "text:look@layer", the layer only where it isn't the root.
  std::vector<std::string> painted(std::optional<TextRange> range = std::nullopt) {
    std::vector<std::string> texts;
    Painter painter(*parse, theme());
    painter.paint(range.value_or(TextRange(0, parse->count())),
                  [&](std::span<const PaintedRun> runs) {
                    for (const PaintedRun& run : runs) {
                      texts.push_back(utf8RepairingUTF16(parse->textFor(run.range)) + ":" +
                                      lookText(run.look));
                      if (run.layer != 0)
                        texts.back() += "@" + std::to_string(run.layer);
                    }
                  });
    return texts;
  }

  std::unique_ptr<Parse> parse;
};

constexpr const char* injectStrings = R"(((string_content) @injection.content
  (#set! "injection.language" "inner")))";
constexpr const char* injectStringsResetting = R"(((string_content) @injection.content
  (#set! "injection.language" "inner") (#set! "injection.reset")))";
constexpr const char* injectStringsCombined = R"(((string_content) @injection.content
  (#set! "injection.language" "inner") (#set! "injection.combined")))";

TEST_F(PainterTest, AChildPaintsOverItsParent) {
  open(u"[1]", "(array) @ink (number) @ink.two");
  EXPECT_THAT(painted(), ElementsAre("[:1", "1:2", "]:1"));
}

TEST_F(PainterTest, WhatAChildSaysNothingAboutShowsThrough) {
  open(u"[1]", "(array) @ink (number) @bold");
  EXPECT_THAT(painted(), ElementsAre("[:1", "1:b1", "]:1"));
}

TEST_F(PainterTest, OnOneRangeThePriorityComesBeforeTheSpecificity) {
  open(u"1", "(number) @ink.two (number) @ink");
  EXPECT_THAT(painted(), ElementsAre("1:2"));
  open(u"1", "(number) @ink.two ((number) @ink (#set! \"priority\" \"1\"))");
  EXPECT_THAT(painted(), ElementsAre("1:1"));
}

TEST_F(PainterTest, EmbeddedWipesOutWhatIsBelow) {
  open(u"[[1]]", "(document (array) @ink) (array (array) @embedded) (number) @bold");
  EXPECT_THAT(painted(), ElementsAre("[:1", "[:", "1:b", "]:", "]:1"));
}

TEST_F(PainterTest, DeeperLayersPaintOverTheOnesAbove) {
  open(u"[\"1\"]", "(string) @ink", "(number) @bold", injectStrings);
  EXPECT_THAT(painted(), ElementsAre("[:", "\":1", "1:b1@1", "\":1", "]:"));
}

TEST_F(PainterTest, AResettingLayerStartsFromPlainText) {
  open(u"[\"[1]\"]", "(string) @ink", "(number) @bold", injectStringsResetting);
  EXPECT_THAT(painted(), ElementsAre("[:", "\":1", "[:@1", "1:b@1", "]:@1", "\":1", "]:"));
}

TEST_F(PainterTest, ALayerPaintsNothingBetweenItsRanges) {
  // The inner array reaches from the first string into the second.
  open(u"[\"[1,\", 5, \"2]\"]", "", "(array) @ink", injectStringsCombined);
  EXPECT_THAT(painted(), ElementsAre("[\":", "[1,:1@1", "\", 5, \":", "2]:1@1", "\"]:"));
}

TEST_F(PainterTest, ARangeIsPaintedAsItIsInTheWhole) {
  open(u"[1, 22]", "(array) @ink (number) @ink.two");
  EXPECT_THAT(painted(TextRange(3, 5)), ElementsAre(" :1", "2:2"));
  EXPECT_THAT(painted(TextRange(3, 3)), ElementsAre());
}

TEST_F(PainterTest, LongTextsArePaintedPieceByPieceWithoutAGap) {
  std::u16string text = u"[";
  while (text.size() < 200'000)
    text += u"\"日😀\", 12345, ";
  text += u"0]";
  open(text, "(array) @ink (number) @bold", "", "");
  std::int64_t end = 0;
  std::int64_t boldUnits = 0;
  Painter painter(*parse, theme());
  painter.paint({0, parse->count()}, [&](std::span<const PaintedRun> runs) {
    for (const PaintedRun& run : runs) {
      ASSERT_EQ(run.range.lowerBound, end);
      end = run.range.upperBound;
      ASSERT_TRUE(end == parse->count() || !isTrailSurrogate(parse->text()[end]));
      ASSERT_EQ(run.look.ink, 1);
      boldUnits += run.look.isBold ? run.range.length() : 0;
    }
  });
  EXPECT_EQ(end, std::ssize(text));
  // Each round has five digits; the last number has one.
  EXPECT_EQ(boldUnits, 5 * ((std::ssize(text) - 3) / 14) + 1);
}

TEST_F(PainterTest, NamesOfCapturesAreThoseOfTheQuery) {
  open(u"1", "(number) @ink.two");
  Painter painter(*parse, theme());
  painter.paint({0, 1}, [&](std::span<const PaintedRun> runs) {
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(painter.captureNames()[static_cast<std::size_t>(runs[0].capture)], "ink.two");
  });
}

} // namespace
} // namespace velmar::host
