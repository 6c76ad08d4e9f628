// What an open document takes beside its syntax tree: its text, its lines and its lexical spans.

#include "VelmarParser/Document/Parse.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "tests/packs/PackLanguages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <malloc.h>
#include <vector>

namespace velmar::testing {
namespace {

#if defined(__has_feature)
#define VELMAR_HAS_SANITIZER (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define VELMAR_HAS_SANITIZER 0
#endif

std::size_t allocatedBytes() {
  const auto usage = mallinfo2();
  return usage.uordblks + usage.hblkhd;
}

/// The files of the text library that have no other language inside, in order, in one text.
std::u16string typicalSource() {
  std::vector<std::string> paths;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(sourcePath("VelmarCore/Text")))
    paths.push_back(entry.path().string());
  std::ranges::sort(paths);
  std::u16string text;
  for (const std::string& path : paths) {
    const std::u16string file = utf16RepairingUTF8(charactersOf(readFile(FilePath(path))));
    if (file.find(u"R\"") == file.npos && file.find(u"#define") == file.npos)
      text += file; // what a macro stands for is a layer, too
  }
  return text;
}

/// What the runtime keeps of the text once it is parsed.
std::size_t bytesOfTree(const std::u16string& text, const Grammar& grammar) {
  const std::size_t before = allocatedBytes();
  TSParser* const parser = ts_parser_new();
  ts_parser_set_language(parser, grammar.base());
  TSTree* const tree = ts_parser_parse_string_encoding(
      parser, nullptr, reinterpret_cast<const char*>(text.data()),
      static_cast<std::uint32_t>(text.size() * sizeof(char16_t)), TSInputEncodingUTF16LE);
  ts_parser_delete(parser);
  const std::size_t bytes = allocatedBytes() - before;
  ts_tree_delete(tree);
  return bytes;
}

TEST(DocumentMemory, ALayerTakesFewBytesForEachUnitBesideItsTree) {
  if (VELMAR_HAS_SANITIZER)
    GTEST_SKIP() << "Sanitizers bring an allocator of their own.";
  const std::u16string text = typicalSource();
  ASSERT_GT(text.size(), 100'000U);
  const ParseConfiguration configuration = PackLanguages::shared().configuration("cpp");
  // Compiles the queries. Its tree is freed by another thread, at a time that matters to nobody as
  // long as it is small.
  Parse(configuration).replaceSubrange({0, 0}, u"int a;");
  const std::size_t tree = bytesOfTree(text, *configuration.grammar());

  const std::size_t before = allocatedBytes();
  Parse document(configuration);
  document.replaceSubrange({0, 0}, text);
  const std::size_t taken = allocatedBytes() - before;
  ASSERT_EQ(document.layers().size(), 1U);
  ASSERT_GT(document.rootLayer().lexicalSpans().runs().size(), 1'000U);
  const double perUnit =
      (static_cast<double>(taken) - static_cast<double>(tree)) / static_cast<double>(text.size());
  RecordProperty("bytesPerUnit", std::to_string(perUnit));
  std::cout << perUnit << " bytes for each unit, and "
            << static_cast<double>(tree) / static_cast<double>(text.size()) << " of the tree\n";
  EXPECT_LE(perUnit, 5.5);

  const DocumentMemory memory = document.memory();
  EXPECT_GE(memory.text, std::ssize(text) * 2);
  EXPECT_LE(memory.keystrokes, 100);
  // The allocator adds its own to each block.
  EXPECT_LE(memory.trees, static_cast<std::int64_t>(tree));
  EXPECT_GE(memory.trees, static_cast<std::int64_t>(tree) * 8 / 10);
  EXPECT_LE(memory.total(), static_cast<std::int64_t>(taken));
  EXPECT_GE(memory.total(), static_cast<std::int64_t>(taken) * 8 / 10);
}

TEST(DocumentMemory, WhatIsKeptForKeystrokesTakesLessThanAByteForEachUnit) {
  std::u16string text;
  for (int i = 0; i < 200; ++i)
    text += u"Some words about *this*, then:\n\n```js\nlet a = `${b}`;\n```\n\n";
  Parse document(PackLanguages::shared().configuration("markdown"));
  document.replaceSubrange({0, 0}, text);
  for (std::int64_t i = 0; i < 20; ++i) // some layers don't hear of these yet
    document.replaceSubrange({i, i}, u"x");
  const DocumentMemory memory = document.memory();
  ASSERT_GE(document.layers().size(), 400U);
  EXPECT_GT(memory.keystrokes, 1'000);
  EXPECT_LE(memory.keystrokes, document.count());
}

} // namespace
} // namespace velmar::testing
