#include "host/JSONWriter.h"

#include <fmt/format.h>

namespace velmar::host {

void JSONWriter::key(std::string_view name) {
  separate();
  writeString(name);
  output_.write(":");
  afterKey_ = true;
}

void JSONWriter::value(std::string_view text) {
  separate();
  writeString(text);
}

void JSONWriter::value(std::int64_t number) {
  separate();
  output_.write(fmt::format_int(number).c_str());
}

void JSONWriter::value(bool truth) {
  separate();
  output_.write(truth ? "true" : "false");
}

void JSONWriter::begin(char bracket) {
  separate();
  output_.write({&bracket, 1});
  filled_.push_back(false);
}

void JSONWriter::end(char bracket) {
  output_.write({&bracket, 1});
  filled_.pop_back();
}

void JSONWriter::separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (filled_.empty())
    return;
  if (filled_.back())
    output_.write(",");
  filled_.back() = true;
}

void JSONWriter::writeString(std::string_view text) {
  output_.write("\"");
  for (const char letter : text) {
    if (letter == '"' || letter == '\\')
      output_.write("\\");
    if (static_cast<unsigned char>(letter) < 0x20)
      output_.write(fmt::format("\\u{:04x}", static_cast<int>(letter)));
    else
      output_.write({&letter, 1});
  }
  output_.write("\"");
}

} // namespace velmar::host
