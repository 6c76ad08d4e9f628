#include "VelmarCode/Syntax/CodeSymbol.h"

#include "VelmarCode/Syntax/CodeFoldingRegion.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace velmar {
namespace {

TEST(CodeSymbolKind, FiftyEightTextsLeadThereAndBack) {
  std::set<std::string_view> texts;
  for (std::int64_t rawValue = -1; rawValue < 100; ++rawValue) {
    const CodeSymbolKind kind{rawValue};
    const auto text = kind.string();
    if (!text) {
      EXPECT_EQ(kind.description(), "(" + std::to_string(rawValue) + ")");
      continue;
    }
    EXPECT_EQ(CodeSymbolKind::fromString(*text), kind);
    EXPECT_EQ(kind.description(), *text);
    texts.insert(*text);
  }
  EXPECT_EQ(texts.size(), 58U);
}

TEST(CodeSymbolKind, TextsAndNumbersAreTheKnownOnes) {
  EXPECT_EQ(CodeSymbolKind::fromString("tag-ul"), CodeSymbolKind::tagUnorderedList);
  EXPECT_EQ(CodeSymbolKind::fromString("static-method"), CodeSymbolKind{17});
  EXPECT_EQ(CodeSymbolKind::fromString("enum-member"), CodeSymbolKind{25});
  EXPECT_EQ(CodeSymbolKind::fromString("style-pseudoelement"), CodeSymbolKind{55});
  EXPECT_EQ(CodeSymbolKind::tagFramework, CodeSymbolKind{79});
  EXPECT_EQ(CodeSymbolKind::folder.description(), "(41)");
  for (const std::string_view text : {"", "generic", "folder", "Class", "class_", "zzz"})
    EXPECT_FALSE(CodeSymbolKind::fromString(text)) << text;
}

TEST(CodeSymbolKind, FamiliesGoByNumber) {
  std::string families;
  for (std::int64_t rawValue = 0; rawValue < 82; ++rawValue) {
    const CodeSymbolKind kind{rawValue};
    families += kind.isType()       ? 't'
                : kind.isCallable() ? 'c'
                : kind.isValue()    ? 'v'
                : kind.isTag()      ? 'g'
                                    : '.';
  }
  EXPECT_EQ(families, "." + std::string(7, 't') + ".." + std::string(8, 'c') + ".." +
                          std::string(7, 'v') + std::string(33, '.') + std::string(20, 'g') + "..");
}

TEST(CodeFoldingRegion, SaysWhatItIs) {
  std::ostringstream stream;
  stream << CodeFoldingRegion{.range = {4, 9}, .role = CodeFoldingRegion::Role::comment, .level = 1}
         << CodeFoldingRegion{.range = {0, 2}};
  EXPECT_EQ(stream.str(), "(range: 4..<9, role: comment, level: 1)"
                          "(range: 0..<2, role: (none), level: 0)");
}

} // namespace
} // namespace velmar
