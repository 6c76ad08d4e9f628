// The capture names of highlights packs are a vocabulary that themes are made from: packs/README.md
// lists it.
#include "VelmarCode/Syntax/LexicalSelector.h"
#include "VelmarParser/Query/Query.h"
#include "host/PackReader.h"
#include "tests/packs/PackFiles.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

namespace velmar::testing {
namespace {

/// The capture names that give selectors, of all highlights.
std::set<std::string> selectorNames() {
  std::set<std::string> names;
  for (const PackFile& file : languagePackFiles()) {
    if (file.category != "highlights")
      continue;
    const auto text = host::PackReader(packFolder()).textFor(file.language, file.category);
    const Query query(text.value().text, grammarOf(file.language));
    for (const std::string& name : query.captureNames()) {
      if (!name.starts_with('_'))
        names.insert(name);
    }
  }
  return names;
}

std::vector<std::string> componentsOf(const std::string& name) {
  std::vector<std::string> components;
  std::size_t start = 0;
  for (std::size_t dot = name.find('.'); dot != std::string::npos; dot = name.find('.', start)) {
    components.push_back(name.substr(start, dot - start));
    start = dot + 1;
  }
  components.push_back(name.substr(start));
  return components;
}

TEST(PackSelectors, AreSelectors) {
  for (const std::string& name : selectorNames())
    EXPECT_TRUE(LexicalSelector::fromString(name)) << name;
}

TEST(PackSelectors, KeepHeadsApartFromQualifiers) {
  std::set<std::string> heads;
  std::set<std::string> qualifiers;
  for (const std::string& name : selectorNames()) {
    const auto components = componentsOf(name);
    heads.insert(components.front());
    qualifiers.insert(std::next(components.begin()), components.end());
  }
  std::vector<std::string> both;
  std::ranges::set_intersection(heads, qualifiers, std::back_inserter(both));
  EXPECT_THAT(both, ::testing::IsEmpty());
}

TEST(PackSelectors, AreListedWithTheirHeads) {
  std::ifstream stream(packFolder().appending("README.md").string());
  const std::string page(std::istreambuf_iterator<char>(stream), {});
  ASSERT_FALSE(page.empty());
  for (const std::string& name : selectorNames()) {
    const auto components = componentsOf(name);
    EXPECT_NE(page.find("| `" + components.front()), std::string::npos) << name;
    for (const std::string& component : components)
      EXPECT_TRUE(std::regex_search(page, std::regex("[`.]" + component + "[`.]"))) << name;
  }
}

} // namespace
} // namespace velmar::testing
