#include "VelmarCore/Text/UTF16LineArray.h"
#include "cmake/SourceTree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <sstream>

namespace velmar {
namespace {

#if defined(__has_feature)
#define VELMAR_HAS_SANITIZER (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define VELMAR_HAS_SANITIZER 0
#endif

/// The sources of this folder's library, one behind the other: what an editor's files look like.
std::string typicalSource() {
  std::string text;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(sourcePath("VelmarCore"))) {
    if (!entry.is_regular_file())
      continue;
    std::stringstream content;
    content << std::ifstream(entry.path()).rdbuf();
    text += content.str();
  }
  return text;
}

std::size_t allocatedBytes() {
  const auto usage = mallinfo2();
  return usage.uordblks + usage.hblkhd;
}

/// Two bytes a unit are the text itself; the rest is the allocator's and the lines'.
TEST(LineArrayMemory, TypicalSourceTakesFewBytesForEachUnit) {
  if (VELMAR_HAS_SANITIZER)
    GTEST_SKIP() << "Sanitizers bring an allocator of their own.";
  const std::string source = typicalSource();
  ASSERT_GT(source.size(), 50'000U);
  const std::size_t before = allocatedBytes();
  DocumentText text;
  text.replaceSubrange({0, 0}, source);
  const auto taken = static_cast<double>(allocatedBytes() - before);
  RecordProperty("bytesPerUnit", std::to_string(taken / static_cast<double>(text.count())));
  EXPECT_LE(taken / static_cast<double>(text.count()), 4.5);
}

} // namespace
} // namespace velmar
