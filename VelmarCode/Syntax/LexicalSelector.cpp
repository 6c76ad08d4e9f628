#include "VelmarCode/Syntax/LexicalSelector.h"

#include "VelmarPlatform/Coding/Coder.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <ostream>
#include <utility>
#include <vector>

namespace velmar {

const LexicalSelector LexicalSelector::null{Storage(Null{})};
const LexicalSelector LexicalSelector::universal{Storage(Universal{})};

namespace {

/// Tab and the space separators of Unicode; a line break is no blank.
bool isBlank(char32_t scalar) {
  return scalar == U'\t' || scalar == U' ' || scalar == 0xA0 || scalar == 0x1680 ||
         (scalar >= 0x2000 && scalar <= 0x200A) || scalar == 0x202F || scalar == 0x205F ||
         scalar == 0x3000;
}

std::string_view withoutBlanksAtEnds(std::string_view text) {
  while (!text.empty()) {
    const DecodedScalar first = decodeUTF8(text, 0);
    if (!isBlank(first.scalar))
      break;
    text.remove_prefix(first.length);
  }
  while (!text.empty()) {
    std::size_t start = text.size() - 1;
    while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80)
      --start;
    if (const DecodedScalar last = decodeUTF8(text, start);
        !isBlank(last.scalar) || start + last.length != text.size())
      break;
    text.remove_suffix(text.size() - start);
  }
  return text;
}

bool isNameCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         character == '_' || character == '-';
}

/// The names between the dots, in order; absent if one is empty or has another character in it.
std::optional<std::vector<std::string_view>> names(std::string_view text) {
  std::vector<std::string_view> result;
  while (true) {
    const std::size_t dot = text.find('.');
    const std::string_view name = text.substr(0, dot);
    if (name.empty() || !std::ranges::all_of(name, isNameCharacter))
      return std::nullopt;
    result.push_back(name);
    if (dot == std::string_view::npos)
      return result;
    text.remove_prefix(dot + 1);
  }
}

std::string joined(const std::vector<std::string_view>& parts) {
  std::string result;
  for (const std::string_view part : parts) {
    if (!result.empty())
      result += '.';
    result += part;
  }
  return result;
}

std::optional<LexicalClass> classAmong(const LexicalSelector::ComponentSet& components) {
  for (const LexicalClass lexicalClass : LexicalClass::known()) {
    if (components.contains(lexicalClass.rawValue()))
      return lexicalClass;
  }
  return std::nullopt;
}

bool isSubset(const LexicalSelector::ComponentSet& part,
              const LexicalSelector::ComponentSet& whole) {
  return part.size() <= whole.size() && std::ranges::includes(whole, part);
}

} // namespace

std::optional<LexicalSelector> LexicalSelector::fromString(std::string_view text) {
  text = withoutBlanksAtEnds(text);
  if (text.empty())
    return null;
  if (text == "*")
    return universal;
  auto parts = names(text);
  if (!parts)
    return std::nullopt;
  std::ranges::sort(*parts);
  Components result{.string = joined(*parts),
                    .components = ComponentSet(parts->begin(), parts->end()),
                    .lexicalClass = std::nullopt};
  result.lexicalClass = classAmong(result.components);
  return LexicalSelector(std::move(result));
}

const std::string& LexicalSelector::string() const noexcept {
  static const std::string nullText;
  static const std::string universalText = "*";
  return std::visit(
      Overloaded{[](const Components& names) -> const std::string& { return names.string; },
                 [](Null) -> const std::string& { return nullText; },
                 [](Universal) -> const std::string& { return universalText; }},
      storage_);
}

const LexicalSelector::ComponentSet& LexicalSelector::components() const noexcept {
  static const ComponentSet none;
  const auto* const names = std::get_if<Components>(&storage_);
  return names ? names->components : none;
}

std::optional<LexicalClass> LexicalSelector::lexicalClass() const noexcept {
  const auto* const names = std::get_if<Components>(&storage_);
  return names ? names->lexicalClass : std::nullopt;
}

