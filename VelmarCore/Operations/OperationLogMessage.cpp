#include "VelmarCore/Operations/OperationLogMessage.h"

#include "VelmarCore/NotificationCenterAdditions.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Files/FilePathFormatStyle.h"
#include "VelmarPlatform/Unicode/Characters.h"

namespace velmar {

std::string OperationLogMessage::resolveFor(const OperationLogContext& context) const {
  std::string text;
  for (const Segment& segment : segments_)
    text +=
        std::visit(Overloaded{
                       [](const std::string& piece) { return piece; },
                       [&](const FilePath& path) {
                         return FilePathFormatStyle{.basePath = context.basePath()}.format(path);
                       },
                   },
                   segment);
  return text;
}

std::string OperationLogMessage::nameOfType(const std::type_info& type) {
  return detail::qualifiedName(type);
}

std::string_view withoutTrailingLineBreaks(std::string_view text) {
  while (!text.empty() && isNewline(lastCharacter(text)))
    text.remove_suffix(lastCharacter(text).size());
  return text;
}

} // namespace velmar
