// What an edit changed, against all matches of whole trees before and after it.

#include "VelmarParser/Document/LayerChange.h"

#include "VelmarParser/Query/QueryMatch.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/VelmarParser/Grammar/EditedSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

using detail::DirtyPlaces;
using detail::LayerChange;
using testing::EditedSource;

struct Sample {
  const char* name;
  Grammar::BuiltIn language;
  std::u16string text;
  /// Each of them one pattern, whose root is captured as "root".
  std::vector<std::string> queries;
};

/// The captures of a match: the root's range, and all of them in words.
struct KnownMatch {
  TextRange root;
  std::vector<TextRange> captures;
};

std::map<std::string, KnownMatch> matchesIn(const ParseTree& tree, const Query& query) {
  std::map<std::string, KnownMatch> matches;
  for (const Query::Match& match : query.matchesIn(tree.rootNode())) {
    KnownMatch known;
    std::string text;
    for (const auto& capture : match.captures()) {
      const TextRange range = capture.node().utf16Range();
      known.captures.push_back(range);
      if (capture.name() == "root")
        known.root = range;
      text += capture.name() + " " + std::string(capture.node().type().value_or("")) + " " +
              std::to_string(range.lowerBound) + "-" + std::to_string(range.upperBound) + "; ";
    }
    matches.emplace(std::move(text), std::move(known));
  }
  return matches;
}

bool touches(const TextRangeSet& set, TextRange range) {
  return std::ranges::any_of(set.ranges(), [&](const TextRange& each) {
    return each.lowerBound <= range.upperBound && range.lowerBound <= each.upperBound;
  });
}

bool holds(const TextRangeSet& set, TextRange range) {
  return std::ranges::any_of(set.ranges(),
                             [&](const TextRange& each) { return each.containsRange(range); });
}

/// The matches of one tree alone that nobody would ask about.
std::string forgotten(const EditedSource& source, const Query& query, const DirtyPlaces& dirty) {
  const auto before = matchesIn(source.old, query);
  const auto after = matchesIn(*source.tree, query);
  std::string result;
  for (const auto& [text, match] : before) {
    if (after.contains(text))
      continue;
    const bool liesWithin = std::ranges::all_of(
        match.captures, [&](TextRange capture) { return holds(dirty.ranges, capture); });
    if (!touches(dirty.ranges, match.root) || !(liesWithin || touches(dirty.ends, match.root)))
      result += "before: " + text + "\n";
  }
  for (const auto& [text, match] : after) {
    if (!before.contains(text) && !touches(dirty.ranges, match.root))
      result += "after: " + text + "\n";
  }
  return result;
}

/// Its ends are too far apart for one dirty range.
std::u16string longFunction(const std::u16string& head) {
  std::u16string text = head + u" {\n";
  for (int line = 0; line < 24; ++line)
    text += u"  call(with, arguments);\n";
  return text + u"}\n";
}

class ChangesOfMatches : public ::testing::TestWithParam<Sample> {};

