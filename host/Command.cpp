#include "host/Command.h"

#include <algorithm>
#include <fmt/format.h>
#include <numeric>

namespace velmar::host {

namespace {

/// How many letters must be changed, added, dropped or swapped with their neighbour to make `b` of
/// `a`.
std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast = std::exchange(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] =
          std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row.back();
}

const Option& optionNamed(const Command& command, std::string_view name) {
  const auto found = std::ranges::find(command.options, name, &Option::name);
  if (found != command.options.end())
    return *found;
  std::vector<std::string_view> names = {"--help"};
  for (const Option& option : command.options)
    names.push_back(option.name);
  throw UsageError(fmt::format("Unknown option “{}”{}", name, endWithSuggestion(name, names)));
}

/// "-" is standard input, and "-:2:5" a place in it.
bool isOperand(std::string_view word) {
  return !word.starts_with('-') || word == "-" || word.starts_with("-:");
}

} // namespace

std::optional<std::string_view> Arguments::valueOf(std::string_view option) const {
  const auto found = options.find(option);
  return found == options.end() ? std::nullopt : std::optional<std::string_view>(found->second);
}

Arguments parseArguments(const Command& command, std::span<const std::string> words) {
  Arguments arguments;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (*word == "--") {
      arguments.operands.insert(arguments.operands.end(), word + 1, words.end());
      break;
    }
    if (isOperand(*word)) {
      arguments.operands.push_back(*word);
      continue;
    }
    const std::size_t equals = word->find('=');
    const Option& option = optionNamed(command, word->substr(0, equals));
    if (option.value.empty()) {
      if (equals != std::string::npos)
        throw UsageError(fmt::format("The option “{}” takes no value.", option.name));
      arguments.options.emplace(option.name, "");
    } else if (equals != std::string::npos) {
      arguments.options.insert_or_assign(std::string(option.name), word->substr(equals + 1));
    } else {
      if (word + 1 == words.end())
        throw UsageError(fmt::format("The option “{}” needs a value.", option.name));
      arguments.options.insert_or_assign(std::string(option.name), *++word);
    }
  }
  return arguments;
}

std::optional<std::string_view> nearestName(std::string_view word,
                                            std::span<const std::string_view> names) {
  // Nothing that has been typed on purpose is long, and the comparison is quadratic.
  if (word.empty() || word.size() > 64)
    return std::nullopt;
  std::optional<std::string_view> nearest;
  std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string_view name : names) {
    const std::size_t distance = name.starts_with(word) ? 1 : editDistance(word, name);
    if (distance < least) {
      least = distance;
      nearest = name;
    }
  }
  return nearest;
}

std::string endWithSuggestion(std::string_view word, std::span<const std::string_view> names) {
  const auto nearest = nearestName(word, names);
  return nearest ? fmt::format("; did you mean “{}”?", *nearest) : ".";
}

} // namespace velmar::host
