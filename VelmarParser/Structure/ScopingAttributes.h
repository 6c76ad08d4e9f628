// What a caller hangs on a piece of structure while its start and its end are still apart.
//
// The engine pairs positions and knows nothing of symbols or folds. Whoever makes the candidates
// gives them attributes, and reads them from the regions that come of it:
//
//     struct FoldRole {
//       using Value = std::optional<CodeFoldingRegion::Role>;
//       static constexpr std::string_view name = "fold.role";
//     };
//     candidate.attributes.set<FoldRole>(CodeFoldingRegion::Role::function);
//     if (const auto* role = region.attributes.valueFor<FoldRole>()) …
#pragma once

#include <algorithm>
#include <concepts>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmar {

/// The name of an attribute and the type of its values. The name is a literal: it is kept as a
/// view.
template <class K>
concept ScopingAttributeKey = requires {
  { K::name } -> std::convertible_to<std::string_view>;
} && std::equality_comparable<typename K::Value> && std::copyable<typename K::Value>;

/// Values of different types under their keys. A value; copies share what they hold until one is
/// set anew. Access is O(attributes), of which there are a handful.
class ScopingAttributes {
public:
  /// Null if the key isn't set, or is set to a value of another type. Valid until the next change.
  template <ScopingAttributeKey K>
  [[nodiscard]] const typename K::Value* valueFor() const noexcept {
    for (const Entry& entry : entries_) {
      if (entry.key == K::name)
        return entry.box->template value<typename K::Value>();
    }
    return nullptr;
  }

  template <ScopingAttributeKey K>
  void set(typename K::Value value) {
    put({K::name, std::make_shared<const BoxOf<typename K::Value>>(std::move(value))});
  }

  template <ScopingAttributeKey K>
  void remove() {
    std::erase_if(entries_, [](const Entry& entry) { return entry.key == K::name; });
  }

  [[nodiscard]] bool isEmpty() const noexcept { return entries_.empty(); }

  /// Takes over those of `other` whose keys aren't set here.
  void add(const ScopingAttributes& other);

  /// Whether both have the same keys with equal values of the same types.
  bool operator==(const ScopingAttributes& other) const;

private:
  /// A value of some type that can be compared with others of it.
  class Box {
  public:
    Box() = default;
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    virtual ~Box() = default;
    [[nodiscard]] virtual bool equals(const Box& other) const = 0;

    template <class Value>
    [[nodiscard]] const Value* value() const noexcept {
      return type() == &typeMark<Value> ? &static_cast<const BoxOf<Value>*>(this)->base : nullptr;
    }

  protected:
    /// One address for each type.
    template <class Value>
    static constexpr char typeMark = 0;

  private:
    [[nodiscard]] virtual const void* type() const noexcept = 0;
  };

  template <class Value>
  class BoxOf final : public Box {
  public:
    explicit BoxOf(Value value) : base(std::move(value)) {}
    [[nodiscard]] bool equals(const Box& other) const override {
      const Value* const theirs = other.value<Value>();
      return theirs && *theirs == base;
    }
    Value base;

  private:
    [[nodiscard]] const void* type() const noexcept override { return &typeMark<Value>; }
  };

  struct Entry {
    std::string_view key;
    std::shared_ptr<const Box> box;
  };

  void put(Entry entry);

  std::vector<Entry> entries_; // sorted by key
};

} // namespace velmar
