// Edits of a document as a plain-text file, so that a fault in the engine can be handed on, read
// and played again.
//
//     velmar session 1
//     # What led to it, for people.
//     language html
//     text "<p>Hello\n"
//     text "</p>"
//     edit 3 5 "Good morning"
//     expect 0123456789abcdef
//     final fedcba9876543210
//
// The texts together are what the document starts with; "file page.html" takes it from a file
// beside the session instead. An edit says where, how many code units go, and what comes in their
// place. What is expected are digests: after an edit that of the document, at the end that of all
// of them. In quotation marks "\n", "\r", "\t", "\"", "\\" and "\u{202e}" stand for what can't
// stand for itself, halves of surrogate pairs among them. Empty lines and those that start with "#"
// say nothing.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Range.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

/// The text isn't a session. The sentence names the line.
class SessionError : public Error {
public:
  using Error::Error;
};

struct SessionEdit {
  TextRange range;
  std::u16string text;
  /// What the document's digest should be afterwards.
  std::optional<std::uint64_t> expected = std::nullopt;
  /// Of the session's text, from 1; 0 for an edit that wasn't read.
  std::int64_t line = 0;
  bool operator==(const SessionEdit&) const = default;
};

struct Session {
  std::string language;
  std::u16string initial;
  /// Relative to the session's folder; then `initial` is empty.
  std::optional<std::string> file = std::nullopt;
  std::vector<SessionEdit> edits;
  std::optional<std::uint64_t> expectedFinal = std::nullopt;
  bool operator==(const Session&) const = default;
};

/// Throws SessionError. Whether the edits fit the text isn't looked at.
[[nodiscard]] Session readSession(std::string_view text);

[[nodiscard]] std::string writtenSession(const Session& session);

/// `text`, the session that was read from it, with `digests`, one for each edit, as what to expect
/// after every `every`th edit, and `final` at the end. All else stays as it is.
[[nodiscard]] std::string withExpectations(std::string_view text, const Session& session,
                                           std::span<const std::uint64_t> digests,
                                           std::uint64_t final, std::int64_t every);

/// Stops at the first edit that reaches out of the text, or makes it too long to be parsed, and
/// throws SessionError for it. `initialCount` counts the code units at the start.
void checkEdits(const Session& session, std::int64_t initialCount);

} // namespace velmar::host
