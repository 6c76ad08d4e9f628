// ! Shapes
// A file with one of everything that an outline shows,
// and comments of several lines.

#pragma once
#define FOO 1
#define BAR(x) ((x) + 1)
#ifdef X
int declared(int a);
#endif
namespace a::b {
class [[nodiscard]] Foo final : public Base {
public:
  Foo();
  explicit Foo(int a, std::string b = "x") : a_(a) {}
  Foo(const Foo&) = delete;
  ~Foo() override = default;
  virtual ~Foo();
  static int make(const std::vector<int>& v, int* p, int (*cb)(int x), Args&&... args);
  [[nodiscard]] bool operator==(const Foo& other) const = default;
  operator bool() const { return true; }
  explicit operator int() const;
  template <class T> T get() const { return T(); }
  int* ptr() const;
  const Foo& ref() const { return *this; }
  auto trailing() -> int;
  enum class Kind : int { one, two = 2 };
  friend void swap(Foo&, Foo&) noexcept;
  using Type = int;
private:
  int a_ = 0;
  static constexpr int b_ = 1;
  std::vector<int> c_, d_;
  Foo* next_;
  int array_[4];
  std::function<void(int)> f_;
};
template <class T>
struct Bar<T*> { T value; };
union U { int a; float b; };
constexpr int limit = 5;
extern int counter;
static const char* const names[] = {"a", "b"};
Foo::Foo() {}
Foo::~Foo() { std::lock_guard lock(mutex); }
int A::Foo::make(int a) const { struct Local { void m() {} }; return 0; }
std::ostream& operator<<(std::ostream& s, const Foo& f) { return s; }
template <class T> concept C = requires(T t) { t.x; };
Foo::operator bool() const { return true; }
int* f() { return 0; }
Foo&& g(Foo f) { auto l = [](int x) { return x; }; return f; }
}
TEST(Range, Does) { int x; }
TEST_P(Range, Does) { int x; }
using X = std::vector<int>;
typedef int (*Fn)(int);
extern "C" { int c_function(void); }
extern "C" int c_function2(void) { return 1; }
enum Old { A, B };
template <> int spec<int>(int a) { return a; }
INSTANTIATE(A, B, C);
int x = 5, y;

// ! - Odds and ends

/* TODO: round corners
   of the squares */
Square::Square(int side)
    : Shape(),
      side_(side) {
  // MARK: - Setup
  switch (side) {
  case 1: {
    draw(
        1,
        2);
    break;
  }
  default:
    break;
  }
  const auto text = R"(
    raw
  )";
#if DEBUG
  log(side);
#elif TRACE
  trace(side);
  trace(1);
#else
  skip();
#endif
}

int broken(int a {
  return 1;
