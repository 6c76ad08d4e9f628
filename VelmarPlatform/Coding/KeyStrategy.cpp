#include "VelmarPlatform/Coding/KeyStrategy.h"

#include <vector>

namespace velmar {
namespace {

bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}
char toLower(char c) {
  return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}
char toUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::vector<std::string_view> wordsBetweenUnderscores(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('_'), text.size());
    if (end > 0)
      words.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

} // namespace

KeyDecodingStrategy KeyDecodingStrategy::convertFromSnakeCase() {
  KeyDecodingStrategy strategy;
  strategy.kind_ = Kind::snakeCase;
  return strategy;
}

KeyDecodingStrategy KeyDecodingStrategy::custom(Function function) {
  KeyDecodingStrategy strategy;
  strategy.kind_ = Kind::custom;
  strategy.function_ = std::move(function);
  return strategy;
}

std::string KeyDecodingStrategy::convert(std::string_view key, const CodingPathNode& table) const {
  switch (kind_) {
  case Kind::keep:
    break;
  case Kind::snakeCase:
    return camelCaseFromSnakeCase(key);
  case Kind::custom:
    return function_(CodingPathNode(table, key).path()).stringValue();
  }
  return std::string(key);
}

std::string camelCaseFromSnakeCase(std::string_view text) {
  const std::size_t start = text.find_first_not_of('_');
  if (start == std::string_view::npos)
    return std::string(text);
  const std::size_t end = text.find_last_not_of('_') + 1;
  const auto words = wordsBetweenUnderscores(text.substr(start, end - start));
  if (words.size() == 1)
    return std::string(text);
  std::string result(text.substr(0, start));
  bool isFirst = true;
  for (const std::string_view word : words) {
    result += isFirst ? toLower(word[0]) : toUpper(word[0]);
    for (const char c : word.substr(1))
      result += toLower(c);
    isFirst = false;
  }
  return result.append(text.substr(end));
}

std::string snakeCaseFromCamelCase(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool startsWord = i > 0 && isUpper(text[i]) && text[i - 1] != '_' &&
                            (!isUpper(text[i - 1]) ||
                             (i + 1 < text.size() && text[i + 1] >= 'a' && text[i + 1] <= 'z'));
    if (startsWord)
      result += '_';
    result += toLower(text[i]);
  }
  return result;
}

} // namespace velmar
