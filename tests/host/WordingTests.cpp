#include "host/Wording.h"

#include <gtest/gtest.h>

namespace velmar::host {
namespace {

struct FoldCase {
  const char* name;
  const char* text;
  const char* folded;
};
class FoldedParagraphs : public ::testing::TestWithParam<FoldCase> {};

TEST_P(FoldedParagraphs, HaveNoLongerLinesThanAskedFor) {
  EXPECT_EQ(foldedParagraphs(GetParam().text, 10), GetParam().folded);
}
INSTANTIATE_TEST_SUITE_P(Cases, FoldedParagraphs,
                         ::testing::Values(FoldCase{"Empty", "", ""},
                                           FoldCase{"ExactlyFits", "abcd efghi", "abcd efghi\n"},
                                           FoldCase{"OneTooMany", "abcd efghij", "abcd\nefghij\n"},
                                           FoldCase{"CharactersCountNotBytes", "“öä” ÖÄÜßx y",
                                                    "“öä” ÖÄÜßx\ny\n"},
                                           FoldCase{"AWordThatIsTooLong", "a bcdefghijklmno p",
                                                    "a\nbcdefghijklmno\np\n"},
                                           FoldCase{"LineFeedsAreBlanks", "a\nb\nc", "a b c\n"},
                                           FoldCase{"SeveralBlanks", "a  b c   ", "a b c\n"},
                                           FoldCase{"Paragraphs", "a\n\nb", "a\n\nb\n"},
                                           FoldCase{"AListStays", "a\nb:\n  c d e f g h i\n  j\nk",
                                                    "a b:\n  c d e f g h i\n  j\nk\n"}),
                         [](const auto& row) { return std::string(row.param.name); });

struct LinesCase {
  const char16_t* text;
  const char* lines;
};

TEST(LineCountForPeople, ATerminatorEndsALine) {
  for (const auto& [text, lines] :
       {LinesCase{u"", "0 lines"}, LinesCase{u"a", "1 line"}, LinesCase{u"a\r\n", "1 line"},
        LinesCase{u"\n", "1 line"}, LinesCase{u"a\n\nb", "3 lines"}}) {
    DocumentText document;
    document.replaceSubrange({0, 0}, std::u16string_view(text));
    EXPECT_EQ(counted(lineCountForPeople(document), "line"), lines);
  }
}

} // namespace
} // namespace velmar::host
