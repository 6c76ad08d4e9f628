// Where in a JSON value something stands: keys of objects and positions in arrays, from the root
// down.
//
//     value.find(JSONPath().appendingKey("settings").appendingIndex(0))
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

namespace velmar {

class Decoder;
class Encoder;
template <class T>
struct Coder;

/// A value; immutable but for `append`.
class JSONPath {
public:
  /// One step: a key, or a position from 0.
  class Component {
  public:
    [[nodiscard]] static Component key(std::string key) { return Component(std::move(key)); }
    /// Stops the process if `index` is negative.
    [[nodiscard]] static Component index(std::int64_t index);

    /// The key, or null.
    [[nodiscard]] const std::string* ifKey() const { return std::get_if<std::string>(&step_); }
    /// The position, or null.
    [[nodiscard]] const std::int64_t* ifIndex() const { return std::get_if<std::int64_t>(&step_); }
    /// The key itself, or the position in decimal.
    [[nodiscard]] std::string description() const;
    [[nodiscard]] std::string debugDescription() const { return description(); }

    bool operator==(const Component&) const = default;

  private:
    explicit Component(std::string key) : step_(std::move(key)) {}
    explicit Component(std::int64_t index) : step_(index) {}
    std::variant<std::string, std::int64_t> step_;
  };

  /// The empty path, which leads to the value itself.
  JSONPath() = default;
  explicit JSONPath(std::vector<Component> components) : components_(std::move(components)) {}
  JSONPath(std::initializer_list<Component> components) : components_(components) {}

  JSONPath& append(Component component);
  JSONPath& append(const JSONPath& path);
  JSONPath& appendKey(std::string key) { return append(Component::key(std::move(key))); }
  JSONPath& appendIndex(std::int64_t index) { return append(Component::index(index)); }

  [[nodiscard]] JSONPath appending(Component component) const;
  [[nodiscard]] JSONPath appending(const JSONPath& path) const;
  [[nodiscard]] JSONPath appendingKey(std::string key) const;
  [[nodiscard]] JSONPath appendingIndex(std::int64_t index) const;

  [[nodiscard]] std::int64_t count() const noexcept {
    return static_cast<std::int64_t>(components_.size());
  }
  [[nodiscard]] bool isEmpty() const noexcept { return components_.empty(); }
  /// Stops the process if `position` isn't in the path.
  [[nodiscard]] const Component& operator[](std::int64_t position) const;
  [[nodiscard]] auto begin() const noexcept { return components_.begin(); }
  [[nodiscard]] auto end() const noexcept { return components_.end(); }
  /// All of them, to take a slice of.
  [[nodiscard]] const std::vector<Component>& components() const noexcept { return components_; }

  /// "$.settings.0.name"; "$." for the empty path.
  [[nodiscard]] std::string description() const;
  [[nodiscard]] std::string debugDescription() const { return description(); }

  bool operator==(const JSONPath&) const = default;

private:
  std::vector<Component> components_;
};

std::ostream& operator<<(std::ostream& stream, const JSONPath& path);

/// An array of texts and integers. Only texts are read back, as keys: a path that is stored carries
/// its positions as keys, which lead into arrays, too.
template <>
struct Coder<JSONPath> {
  static bool decode(Decoder from, JSONPath& into);
  static void encode(const JSONPath& value, Encoder& into);
};

} // namespace velmar

template <>
struct std::hash<velmar::JSONPath::Component> {
  std::size_t operator()(const velmar::JSONPath::Component& component) const;
};
template <>
struct std::hash<velmar::JSONPath> {
  std::size_t operator()(const velmar::JSONPath& path) const;
};