bool LexicalSelector::matches(const LexicalSelector& other) const {
  return std::visit(
      Overloaded{[](Null) { return false; }, [](Universal) { return true; },
                 [&](const Components& names) {
                   return std::visit(
                       Overloaded{[](Null) { return false; }, [](Universal) { return true; },
                                  [&](const Components& otherNames) {
                                    return isSubset(names.components, otherNames.components);
                                  }},
                       other.storage_);
                 }},
      storage_);
}

bool LexicalSelector::matchesComponents(const ComponentSet& components) const {
  return std::visit(
      Overloaded{[](Null) { return false; }, [](Universal) { return true; },
                 [&](const Components& names) { return isSubset(names.components, components); }},
      storage_);
}

bool LexicalSelector::matchesComponent(std::string_view component) const {
  return std::visit(
      Overloaded{[](Null) { return false; }, [](Universal) { return true; },
                 [&](const Components& names) { return names.components.contains(component); }},
      storage_);
}

std::strong_ordering LexicalSelector::operator<=>(const LexicalSelector& other) const {
  if (const auto order = specificity() <=> other.specificity();
      order != std::strong_ordering::equal)
    return order;
  return string() <=> other.string();
}

std::ostream& operator<<(std::ostream& stream, const LexicalSelector& selector) {
  return stream << '"' << selector.string() << '"';
}

namespace {

using Components = LexicalSelector::Components;

bool decodeComponents(Decoder from, Components& into) {
  KeyedDecodingContainer table;
  std::vector<std::string> names;
  if (!from.open(table) || !table.read("_0", into.string) || !table.read("_1", names) ||
      !table.readIfPresent("_2", into.lexicalClass))
    return false;
  into.components.insert(names.begin(), names.end());
  return true;
}

void encodeComponents(const Components& components, Encoder& into) {
  into.table([&](TableEncoder& table) {
    table.write("_0", components.string);
    table.write(
        "_1", std::vector<std::string>(components.components.begin(), components.components.end()));
    table.writeIfPresent("_2", components.lexicalClass);
  });
}

bool decodeStorage(Decoder from, LexicalSelector::Storage& into) {
  KeyedDecodingContainer table;
  if (!from.open(table))
    return false;
  const auto keys = table.allKeys();
  if (keys.size() != 1)
    return from.fail(DecodingErrorKind::typeMismatch,
                     "Invalid number of keys found, expected one.");
  if (keys.front() == "null")
    into = LexicalSelector::Null();
  else if (keys.front() == "universal")
    into = LexicalSelector::Universal();
  else if (keys.front() == "components")
    return table.at(keys.front(), [&](Decoder payload) {
      return decodeComponents(payload, into.emplace<Components>());
    });
  else
    return from.fail(DecodingErrorKind::typeMismatch,
                     "A selector is null, universal or made of components.");
  return true;
}

void encodeStorage(const LexicalSelector::Storage& storage, Encoder& into) {
  const auto empty = [](Encoder& payload) { payload.table([](TableEncoder&) {}); };
  into.table([&](TableEncoder& table) {
    std::visit(Overloaded{[&](LexicalSelector::Null) { table.at("null", empty); },
                          [&](LexicalSelector::Universal) { table.at("universal", empty); },
                          [&](const Components& components) {
                            table.at("components", [&](Encoder& payload) {
                              encodeComponents(components, payload);
                            });
                          }},
               storage);
  });
}

} // namespace

bool Coder<LexicalSelector>::decode(Decoder from, LexicalSelector& into) {
  KeyedDecodingContainer table;
  LexicalSelector::Storage storage;
  if (!from.open(table) ||
      !table.at("storage", [&](Decoder member) { return decodeStorage(member, storage); }))
    return false;
  into = LexicalSelector(std::move(storage));
  return true;
}

void Coder<LexicalSelector>::encode(const LexicalSelector& value, Encoder& into) {
  into.table([&](TableEncoder& table) {
    table.at("storage", [&](Encoder& member) { encodeStorage(value.storage(), member); });
  });
}

} // namespace velmar
