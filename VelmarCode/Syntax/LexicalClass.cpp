#include "VelmarCode/Syntax/LexicalClass.h"

#include "VelmarPlatform/Coding/Coder.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <ostream>
#include <string>

namespace velmar {

namespace {

/// The texts of classes that have no name here. Append-only, so that what was given out stays.
class OtherRawValues {
public:
  const std::string_view* find(std::string_view rawValue) {
    const std::scoped_lock lock(mutex_);
    const auto entry = entries_.try_emplace(std::string(rawValue)).first;
    entry->second = entry->first; // a node of a map never moves, and neither does its key
    return &entry->second;
  }

private:
  std::mutex mutex_;
  std::map<std::string, std::string_view, std::less<>> entries_;
};

const std::string_view* otherRawValue(std::string_view rawValue) {
  static auto* const others = new OtherRawValues; // never destroyed: classes may be read at exit
  return others->find(rawValue);
}

} // namespace

LexicalClass::LexicalClass(std::string_view rawValue) {
  const auto* const knownValue = std::ranges::find(knownRawValues, rawValue);
  rawValue_ = knownValue != knownRawValues.end() ? knownValue : otherRawValue(rawValue);
}

std::span<const LexicalClass> LexicalClass::known() noexcept {
  static constexpr std::array classes{keyword, comment, string, regex};
  return classes;
}

std::ostream& operator<<(std::ostream& stream, const LexicalClass& lexicalClass) {
  return stream << lexicalClass.rawValue();
}

bool Coder<LexicalClass>::decode(Decoder from, LexicalClass& into) {
  std::string_view text;
  if (!from.readText(text))
    return false;
  into = LexicalClass(text);
  return true;
}

void Coder<LexicalClass>::encode(const LexicalClass& value, Encoder& into) {
  into.text(value.rawValue());
}

} // namespace velmar
