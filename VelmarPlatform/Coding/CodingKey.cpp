#include "VelmarPlatform/Coding/CodingKey.h"

#include "VelmarPlatform/Basics/Overloaded.h"

#include <algorithm>

namespace velmar {
namespace {

bool isPlainWord(std::string_view key) {
  return !key.empty() && std::ranges::all_of(key, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '$';
  });
}

} // namespace

std::string CodingKey::stringValue() const {
  return std::visit(Overloaded{[](const std::string& key) { return key; },
                               [](Number number) { return std::to_string(number.value); },
                               [](Index index) { return "Index " + std::to_string(index.value); }},
                    step_);
}

std::optional<std::int64_t> CodingKey::intValue() const {
  return std::visit(
      Overloaded{[](const std::string&) -> std::optional<std::int64_t> { return std::nullopt; },
                 [](auto step) -> std::optional<std::int64_t> { return step.value; }},
      step_);
}

std::string describe(const CodingPath& path) {
  std::string text;
  for (const CodingKey& key : path) {
    if (key.isIndex()) {
      text += '[' + std::to_string(key.intValue().value_or(0)) + ']';
      continue;
    }
    if (!text.empty())
      text += '.';
    const std::string word = key.stringValue();
    text += isPlainWord(word) ? word : '"' + word + '"';
  }
  return text;
}

int CodingPathNode::depth() const noexcept {
  int steps = 0;
  for (const CodingPathNode* node = this; node->parent_ != nullptr; node = node->parent_)
    ++steps;
  return steps;
}

CodingPath CodingPathNode::path() const {
  CodingPath path;
  for (const CodingPathNode* node = this; node->parent_ != nullptr; node = node->parent_)
    path.push_back(node->index_ >= 0 ? CodingKey::fromIndex(node->index_)
                                     : CodingKey(std::string(node->key_)));
  std::ranges::reverse(path);
  return path;
}

} // namespace velmar
