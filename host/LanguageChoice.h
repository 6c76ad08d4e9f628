// Which language a file is to be taken as.
#pragma once

#include "host/LanguageTable.h"
#include "host/SourceText.h"

#include <memory>
#include <optional>
#include <string_view>

namespace velmar::host {

/// The language of that name or alias. Throws UsageError, with a suggestion, if there is none.
[[nodiscard]] const Language& languageWanted(std::string_view name);

/// The language that the user names, or that the file's name or first line speaks for; a ".h" is C
/// unless its text can only be C++. Throws UsageError for a name that there isn't, and Error where
/// nothing speaks for any.
[[nodiscard]] const Language& languageFor(const SourceText& source,
                                          std::optional<std::string_view> wanted);

/// Throws Error for a language without a grammar, or one that this build lacks.
[[nodiscard]] std::shared_ptr<const Grammar> grammarOf(const Language& language);

} // namespace velmar::host
