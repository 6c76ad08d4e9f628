// What the packs make of a small source of each language: its layers, and the captures to paint in
// each of them. Beside a source tests/packs/<language>/<name>.txt stands what is expected,
// <name>.spans.txt, to be read as a difference when a pack changes. This rewrites them all:
//     VELMAR_REWRITE_GOLDEN=1 build/dev/tests/packsTests --gtest_filter='*Golden*'
#include "VelmarParser/Highlight/Highlight.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "tests/packs/PackFiles.h"
#include "tests/packs/PackLanguages.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

namespace velmar::testing {
namespace {

struct Sample {
  std::string language;
  std::filesystem::path source;

  [[nodiscard]] std::filesystem::path golden() const {
    return std::filesystem::path(source).replace_extension(".spans.txt");
  }
};
void PrintTo(const Sample& sample, std::ostream* stream) {
  *stream << sample.source;
}

std::vector<Sample> samples() {
  std::vector<Sample> found;
  const auto folder = std::filesystem::path(sourcePath("tests/packs"));
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const auto& path = entry.path();
    if (path.extension() == ".txt" && path.stem().extension() != ".spans")
      found.push_back({.language = path.parent_path().filename().string(), .source = path});
  }
  std::ranges::sort(found, {}, &Sample::source);
  return found;
}

std::string contentsOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A stretch of the document for one line of a golden file: long ones lose their middle.
std::string excerptOf(const Parse& document, TextRange range) {
  constexpr std::int64_t longest = 60;
  std::string text;
  for (const char letter : utf8RepairingUTF16(document.textFor(range)))
    text += letter == '\n' ? std::string("↵") : std::string(1, letter);
  if (range.length() <= longest)
    return text;
  return excerptOf(document, {range.lowerBound, range.lowerBound + longest / 2}) + " … " +
         excerptOf(document, {range.upperBound - longest / 2, range.upperBound});
}

/// The first lines that differ, expected before actual; empty if none do.
std::string firstDifference(std::string_view expected, std::string_view actual) {
  const auto [left, right] = std::ranges::mismatch(expected, actual);
  if (left == expected.end() && right == actual.end())
    return {};
  const auto lineAround = [&](std::string_view text) {
    const auto offset = static_cast<std::size_t>(left - expected.begin());
    const std::size_t start = offset == 0 ? 0 : text.rfind('\n', offset - 1) + 1;
    return text.substr(start, text.find('\n', offset) - start);
  };
  return fmt::format("-{}\n+{}\n", lineAround(expected), lineAround(actual));
}

std::int64_t lineOf(const Parse& document, std::int64_t offset) {
  return document.text().positionOf(offset).line + 1;
}

std::string describe(const Parse::Layer& layer) {
  const Parse& document = layer.parse();
  std::string text = fmt::format(
      "layer {} {}{}{}\n", layer.depth(), layer.configuration().id().rawValue,
      layer.isCombined() ? ", combined" : "", layer.resetsHighlights() ? ", resets" : "");
  if (layer.depth() > 0) {
    for (const TextRange& range : layer.ranges().ranges())
      text += fmt::format("  in line {}: {}\n", lineOf(document, range.lowerBound),
                          excerptOf(document, range));
  }
  const HighlightResults results = highlight(layer, {0, document.count()});
  for (const HighlightResults::Span& span : results.spans()) {
    const auto& selector = results.captureSelectors()[static_cast<std::size_t>(span.captureIndex)];
    text += fmt::format("{} {} {}{}\n", lineOf(document, span.range.lowerBound),
                        selector.value().string(),
                        span.priority == 0 ? "" : fmt::format("({}) ", span.priority),
                        excerptOf(document, span.range));
  }
  return text;
}

class PackGolden : public ::testing::TestWithParam<Sample> {
protected:
  PackGolden() : document(PackLanguages::shared().configuration(GetParam().language)) {
    document.setErrorHandler([](const ParseConfiguration& language, std::string_view label,
                                const std::exception& error) {
      ADD_FAILURE() << language.id().rawValue << ", " << label << ": " << error.what();
    });
    document.replaceSubrange({0, 0}, contentsOf(GetParam().source));
  }

  Parse document;
};

TEST_P(PackGolden, SpansAreTheExpectedOnes) {
  std::string actual;
  for (const Parse::Layer& layer : document.layers())
    actual += describe(layer);
  if (std::getenv(
          "VELMAR_REWRITE_GOLDEN")) // NOLINT(concurrency-mt-unsafe): nobody sets it meanwhile
    std::ofstream(GetParam().golden(), std::ios::binary) << actual;
  EXPECT_EQ(firstDifference(contentsOf(GetParam().golden()), actual), "");
}

TEST_P(PackGolden, NoTwoSelectorsClaimOneRangeAlike) {
  for (const Parse::Layer& layer : document.layers()) {
    const HighlightResults results = highlight(layer, {0, document.count()});
    const auto selectorOf = [&](const HighlightResults::Span& span) -> const LexicalSelector& {
      return results.captureSelectors()[static_cast<std::size_t>(span.captureIndex)].value();
    };
    // Only the last span on a range is seen.
    const auto spans = results.spans();
    for (std::size_t index = 1; index < spans.size(); ++index) {
      const auto& winner = spans[index];
      const auto& second = spans[index - 1];
      const bool isLast = index + 1 == spans.size() || spans[index + 1].range != winner.range;
      if (!isLast || second.range != winner.range || second.priority != winner.priority ||
          second.captureIndex == winner.captureIndex)
        continue;
      EXPECT_NE(selectorOf(second).specificity(), selectorOf(winner).specificity())
          << selectorOf(second).string() << " or " << selectorOf(winner).string() << ": "
          << excerptOf(document, winner.range);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, PackGolden, ::testing::ValuesIn(samples()), [](const auto& row) {
  return row.param.language + "_" + row.param.source.stem().string();
});

} // namespace
} // namespace velmar::testing
