#include "host/TerminalPicture.h"

#include <array>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::string_view plain = "\x1b[0m";

// Backgrounds of nested layers, by depth; deeper ones start over.
constexpr std::array<Color, 4> darkTints{
    {{0x1B, 0x26, 0x38}, {0x2B, 0x22, 0x36}, {0x1B, 0x30, 0x2A}, {0x36, 0x2B, 0x1B}}};
constexpr std::array<Color, 4> lightTints{
    {{0xE6, 0xEE, 0xFA}, {0xF2, 0xE8, 0xFA}, {0xE4, 0xF5, 0xEC}, {0xFA, 0xF1, 0xE0}}};

/// The parameters that select a color; `ground` is 38 for text, 48 for what is behind it.
std::string parametersFor(Color color, int ground, ColorDepth depth) {
  if (depth == ColorDepth::trueColor)
    return fmt::format(";{};2;{};{};{}", ground, color.red, color.green, color.blue);
  return fmt::format(";{};5;{}", ground, nearestOf256(color));
}

} // namespace

ColorDepth terminalColors(const Streams& streams) {
  const std::string depth = streams.variable("COLORTERM").value_or("");
  return depth == "truecolor" || depth == "24bit" ? ColorDepth::trueColor : ColorDepth::xterm256;
}

std::string TerminalPicture::styleOf(const PaintedRun& run, bool isStandIn) const {
  if (options_.colors == ColorDepth::none)
    return {};
  const bool isDark = options_.background == Background::dark;
  const Look& look = run.look;
  std::string parameters;
  if (look.isBold)
    parameters += ";1";
  if (look.isItalic)
    parameters += ";3";
  if (look.isUnderlined)
    parameters += ";4";
  if (isStandIn)
    parameters += ";7";
  if (look.isStruck)
    parameters += ";9";
  if (look.ink) {
    const Ink& ink = theme_.inks()[static_cast<std::size_t>(*look.ink)];
    parameters += parametersFor(isDark ? ink.onDark : ink.onLight, 38, options_.colors);
  }
  const auto depth = painter().layers()[static_cast<std::size_t>(run.layer)].depth();
  if (options_.showsLayers && depth > 0) {
    const auto& tints = isDark ? darkTints : lightTints;
    parameters += parametersFor(tints[static_cast<std::size_t>(depth - 1) % tints.size()], 48,
                                options_.colors);
  }
  return parameters.empty() ? std::string() : fmt::format("\x1b[0{}m", parameters);
}

void TerminalPicture::writePiece(const PaintedRun& run, const VisibleText::Piece& piece) {
  std::string style = styleOf(run, piece.isStandIn);
  if (style != style_) {
    output_.write(style.empty() ? plain : std::string_view(style));
    style_ = std::move(style);
  }
  output_.write(piece.text);
}

void TerminalPicture::endLine() {
  if (!style_.empty())
    output_.write(plain);
  style_.clear();
  output_.write("\n");
}

} // namespace velmar::host
