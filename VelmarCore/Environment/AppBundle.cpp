#include "VelmarCore/Environment/AppBundle.h"

#include "VelmarPlatform/Basics/LockedState.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <cerrno>
#include <utility>

namespace velmar::AppBundle {

namespace {

const LockedState<AppBundleFacts>& sharedFacts() {
  static const auto& facts = *new LockedState<AppBundleFacts>;
  return facts;
}

template <class Fact>
Fact read(Fact AppBundleFacts::* fact) {
  return sharedFacts().withLock([&](const AppBundleFacts& facts) { return facts.*fact; });
}

void dropUnlessAbsolute(std::optional<FilePath>& path) {
  if (path && !path->isAbsolute())
    path.reset();
}

} // namespace

void setFacts(AppBundleFacts facts) {
  if (facts.name && facts.name->empty())
    facts.name.reset();
  dropUnlessAbsolute(facts.resourcesPath);
  dropUnlessAbsolute(facts.sharedSupportPath);
  sharedFacts().withLock([&](AppBundleFacts& shared) { shared = std::move(facts); });
}

std::string name() {
  if (std::optional<std::string> set = read(&AppBundleFacts::name))
    return *std::move(set);
  return repairedUTF8(program_invocation_short_name);
}
std::optional<std::string> versionString() {
  return read(&AppBundleFacts::versionString);
}
std::optional<FilePath> resourcesPath() {
  return read(&AppBundleFacts::resourcesPath);
}
std::optional<FilePath> sharedSupportPath() {
  return read(&AppBundleFacts::sharedSupportPath);
}

} // namespace velmar::AppBundle
