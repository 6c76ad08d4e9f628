// Whether a text is JSON, for tests of what writes it.
#pragma once

#include <string_view>

namespace velmar::testing {

/// A strict reader that keeps nothing.
class JSONCheck {
public:
  [[nodiscard]] static bool isValid(std::string_view text) {
    JSONCheck check(text);
    check.blanks();
    const bool valid = check.value();
    check.blanks();
    return valid && check.rest_.empty();
  }

private:
  explicit JSONCheck(std::string_view text) : rest_(text) {}

  void blanks() {
    while (!rest_.empty() && std::string_view(" \t\r\n").find(rest_[0]) != rest_.npos)
      rest_.remove_prefix(1);
  }
  bool take(std::string_view token) {
    if (!rest_.starts_with(token))
      return false;
    rest_.remove_prefix(token.size());
    return true;
  }
  bool value() {
    if (rest_.starts_with('{'))
      return list('{', '}', [this] { return string() && (blanks(), take(":")) && inner(); });
    if (rest_.starts_with('['))
      return list('[', ']', [this] { return inner(); });
    if (rest_.starts_with('"'))
      return string();
    return take("true") || take("false") || take("null") || number();
  }
  bool inner() {
    blanks();
    return value();
  }
  template <class Element>
  bool list(char open, char close, Element element) {
    rest_.remove_prefix(open == rest_[0] ? 1 : 0);
    blanks();
    if (take({&close, 1}))
      return true;
    do {
      blanks();
      if (!element())
        return false;
      blanks();
    } while (take(","));
    return take({&close, 1});
  }
  bool string() {
    if (!take("\""))
      return false;
    while (!rest_.empty() && rest_[0] != '"') {
      if (static_cast<unsigned char>(rest_[0]) < 0x20)
        return false;
      const std::size_t length = rest_.starts_with("\\u") ? 6 : rest_[0] == '\\' ? 2 : 1;
      if (rest_.size() < length)
        return false;
      rest_.remove_prefix(length);
    }
    return take("\"");
  }
  bool number() {
    const std::size_t end = rest_.find_first_not_of("-0123456789.eE+");
    const std::string_view digits = rest_.substr(0, end);
    const bool valid = !digits.empty() && digits.back() >= '0' && digits.back() <= '9';
    rest_.remove_prefix(digits.size());
    return valid;
  }

  std::string_view rest_;
};

} // namespace velmar::testing
