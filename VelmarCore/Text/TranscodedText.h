// A UTF-8 text as the expression engine wants it, UTF-16, with the way back from offsets in the one
// to offsets in the other. Used where patterns meet strings: RegularExpression and RegexScanner.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// The UTF-16 form of a borrowed UTF-8 text. Short texts take no memory of their own. Bytes that
/// aren't UTF-8 count as U+FFFD. Immutable; any thread.
class TranscodedText {
public:
  /// `text` must outlive this. O(n).
  explicit TranscodedText(std::string_view text);
  ~TranscodedText() = default;
  TranscodedText(const TranscodedText&) = delete;
  TranscodedText& operator=(const TranscodedText&) = delete;

  [[nodiscard]] std::string_view bytes() const noexcept { return bytes_; }
  /// Valid as long as this is.
  [[nodiscard]] std::u16string_view units() const noexcept { return units_; }

  /// The byte where the character at `unitOffset` begins; absent inside a surrogate pair. O(1).
  [[nodiscard]] std::optional<std::int64_t> byteOffset(std::int64_t unitOffset) const;
  /// The unit where the character at `byteOffset` begins, or that of the next character if it lies
  /// inside one. O(log n), O(1) if the text is ASCII.
  [[nodiscard]] std::int64_t unitOffset(std::int64_t byteOffset) const;

private:
  /// The start of a character in both forms.
  struct Place {
    std::size_t unit = 0;
    std::size_t byte = 0;
  };
  static constexpr std::size_t placeInterval = 64;

  /// Whether each byte is a unit, so that offsets are the same in both.
  [[nodiscard]] bool isOneToOne() const noexcept { return units_.size() == bytes_.size(); }
  [[nodiscard]] Place next(Place place) const noexcept;
  void widenASCII(char16_t* units) const noexcept;
  void transcode();

  std::string_view bytes_;
  std::u16string_view units_;
  std::u16string storage_;
  std::array<char16_t, 128> shortStorage_;
  /// For texts that aren't ASCII: the first character at or behind each multiple of the interval in
  /// units.
  std::vector<Place> places_;
};

} // namespace velmar
