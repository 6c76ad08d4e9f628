#include "VelmarPlatform/Files/FilePathFormatStyle.h"

namespace velmar {

std::string FilePathFormatStyle::format(const FilePath& path) const {
  if (basePath) {
    const auto rest = path.removingPrefix(*basePath);
    if (rest && !rest->isEmpty())
      return rest->description();
  }
  return path.description();
}

} // namespace velmar
