// How a path is written for people: short where it lies in the folder that they work in.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"

#include <optional>
#include <string>

namespace velmar {

/// Shows paths relative to a base where they lie below it, and in full otherwise.
struct FilePathFormatStyle {
  /// Absent, every path is shown in full.
  std::optional<FilePath> basePath = std::nullopt;

  /// "a/b.c" for "/base/a/b.c" with the base "/base"; the base itself in full. The text alone
  /// decides: standardize both first if they may have detours. Valid UTF-8.
  [[nodiscard]] std::string format(const FilePath& path) const;
};

} // namespace velmar
