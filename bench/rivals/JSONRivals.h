// What others do with JSON, beside which ours is measured. Built by a compiler of its own, since
// not each of them compiles with ours; nothing but the standard library crosses.
#pragma once

#include "bench/rivals/Records.h"

#include <cstddef>
#include <string>

namespace velmar::bench {

/// A text made into a tree and that into a record. Stops the process if the text isn't one.
template <class Record>
struct RapidJSON {
  static Record decode(const std::string& text);
  static std::string encode(const Record& record);
};

template <class Record>
struct Nlohmann {
  static Record decode(const std::string& text);
};

/// A text made into a tree, and how much is at its top.
std::size_t parseWithRapidJSON(const std::string& text);
/// Likewise, with the order of the keys.
std::size_t parseWithNlohmann(const std::string& text);

} // namespace velmar::bench
