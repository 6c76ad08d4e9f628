// What a caller hands to the records that it has decoded: values that aren't in the document, such
// as the folder that relative paths belong to.
#pragma once

#include <any>
#include <typeindex>
#include <unordered_map>
#include <utility>

namespace velmar {

/// Values by key, where a key is a type that names the type of its value:
///
///   struct BaseFolder { using Value = FilePath; };
///   context.set<BaseFolder>(folder);
///   if (const FilePath* folder = decoder.userInfo<BaseFolder>()) …
class CodingContext {
public:
  template <class Key>
  CodingContext& set(typename Key::Value value) {
    values_.insert_or_assign(std::type_index(typeid(Key)), std::any(std::move(value)));
    return *this;
  }
  /// Null where nobody has set it; otherwise valid until it is set again.
  template <class Key>
  [[nodiscard]] const typename Key::Value* get() const {
    const auto found = values_.find(std::type_index(typeid(Key)));
    return found == values_.end() ? nullptr : std::any_cast<typename Key::Value>(&found->second);
  }

private:
  std::unordered_map<std::type_index, std::any> values_;
};

} // namespace velmar
