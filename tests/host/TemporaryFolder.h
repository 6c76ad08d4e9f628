// A folder that goes with the test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velmar::testing {

class TemporaryFolder {
public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmar-host-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
      throw std::runtime_error("There is no place for a folder.");
    path = pattern;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path); }

  /// Writes a file, `name` below the folder, and gives its path.
  std::string write(const std::string& name, std::string_view content) const {
    const std::filesystem::path file = std::filesystem::path(path) / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
  }

  std::string path;
};

inline std::string contentsOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace velmar::testing
