#include "VelmarCode/Language/LanguageSyntax.h"

#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Unicode/UTF.h"

namespace velmar {

std::optional<BracketPair> BracketPair::fromStrings(std::string_view open, std::string_view close) {
  if (open.empty() || close.empty())
    return std::nullopt;
  return BracketPair{decodeUTF8(open, 0).scalar, decodeUTF8(close, 0).scalar};
}

std::string BracketPair::description() const {
  return utf8FromScalar(open) + utf8FromScalar(close);
}

std::ostream& operator<<(std::ostream& stream, const BracketPair& pair) {
  return stream << pair.description();
}

bool Coder<BracketPair>::decode(Decoder from, BracketPair& into) {
  KeyedDecodingContainer table;
  const auto readScalar = [&](std::string_view key, char32_t& scalar) {
    return table.at(key, [&](Decoder member) {
      std::string_view text;
      if (!member.readText(text))
        return false;
      if (text.empty())
        return member.fail(DecodingErrorKind::dataCorrupted,
                           "Value is not a valid single-character string.");
      scalar = decodeUTF8(text, 0).scalar;
      return true;
    });
  };
  return from.open(table) && readScalar("open", into.open) && readScalar("close", into.close);
}

void Coder<BracketPair>::encode(const BracketPair& value, Encoder& into) {
  into.table([&](TableEncoder& table) {
    table.write("open", utf8FromScalar(value.open));
    table.write("close", utf8FromScalar(value.close));
  });
}

std::span<const FieldRow> LanguageSyntax::Comments::Multiline::rows() {
  static constexpr auto table =
      rowsOf<Multiline>(row<&Multiline::prefix>("prefix"), row<&Multiline::suffix>("suffix"));
  return table;
}

std::span<const FieldRow> LanguageSyntax::Comments::rows() {
  static constexpr auto table =
      rowsOf<Comments>(row<&Comments::single>("single"), row<&Comments::multiline>("multiline"));
  return table;
}

std::span<const FieldRow> LanguageSyntax::Bookmarks::rows() {
  static constexpr auto table = rowsOf<Bookmarks>(
      row<&Bookmarks::regex>("regex"), row<&Bookmarks::contentCapture>("contentCapture"));
  return table;
}

std::span<const FieldRow> LanguageSyntax::Identifiers::rows() {
  static constexpr auto table = rowsOf<Identifiers>(row<&Identifiers::characters>("characters"));
  return table;
}

std::span<const FieldRow> LanguageSyntax::Brackets::rows() {
  static constexpr auto table = rowsOf<Brackets>(row<&Brackets::pairs>("pairs"));
  return table;
}

std::span<const FieldRow> LanguageSyntax::rows() {
  static constexpr auto table = rowsOf<LanguageSyntax>(
      row<&LanguageSyntax::comments>("comments"), row<&LanguageSyntax::bookmarks>("bookmarks"),
      row<&LanguageSyntax::identifiers>("identifiers"), row<&LanguageSyntax::brackets>("brackets"));
  return table;
}

} // namespace velmar
