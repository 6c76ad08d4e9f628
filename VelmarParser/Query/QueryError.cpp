#include "VelmarParser/Query/QueryError.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>

namespace velmar {

namespace {

/// The bytes that the line break at `index` takes, 0 if there is none. CR LF is one.
std::size_t lineBreakLength(std::string_view text, std::size_t index) {
  const std::string_view rest = text.substr(index);
  if (rest.starts_with("\r\n"))
    return 2;
  if (rest.starts_with('\n') || rest.starts_with('\r'))
    return 1;
  if (rest.starts_with("\xC2\x85")) // U+0085
    return 2;
  if (rest.starts_with("\xE2\x80\xA8") || rest.starts_with("\xE2\x80\xA9")) // U+2028, U+2029
    return 3;
  return 0;
}

std::string_view lineHolding(std::size_t offset, std::string_view text) {
  std::size_t start = 0;
  std::size_t index = 0;
  while (index < text.size()) {
    const std::size_t length = lineBreakLength(text, index);
    index += std::max<std::size_t>(length, 1);
    if (length == 0)
      continue;
    if (offset < index)
      break;
    start = index;
  }
  return text.substr(start, index - start);
}

/// Besides the line breaks above, the vertical tab and the form feed go too; blanks stay.
std::string_view withoutLineBreaksAtEnds(std::string_view line) {
  const auto lengthAt = [&](std::size_t index) {
    return line[index] == '\v' || line[index] == '\f' ? 1 : lineBreakLength(line, index);
  };
  while (!line.empty() && lengthAt(0) > 0)
    line.remove_prefix(lengthAt(0));
  for (std::size_t length = 1; length <= std::min<std::size_t>(3, line.size());) {
    if (lengthAt(line.size() - length) == length) {
      line.remove_suffix(length);
      length = 1;
    } else {
      ++length;
    }
  }
  return line;
}

std::string_view wordsFor(QueryError::Kind kind) {
  using enum QueryError::Kind;
  switch (kind) {
  case unknownError:
    return "Unknown error in query: ";
  case syntaxError:
    return "Syntax error in query: ";
  case nodeTypeError:
    return "Invalid node type in query: ";
  case fieldError:
    return "Invalid field name in query: ";
  case captureError:
    return "Invalid capture name in query: ";
  case structureError:
    return "Invalid structure in query: ";
  case languageError:
    return "Incompatible language ABI version: ";
  }
  preconditionFailed("A query error is of no known kind.", std::source_location::current());
}

} // namespace

QueryError::Context QueryError::Context::at(std::int64_t offset, std::string_view queryText) {
  const auto index =
      std::min(static_cast<std::size_t>(std::max<std::int64_t>(offset, 0)), queryText.size());
  return {.string = repairedUTF8(withoutLineBreaksAtEnds(lineHolding(index, queryText))),
          .offset = offset};
}

QueryError QueryError::unknownError(std::string_view text) {
  return {Kind::unknownError, std::string(wordsFor(Kind::unknownError)).append(text)};
}

QueryError QueryError::inContext(Kind kind, Context context) {
  precondition(kind != Kind::unknownError && kind != Kind::languageError,
               "This kind of error has no context.");
  QueryError error(kind, std::string(wordsFor(kind)).append(context.string));
  error.context_ = std::move(context);
  return error;
}

QueryError QueryError::languageError(std::shared_ptr<const Grammar> grammar) {
  QueryError error(Kind::languageError, std::string(wordsFor(Kind::languageError)) +
                                            grammar->abiVersion().description() +
                                            ". Supported versions are " +
                                            Grammar::oldestSupportedABIVersion.description() + "–" +
                                            Grammar::newestSupportedABIVersion.description() + ".");
  error.grammar_ = std::move(grammar);
  return error;
}

} // namespace velmar
