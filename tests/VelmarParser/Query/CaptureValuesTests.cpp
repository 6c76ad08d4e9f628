#include "VelmarParser/Query/CaptureValues.h"

#include "tests/VelmarParser/Query/QueryTesting.h"

#include <array>

namespace velmar {

namespace {

using testing::ParsedText;

enum class Part { name, type };
std::span<const std::string_view> rawValuesOf(Part) {
  static constexpr std::array<std::string_view, 2> texts{"name", "type"};
  return texts;
}

/// The values of the first surviving match.
CaptureValues<Part> valuesOf(const ParsedText& parsed, const std::string& query,
                             const std::optional<std::set<Part>>& limitingTo = std::nullopt,
                             CaptureTrimming trimming = CaptureTrimming::none) {
  for (const QueryMatches::Element& match : parsed.matches(query))
    return captureValues<Part>(match.base, {.text = parsed.text()}, limitingTo, trimming);
  return {};
}

struct TransformCase {
  const char* name;
  std::string source;
  std::string transforms;
  std::u16string text;
};
class CaptureTransforms : public ::testing::TestWithParam<TransformCase> {};

/// The source is the content of a JSON string, and `@name` captures it; `@type` is the null behind
/// it.
TEST_P(CaptureTransforms, RewriteTheText) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[\"" + GetParam().source + "\", null]");
  const auto values =
      valuesOf(parsed, "(array (string (string_content) @name) (null) @type (true)? @other " +
                           GetParam().transforms + ")");
  ASSERT_TRUE(values.contains(Part::name));
  const CaptureValue& value = values.at(Part::name);
  EXPECT_EQ(value.text, GetParam().text);
  EXPECT_EQ(value.range.lowerBound, 2);
  EXPECT_EQ(value.range.length(),
            static_cast<std::int64_t>(utf16RepairingUTF8(GetParam().source).size()));
  EXPECT_EQ(value.isTransformed, !GetParam().transforms.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CaptureTransforms,
    ::testing::Values(
        TransformCase{"None", "abc", "", u"abc"},
        TransformCase{"Prefix", "z", "(#prefix! @name x y)", u"xyz"},
        TransformCase{"PrefixWithCapture", "z", "(#prefix! @name @type \".\")", u"null.z"},
        TransformCase{"PrefixWithItself", "z", "(#prefix! @name @name \"-\")", u"z-z"},
        TransformCase{"PrefixWithAnotherName", "z", "(#prefix! @name @other x)", u"xz"},
        TransformCase{"Append", "a", "(#append! @name x y)", u"axy"},
        TransformCase{"InOrder", "a", "(#append! @name x) (#upcase! @name) (#append! @name y)",
                      u"AXy"},
        TransformCase{"StripBlanks", " \u00A0a b\u2028 ", "(#strip! @name)", u"a b"},
        TransformCase{"StripOnlyBlanks", "  ", "(#strip! @name)", u""},
        TransformCase{"StripPattern", "xaxbx", "(#strip! @name x)", u"axb"},
        TransformCase{"StripPatternTouchingNoEnd", "axxb", "(#strip! @name x)", u"axxb"},
        TransformCase{"StripOneMatchAtEachEnd", "xxaxx", "(#strip! @name x)", u"xax"},
        TransformCase{"StripAnchored", "(a)", "(#strip! @name \"^\\\\(|\\\\)$\")", u"a"},
        TransformCase{"StripEverything", "xxx", "(#strip! @name \"x+\")", u""},
        TransformCase{"Replace", "a-b-c", "(#replace! @name \"(\\\\w)-\" \"$1$1/\")", u"aa/bb/c"},
        TransformCase{"ReplaceWithNothing", "a-b-c", "(#replace! @name \"-\" \"\")", u"abc"},
        TransformCase{"ReplaceNoMatch", "abc", "(#replace! @name x y)", u"abc"},
        TransformCase{"Upcase", "größe", "(#upcase! @name)", u"GRÖSSE"},
        TransformCase{"Downcase", "ÄBC", "(#downcase! @name)", u"äbc"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CaptureValues, TransformsOfOtherCapturesDoNothing) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[\"a\", null]");
  const auto values =
      valuesOf(parsed, "(array (string) @name (null) @other (true)? @type (#upcase! @other) "
                       "(#append! @type x))");
  EXPECT_EQ(values, (CaptureValues<Part>{{Part::name, {u"\"a\"", {1, 4}, false}}}));
}

TEST(CaptureValues, SeveralNodesJoinWithBlanks) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[ 1,null, 22 ]");
  const auto values = valuesOf(parsed, "(array (number) @name (null) (number) @name)");
  EXPECT_EQ(values, (CaptureValues<Part>{{Part::name, {u"1 22", {2, 12}, false}}}));
}

TEST(CaptureValues, AreLimitedToSomeKeys) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[1, null]");
  const std::string query = "(array (number) @name (null) @type (#append! @name @type))";
  EXPECT_EQ(valuesOf(parsed, query).size(), 2U);
  const auto values = valuesOf(parsed, query, std::set{Part::name});
  // The type isn't there to be appended.
  EXPECT_EQ(values, (CaptureValues<Part>{{Part::name, {u"1", {1, 2}, true}}}));
  EXPECT_TRUE(valuesOf(parsed, query, std::set<Part>{}).empty());
}

TEST(CaptureValues, AreTrimmedNodeByNode) {
  const ParsedText parsed(Grammar::BuiltIn::json, "[\" a\t\", \"  \", \"b \"]");
  const auto values =
      valuesOf(parsed,
               "(array (string (string_content) @name) (string (string_content) @type) (string "
               "(string_content) @name))",
               std::nullopt, CaptureTrimming::trim);
  EXPECT_EQ(values, (CaptureValues<Part>{{Part::name, {u"a b", {3, 16}, false}},
                                         {Part::type, {u"", {11, 11}, false}}}));
}

TEST(CaptureValues, OverLinesKeepTheirLineBreaks) {
  const ParsedText parsed(Grammar::BuiltIn::javascript, u"`a\r\nb`");
  const auto values = valuesOf(parsed, "(template_string) @name");
  EXPECT_EQ(values.at(Part::name).text, u"`a\r\nb`");
}

TEST(ResultBuilder, GivesTheResultOfEachMatch) {
  const ParsedText parsed(Grammar::BuiltIn::json, "{\"a\": [\" x \", 2], \"b\": \"y\"}");
  const auto query = parsed.query(R"(
    ((string_content) @result (#not-eq? @result "b") (#append! @result "!"))
    (number) @other
    ((number) @result (#eq? @result "3")))");
  const auto results = evaluateResultBuilder(query, parsed.root(), {.text = parsed.text()});
  EXPECT_EQ(results, (std::vector<CaptureValue>{
                         {u"a!", {2, 3}, true}, {u"x!", {9, 10}, true}, {u"y!", {24, 25}, true}}));
}

} // namespace

} // namespace velmar
