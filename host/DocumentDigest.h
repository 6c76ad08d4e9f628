// One number for all that the engine knows of a document, so that two runs can be compared.
#pragma once

#include "VelmarParser/Document/Parse.h"

#include <cstdint>
#include <string_view>

namespace velmar::host {

/// FNV-1a with 64 bits: the same on every machine and in every build.
class Digest {
public:
  void add(std::string_view bytes) noexcept {
    for (const char byte : bytes)
      addByte(static_cast<unsigned char>(byte));
    add(static_cast<std::int64_t>(bytes.size()));
  }
  void add(std::int64_t number) noexcept { add(static_cast<std::uint64_t>(number)); }
  void add(std::uint64_t number) noexcept {
    for (int byte = 0; byte < 8; ++byte)
      addByte(static_cast<unsigned char>(number >> 8 * byte & 0xFF));
  }

  [[nodiscard]] std::uint64_t value() const noexcept { return value_; }

private:
  void addByte(unsigned char byte) noexcept {
    value_ ^= byte;
    value_ *= 0x100000001b3;
  }

  std::uint64_t value_ = 0xcbf29ce484222325;
};

/// Adds the changed ranges that an edit gave.
void addTo(Digest& digest, const TextRangeSet& ranges);

/// Adds the length of the text and, for each layer, breadth first: its language, depth and flags,
/// its ranges, those that its parser saw and those of its name, its lexical spans, and each node of
/// its tree with symbol, field, range and flags. Gives the number of nodes.
std::int64_t addTo(Digest& digest, const Parse& parse);

} // namespace velmar::host
