// What the application supplies to the engine: languages by name, and the text of queries.
#pragma once

#include "VelmarParser/Query/ParseQueryCategory.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmar {

class ParseConfiguration;

/// Implemented by the application. Called on the thread that edits or reads a document, while a
/// lock of the configuration is held: an implementation must not come back to the document or to
/// the configuration's queries. It may be shared among documents on several threads and then has to
/// bear calls from all of them.
///
/// What an operation throws reaches the document's error handler and counts as absent.
class ParseConfigurationResolving {
public:
  virtual ~ParseConfigurationResolving() = default;

  /// The configuration of a language that an injection names, in whatever words the document or the
  /// query uses. `configuration` is that of the layer that asks. Absent for an unknown language:
  /// the injection is dropped.
  ///
  /// The answer for a name must stay the same while documents are open: a place is asked about
  /// again only when something around it changes, or after a failure.
  [[nodiscard]] virtual std::optional<ParseConfiguration>
  configurationMatching(std::string_view languageName, const ParseConfiguration& configuration) = 0;

  /// The source text of the query of that category, in UTF-8; absent if the language has none.
  [[nodiscard]] virtual std::optional<std::string>
  queryTextFor(ParseQueryCategory category, const ParseConfiguration& configuration) = 0;

  /// The source text of a query that other queries refer to by name; absent if there is none.
  [[nodiscard]] virtual std::optional<std::string>
  queryTextNamed(std::string_view name, const ParseConfiguration& configuration) = 0;
};

} // namespace velmar
