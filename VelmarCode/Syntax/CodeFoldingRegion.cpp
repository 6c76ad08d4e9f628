#include "VelmarCode/Syntax/CodeFoldingRegion.h"

#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

#include <ostream>

namespace velmar {

std::string CodeFoldingRegion::description() const {
  return "(range: " + std::to_string(range.lowerBound) + "..<" + std::to_string(range.upperBound) +
         ", role: " + (role ? role->rawValue : "(none)") + ", level: " + std::to_string(level) +
         ")";
}

std::ostream& operator<<(std::ostream& stream, const CodeFoldingRegion& region) {
  return stream << region.description();
}

std::ostream& operator<<(std::ostream& stream, const CodeFoldingRegion::Role& role) {
  return stream << role.rawValue;
}

std::span<const FieldRow> CodeFoldingRegion::rows() {
  static constexpr auto table = rowsOf<CodeFoldingRegion>(row<&CodeFoldingRegion::range>("range"),
                                                          row<&CodeFoldingRegion::role>("role"),
                                                          row<&CodeFoldingRegion::level>("level"));
  return table;
}

} // namespace velmar
