#include "host/SourceText.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

namespace velmar::host {

namespace {

/// No code unit of UTF-16 takes more bytes than this in UTF-8.
constexpr std::int64_t mostBytesPerUnit = 3;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

Error tooLarge(std::string_view name, std::int64_t limit) {
  return Error(
      fmt::format("Could not take in {}: a text can have {} code units at most.", name, limit));
}

SystemError couldNot(std::string_view verb, std::string_view name, int code) {
  return {fmt::format("Could not {} {}: {}.", verb, name, systemErrorText(code)), code};
}

/// An open descriptor, closed with the object.
class OpenFile {
public:
  OpenFile(const std::string& path, std::string_view name)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0)
      throw couldNot("open", name, errno);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(descriptor_); }

  /// Its size, for a regular file; other things don't know beforehand how much they will give.
  [[nodiscard]] std::int64_t knownSize(std::string_view name) const {
    struct stat status{};
    if (::fstat(descriptor_, &status) != 0)
      throw couldNot("read", name, errno);
    return S_ISREG(status.st_mode) ? static_cast<std::int64_t>(status.st_size) : 0;
  }

  /// Fills the front of `buffer`; 0 at the end.
  [[nodiscard]] std::size_t read(std::span<char> buffer, std::string_view name) const {
    while (true) {
      const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
      if (count >= 0)
        return static_cast<std::size_t>(count);
      if (errno != EINTR)
        throw couldNot("read", name, errno);
    }
  }

private:
  int descriptor_;
};

/// All that `read(buffer)` gives, or, of what gives more than `limit` bytes, a little more.
template <class Read>
std::string readAll(std::int64_t expected, std::int64_t limit, Read read) {
  constexpr std::size_t pieceSize = 1 << 20;
  std::string bytes(static_cast<std::size_t>(std::min(expected, limit)) + pieceSize, '\0');
  std::size_t size = 0;
  while (std::cmp_less_equal(size, limit)) {
    if (bytes.size() - size < pieceSize)
      bytes.resize(bytes.size() * 2);
    const std::size_t count = read(std::span(bytes).subspan(size));
    if (count == 0)
      break;
    size += count;
  }
  bytes.resize(size);
  return bytes;
}

std::string readFile(const std::string& path, std::string_view name, std::int64_t limit) {
  if (path.find('\0') != std::string::npos)
    throw couldNot("open", name, ENOENT);
  const OpenFile file(path, name);
  const std::int64_t size = file.knownSize(name);
  if (size > limit * mostBytesPerUnit)
    throw tooLarge(name, limit);
  return readAll(size, limit * mostBytesPerUnit,
                 [&](std::span<char> buffer) { return file.read(buffer, name); });
}

std::string readStream(std::istream& input, std::int64_t limit) {
  std::string bytes = readAll(0, limit * mostBytesPerUnit, [&](std::span<char> buffer) {
    input.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    return static_cast<std::size_t>(input.gcount());
  });
  if (input.bad())
    throw Error("Could not read standard input.");
  return bytes;
}

/// The number of UTF-16 code units that valid UTF-8 makes: one for each first byte, two where that
/// starts a sequence of four. Never more than repairing makes of invalid bytes.
std::int64_t utf16Count(std::string_view bytes) {
  std::int64_t count = 0;
  for (const char letter : bytes) {
    const auto byte = static_cast<unsigned char>(letter);
    count += ((byte & 0xC0) != 0x80 ? 1 : 0) + (byte >= 0xF0 && byte < 0xF5 ? 1 : 0);
  }
  return count;
}

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

} // namespace

SourceText readSource(const std::string& path, std::istream& input, std::int64_t limit) {
  const bool isStandardInput = path == "-";
  SourceText source{
      .name = isStandardInput ? "standard input" : fmt::format("“{}”", repairedUTF8(path)),
      .filename = isStandardInput ? std::nullopt : std::optional(FilePath(path).lastComponent()),
      .text = std::make_unique<DocumentText>(),
      .notes = {},
  };
  std::u16string units;
  {
    // The bytes go before the lines come: of large files there are never three copies at once.
    const std::string bytes =
        isStandardInput ? readStream(input, limit) : readFile(path, source.name, limit);
    std::string_view content = bytes;
    if (content.starts_with(byteOrderMark))
      content.remove_prefix(byteOrderMark.size());
    if (utf16Count(content) > limit)
      throw tooLarge(source.name, limit);
    std::size_t repairs = 0;
    units = utf16RepairingUTF8(content, &repairs);
    if (repairs != 0)
      source.notes.push_back(
          fmt::format("Repaired {}: {} became U+FFFD.", source.name,
                      counted(repairs, "piece that isn’t UTF-8", "pieces that aren’t UTF-8")));
    if (const auto zeros = static_cast<std::size_t>(std::ranges::count(content, '\0')); zeros != 0)
      source.notes.push_back(fmt::format("Found {} in {}; is it text?",
                                         counted(zeros, "NUL character", "NUL characters"),
                                         source.name));
  }
  if (std::cmp_greater(units.size(), limit))
    throw tooLarge(source.name, limit);
  source.text->replaceSubrange({0, 0}, units);
  return source;
}

} // namespace velmar::host
