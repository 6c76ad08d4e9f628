#include "VelmarCode/Language/LanguageDetection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

namespace {

using LanguageDetection::Compound;
using LanguageDetection::Content;
using LanguageDetection::content;
using LanguageDetection::Filename;
using LanguageDetection::filenames;
using LanguageDetection::LineReader;
using LanguageDetection::pathExtensions;
using Priority = LanguageDetectionPriority;

TEST(Confidence, DescriptionIsTheNumber) {
  EXPECT_EQ(Confidence::high.description(), "0.8");
  EXPECT_EQ(Confidence::required.description(), "1.0");
  EXPECT_EQ(Confidence(-2).description(), "-2.0");
  EXPECT_EQ(Confidence(0.1F).description(), "0.1");
}

TEST(Confidence, IsOrderedAndAdds) {
  EXPECT_LT(Confidence::low, Confidence::medium);
  EXPECT_EQ(Confidence::failed, Confidence::zero);
  Confidence sum = Confidence::medium;
  sum += 1;
  EXPECT_EQ(sum, 1.5F);
  EXPECT_EQ((Confidence::low - Confidence::required).magnitude(), 0.8F);
}

TEST(LanguageDetection, FilenamesFitToTheLetter) {
  const Filename rule({"Makefile", "makefile"}, Priority::high);
  EXPECT_EQ(rule.confidenceFor("", "Makefile"), Confidence::required);
  EXPECT_EQ(rule.confidenceFor("", "MAKEFILE"), Confidence::failed);
  EXPECT_EQ(rule.confidenceFor("", "Makefile.in"), Confidence::failed);
  EXPECT_EQ(rule.confidenceFor("Makefile", std::nullopt), Confidence::failed);
  EXPECT_EQ(rule.priority(), Priority::high);
}

struct ExtensionCase {
  const char* name;
  std::vector<std::string> extensions;
  std::optional<std::string_view> filename;
  Confidence confidence;
};
class LanguageDetectionExtension : public testing::TestWithParam<ExtensionCase> {};

TEST_P(LanguageDetectionExtension, IsSureOf) {
  const ExtensionCase& row = GetParam();
  EXPECT_EQ(pathExtensions(row.extensions, Priority::low)->confidenceFor("", row.filename),
            row.confidence);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LanguageDetectionExtension,
    testing::Values(ExtensionCase{"NoName", {"txt"}, std::nullopt, Confidence::failed},
                    ExtensionCase{"NoExtension", {"txt"}, "Makefile", Confidence::failed},
                    ExtensionCase{"OnlyExtension", {"txt"}, "notes.txt", Confidence::required},
                    ExtensionCase{"Compound", {"d.ts"}, "x.d.ts", Confidence::required},
                    ExtensionCase{"LastOfCompound", {"ts"}, "x.d.ts", Confidence::high},
                    ExtensionCase{"BothOfCompound", {"ts", "d.ts"}, "x.d.ts", Confidence::required},
                    ExtensionCase{
                        "CompoundOfALongerName", {"tar.gz"}, "a.tar.gz", Confidence::required},
                    ExtensionCase{"AnotherExtension", {"ts"}, "x.tsx", Confidence::failed}),
    [](const auto& row) { return std::string(row.param.name); });

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  LineReader reader(text);
  while (const auto line = reader.next())
    lines.push_back(*line);
  return lines;
}

TEST(LanguageDetection, LinesEndWithTheirBreaks) {
  EXPECT_THAT(linesOf("a\nb\r\nc\rd\n\ne"),
              testing::ElementsAre("a\n", "b\r\n", "c\r", "d\n", "\n", "e"));
  EXPECT_THAT(linesOf("é\u0085–\u2028\u2029\v\fz\n"),
              testing::ElementsAre("é\u0085", "–\u2028", "\u2029", "\v", "\f", "z\n"));
  EXPECT_THAT(linesOf("\n\r"), testing::ElementsAre("\n", "\r"));
  EXPECT_THAT(linesOf(""), testing::IsEmpty());
}

TEST(LanguageDetection, ContentLooksAtSoManyLines) {
  const std::string_view text = "#!/bin/sh\nfoo\nbar baz";
  const auto confidence = [&](const char* pattern, std::int64_t maxLines) {
    return Content(RegularExpression(pattern), maxLines, Priority::low).confidenceFor(text, {});
  };
  EXPECT_EQ(confidence("^#!.*sh$", 1), Confidence::required);
  EXPECT_EQ(confidence("foo", 1), Confidence::failed);
  EXPECT_EQ(confidence("^bar", 2), Confidence::failed);
  EXPECT_EQ(confidence("^bar", 3), Confidence::required);
  EXPECT_EQ(confidence("sh\nfoo", 3), Confidence::failed) << "each line by itself";
  EXPECT_EQ(confidence("sh\n", 1), Confidence::required) << "with its break";
  EXPECT_EQ(confidence("sh", 0), Confidence::failed);
}

TEST(LanguageDetection, ContentTakesEveryKindOfPattern) {
  const std::string_view text = "é\n<?php\n";
  EXPECT_EQ(content(RegularExpression("^<\\?"), Priority::low)->confidenceFor(text, {}),
            Confidence::required);
  EXPECT_EQ(content("<?php", Priority::low)->confidenceFor(text, {}), Confidence::required);
  EXPECT_EQ(content("<?=", Priority::low)->confidenceFor(text, {}), Confidence::failed);
  EXPECT_EQ(content(CharacterClass::anyOf("?"), Priority::low)->confidenceFor(text, {}),
            Confidence::required);
  EXPECT_EQ(content(CharacterClasses::digit, Priority::low)->confidenceFor(text, {}),
            Confidence::failed);
  EXPECT_EQ(content(std::string(), Priority::low)->confidenceFor("", {}), Confidence::failed)
      << "an empty text has no line";
}

TEST(LanguageDetection, CompoundIsTheWeightedMean) {
  const auto fires = filenames({"a"}, Priority::required);
  const auto fails = filenames({"b"}, Priority::low);
  EXPECT_EQ(Compound({fires, fails}, Priority::low).confidenceFor("", "a"), 0.5F);
  EXPECT_EQ(Compound({fires, fails, fails, fails}, Priority::high).confidenceFor("", "b"), 0.1875F);
  EXPECT_EQ(Compound({}, Priority::required).confidenceFor("", "a"), Confidence::failed);
}

} // namespace

} // namespace velmar
