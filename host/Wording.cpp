#include "host/Wording.h"

#include "VelmarPlatform/Unicode/Characters.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// Puts words into lines of a width.
class Folding {
public:
  explicit Folding(std::int64_t columns) : columns_(columns) {}

  void addWords(std::string_view line) {
    while (!line.empty()) {
      const std::size_t end = std::min(line.find(' '), line.size());
      if (end > 0)
        addWord(line.substr(0, end));
      line.remove_prefix(std::min(end + 1, line.size()));
    }
  }
  void endLine() {
    if (column_ > 0)
      text_ += '\n';
    column_ = 0;
  }
  void addAsItStands(std::string_view line) {
    endLine();
    text_.append(line) += '\n';
  }
  [[nodiscard]] std::string take() {
    endLine();
    return std::move(text_);
  }

private:
  void addWord(std::string_view word) {
    const std::int64_t length = characterCount(word);
    if (column_ > 0 && column_ + 1 + length > columns_)
      endLine();
    if (column_ > 0)
      text_ += ' ';
    column_ += length + (column_ > 0 ? 1 : 0);
    text_ += word;
  }

  std::int64_t columns_;
  std::int64_t column_ = 0;
  std::string text_;
};

} // namespace

std::string counted(std::int64_t count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string counted(std::int64_t count, std::string_view one) {
  return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}

std::int64_t lineCountForPeople(const DocumentText& text) {
  const std::int64_t count = text.lineCount();
  return text.rangeOfLine(count - 1).isEmpty() ? count - 1 : count;
}

std::string foldedParagraphs(std::string_view text, std::int64_t columns) {
  Folding folding(columns);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    if (line.empty() || line.starts_with(' '))
      folding.addAsItStands(line);
    else
      folding.addWords(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return folding.take();
}

} // namespace velmar::host
