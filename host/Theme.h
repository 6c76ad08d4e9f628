// Colours for selectors: the application's side of highlighting. A small theme with two sets of
// colours, one for dark backgrounds and one for light ones.
#pragma once

#include "VelmarCode/Syntax/LexicalSelector.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace velmar::host {

struct Color {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Color&) const = default;
};

/// A colour as the theme means it.
struct Ink {
  std::string_view name; ///< Good as the name of a class in a page.
  Color onDark;
  Color onLight;
};

/// How a piece of text looks. What isn't set here is as in the text around it.
struct Look {
  /// Into the theme's inks; absent leaves the colour as it is.
  std::optional<std::int32_t> ink = std::nullopt;
  bool isBold = false;
  bool isItalic = false;
  bool isUnderlined = false;
  bool isStruck = false;

  auto operator<=>(const Look&) const = default;
  /// This look on top of `below`, which shows through where this one says nothing.
  [[nodiscard]] Look over(const Look& below) const noexcept;
};

class Theme {
public:
  struct Rule {
    LexicalSelector selector;
    Look look;
  };

  /// For the selectors of packs/README.md, and the commonest ones of the query texts that grammars
  /// bring with them.
  [[nodiscard]] static const Theme& builtIn();

  Theme(std::vector<Ink> inks, std::vector<Rule> rules)
      : inks_(std::move(inks)), rules_(std::move(rules)) {}

  [[nodiscard]] std::span<const Ink> inks() const noexcept { return inks_; }
  /// The look of the most specific rule that matches, the later one of two; absent if none does.
  [[nodiscard]] std::optional<Look> lookFor(const LexicalSelector& selector) const;

private:
  std::vector<Ink> inks_;
  std::vector<Rule> rules_;
};

/// The nearest of the 256 colours that terminals agree on: the cube of 16 to 231 and the greys of
/// 232 to 255.
[[nodiscard]] std::uint8_t nearestOf256(Color color) noexcept;

} // namespace velmar::host
