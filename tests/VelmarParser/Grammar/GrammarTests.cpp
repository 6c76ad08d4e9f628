#include "VelmarParser/Grammar/Grammar.h"

#include "VelmarParser/Grammar/Parser.h"
#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace velmar {
namespace {

TEST(Grammar, NamesItsFields) {
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  EXPECT_EQ(grammar->id(), "json");
  ASSERT_EQ(grammar->fields().count(), 2);
  EXPECT_EQ(grammar->fields().nameFor({1}), "key");
  EXPECT_EQ(grammar->fields().nameFor({2}), "value");
  EXPECT_EQ(grammar->fields().nameFor({3}), std::nullopt);
}

TEST(Grammar, FindsSymbolsByNameAndKind) {
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  const auto symbols = grammar->symbols();
  const auto object = symbols.symbolFor("object", true);
  EXPECT_EQ(symbols.nameFor(object), "object");
  EXPECT_EQ(symbols.typeFor(object), Grammar::SymbolType::regular);
  const auto brace = symbols.symbolFor("{", false);
  EXPECT_EQ(symbols.nameFor(brace), "{");
  EXPECT_EQ(symbols.typeFor(brace), Grammar::SymbolType::anonymous);
  EXPECT_EQ(symbols.typeFor(symbols.symbolFor("_value", true)), Grammar::SymbolType::supertype);
}

TEST(Grammar, AnUnknownSymbolNameGivesSymbolZero) {
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  EXPECT_EQ(grammar->symbols().symbolFor("sonnet", true).base, 0);
  EXPECT_EQ(grammar->symbols().symbolFor("object", false).base, 0);
}

TEST(Grammar, HasAVersionAndNameFromABI15On) {
  const auto python = Grammar::fromBuiltIn(Grammar::BuiltIn::python);
  EXPECT_EQ(python->abiVersion(), Grammar::ABIVersion{15});
  EXPECT_EQ(python->name(), "python");
  EXPECT_EQ(python->version(), (Version{.major = 0, .minor = 25, .patch = 0}));
  const auto jinja = Grammar::fromBuiltIn(Grammar::BuiltIn::jinja);
  EXPECT_EQ(jinja->abiVersion(), Grammar::oldestSupportedABIVersion);
  EXPECT_EQ(jinja->name(), std::nullopt);
  EXPECT_EQ(jinja->version(), std::nullopt);
}

TEST(Grammar, LookaheadGivesWhatCanFollow) {
  const testing::ParsedSource parsed(Grammar::BuiltIn::json, u"{\"a\": 1}");
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  const ParseNode key = parsed.root().namedChildren()[0].namedChildren()[0].namedChildren()[0];
  auto lookahead = grammar->lookaheadFor({ts_node_next_parse_state(key.base())});
  std::set<std::string> names;
  while (const auto symbol = lookahead.next())
    names.emplace(*grammar->symbols().nameFor(*symbol));
  EXPECT_TRUE(names.contains(":"));
  EXPECT_FALSE(names.contains("}"));
  EXPECT_EQ(lookahead.next(), std::nullopt); // and stays at its end
}

TEST(Grammar, AStateThatDoesNotExistHasNoLookahead) {
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  auto lookahead = grammar->lookaheadFor({60'000});
  EXPECT_EQ(lookahead.next(), std::nullopt);
}

TEST(Grammar, ABIVersionsOrderAndPrintAsNumbers) {
  EXPECT_LT(Grammar::ABIVersion::of(9), Grammar::ABIVersion::of(13));
  EXPECT_EQ(Grammar::ABIVersion::of(15).description(), "15");
  EXPECT_DEATH((void)Grammar::ABIVersion::of(-1), "not negative");
}

TEST(Grammar, TheDeallocatorRunsOnceWhenTheLastReferenceGoes) {
  int runs = 0;
  const TSLanguage* freed = nullptr;
  const auto json = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  auto first = std::make_shared<const Grammar>("mine", json->base(), [&](const TSLanguage* base) {
    ++runs;
    freed = base;
  });
  auto second = first;
  first.reset();
  EXPECT_EQ(runs, 0);
  second.reset();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(freed, json->base());
}

/// Tables of which only the first number, the version of their format, is ever read.
class ParserABI : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(ParserABI, OutsideTheSupportedRangeIsRefused) {
  alignas(16) std::array<std::uint32_t, 256> tables = {GetParam()};
  const auto grammar = std::make_shared<const Grammar>(
      "strange", reinterpret_cast<const TSLanguage*>(tables.data()));
  try {
    const Parser parser("My language", grammar, std::make_shared<const AtomicFlag>());
    FAIL();
  } catch (const ParseError& error) {
    EXPECT_EQ(error.message(), "Failed to load grammar for “My language”; it uses ABI version " +
                                   std::to_string(GetParam()) +
                                   ", but the supported version range is 13–15.");
  }
  EXPECT_EQ(grammar.use_count(), 1); // the half-made parser has let go of it
}
INSTANTIATE_TEST_SUITE_P(Versions, ParserABI, ::testing::Values(0U, 12U, 16U, 4'000'000'000U));

TEST(Parser, AParseThatIsCancelledGivesNoTreeAndTheNextOneDoes) {
  const auto flag = std::make_shared<AtomicFlag>();
  Parser parser("test", Grammar::fromBuiltIn(Grammar::BuiltIn::json), flag);
  DocumentText text;
  std::u16string list = u"[";
  for (int item = 0; item < 20'000; ++item)
    list += u"1, ";
  text.replaceSubrange({0, 0}, list + u"1]");
  ParseInput input(text);
  flag->store(true);
  EXPECT_FALSE(parser.parse(nullptr, input.input()));
  flag->store(false);
  parser.reset();
  const auto tree = parser.parse(nullptr, input.input());
  ASSERT_TRUE(tree);
  EXPECT_FALSE(tree->rootNode().hasError());
  EXPECT_EQ(tree->rootNode().namedChildren()[0].namedChildren().count(), 20'001);
}

} // namespace
} // namespace velmar
