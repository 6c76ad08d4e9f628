#include "VelmarPlatform/Files/DynamicLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <string>
#include <utility>

namespace velmar {
namespace {

using testing::HasSubstr;

// The build makes this library from SampleLibrary.c and says where it lies.
const std::string sampleLibrary = VELMAR_SAMPLE_LIBRARY;

bool isLoaded(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle)
    dlclose(handle);
  return handle != nullptr;
}

TEST(DynamicLibrary, GivesItsFunctions) {
  const auto library = DynamicLibrary::open(sampleLibrary);
  ASSERT_TRUE(library) << library.error();
  const auto function = library->symbol("velmarSampleAnswer");
  ASSERT_TRUE(function) << function.error();
  EXPECT_EQ(reinterpret_cast<int (*)()>(*function)(), 42);
}

TEST(DynamicLibrary, TellsTheLoadersWordsForAMissingSymbol) {
  const auto library = DynamicLibrary::open(sampleLibrary);
  ASSERT_TRUE(library) << library.error();
  const auto function = library->symbol("velmarNobodyDefinesThis");
  ASSERT_FALSE(function);
  EXPECT_THAT(function.error(), HasSubstr("velmarNobodyDefinesThis"));
}

TEST(DynamicLibrary, TellsTheLoadersWordsForAMissingFile) {
  const auto library = DynamicLibrary::open("/nowhere/libNothing.so");
  ASSERT_FALSE(library);
  EXPECT_THAT(library.error(), HasSubstr("/nowhere/libNothing.so"));
}

TEST(DynamicLibrary, RefusesAFileThatIsNoLibrary) {
  const auto library = DynamicLibrary::open(__FILE__);
  ASSERT_FALSE(library);
  EXPECT_NE(library.error(), "");
}

TEST(DynamicLibrary, IsClosedWithItsOwner) {
  ASSERT_FALSE(isLoaded(sampleLibrary));
  {
    auto opened = DynamicLibrary::open(sampleLibrary);
    ASSERT_TRUE(opened) << opened.error();
    const DynamicLibrary moved = std::move(opened).value();
    EXPECT_TRUE(isLoaded(sampleLibrary));
  }
  EXPECT_FALSE(isLoaded(sampleLibrary));
}

TEST(DynamicLibrary, ABareNameIsAFileHereAndNoLibraryOfTheSystem) {
  EXPECT_FALSE(DynamicLibrary::open("libc.so.6"));
  EXPECT_FALSE(DynamicLibrary::open(""));
}

TEST(DynamicLibrary, ANULCutsNoNameShort) {
  EXPECT_FALSE(DynamicLibrary::open(sampleLibrary + std::string("\0x", 2)));
  const auto library = DynamicLibrary::open(sampleLibrary);
  ASSERT_TRUE(library) << library.error();
  EXPECT_FALSE(library->symbol(std::string("velmarSampleAnswer\0x", 20)));
}

} // namespace
} // namespace velmar
