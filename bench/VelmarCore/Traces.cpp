#include "bench/VelmarCore/Traces.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace velmar::bench {

namespace {

/// What `gunzip -c` makes of the file.
std::string uncompressed(const std::filesystem::path& path) {
  std::string quoted = "'";
  for (const char letter : path.string())
    quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
  const std::string command = "gunzip -c " + quoted + "'";
  const auto close = [](std::FILE* pipe) { pclose(pipe); };
  const std::unique_ptr<std::FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
  if (!pipe)
    throw std::runtime_error("Could not start gunzip.");
  std::string text;
  char buffer[1 << 16];
  while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe.get()))
    text.append(buffer, count);
  return text;
}

/// Reads just as much JSON as the recordings hold: it steps through known keys.
class Reader {
public:
  explicit Reader(std::string_view text) : rest_(text) {}

  /// Goes behind the next occurrence of `mark`; false if there is none.
  bool skipPast(std::string_view mark) {
    const std::size_t at = rest_.find(mark);
    rest_.remove_prefix(at == rest_.npos ? rest_.size() : at + mark.size());
    return at != std::string_view::npos;
  }
  /// Whether the next character is `wanted`, which is then read.
  bool take(char wanted) {
    if (!rest_.starts_with(wanted))
      return false;
    rest_.remove_prefix(1);
    return true;
  }
  void expect(char wanted) {
    if (!take(wanted))
      throw std::runtime_error("A recording isn't as expected.");
  }
  std::int64_t number() {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    if (error != std::errc())
      throw std::runtime_error("A recording lacks a number.");
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return value;
  }
  std::u16string string() {
    expect('"');
    std::u16string text;
    while (!take('"'))
      text += unit();
    return text;
  }

private:
  char16_t unit() {
    if (rest_.empty())
      throw std::runtime_error("A recording ends too early.");
    const char letter = rest_.front();
    rest_.remove_prefix(1);
    if (letter != '\\')
      return static_cast<unsigned char>(letter);
    const char escaped = rest_.empty() ? '"' : rest_.front();
    rest_.remove_prefix(std::min<std::size_t>(1, rest_.size()));
    switch (escaped) {
    case 'n':
      return u'\n';
    case 'r':
      return u'\r';
    case 't':
      return u'\t';
    case 'b':
      return u'\b';
    case 'f':
      return u'\f';
    case 'u': {
      unsigned value = 0;
      std::from_chars(rest_.data(), rest_.data() + std::min<std::size_t>(4, rest_.size()), value,
                      16);
      rest_.remove_prefix(std::min<std::size_t>(4, rest_.size()));
      return static_cast<char16_t>(value);
    }
    default:
      return static_cast<unsigned char>(escaped);
    }
  }

  std::string_view rest_;
};

Trace traceFrom(std::string name, const std::string& json) {
  Trace trace{.name = std::move(name), .before = {}, .after = {}, .edits = {}};
  Reader reader(json);
  reader.skipPast("\"startContent\":");
  trace.before = reader.string();
  reader.skipPast("\"endContent\":");
  trace.after = reader.string();
  while (reader.skipPast("\"patches\":[")) {
    while (reader.take('[')) {
      RecordedEdit edit;
      edit.offset = reader.number();
      reader.expect(',');
      edit.removed = reader.number();
      reader.expect(',');
      edit.inserted = reader.string();
      trace.edits.push_back(std::move(edit));
      reader.expect(']');
      reader.take(',');
    }
  }
  return trace;
}

} // namespace

std::optional<std::string> traceFolder() {
  const char* const folder = std::getenv("VELMAR_TRACES");
  return folder && *folder ? std::optional<std::string>(folder) : std::nullopt;
}

std::vector<Trace> readTraces(const std::string& folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().string().ends_with(".json.gz"))
      paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  std::vector<Trace> traces;
  for (const auto& path : paths)
    traces.push_back(traceFrom(path.stem().stem().string(), uncompressed(path)));
  return traces;
}

} // namespace velmar::bench
