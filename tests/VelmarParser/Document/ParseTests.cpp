#include "VelmarParser/Document/Parse.h"

#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "tests/Support/Languages.h"
#include "tests/Support/Trees.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

namespace velmar {
namespace {

using testing::plainLanguage;
using testing::treeDifference;
using testing::treeText;

std::u16string readSource(const std::string& path) {
  std::ifstream file(sourcePath(path), std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_FALSE(text.str().empty()) << path;
  return utf16RepairingUTF8(text.str());
}

/// The bare runtime given the same edits in the same way: one buffer, one parser, no document.
class BareParse {
public:
  explicit BareParse(Grammar::BuiltIn grammar) : grammar_(Grammar::fromBuiltIn(grammar)) {
    ts_parser_set_language(parser_.get(), grammar_->base());
  }
  ~BareParse() { ts_tree_delete(tree_); }
  BareParse(const BareParse&) = delete;
  BareParse& operator=(const BareParse&) = delete;

  void replace(TextRange range, const std::u16string& with) {
    TSInputEdit edit{};
    edit.start_byte = static_cast<std::uint32_t>(range.lowerBound) * 2;
    edit.old_end_byte = static_cast<std::uint32_t>(range.upperBound) * 2;
    edit.new_end_byte = edit.start_byte + static_cast<std::uint32_t>(with.size()) * 2;
    edit.start_point = point(range.lowerBound);
    edit.old_end_point = point(range.upperBound);
    text_.replace(static_cast<std::size_t>(range.lowerBound),
                  static_cast<std::size_t>(range.length()), with);
    edit.new_end_point = point(range.lowerBound + static_cast<std::int64_t>(with.size()));
    if (tree_)
      ts_tree_edit(tree_, &edit);
    TSTree* const tree = parsed(tree_);
    ts_tree_delete(tree_);
    tree_ = tree;
  }

  /// Parses from scratch; the caller deletes the tree.
  TSTree* parsed(TSTree* old) {
    return ts_parser_parse_string_encoding(
        parser_.get(), old, reinterpret_cast<const char*>(text_.data()),
        static_cast<std::uint32_t>(text_.size()) * 2, TSInputEncodingUTF16LE);
  }
  TSNode root() const { return ts_tree_root_node(tree_); }
  const std::u16string& text() const { return text_; }

private:
  TSPoint point(std::int64_t offset) const {
    TSPoint found{0, 0};
    for (std::int64_t index = 0; index < offset; ++index) {
      found.column += 2;
      if (text_[static_cast<std::size_t>(index)] == u'\n')
        found = {found.row + 1, 0};
    }
    return found;
  }

  std::shared_ptr<const Grammar> grammar_;
  std::unique_ptr<TSParser, decltype(&ts_parser_delete)> parser_{ts_parser_new(),
                                                                 &ts_parser_delete};
  TSTree* tree_ = nullptr;
  std::u16string text_;
};

struct RandomEdit {
  TextRange range;
  std::u16string text;
};

/// What people do to code: mostly small edits, some of them with brackets, quotes and line breaks.
RandomEdit randomEdit(std::mt19937& random, const std::u16string& text) {
  static const std::vector<std::u16string> inserts{
      u"a",      u" ",         u"\n", u"(",   u")", u"{", u"}",    u"\"",
      u"/*",     u"*/",        u"//", u"foo", u";", u"1", u"\n\n", u"if (x) { y(); }",
      u"\u00e9", u"\U0001F600"};
  const auto below = [&](std::int64_t bound) {
    return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(random);
  };
  const auto count = static_cast<std::int64_t>(text.size());
  const std::int64_t start = below(count + 1);
  const std::int64_t removed =
      below(3) == 0 ? below(std::min<std::int64_t>(count - start, below(10) == 0 ? 200 : 8) + 1)
                    : 0;
  std::u16string inserted =
      below(4) == 0
          ? u""
          : inserts[static_cast<std::size_t>(below(static_cast<std::int64_t>(inserts.size())))];
  return {{start, start + removed}, std::move(inserted)};
}

struct RealFile {
  const char* name;
  const char* path;
  Grammar::BuiltIn grammar;
};
class ParseRealFiles : public ::testing::TestWithParam<RealFile> {};

TEST_P(ParseRealFiles, TreesEqualTheRuntimesAfterEveryEdit) {
  std::mt19937 random(11);
  BareParse bare(GetParam().grammar);
  Parse document(plainLanguage(GetParam().grammar));
  const std::u16string source = readSource(GetParam().path).substr(0, 12'000);
  bare.replace({0, 0}, source);
  EXPECT_EQ(document.replaceSubrange({0, 0}, source), TextRangeSet({0, document.count()}));
  for (int step = 0; step < 300; ++step) {
    const RandomEdit edit = randomEdit(random, bare.text());
    SCOPED_TRACE(::testing::Message() << "step " << step << ": " << edit.range << " with "
                                      << utf8RepairingUTF16(edit.text));
    bare.replace(edit.range, edit.text);
    const TextRangeSet changed = document.replaceSubrange(edit.range, edit.text);
    changed.checkInvariants();
    const TextRange now(edit.range.lowerBound,
                        edit.range.lowerBound + static_cast<std::int64_t>(edit.text.size()));
    EXPECT_TRUE(TextRangeSet(now).isSubsetOf(changed));
    ASSERT_EQ(treeDifference(document.rootLayer().root()->base(), bare.root()), "");
  }
  EXPECT_EQ(document.textFor({0, document.count()}), bare.text());
  // Saving and opening again must not lose anything: from scratch the tree is that of the runtime,
  // too.
  Parse fresh(plainLanguage(GetParam().grammar));
  fresh.replaceSubrange({0, 0}, bare.text());
  TSTree* const tree = bare.parsed(nullptr);
  EXPECT_EQ(treeDifference(fresh.rootLayer().root()->base(), ts_tree_root_node(tree)), "");
  ts_tree_delete(tree);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseRealFiles,
    ::testing::Values(
        RealFile{"CPlusPlus", "VelmarParser/Document/Parse.cpp", Grammar::BuiltIn::cpp},
        RealFile{"Markdown", "docs/Architecture.md", Grammar::BuiltIn::markdown},
        RealFile{"JSON", "grammars/package.json", Grammar::BuiltIn::json},
        RealFile{"JavaScript", "grammars/node_modules/tree-sitter-javascript/grammar.js",
                 Grammar::BuiltIn::javascript}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Parse, TheFirstEditGivesTheWholeDocument) {
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  EXPECT_FALSE(document.rootLayer().root().has_value());
  EXPECT_EQ(document.replaceSubrange({0, 0}, u"[1, 2]"), TextRangeSet({0, 6}));
  EXPECT_EQ(document.rootLayer().ranges(), TextRangeSet({0, 6}));
  EXPECT_EQ(document.rootLayer().root()->type(), "document");
}

TEST(Parse, ADocumentCanBeEmptiedAndFilledAgain) {
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  document.replaceSubrange({0, 0}, u"[1]\n[2]");
  EXPECT_TRUE(document.replaceSubrange({0, 7}, u"").isEmpty());
  EXPECT_TRUE(document.rootLayer().ranges().isEmpty());
  EXPECT_EQ(document.layersIntersecting({0, 0}).size(), 1U);
  document.replaceSubrange({0, 0}, u"[3]");
  EXPECT_FALSE(document.rootLayer().root()->hasError());
}

TEST(Parse, AnEditThatLeavesTheTreeAloneStillReportsItsRange) {
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  document.replaceSubrange({0, 0}, u"[\"abc\", 1]");
  // The string token is what was edited, so all of it counts.
  const TextRangeSet changed = document.replaceSubrange({3, 3}, u"x");
  EXPECT_TRUE(changed.contains(3));
  EXPECT_FALSE(changed.contains(8));
}

TEST(Parse, CancellingBeforeAnEditDoesNotCancelIt) {
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  document.cancelParsing();
  document.replaceSubrange({0, 0}, u"[1]");
  EXPECT_TRUE(document.rootLayer().root().has_value());
}

TEST(Parse, ACancelledParseLeavesNothingAndTheNextEditPutsAllRight) {
  std::u16string text;
  while (text.size() < 400'000)
    text += u"function f(a, b) { return [a, b, \"text\", /re/g, `x${a}`]; }\n";
  std::mt19937 random(5);
  int cancelled = 0;
  for (int round = 0; round < 12; ++round) {
    Parse document(plainLanguage(Grammar::BuiltIn::javascript));
    std::atomic<bool> done{false};
    const unsigned spins = 1U << std::uniform_int_distribution<unsigned>(0, 20)(random);
    std::thread canceller([&] {
      for (std::atomic<unsigned> spun = 0; spun < spins; ++spun) {
      }
      while (!done)
        document.cancelParsing();
    });
    document.replaceSubrange({0, 0}, text);
    done = true;
    canceller.join();
    if (!document.rootLayer().root()) {
      ++cancelled;
      EXPECT_TRUE(document.rootLayer().sublayers().empty());
      EXPECT_EQ(document.rootLayer().lexicalSpans().runs().size(), 1U);
      EXPECT_EQ(document.replaceSubrange({0, 0}, u" "), TextRangeSet({0, document.count()}));
    } else {
      document.replaceSubrange({0, 0}, u" ");
    }
    ASSERT_TRUE(document.rootLayer().root().has_value());
    EXPECT_FALSE(document.rootLayer().root()->hasError());
    EXPECT_EQ(document.rootLayer().root()->utf16Range().upperBound, document.count());
  }
  EXPECT_GT(cancelled, 0) << "the canceller never came in time";
}

TEST(Parse, AnObserverHearsOfEachEditWhenTheDocumentIsWhole) {
  using std::chrono::nanoseconds;
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  document.replaceSubrange({0, 0}, u"[1]");
  std::vector<std::string> trees;
  document.setEditObserver([&](const EditTimes& times) {
    trees.push_back(treeText(*document.rootLayer().root()));
    EXPECT_GT(times[EditPhase::parse], nanoseconds(0));
    EXPECT_GE(times.total(), times[EditPhase::text] + times[EditPhase::parse]);
  });
  document.replaceSubrange({1, 2}, u"");
  document.replaceSubrange({1, 1}, u"22");
  const std::string last = treeText(*document.rootLayer().root());
  document.setEditObserver({});
  document.replaceSubrange({0, 0}, u" ");
  ASSERT_EQ(trees.size(), 2U);
  EXPECT_NE(trees[0], last);
  EXPECT_EQ(trees[1], last);
}

TEST(Parse, AGrammarOfAnUnknownFormatIsRefused) {
  // A table that claims a format from the future: only its first field, the version, is looked at.
  static const std::array<std::uint32_t, 512> table{16};
  const auto grammar =
      std::make_shared<const Grammar>("future", reinterpret_cast<const TSLanguage*>(table.data()));
  try {
    const Parse document(
        ParseConfiguration(LanguageID{"futuristic"}, grammar, LanguageSyntax{}, nullptr));
    FAIL() << "It was taken.";
  } catch (const ParseError& error) {
    EXPECT_EQ(error.message(),
              "Failed to load grammar for “futuristic”; it uses ABI version 16, but the supported "
              "version range is 13–15.");
  }
}

TEST(Parse, TextOfNodesAndRanges) {
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  document.replaceSubrange({0, 0}, u"{\n  \"a\": [1,\r\n 2]\n}");
  const ParseNode array = [&] {
    auto cursor = ParseTreeCursor::startingAt(*document.rootLayer().root());
    std::optional<ParseNode> found;
    cursor.enumerate([&](const ParseNode& node) {
      if (node.type() == "array") {
        found = node;
        return ParseTreeCursor::EnumerateAction::stop;
      }
      return ParseTreeCursor::EnumerateAction::next;
    });
    return found.value();
  }();
  EXPECT_EQ(document.textFor(array), u"[1,\r\n 2]");
  EXPECT_EQ(document.textFor(array.utf16Range()), u"[1,\r\n 2]");
}

TEST(ParseDeathTest, EditsOutsideTheTextStopTheProcess) {
  Parse document(plainLanguage(Grammar::BuiltIn::json));
  document.replaceSubrange({0, 0}, u"[1]");
  EXPECT_DEATH(document.replaceSubrange({2, 4}, u""), "outside the text");
}

} // namespace
} // namespace velmar
