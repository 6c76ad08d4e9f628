#include "host/PatternText.h"

#include <algorithm>

namespace velmar::host {

namespace {

/// Where the string that starts at `start` ends.
std::size_t endOfString(std::string_view text, std::size_t start) {
  for (std::size_t at = start + 1; at < text.size(); ++at) {
    if (text[at] == '\\')
      ++at;
    else if (text[at] == '"')
      return at + 1;
  }
  return text.size();
}

/// Where the comment, the string or the single letter at `start` ends.
std::size_t endOfToken(std::string_view text, std::size_t start) {
  if (text[start] == ';')
    return std::min(text.find('\n', start), text.size());
  return text[start] == '"' ? endOfString(text, start) : start + 1;
}

/// Appends a token outside strings so that all blank space becomes single blanks.
void appendToken(std::string& line, std::string_view token) {
  constexpr std::string_view blanks = " \t\r\n";
  if (token.starts_with(';'))
    return;
  if (blanks.find(token.front()) == std::string_view::npos)
    line += token;
  else if (!line.ends_with(' '))
    line += ' ';
}

} // namespace

std::vector<std::string> predicatesIn(std::string_view pattern) {
  std::vector<std::string> predicates;
  std::string predicate;
  bool isInside = false; // A predicate holds no other parentheses, but in strings.
  for (std::size_t at = 0; at < pattern.size();) {
    const std::size_t end = endOfToken(pattern, at);
    if (pattern.substr(at).starts_with("(#"))
      isInside = true;
    if (isInside)
      appendToken(predicate, pattern.substr(at, end - at));
    if (isInside && pattern[at] == ')') {
      predicates.push_back(std::exchange(predicate, {}));
      isInside = false;
    }
    at = end;
  }
  return predicates;
}

} // namespace velmar::host
