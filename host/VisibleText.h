// Document text as it can be shown to people: nothing in it can take over a terminal or turn the
// order of a line around, and whoever shows it knows the column it is in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

/// The columns that one character takes on a terminal: two for wide ones and emoji, none for a
/// combining mark that stands alone, else one. `character` is a grapheme cluster.
[[nodiscard]] std::int64_t columnsOf(std::u16string_view character);

/// What to do with a tab.
enum class Tabs {
  /// Blanks up to the next stop.
  expand,
  keep,
};

/// Goes through a text piece by piece, line by line. What can't be shown is replaced by a stand-in:
/// "␛" for an escape, "⟨202e⟩" for a character that changes the direction of writing or is
/// invisible, "⟨d800⟩" for a lone surrogate.
class VisibleText {
public:
  static constexpr std::int64_t tabWidth = 4;

  struct Piece {
    std::string text;
    /// Whether it stands for something else.
    bool isStandIn = false;
    bool operator==(const Piece&) const = default;
  };

  explicit VisibleText(Tabs tabs = Tabs::expand) : tabs_(tabs) {}

  /// What comes next in the line; `units` hold no line terminator. Good until the next call.
  [[nodiscard]] const std::vector<Piece>& next(std::u16string_view units);
  void startLine() noexcept { column_ = 0; }
  /// Where the line has got to, from 0.
  [[nodiscard]] std::int64_t column() const noexcept { return column_; }

private:
  void append(std::string_view text, bool isStandIn);
  void appendTab();
  void appendCharacter(std::u16string_view character);

  Tabs tabs_;
  std::int64_t column_ = 0;
  std::vector<Piece> pieces_;
};

} // namespace velmar::host
