// The facts about the application that the engine tells others: its name and version, and where
// its files are. The application sets them when it starts; what it leaves out has a sensible value
// or is absent.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"

#include <optional>
#include <string>

namespace velmar {

struct AppBundleFacts {
  std::optional<std::string> name = std::nullopt;
  std::optional<std::string> versionString = std::nullopt;
  /// Absolute.
  std::optional<FilePath> resourcesPath = std::nullopt;
  /// Absolute.
  std::optional<FilePath> sharedSupportPath = std::nullopt;
};

/// Any thread.
namespace AppBundle {

/// Replaces all that was set before. An empty name, and a path that isn't absolute, count as
/// missing.
void setFacts(AppBundleFacts facts);

/// The name that was set, or the process's: its program's file name.
[[nodiscard]] std::string name();
[[nodiscard]] std::optional<std::string> versionString();
[[nodiscard]] std::optional<FilePath> resourcesPath();
[[nodiscard]] std::optional<FilePath> sharedSupportPath();

} // namespace AppBundle
} // namespace velmar
