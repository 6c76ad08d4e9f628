#pragma once
#include <vector>
#include "store.h"
#define LIMIT 10
#define NAME "store"
#define CHECK(condition) do { if (!(condition)) fail(#condition); } while (0)
#if defined(LIMIT) && LIMIT > 3
#endif

/// A store of things.
namespace velmar::store {

// plain
template <typename T, std::size_t N = 4, typename... Rest>
  requires std::integral<T>
class [[nodiscard]] Store final : public Base<T>, private detail::Table {
public:
  explicit Store(std::string name = {}) noexcept : name_(std::move(name)), count_{0} {}
  virtual ~Store() = default;
  Store(const Store&) = delete;
  auto operator<=>(const Store&) const = default;
  template <class U> U get(T* const* key, std::span<const T> keys, Rest&&... rest) const&;

private:
  mutable std::string name_;
  static constexpr int LIMIT_OF_NAMES = 0x1'000u;
  T values_[N];
  int bits_ : 3;
};

enum class Color : std::uint8_t { red, green = 2, };
using Names = std::vector<std::string>;
typedef unsigned long long Big;
concept Small = sizeof(int) < 8;
union Both { int a; float b; };

template <typename T> int Store<T>::find(const char* text, int (*compare)(int, int)) {
  auto found = std::ranges::find_if(names_, [&, this, n = 1](auto const& name) -> bool { return name == text; });
  for (auto&& [key, value] : table) { if (not key) continue; else break; }
  switch (c) { case 'a': case '\n': goto done; default: return -1; }
  try { co_await task<int>(1); throw Error("x\ty", U"ü"); } catch (const std::exception& error) { delete[] data; }
  const auto* copy = new (place) Node{.next = nullptr, .size = 1.5e-3f};
  static_assert(alignof(Node) == 8, "size");
  CHECK(copy->next() ? this->value : *copy);
  auto query = R"sql(select 1)sql", page = R"(plain)";
  constexpr auto wait = 5s + "text"_view.size() + static_cast<long>(a::b::C::make<int>(2));
done:
  Color color = Color::red; dynamic_cast<Derived*>(base)->Base::call();
  return true && value.template as<int>() != NULL;
}

extern "C" void plain(void);
} // namespace velmar::store
