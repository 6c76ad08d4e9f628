#include "host/Streams.h"

#include "VelmarPlatform/Basics/Error.h"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

namespace velmar::host {

namespace {

constexpr std::size_t deliverySize = 1 << 16;

std::string_view escapeOf(Style style) {
  switch (style) {
  case Style::plain:
    return "";
  case Style::heading:
    return "\x1b[1m";
  case Style::field:
    return "\x1b[36m";
  case Style::faint:
    return "\x1b[2m";
  case Style::error:
    return "\x1b[1;31m";
  }
  return "";
}

bool showsStyles(int descriptor) {
  const auto variable = [](const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): before any thread
    return std::string_view(value ? value : "");
  };
  return variable("NO_COLOR").empty() && variable("TERM") != "dumb" && isatty(descriptor) == 1;
}

} // namespace

void Output::write(std::string_view text) {
  collected_ += text;
  if (collected_.size() >= deliverySize)
    flush();
}

void Output::write(std::string_view text, Style style) {
  if (!isStyled_ || style == Style::plain) {
    write(text);
    return;
  }
  write(escapeOf(style));
  write(text);
  write("\x1b[0m");
}

void Output::flush() {
  // Dropped even where it can't be delivered: it wouldn't go through a second time either.
  const std::string text = std::exchange(collected_, {});
  if (!text.empty())
    deliver(text);
}

FileOutput::FileOutput(int descriptor) : Output(showsStyles(descriptor)), descriptor_(descriptor) {}

void FileOutput::deliver(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor_, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    if (errno == EINTR)
      continue;
    if (errno == EPIPE)
      throw BrokenPipe();
    throw SystemError("Could not write the output: " + systemErrorText(errno) + ".", errno);
  }
}

} // namespace velmar::host
