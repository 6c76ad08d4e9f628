#include "host/OutlineText.h"

#include "VelmarCore/Text/TextTrimming.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::int64_t longestExcerpt = 60;

std::string visible(std::u16string_view units) {
  VisibleText text;
  std::string shown;
  for (const VisibleText::Piece& piece : text.next(units))
    shown += piece.text;
  return shown;
}

std::string visible(std::string_view text) {
  return visible(utf16RepairingUTF8(text));
}

/// Whether the symbol is a line across the outline.
bool isSeparator(const CodeSymbol& symbol) {
  return symbol.traits.contains(CodeSymbol::Traits::separator);
}

std::string firstLineOf(const DocumentText& text, std::int64_t offset) {
  const auto line = text.lineBoundariesFor(offset, LineAffinity::downstream);
  const std::string shown = visible(
      text.substringFor({line.start, std::min(line.contentsEnd, line.start + longestExcerpt)}));
  return std::string(trimmed(shown)) + (line.contentsRange().length() > longestExcerpt ? "…" : "");
}

void writeRange(std::string_view name, TextRange range, JSONWriter& writer) {
  writer.key(name);
  writer.beginObject();
  writer.member("lowerBound", range.lowerBound);
  writer.member("upperBound", range.upperBound);
  writer.endObject();
}

void writeText(std::string_view name, const std::optional<std::string>& text, JSONWriter& writer) {
  if (text)
    writer.member(name, std::string_view(*text));
}

void writeFields(const CodeSymbol& symbol, JSONWriter& writer) {
  const std::string kind = symbol.kind.description();
  writer.member("kind", std::string_view(kind));
  writer.member("name", std::string_view(symbol.name));
  writeText("displayName", symbol.displayName, writer);
  writeText("typeName", symbol.typeName, writer);
  writeText("comment", symbol.comment, writer);
  if (symbol.languageID)
    writer.member("language", std::string_view(symbol.languageID->rawValue));
  writeRange("range", symbol.range, writer);
  writeRange("nameRange", symbol.nameRange, writer);
  writer.member("level", symbol.level);
  writer.member("traits", symbol.traits.rawValue);
  if (symbol.autoclose) {
    writer.key("autoclose");
    writer.beginObject();
    writer.member("expression", std::string_view(symbol.autoclose->expression));
    writer.member("completion", std::string_view(symbol.autoclose->completion));
    writer.endObject();
  }
  writer.key("arguments");
  writer.beginArray();
  for (const CodeSymbol::Argument& argument : symbol.arguments) {
    writer.beginObject();
    writer.member("name", std::string_view(argument.name));
    writeText("typeName", argument.typeName, writer);
    writeRange("range", argument.range, writer);
    writeRange("nameRange", argument.nameRange, writer);
    writer.endObject();
  }
  writer.endArray();
}

} // namespace

std::vector<std::int64_t> depthsOf(const std::vector<CodeSymbol>& symbols) {
  std::vector<std::int64_t> depths;
  std::vector<TextRange> around;
  for (const CodeSymbol& symbol : symbols) {
    while (!around.empty() &&
           (!around.back().containsRange(symbol.range) || around.back() == symbol.range))
      around.pop_back();
    depths.push_back(std::ssize(around));
    around.push_back(symbol.range);
  }
  return depths;
}

std::string titleOf(const CodeSymbol& symbol) {
  std::string title = symbol.displayName.value_or(symbol.name);
  std::string arguments;
  for (const CodeSymbol::Argument& argument : symbol.arguments) {
    arguments += arguments.empty() ? "" : ", ";
    arguments += argument.name + (argument.typeName ? ": " + *argument.typeName : "");
  }
  if (!arguments.empty() || (symbol.kind.isCallable() && !title.ends_with(')')))
    title += "(" + arguments + ")";
  for (char& letter : title) // of what is in several lines
    letter = letter == '\n' || letter == '\r' ? ' ' : letter;
  return visible(title);
}

std::string linesOf(const DocumentText& text, TextRange range) {
  const std::int64_t first = text.indexOfLineContaining(range.lowerBound);
  const std::int64_t last =
      text.indexOfLineContaining(std::max(range.lowerBound, range.upperBound - 1));
  return first == last ? std::to_string(first + 1) : fmt::format("{}-{}", first + 1, last + 1);
}

void writeOutline(const std::vector<CodeSymbol>& symbols, const DocumentText& text,
                  Output& output) {
  const auto depths = depthsOf(symbols);
  for (std::size_t index = 0; index < symbols.size(); ++index) {
    const CodeSymbol& symbol = symbols[index];
    output.write(std::string(static_cast<std::size_t>(depths[index]) * 2, ' '));
    output.write(isSeparator(symbol) ? "———" : symbol.kind.description(), Style::faint);
    output.write(" ");
    output.write(titleOf(symbol), symbol.kind.isType() ? Style::heading : Style::plain);
    std::string facts = "  " + linesOf(text, symbol.range);
    if (symbol.level != 0)
      facts += fmt::format(", level {}", symbol.level);
    if (symbol.traits.contains(CodeSymbol::Traits::functionOrMethod))
      facts += ", or a method";
    output.write(facts + "\n", Style::faint);
  }
}

void writeFolds(const std::vector<CodeFoldingRegion>& folds, const DocumentText& text,
                Output& output) {
  for (const CodeFoldingRegion& fold : folds) {
    output.write(std::string(static_cast<std::size_t>(fold.level) * 2, ' '));
    output.write(linesOf(text, fold.range), Style::field);
    output.write(fmt::format(" {}", fold.role ? visible(fold.role->rawValue) : "no role"));
    output.write(fmt::format("  {}\n", firstLineOf(text, fold.range.lowerBound)), Style::faint);
  }
}

void writeOutlineAsJSON(const std::vector<CodeSymbol>& symbols, JSONWriter& writer) {
  const auto depths = depthsOf(symbols);
  writer.beginArray();
  for (std::size_t index = 0; index < symbols.size(); ++index) {
    writer.beginObject();
    writeFields(symbols[index], writer);
    writer.key("symbols");
    writer.beginArray();
    // What isn't held by this one ends it, and all that holds it down to where the next one lies.
    const std::int64_t next = index + 1 < symbols.size() ? depths[index + 1] : 0;
    for (std::int64_t depth = depths[index]; depth >= next; --depth) {
      writer.endArray();
      writer.endObject();
    }
  }
  writer.endArray();
}

void writeFoldsAsJSON(const std::vector<CodeFoldingRegion>& folds, JSONWriter& writer) {
  writer.beginArray();
  for (const CodeFoldingRegion& fold : folds) {
    writer.beginObject();
    writeRange("range", fold.range, writer);
    if (fold.role)
      writer.member("role", std::string_view(fold.role->rawValue));
    writer.member("level", fold.level);
    writer.endObject();
  }
  writer.endArray();
}

} // namespace velmar::host
