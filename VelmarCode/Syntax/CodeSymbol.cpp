#include "VelmarCode/Syntax/CodeSymbol.h"

#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

namespace velmar {

std::span<const FieldRow> CodeSymbol::Argument::rows() {
  static constexpr auto table = rowsOf<Argument>(
      row<&Argument::range>("range"), row<&Argument::name>("name"),
      row<&Argument::nameRange>("nameRange"), row<&Argument::typeName>("typeName"));
  return table;
}

std::span<const FieldRow> CodeSymbol::Autoclose::rows() {
  static constexpr auto table = rowsOf<Autoclose>(row<&Autoclose::expression>("expression"),
                                                  row<&Autoclose::completion>("completion"));
  return table;
}

std::span<const FieldRow> CodeSymbol::rows() {
  static constexpr auto table = rowsOf<CodeSymbol>(
      row<&CodeSymbol::kind>("kind"), row<&CodeSymbol::range>("range"),
      row<&CodeSymbol::name>("name"), row<&CodeSymbol::nameRange>("nameRange"),
      row<&CodeSymbol::languageID>("languageID"), row<&CodeSymbol::displayName>("displayName"),
      row<&CodeSymbol::typeName>("typeName"), row<&CodeSymbol::comment>("comment"),
      row<&CodeSymbol::traits>("traits"), row<&CodeSymbol::level>("level"),
      row<&CodeSymbol::arguments>("arguments"), row<&CodeSymbol::autoclose>("autoclose"));
  return table;
}

} // namespace velmar
