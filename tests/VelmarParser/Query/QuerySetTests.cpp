#include "VelmarParser/Query/QuerySet.h"

#include "VelmarParser/Query/ParseQueryCategory.h"
#include "tests/VelmarParser/Query/QueryTesting.h"

namespace velmar {

namespace {

using enum ParseStructureKey;
const auto grammar = [] { return Grammar::fromBuiltIn(Grammar::BuiltIn::json); };

TEST(QuerySet, KnowsWhichTextAPatternComesFrom) {
  const QuerySet<ParseStructureKey> set({{folds, "(array) @fold ; the last line has a comment"},
                                         {symbols, "\n(pair) @s\n(number) @n"},
                                         {locals, "; none"}},
                                        grammar());
  ASSERT_EQ(set.query()->patternCount(), 3);
  EXPECT_EQ(set.patternRangeFor(folds), (Range<std::int64_t>{0, 1}));
  EXPECT_EQ(set.patternRangeFor(symbols), (Range<std::int64_t>{1, 3}));
  EXPECT_EQ(set.patternRangeFor(locals)->length(), 0);
  EXPECT_EQ(set.firstPatternIndexFor(symbols), 1);
  EXPECT_EQ(set.patternKeyAt(0), folds);
  EXPECT_EQ(set.patternKeyAt(1), symbols);
  EXPECT_EQ(set.patternKeyAt(2), symbols);
}

TEST(QuerySet, WithoutTextsHasNoKeys) {
  const QuerySet<ParseStructureKey> set({}, grammar());
  EXPECT_EQ(set.query()->patternCount(), 0);
  EXPECT_EQ(set.firstPatternIndexFor(folds), std::nullopt);
  EXPECT_EQ(set.patternRangeFor(locals), std::nullopt);
}

TEST(QuerySet, FailsAsAWhole) {
  EXPECT_THROW(static_cast<void>(QuerySet<ParseStructureKey>(
                   {{folds, "(array)"}, {symbols, "(arrai)"}}, grammar())),
               QueryError);
}

TEST(QuerySetDeathTest, AnIndexOutsideStopsTheProcess) {
  const QuerySet<ParseStructureKey> set({{folds, "(array)"}}, grammar());
  EXPECT_DEATH(static_cast<void>(set.patternKeyAt(1)), "outside its query set");
}

TEST(ParseQueryCategory, IsNamedByItsText) {
  EXPECT_EQ(rawValueOf(ParseQueryCategory::highlights), "highlights");
  EXPECT_EQ(rawValueOf(ParseQueryCategory::tagMatching), "tagMatching");
  EXPECT_EQ(fromRawValue<ParseQueryCategory>("textChecking"), ParseQueryCategory::textChecking);
  EXPECT_EQ(fromRawValue<ParseQueryCategory>("Highlights"), std::nullopt);
}

} // namespace

} // namespace velmar
