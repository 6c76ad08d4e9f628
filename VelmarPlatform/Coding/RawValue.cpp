#include "VelmarPlatform/Coding/RawValue.h"

#include "VelmarPlatform/Basics/DecimalText.h"
#include "VelmarPlatform/Basics/Overloaded.h"

#include <concepts>

namespace velmar {

std::string RawValue::description() const {
  const auto quoted = [](const std::string& text) { return '"' + text + '"'; };
  return std::visit(
      Overloaded{[](Nothing) -> std::string { return "nothing"; },
                 [](bool boolean) -> std::string { return boolean ? "true" : "false"; },
                 [](std::integral auto number) { return std::to_string(number); },
                 [](std::floating_point auto number) { return decimalText(number); }, quoted,
                 [](const Date& date) { return formatISO8601(date); },
                 [](const Bytes& bytes) { return std::to_string(bytes.size()) + " bytes"; },
                 [](const Array& array) {
                   std::string text;
                   for (const RawValue& element : array)
                     text += (text.empty() ? "" : ", ") + element.description();
                   return '[' + text + ']';
                 },
                 [&quoted](const Dictionary& dictionary) {
                   std::string text;
                   for (const auto& [key, member] : dictionary)
                     text += (text.empty() ? "" : ", ") + quoted(key) + ": " + member.description();
                   return '{' + text + '}';
                 }},
      value);
}

} // namespace velmar
