// Where this checkout stands, for tests, benchmarks and fuzzers that read its files. Programs that
// are installed don't.
#pragma once

#include <string>
#include <string_view>

namespace velmar {

/// The absolute path of a file or folder: "packs" gives "/base/packs". Any thread.
[[nodiscard]] std::string sourcePath(std::string_view path);

} // namespace velmar
