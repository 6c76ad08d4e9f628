#include "VelmarCore/Environment/ShellCommand.h"

#include "VelmarCore/Concurrency/Background.h"
#include "VelmarCore/ShellEnvironment.h"
#include "VelmarCore/Text/RegexScanner.h"
#include "VelmarCore/Text/TextTrimming.h"
#include "VelmarPlatform/Coding/Coder.h"

#include <ostream>
#include <sys/stat.h>

namespace velmar {

using namespace CharacterClasses;

namespace {

/// Reads on behind an opening quote, past the closing one.
std::string scanQuotedWord(RegexScanner& scanner, char quote) {
  const CharacterClass special = CharacterClass::anyOf({&quote, 1}) | CharacterClass::anyOf("\\");
  std::string word;
  while (!scanner.isAtEnd()) {
    if (const auto passed = scanner.scanUpTo(special))
      word += scanner.textIn(*passed);
    if (scanner.isAtEnd() || scanner.scan(quote))
      break;
    scanner.scan('\\');
    if (const auto literal = scanner.scanCharacter())
      word += *literal;
  }
  return word;
}

std::string scanWord(RegexScanner& scanner) {
  for (const char quote : {'"', '\''})
    if (scanner.scan(quote))
      return scanQuotedWord(scanner, quote);
  const auto passed = scanner.scanUpTo(whitespace);
  return std::string(passed ? scanner.textIn(*passed) : std::string_view());
}

bool anybodyMayExecute(const FilePath& path) {
  struct stat status{};
  constexpr mode_t executable = S_IXUSR | S_IXGRP | S_IXOTH;
  return ::stat(path.string().c_str(), &status) == 0 && (status.st_mode & executable) != 0;
}

Task<std::optional<FilePath>> resolveName(std::string name,
                                          std::optional<std::vector<FilePath>> folders) {
  if (name.empty() || name.find('\0') != std::string::npos)
    co_return std::nullopt;
  if (!folders)
    folders = co_await ShellEnvironment::userPaths();
  co_return co_await runInBackground([&]() -> std::optional<FilePath> {
    for (const FilePath& folder : *folders)
      if (FilePath path(name, folder); anybodyMayExecute(path))
        return path;
    return std::nullopt;
  });
}

} // namespace

std::optional<ShellCommand> ShellCommand::parsing(std::string_view line) {
  RegexScanner scanner(line);
  std::vector<std::string> words;
  scanner.scan(oneOrMore(whitespace));
  while (!scanner.isAtEnd()) {
    words.push_back(scanWord(scanner));
    scanner.scan(oneOrMore(whitespace));
  }
  if (words.empty())
    return std::nullopt;
  ShellCommand command{std::move(words.front())};
  words.erase(words.begin());
  command.arguments = std::move(words);
  return command;
}

Task<std::optional<FilePath>>
ShellCommand::resolve(std::optional<std::vector<FilePath>> folders) const {
  return resolveName(name, std::move(folders));
}

std::string ShellCommand::asShellArguments(std::string_view separator) const {
  std::vector<std::string> words = {name};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return velmar::asShellArguments(words, separator);
}

std::string ShellCommand::description() const {
  return arguments.empty() ? name : name + " " + velmar::asShellArguments(arguments, " ");
}

std::string asShellArgument(std::string_view text) {
  text = trimmed(text);
  std::string escaped = " &()`";
  for (const char quote : {'"', '\''})
    if (text.starts_with(quote) && text.ends_with(quote))
      escaped += quote;
  std::string argument;
  for (const char byte : text) {
    if (escaped.find(byte) != std::string::npos)
      argument += '\\';
    argument += byte;
  }
  return argument;
}

std::string asShellArgument(const FilePath& path) {
  return asShellArgument(std::string_view(path.string()));
}

std::string asShellArguments(std::span<const std::string> texts, std::string_view separator) {
  std::string joined;
  for (const std::string& text : texts) {
    if (&text != texts.data())
      joined += separator;
    joined += asShellArgument(std::string_view(text));
  }
  return joined;
}

std::ostream& operator<<(std::ostream& stream, const ShellCommand& command) {
  return stream << command.description();
}

bool Coder<ShellCommand>::decode(Decoder from, ShellCommand& into) {
  UnkeyedDecodingContainer array;
  if (!from.open(array) || !array.read(into.name))
    return false;
  while (!array.isAtEnd())
    if (!array.read(into.arguments.emplace_back()))
      return false;
  return true;
}

void Coder<ShellCommand>::encode(const ShellCommand& value, Encoder& into) {
  into.array([&](ArrayEncoder& array) {
    array.write(value.name);
    for (const std::string& argument : value.arguments)
      array.write(argument);
  });
}

} // namespace velmar

std::size_t
std::hash<velmar::ShellCommand>::operator()(const velmar::ShellCommand& command) const noexcept {
  constexpr std::size_t multiplier = 1099511628211U;
  std::size_t result = std::hash<std::string>()(command.name);
  for (const std::string& argument : command.arguments)
    result = result * multiplier ^ std::hash<std::string>()(argument);
  return result;
}
