// Every pack compiles against the grammar of its language. Where one doesn't, the message names
// file and line, and the name of the grammar that comes closest.
#include "VelmarParser/Query/Query.h"
#include "host/PackReader.h"
#include "tests/packs/NearestName.h"
#include "tests/packs/PackFiles.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace velmar::testing {
namespace {

using host::PackReader;
using host::PackText;

struct QueryDeleter {
  void operator()(TSQuery* query) const noexcept { ts_query_delete(query); }
};

/// Names that a pattern may write: fields, or nodes that have a kind of name or are signs and
/// words.
std::vector<std::string> fieldsOf(const Grammar& grammar) {
  std::vector<std::string> names;
  for (std::uint16_t id = 1; id <= grammar.fields().count(); ++id) {
    if (const auto name = grammar.fields().nameFor({id}))
      names.emplace_back(*name);
  }
  return names;
}

std::vector<std::string> nodesOf(const Grammar& grammar, Grammar::SymbolType type) {
  std::vector<std::string> names;
  for (std::uint16_t id = 0; id < grammar.symbols().count(); ++id) {
    const auto name = grammar.symbols().nameFor({id});
    if (name && grammar.symbols().typeFor({id}) == type)
      names.emplace_back(*name);
  }
  return names;
}

/// The node, field or capture name that starts at `offset`. A word or sign ends with its quotation
/// mark.
std::string_view nameAt(std::string_view text, std::size_t offset, bool quoted) {
  const std::string_view rest = text.substr(std::min(offset, text.size()));
  return rest.substr(0, quoted ? rest.find('"') : rest.find_first_of(" \t\r\n()[]\"@:;*+?!"));
}

/// What is wrong with `pack` for `grammar`, in one line; absent if it compiles.
std::optional<std::string> faultOf(const PackText& pack, const Grammar& grammar) {
  std::uint32_t offset = 0;
  TSQueryError error = TSQueryErrorNone;
  const std::unique_ptr<TSQuery, QueryDeleter> query(
      ts_query_new(grammar.base(), pack.text.data(), static_cast<std::uint32_t>(pack.text.size()),
                   &offset, &error));
  if (query)
    return std::nullopt;

  const PackText::Place place = pack.placeOf(offset);
  const bool quoted = offset > 0 && pack.text[offset - 1] == '"';
  const std::string_view name = nameAt(pack.text, offset, quoted);
  const auto unknown = [&](std::string_view what, const std::vector<std::string>& known) {
    return fmt::format("{}:{}: the grammar has no {} “{}”; did you mean “{}”?", place.file,
                       place.line, what, name, nearestName(name, known).value_or(""));
  };
  switch (error) {
  case TSQueryErrorNodeType:
    return quoted ? unknown("token", nodesOf(grammar, Grammar::SymbolType::anonymous))
                  : unknown("node", nodesOf(grammar, Grammar::SymbolType::regular));
  case TSQueryErrorField:
    return unknown("field", fieldsOf(grammar));
  case TSQueryErrorCapture:
    return fmt::format("{}:{}: the pattern has no capture “{}”.", place.file, place.line, name);
  case TSQueryErrorStructure:
    return fmt::format("{}:{}: the grammar never puts this here.", place.file, place.line);
  default:
    return fmt::format("{}:{}: this isn’t a pattern.", place.file, place.line);
  }
}

class PackCompiles : public ::testing::TestWithParam<PackFile> {};

TEST_P(PackCompiles, AgainstItsGrammar) {
  const PackText text = textOf(GetParam());
  ASSERT_EQ(faultOf(text, *grammarOf(GetParam().language)), std::nullopt);
  const Query query(text.text, grammarOf(GetParam().language));
  EXPECT_GT(query.patternCount(), 0);
}

TEST_P(PackCompiles, WithoutPredicatesThatNobodyKnows) {
  const PackText text = textOf(GetParam());
  const Query query(text.text, grammarOf(GetParam().language));
  for (const auto pattern : query.patterns()) {
    for (const auto& other : query.otherPredicates()[static_cast<std::size_t>(pattern.index())]) {
      const PackText::Place place = text.placeOf(pattern.byteRange().lowerBound);
      ADD_FAILURE() << place.file << ":" << place.line << ": nobody knows “" << other.name << "”.";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, PackCompiles, ::testing::ValuesIn(languagePackFiles()), [](const auto& row) {
      std::string name = row.param.language + "_" + row.param.category;
      std::ranges::replace_if(
          name, [](char letter) { return !std::isalnum(static_cast<unsigned char>(letter)); }, '_');
      return name;
    });

TEST(Packs, AreThere) {
  EXPECT_THAT(languagePackFiles(),
              ::testing::IsSupersetOf({PackFile{"cpp", "highlights"}, PackFile{"cpp", "injections"},
                                       PackFile{"markdown_inline", "highlights"}}));
}

TEST(Packs, HaveNoTextThatNobodyInherits) {
  std::set<std::string> used;
  for (const PackFile& file : languagePackFiles()) {
    for (const auto& piece : textOf(file).pieces)
      used.insert(piece.file);
  }
  std::vector<std::string> all;
  for (const PackFile& file : allPackFiles())
    all.push_back(file.path());
  EXPECT_THAT(all, ::testing::UnorderedElementsAreArray(used));
}

struct FaultCase {
  const char* name;
  const char* query;
  std::optional<std::string> fault;
};
void PrintTo(const FaultCase& row, std::ostream* stream) {
  *stream << row.query;
}
class PackFault : public ::testing::TestWithParam<FaultCase> {};

TEST_P(PackFault, IsNamedWithItsPlace) {
  // The first piece ends in line 1 of "b.scm", at offset 4.
  const PackText pack{.text = std::string("(_)\n") + GetParam().query,
                      .pieces = {{0, "a.scm"}, {4, "b.scm"}}};
  EXPECT_EQ(faultOf(pack, *grammarOf("json")), GetParam().fault);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PackFault,
    ::testing::Values(
        FaultCase{"Node", "(pair)\n(strnig) @string",
                  "b.scm:2: the grammar has no node “strnig”; did you mean “string”?"},
        FaultCase{"Token", "(pair \"::\" @a)",
                  "b.scm:1: the grammar has no token “::”; did you mean “:”?"},
        FaultCase{"Field", "(pair kay: (_))",
                  "b.scm:1: the grammar has no field “kay”; did you mean “key”?"},
        FaultCase{"Capture", "((pair) @a (#eq? @b \"\"))",
                  "b.scm:1: the pattern has no capture “b”."},
        FaultCase{"Structure", "\n\n(number (pair))", "b.scm:3: the grammar never puts this here."},
        FaultCase{"Syntax", "(pair", "b.scm:1: this isn’t a pattern."}),
    [](const auto& row) { return std::string(row.param.name); });

struct DistanceCase {
  const char* left;
  const char* right;
  int distance;
};

TEST(NearestName, CountsLettersPutInTakenOutAndChanged) {
  for (const auto& [left, right, distance] : {DistanceCase{"", "", 0},
                                              {"abc", "", 3},
                                              {"", "abc", 3},
                                              {"abc", "abc", 0},
                                              {"kitten", "sitting", 3},
                                              {"flaw", "lawn", 2},
                                              {"ab", "ba", 2}}) {
    EXPECT_EQ(editDistance(left, right), distance) << left << " to " << right;
    EXPECT_EQ(editDistance(right, left), distance) << right << " to " << left;
  }
}

TEST(NearestName, TakesTheFirstOfEquals) {
  const std::vector<std::string> names = {"number", "pair", "pain"};
  EXPECT_EQ(nearestName("paid", names), "pair");
  EXPECT_EQ(nearestName("paid", {}), std::nullopt);
}

} // namespace
} // namespace velmar::testing
