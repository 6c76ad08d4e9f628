#include <map>
#include <string>

namespace counting {

template <class Key>
class Counter final {
public:
  explicit Counter(std::string name) : name_(std::move(name)) {}
  void add(const Key& key) noexcept(false) { ++counts_[key]; }

  template <class Body>
    requires std::invocable<Body, const Key&, int>
  void forEach(Body&& body) const {
    for (const auto& [key, count] : counts_)
      body(key, count);
  }

private:
  std::string name_;
  std::map<Key, int> counts_;
};

} // namespace counting

int main() {
  counting::Counter<std::string> counter("words");
  counter.add(R"(raw "text")");
  int total = 0;
  counter.forEach([&total](const auto&, int count) { total += count; });
  return total == 1 ? 0 : 1;
}
