// Several lambdas as one visitor: `std::visit(Overloaded{[](int) {…}, [](const std::string&) {…}},
// value)`.
#pragma once

namespace velmar {

template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace velmar
