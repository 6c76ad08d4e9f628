// The names by which syntax is coloured. A highlights query gives a piece of text the selector
// "keyword.control.import"; a theme has rules for selectors such as "keyword" or "control.keyword",
// and the most specific one that matches wins.
#pragma once

#include "VelmarCode/Syntax/LexicalClass.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Coding/Forward.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

namespace velmar {

/// One or more names without an order, or one of the two selectors that match nothing and
/// everything. A value; any thread.
class LexicalSelector {
public:
  using ComponentSet = std::set<std::string, std::less<>>;

  /// Matches nothing.
  struct Null {
    bool operator==(const Null&) const = default;
  };
  /// Matches everything.
  struct Universal {
    bool operator==(const Universal&) const = default;
  };
  struct Components {
    /// The names, sorted by bytes and joined with dots. A name that stands twice in the source
    /// stands twice here.
    std::string string;
    ComponentSet components;
    std::optional<LexicalClass> lexicalClass;
    bool operator==(const Components&) const = default;
  };
  using Storage = std::variant<Components, Null, Universal>;

  static const LexicalSelector null;
  static const LexicalSelector universal;

  /// Matches nothing, as `null`.
  LexicalSelector() : storage_(Null()) {}
  /// Reads names with dots between them, in any order: ASCII letters, "_" and "-". Blanks at the
  /// ends are ignored. The empty text gives `null`, "*" gives `universal`; absent for anything
  /// else, such as an empty name between two dots.
  [[nodiscard]] static std::optional<LexicalSelector> fromString(std::string_view text);
  /// What a stored form says, taken as it stands.
  explicit LexicalSelector(Storage storage) : storage_(std::move(storage)) {}

  [[nodiscard]] const Storage& storage() const noexcept { return storage_; }

  /// "" for `null`, "*" for `universal`, else the names, sorted: equal selectors have equal texts.
  [[nodiscard]] const std::string& string() const noexcept;
  [[nodiscard]] const std::string& description() const noexcept { return string(); }
  /// The names; none for `null` and `universal`.
  [[nodiscard]] const ComponentSet& components() const noexcept;
  /// The number of names.
  [[nodiscard]] std::int64_t specificity() const noexcept {
    return static_cast<std::int64_t>(components().size());
  }
  /// The first of `LexicalClass::known()` that is among the names.
  [[nodiscard]] std::optional<LexicalClass> lexicalClass() const noexcept;

  /// Whether this selector covers `other`: each name here is also there. "keyword" matches
  /// "keyword.control", which doesn't match "keyword". `null` matches nothing, not even
  /// `universal`; `universal` matches even `null`; and `universal` is matched by all but `null`.
  [[nodiscard]] bool matches(const LexicalSelector& other) const;
  /// Whether each name here is one of `components`.
  [[nodiscard]] bool matchesComponents(const ComponentSet& components) const;
  /// Whether `component` is one of the names here.
  [[nodiscard]] bool matchesComponent(std::string_view component) const;

  bool operator==(const LexicalSelector&) const = default;
  /// The less specific first, then by `string()`.
  std::strong_ordering operator<=>(const LexicalSelector& other) const;

private:
  Storage storage_;
};

/// Writes the text in quotes.
std::ostream& operator<<(std::ostream& stream, const LexicalSelector& selector);

/// A table with the key "storage"; in it a table with one of the keys "null", "universal" and
/// "components", each over a table: an empty one, or the text "_0", the names "_1" and, where there
/// is one, the class "_2".
template <>
struct Coder<LexicalSelector> {
  static bool decode(Decoder from, LexicalSelector& into);
  static void encode(const LexicalSelector& value, Encoder& into);
};

} // namespace velmar

template <>
struct std::hash<velmar::LexicalSelector> {
  std::size_t operator()(const velmar::LexicalSelector& selector) const noexcept {
    return std::hash<std::string>()(selector.string());
  }
};
