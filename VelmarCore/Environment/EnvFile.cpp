#include "VelmarCore/Environment/EnvFile.h"

#include "VelmarCore/Text/RegularExpressionMatches.h"

namespace velmar {

namespace {

const RegularExpression& entryExpression() {
  static const auto& expression =
      *new RegularExpression(R"re(^\s*(?:export\s+)?(?<key>[\w.-]+)(?:\s*=\s*?|:\s+?)(?<value>)re"
                             R"re(\s*'(?<singleValue>(?:\\'|[^'])*)'|)re"
                             R"re(\s*"(?<doubleValue>(?:\\"|[^"])*)"|)re"
                             R"re(\s*\x60(?<backtickValue>(?:\\\x60|[^\x60])*)\x60|)re"
                             R"re((?<unquotedValue>[^\#\r\n]+))?\s*(?:\#.*)?$)re",
                             RegularExpressionOptions::anchorsMatchLines);
  return expression;
}

std::string_view valueOf(const RegularExpression::Match& match) {
  for (const char* form : {"singleValue", "doubleValue", "backtickValue", "unquotedValue"})
    if (const auto group = match.groupNamed(form))
      return *group->substring;
  return {};
}

} // namespace

SubprocessEnvironment::Values entriesOfEnvText(std::string_view text) {
  SubprocessEnvironment::Values entries;
  for (const RegularExpression::Match& match : entryExpression().matchesIn(text))
    entries.insert_or_assign(std::string(match.textOf("key")), std::string(valueOf(match)));
  return entries;
}

} // namespace velmar