TEST_P(ChangesOfMatches, AreAllWhereALayerIsDirty) {
  static constexpr std::u16string_view typed[] = {u"a", u"{",  u"}", u"(",    u")",  u"\"", u"'",
                                                  u";", u"/*", u" ", u"\n\n", u"<i", u"=",  u"1"};
  std::vector<std::shared_ptr<const Query>> queries;
  for (const std::string& text : GetParam().queries)
    queries.push_back(
        std::make_shared<const Query>(text, Grammar::fromBuiltIn(GetParam().language)));
  std::mt19937 random(11);
  std::u16string text;
  for (int copy = 0; copy < 8; ++copy)
    text += GetParam().text;
  EditedSource source(GetParam().language, text);
  std::int64_t dirtyUnits = 0;
  std::int64_t allUnits = 0;
  for (int step = 0; step < 150; ++step) {
    const auto count = static_cast<std::uint32_t>(source.text.count());
    const std::int64_t place = random() % (count + 1);
    const std::int64_t length =
        step % 3 == 0 ? std::min<std::int64_t>(random() % 4, count - place) : 0;
    const std::u16string replacement(length > 0 ? u"" : typed[random() % std::size(typed)]);
    const std::u16string before = source.text.substringFor(TextRange(0, source.text.count()));
    source.edit({place, place + length}, replacement);
    const auto end = place + static_cast<std::int64_t>(replacement.size());
    const LayerChange change(source.old, *source.tree, {place, end});
    for (const auto& query : queries) {
      const DirtyPlaces dirty = change.dirtyFor(*query);
      ASSERT_EQ(forgotten(source, *query, dirty), "")
          << query->text() << "\nstep " << step << " at " << place << " in\n"
          << utf8RepairingUTF16(before);
      for (const TextRange& range : dirty.ranges.ranges())
        dirtyUnits += range.length();
      allUnits += source.text.count();
    }
  }
  EXPECT_LT(dirtyUnits, allUnits / 4); // all of it would be right, too
}

INSTANTIATE_TEST_SUITE_P(
    Samples, ChangesOfMatches,
    ::testing::Values(
        Sample{"Javascript",
               Grammar::BuiltIn::javascript,
               u"class A extends B {\n  m(a, b) { return a ? [b, 1] : `x${a}`; }\n"
               u"  static n = async () => { await f(); }\n}\n"
               u"// c\nlet { p, q: r } = g(\"s\")\nfor (const x of y) x.z();\n" +
                   longFunction(u"function f()"),
               {"(function_declaration name: (_) @a body: (_ \"}\" @b)) @root", "(string) @root",
                "\"{\" @root", "(comment) @root", "(ERROR) @root", "(ERROR (_) @a) @root",
                "(class_body (method_definition) @a . (_) @b) @root",
                "(call_expression function: (_) @a arguments: (arguments \")\" @b)) @root",
                "(program (_) @a . (_) @b) @root", "(statement_block (_) @a \"}\" @b) @root",
                "(lexical_declaration (variable_declarator !value) @a) @root",
                "[(array) (object_pattern (_) @a)] @root", "(expression) @root",
                "(primary_expression/identifier) @root", "(MISSING) @root",
                "(_ (template_substitution (identifier) @b)) @root",
                "(for_in_statement left: (identifier) @a body: (_) @b) @root"}},
        Sample{"Cpp",
               Grammar::BuiltIn::cpp,
               u"namespace n {\nclass A : public B<int> {\npublic:\n  A() : a(1) {}\n"
               u"  int f(int x) const { if (x < 2) return a * x; return \"s\"[0]; }\n"
               u"private:\n  int a = 0; // c\n};\n}\n#define M(x) x\n" +
                   longFunction(u"void f()"),
               {"(string_literal) @root", "\"namespace\" @root", "(type_identifier) @root",
                "(namespace_definition \"namespace\" @a body: (_ \"}\" @b)) @root",
                "(field_declaration_list (access_specifier) @a . (_) @b) @root",
                "(function_definition declarator: (function_declarator (_) @a) body: (_) @b) @root",
                "(compound_statement (return_statement) @a) @root",
                "(translation_unit (_) @a) @root",
                "(preproc_function_def value: (preproc_arg) @a) @root", "(ERROR) @root"}},
        Sample{"Html",
               Grammar::BuiltIn::html,
               u"<!doctype html>\n<p class=\"a\">b <i>c</i><br></p>\n"
               u"<script>let a</script><ul><li>1<li>2</ul>\n<!-- d -->\n",
               {"(element (start_tag (tag_name) @a) (end_tag) @b) @root", "(text) @root",
                "(attribute (attribute_name) @a (_) @b) @root", "(element . (_) @a) @root",
                "(script_element (raw_text) @a) @root", "(erroneous_end_tag) @root",
                "(ERROR (_) @a) @root"}}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
