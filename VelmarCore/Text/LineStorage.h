// Where a line keeps its text: what `UTF16LineArray` asks of a storage, the storage that documents
// use, and the stand-in for arrays that only track boundaries.
#pragma once

#include "VelmarPlatform/Basics/Range.h"

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

/// A growable run of UTF-16 code units with integer indices from 0. Ranges are within the units
/// held; buffers are borrowed for the call and never kept.
template <class Storage>
concept UTF16LineArrayStorage =
    std::default_initializable<Storage> &&
    requires(Storage storage, const Storage constStorage, std::int64_t index, TextRange range,
             std::u16string_view units, std::span<char16_t> buffer) {
      { constStorage.count() } -> std::same_as<std::int64_t>;
      { constStorage[index] } -> std::same_as<char16_t>;
      { constStorage.substringFor(range) } -> std::same_as<std::u16string>;
      constStorage.copySubrange(range,
                                buffer); // the buffer has at least as many elements as the range
      storage.replaceSubrange(range, units);
      storage.appendContentsOf(units);
      storage.removeSubrange(range);
    };

/// A storage that can show its units without copying them.
template <class Storage>
concept ContiguousLineStorage = UTF16LineArrayStorage<Storage> && requires(const Storage storage) {
  { storage.codeUnits() } -> std::same_as<std::u16string_view>;
};

/// No text at all: `UTF16LineArray<NoLineStorage>` knows where the lines are and how they end,
/// nothing more.
struct NoLineStorage {};

/// The storage of documents: one block of exactly the units of a line, with a little room once it
/// has been edited.
///
/// Sixteen bytes and one allocation, where std::u16string takes 32 and doubles; a document has one
/// for each line.
class UTF16LineArrayStringStorage {
public:
  UTF16LineArrayStringStorage() = default;
  UTF16LineArrayStringStorage(UTF16LineArrayStringStorage&& other) noexcept;
  UTF16LineArrayStringStorage& operator=(UTF16LineArrayStringStorage&& other) noexcept;
  UTF16LineArrayStringStorage(const UTF16LineArrayStringStorage&) = delete;
  UTF16LineArrayStringStorage& operator=(const UTF16LineArrayStringStorage&) = delete;
  ~UTF16LineArrayStringStorage();

  [[nodiscard]] std::int64_t count() const noexcept { return count_; }
  /// What lies outside of the object.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept { return capacity_ * sizeof(char16_t); }
  /// Stops the process unless `0 <= index < count()`.
  [[nodiscard]] char16_t operator[](std::int64_t index) const;
  /// All units, as a view that the next change ends.
  [[nodiscard]] std::u16string_view codeUnits() const noexcept { return {units_, count_}; }

  [[nodiscard]] std::u16string substringFor(TextRange range) const;
  void copySubrange(TextRange range, std::span<char16_t> buffer) const;
  /// Splices `units` in. They must not be a view of this storage. O(units behind the splice).
  void replaceSubrange(TextRange range, std::u16string_view units);
  void appendContentsOf(std::u16string_view units);
  void removeSubrange(TextRange range);

private:
  void checkRange(TextRange range) const;
  void reserve(std::size_t needed);

  char16_t* units_ = nullptr;
  std::uint32_t count_ = 0;
  std::uint32_t capacity_ = 0;
};

static_assert(ContiguousLineStorage<UTF16LineArrayStringStorage>);

} // namespace velmar
