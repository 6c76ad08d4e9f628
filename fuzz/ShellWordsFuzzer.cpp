// What is read from lines and files of shell words: commands, ".env" files, the output of `env`.

#include "VelmarCore/Environment/EnvFile.h"
#include "VelmarCore/Environment/ShellCommand.h"
#include "VelmarCore/Environment/UserEnvironmentFetch.h"
#include "VelmarCore/Text/TextTrimming.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using namespace velmar;

namespace {

std::vector<std::string> wordsOf(const ShellCommand& command) {
  std::vector<std::string> words = {command.name};
  words.insert(words.end(), command.arguments.begin(), command.arguments.end());
  return words;
}

std::string inQuotes(std::string_view word, char quote) {
  std::string quoted(1, quote);
  for (const char byte : word) {
    if (byte == quote || byte == '\\')
      quoted += '\\';
    quoted += byte;
  }
  return quoted + quote;
}

/// Words in quotes are read back as they are. (Outside of ASCII a quote may combine with what
/// follows it, and is none then.)
void checkReadingBack(std::string_view text, const std::vector<std::string>& words) {
  if (std::ranges::any_of(text, [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; }))
    return;
  for (const char quote : {'"', '\''}) {
    std::string line;
    for (const std::string& word : words)
      line += inQuotes(word, quote) + " ";
    const auto again = ShellCommand::parsing(line);
    precondition(again && wordsOf(*again) == words, "Quoted words are read back.");
  }
}

void checkCommand(std::string_view text) {
  const auto command = ShellCommand::parsing(text);
  precondition(command.has_value() == !trimmed(text).empty(),
               "A word is any that isn't white space.");
  if (!command)
    return;
  const std::vector<std::string> words = wordsOf(*command);
  std::size_t size = 0;
  for (const std::string& word : words)
    size += word.size();
  precondition(size <= text.size(), "Words hold no more than the line.");
  checkReadingBack(text, words);
}

void checkQuoting(std::string_view text) {
  const std::string argument = asShellArgument(text);
  const std::string_view plain = trimmed(text);
  std::size_t at = 0; // what is left without the backslashes that were added is the text
  for (std::size_t i = 0; i < argument.size(); ++i) {
    if (at < plain.size() && argument[i] != plain[at])
      ++i;
    precondition(i < argument.size() && at < plain.size() && argument[i] == plain[at],
                 "Quoting adds backslashes and nothing else.");
    ++at;
  }
  precondition(at == plain.size(), "Quoting loses nothing.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text =
      repairedUTF8(std::string_view(reinterpret_cast<const char*>(data), size));
  checkCommand(text);
  checkQuoting(text);
  for (const auto& [name, value] : entriesOfEnvText(text))
    precondition(!name.empty() && text.find(value) != std::string::npos,
                 "A value stands in the text.");
  for (const auto& [name, value] : variablesInOutput(text))
    precondition(text.find(name + "=" + value) != std::string::npos, "A variable is a line's.");
  return 0;
}
