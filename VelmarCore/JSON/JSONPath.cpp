#include "VelmarCore/JSON/JSONPath.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Coding/Coder.h"

#include <ostream>
#include <string_view>

namespace velmar {

JSONPath::Component JSONPath::Component::index(std::int64_t index) {
  precondition(index >= 0, "A position in a JSON path is negative.");
  return Component(index);
}

std::string JSONPath::Component::description() const {
  const std::int64_t* const index = ifIndex();
  return index != nullptr ? std::to_string(*index) : *ifKey();
}

JSONPath& JSONPath::append(Component component) {
  components_.push_back(std::move(component));
  return *this;
}

JSONPath& JSONPath::append(const JSONPath& path) {
  const std::vector<Component> more = path.components_; // `path` may be this one
  components_.insert(components_.end(), more.begin(), more.end());
  return *this;
}

JSONPath JSONPath::appending(Component component) const {
  return JSONPath(*this).append(std::move(component));
}

JSONPath JSONPath::appending(const JSONPath& path) const {
  return JSONPath(*this).append(path);
}

JSONPath JSONPath::appendingKey(std::string key) const {
  return JSONPath(*this).appendKey(std::move(key));
}

JSONPath JSONPath::appendingIndex(std::int64_t index) const {
  return JSONPath(*this).appendIndex(index);
}

const JSONPath::Component& JSONPath::operator[](std::int64_t position) const {
  precondition(position >= 0 && position < count(), "A JSON path has no such component.");
  return components_[static_cast<std::size_t>(position)];
}

std::string JSONPath::description() const {
  std::string text = "$.";
  for (const Component& component : components_)
    text.append(&component == components_.data() ? "" : ".").append(component.description());
  return text;
}

std::ostream& operator<<(std::ostream& stream, const JSONPath& path) {
  return stream << path.description();
}

bool Coder<JSONPath>::decode(Decoder from, JSONPath& into) {
  return from.forEachElement([&into](Decoder element) {
    std::string key;
    if (!element.read(key))
      return false;
    into.appendKey(std::move(key));
    return true;
  });
}

void Coder<JSONPath>::encode(const JSONPath& value, Encoder& into) {
  into.array([&value](ArrayEncoder& array) {
    for (const JSONPath::Component& component : value) {
      if (const std::string* key = component.ifKey())
        array.write(*key);
      else
        array.write(*component.ifIndex());
    }
  });
}

} // namespace velmar

std::size_t std::hash<velmar::JSONPath::Component>::operator()(
    const velmar::JSONPath::Component& component) const {
  const std::string* const key = component.ifKey();
  return key != nullptr ? std::hash<std::string>()(*key)
                        : std::hash<std::int64_t>()(*component.ifIndex()) + 1;
}

std::size_t std::hash<velmar::JSONPath>::operator()(const velmar::JSONPath& path) const {
  constexpr std::size_t factor = 31;
  std::size_t hash = path.components().size();
  for (const auto& component : path)
    hash = hash * factor + std::hash<velmar::JSONPath::Component>()(component);
  return hash;
}
