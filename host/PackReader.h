// Reads the query texts of the language packs, `<language>/<category>.scm` below one folder, and
// puts a text that inherits others together with these. packs/README.md tells the form. Nothing is
// compiled or kept here.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

/// A pack inherits what isn't there, or itself.
class PackError : public Error {
public:
  using Error::Error;
};

/// A query text, and the files that its parts came from.
struct PackText {
  /// From its start up to that of the next one, the text is one file's. A line feed is added to
  /// each.
  struct Piece {
    /// In bytes of `text`.
    std::int64_t start = 0;
    /// Below the packs' folder: "javascript/highlights.scm".
    std::string file;
    bool operator==(const Piece&) const = default;
  };
  /// For people: "javascript/highlights.scm", line 12.
  struct Place {
    std::string_view file;
    /// From 1.
    std::int64_t line = 1;
    bool operator==(const Place&) const = default;
  };

  std::string text;
  /// In the order of the text; not empty.
  std::vector<Piece> pieces;

  /// Where the byte at `offset` of `text` comes from; `offset` may be the text's end. The view
  /// lives as long as this.
  [[nodiscard]] Place placeOf(std::int64_t offset) const;
};

class PackReader {
public:
  /// `folder` holds a folder for each pack.
  explicit PackReader(FilePath folder) : folder_(std::move(folder)) {}

  /// What the pack of `language` says for a category such as "highlights", behind all that it
  /// inherits; absent if it has no such file. A language's name that leads out of the folder has
  /// none. Throws PackError. Reads files.
  [[nodiscard]] std::optional<PackText> textFor(std::string_view language,
                                                std::string_view category) const;
  /// The same for a text that other queries refer to by name: `named/NAME.scm` in the pack. What it
  /// inherits are named texts too.
  [[nodiscard]] std::optional<PackText> textNamed(std::string_view language,
                                                  std::string_view name) const;
  /// Whether there is a pack of that language, whatever is in it.
  [[nodiscard]] bool hasPack(std::string_view language) const;

private:
  struct Assembly;
  bool append(std::string_view pack, Assembly& assembly) const;

  FilePath folder_;
};

} // namespace velmar::host
