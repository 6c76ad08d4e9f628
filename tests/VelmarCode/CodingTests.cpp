#include "VelmarCode/Language/LanguageCategory.h"
#include "VelmarCode/Language/LanguageSyntax.h"
#include "VelmarCode/Syntax/CodeFoldingRegion.h"
#include "VelmarCode/Syntax/CodeSymbol.h"
#include "VelmarCode/Syntax/LexicalSelector.h"
#include "VelmarCore/Environment/ShellCommand.h"
#include "VelmarCore/JSONRPC/JSONRPCError.h"
#include "VelmarCore/Operations/LogItem.h"
#include "VelmarCore/Operations/OperationLog.h"
#include "VelmarCore/Text/RangeSetCoding.h"
#include "VelmarCore/Text/TextPosition.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

#include <gtest/gtest.h>

namespace velmar {
namespace {

/// That `text` is `value`, both ways.
template <class T>
void expectForm(const T& value, const std::string& text) {
  EXPECT_EQ(JSONEncoder().encode(value), text);
  EXPECT_EQ(JSONDecoder().decode<T>(text), value) << text;
}

TEST(JSONForms, OfTextAndRanges) {
  expectForm(TextPosition{3, 4}, R"({"line":3,"column":4})");
  expectForm(RangeSet<std::int64_t>{{1, 3}, {5, 9}}, "[[1,3],[5,9]]");
  EXPECT_EQ((JSONDecoder().decode<RangeSet<std::int64_t>>("[[5,9],[2,2],[1,3],[3,4]]")),
            (RangeSet<std::int64_t>{{1, 4}, {5, 9}}));
  expectForm(RegularExpression("a.b", RegularExpressionOptions::dotMatchesLineSeparators),
             R"({"pattern":"a.b","options":8})");
}

TEST(JSONForms, OfSyntax) {
  expectForm(LexicalSelector::null, R"({"storage":{"null":{}}})");
  expectForm(LexicalSelector::universal, R"({"storage":{"universal":{}}})");
  expectForm(
      LexicalSelector::fromString("string.regex").value(),
      R"({"storage":{"components":{"_0":"regex.string","_1":["regex","string"],"_2":"string"}}})");
  expectForm(CodeFoldingRegion{{1, 9}, CodeFoldingRegion::Role("odd"), 2},
             R"({"range":[1,9],"role":"odd","level":2})");
  CodeSymbol symbol{CodeSymbolKind::function, {0, 9}, "f", {0, 1}};
  symbol.languageID = LanguageID::cPlusPlus;
  symbol.traits = CodeSymbol::Traits::functionOrMethod;
  symbol.arguments = {{{2, 7}, "a", {2, 3}, "int"}};
  symbol.autoclose = CodeSymbol::Autoclose{"^}", "}"};
  const std::string kind = std::to_string(CodeSymbolKind::function.rawValue);
  expectForm(
      symbol,
      R"({"kind":)" + kind +
          R"(,"range":[0,9],"name":"f","nameRange":[0,1],"languageID":"cpp","traits":2,"level":0,)"
          R"("arguments":[{"range":[2,7],"name":"a","nameRange":[2,3],"typeName":"int"}],)"
          R"("autoclose":{"expression":"^}","completion":"}"}})");
}

TEST(JSONForms, OfLanguages) {
  LanguageSyntax syntax;
  syntax.comments = {"//", LanguageSyntax::Comments::Multiline{"/*", "*/"}};
  syntax.bookmarks = LanguageSyntax::Bookmarks{RegularExpression("MARK: (.*)"), 1};
  syntax.brackets.pairs = {{U'«', U'»'}};
  expectForm(syntax, R"x({"comments":{"single":"//","multiline":{"prefix":"/*","suffix":"*/"}},)x"
                     R"x("bookmarks":{"regex":{"pattern":"MARK: (.*)","options":0},)x"
                     R"x("contentCapture":1},"identifiers":{},)x"
                     R"x("brackets":{"pairs":[{"open":"«","close":"»"}]}})x");
  expectForm(LanguageCategory::stylesheet, "\"stylesheet\"");
}

TEST(JSONForms, OfLogsAndCommands) {
  expectForm(
      LogItem{"m", LogItemSeverity::warning, {"a", "b"}, Date(std::chrono::seconds(60))},
      R"({"message":"m","severity":5,"source":{"components":["a","b"]},"date":"1970-01-01T00:01:00Z"})");
  expectForm(OperationLogStreamSource{"Elsewhere"}, "\"Elsewhere\"");
  expectForm(ShellCommand{"echo", {"a b"}}, R"(["echo","a b"])");
  expectForm(JSONRPCErrorCode::parseError, "-32700");
}

struct BadForm {
  const char* name;
  void (*decode)(std::string_view text);
  const char* text;
  const char* message;
};
template <class T>
void decodeAs(std::string_view text) {
  static_cast<void>(JSONDecoder().decode<T>(text));
}
class BadJSONForm : public testing::TestWithParam<BadForm> {};
TEST_P(BadJSONForm, IsToldWithItsPlace) {
  try {
    GetParam().decode(GetParam().text);
    FAIL() << "was read";
  } catch (const DecodingError& error) {
    EXPECT_STREQ(error.what(), GetParam().message);
  }
}
INSTANTIATE_TEST_SUITE_P(
    Cases, BadJSONForm,
    testing::Values(BadForm{"ReversedRange", decodeAs<RangeSet<std::int64_t>>, "[[1,2],[4,3]]",
                            "The upper bound of a range lies before its lower bound. (at [1])"},
                    BadForm{"ThreeBounds", decodeAs<RangeSet<std::int64_t>>, "[[1,2,3]]",
                            "Expected an array of two elements. (at [0])"},
                    BadForm{"BadPattern", decodeAs<RegularExpression>,
                            R"({"pattern":"(","options":0})",
                            "Could not decode regular expression."},
                    BadForm{"EmptyBracket", decodeAs<BracketPair>, R"({"open":"(","close":""})",
                            "Value is not a valid single-character string. (at close)"},
                    BadForm{"EmptyCommand", decodeAs<ShellCommand>, "[]",
                            "The array has no more elements. (at [0])"},
                    BadForm{"NoPosition", decodeAs<TextPosition>, R"({"line":1})",
                            "The key “column” is missing."},
                    BadForm{"TwoStorages", decodeAs<LexicalSelector>,
                            R"({"storage":{"null":{},"universal":{}}})",
                            "Invalid number of keys found, expected one. (at storage)"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
