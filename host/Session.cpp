#include "host/Session.h"

#include "VelmarParser/Grammar/TreeUnits.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::string_view heading = "velmar session ";
constexpr std::string_view version = "1";

/// Reads one line from left to right.
class LineReader {
public:
  LineReader(std::string_view line, std::int64_t number) : rest_(line), number_(number) {}

  [[noreturn]] void fail(std::string_view why) const {
    throw SessionError(fmt::format("Line {} of the session: {}", number_, why));
  }

  /// Up to the next blank, which goes too.
  std::string_view word() {
    const std::size_t end = std::min(rest_.find(' '), rest_.size());
    const std::string_view word = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return word;
  }

  template <class Number>
  Number number(int base, std::string_view what) {
    const std::string_view digits = word();
    Number value{};
    const char* const end = digits.data() + digits.size();
    const auto [stop, failure] = std::from_chars(digits.data(), end, value, base);
    if (failure != std::errc() || stop != end || (base == 10 && digits.starts_with('-')))
      fail(fmt::format("“{}” isn’t {}.", digits, what));
    return value;
  }

  std::string_view rest() { return std::exchange(rest_, {}); }

  std::u16string quoted() {
    if (!rest_.starts_with('"'))
      fail("the text must stand in quotation marks.");
    rest_.remove_prefix(1);
    std::u16string units;
    while (!rest_.starts_with('"')) {
      if (rest_.empty())
        fail("a quotation mark is missing at the end.");
      if (rest_.front() == '\\')
        appendEscape(units);
      else
        appendPlain(units);
    }
    rest_.remove_prefix(1);
    return units;
  }

  void end() const {
    if (!rest_.empty())
      fail(fmt::format("“{}” is too much.", repairedUTF8(rest_)));
  }

private:
  void appendPlain(std::u16string& units) {
    const std::string_view plain = rest_.substr(0, rest_.find_first_of("\"\\"));
    units += *utf16FromUTF8(plain); // The whole session is valid.
    rest_.remove_prefix(plain.size());
  }

  void appendEscape(std::u16string& units) {
    const char letter = rest_.size() > 1 ? rest_[1] : ' ';
    rest_.remove_prefix(std::min<std::size_t>(2, rest_.size()));
    switch (letter) {
    case 'n':
      units += u'\n';
      return;
    case 'r':
      units += u'\r';
      return;
    case 't':
      units += u'\t';
      return;
    case '"':
    case '\\':
      units += static_cast<char16_t>(letter);
      return;
    case 'u':
      return appendScalar(units);
    default:
      fail(fmt::format("there is no “\\{}”.", repairedUTF8({&letter, 1})));
    }
  }

  /// "{202e}", which may name half of a pair.
  void appendScalar(std::u16string& units) {
    const std::size_t close = rest_.find('}');
    if (!rest_.starts_with('{') || close == std::string_view::npos)
      fail("“\\u” needs a number in braces.");
    const std::string_view digits = rest_.substr(1, close - 1);
    std::uint32_t scalar = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, failure] = std::from_chars(digits.data(), end, scalar, 16);
    if (failure != std::errc() || stop != end || scalar > 0x10FFFF)
      fail("“\\u” needs the number of a character in braces, in hexadecimal digits.");
    rest_.remove_prefix(close + 1);
    if (scalar <= 0xFFFF) {
      units += static_cast<char16_t>(scalar);
    } else {
      units += static_cast<char16_t>(0xD7C0 + (scalar >> 10));
      units += static_cast<char16_t>(0xDC00 + (scalar & 0x3FF));
    }
  }

  std::string_view rest_;
  std::int64_t number_;
};

void readHeading(LineReader line, std::string_view text) {
  if (!text.starts_with(heading))
    line.fail(fmt::format("it must start with “{}{}”.", heading, version));
  if (const std::string_view found = text.substr(heading.size()); found != version)
    line.fail(fmt::format("its version is {}, and only {} is known here.", found, version));
}

void readExpectation(LineReader& line, Session& session) {
  if (session.edits.empty())
    line.fail("there is no edit that this could be the digest of.");
  session.edits.back().expected = line.number<std::uint64_t>(16, "a digest");
}

/// `hasEnded` once the final digest has come.
void readLine(LineReader& line, std::int64_t number, Session& session) {
  if (session.expectedFinal)
    line.fail("nothing may follow the final digest.");
  const std::string_view kind = line.word();
  if (kind == "language") {
    session.language = line.rest();
  } else if (kind == "file") {
    session.file = line.rest();
  } else if (kind == "text") {
    if (!session.edits.empty())
      line.fail("a text can’t follow an edit.");
    session.initial += line.quoted();
  } else if (kind == "edit") {
    const auto start = line.number<std::int64_t>(10, "an offset");
    const auto removed = line.number<std::int64_t>(10, "a length");
    if (start > largestParsableCount || removed > largestParsableCount)
      line.fail("no text is as long as that.");
    session.edits.push_back(
        {.range = {start, start + removed}, .text = line.quoted(), .line = number});
  } else if (kind == "expect") {
    readExpectation(line, session);
  } else if (kind == "final") {
    session.expectedFinal = line.number<std::uint64_t>(16, "a digest");
  } else {
    line.fail(fmt::format("“{}” is none of language, file, text, edit, expect and final.", kind));
  }
  line.end();
}

/// Calls `body` with each line and its number from 1.
template <class Body>
void forEachLine(std::string_view text, Body body) {
  std::int64_t number = 1;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r'))
      line.remove_suffix(1);
    body(line, number);
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
  }
}

/// Whether a unit can't stand for itself in a file that people read and tools compare.
bool needsEscape(char16_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x200B && unit <= 0x200F) ||
         (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2060 && unit <= 0x206F) || unit == 0xFEFF;
}

std::string quotedText(std::u16string_view units) {
  std::string text = "\"";
  for (std::size_t at = 0; at < units.size();) {
    const DecodedScalar scalar = decodeUTF16(units, at);
    const char16_t unit = units[at];
    at += scalar.length;
    if (unit == u'\n')
      text += "\\n";
    else if (unit == u'\r')
      text += "\\r";
    else if (unit == u'\t')
      text += "\\t";
    else if (unit == u'"' || unit == u'\\')
      text += {'\\', static_cast<char>(unit)};
    else if (!scalar.valid || needsEscape(unit))
      text += fmt::format("\\u{{{:x}}}", static_cast<std::uint32_t>(unit));
    else
      appendUTF8(text, scalar.scalar);
  }
  return text + '"';
}

std::string expectationLine(std::uint64_t digest) {
  return fmt::format("expect {:016x}\n", digest);
}

} // namespace

Session readSession(std::string_view text) {
  if (!isValidUTF8(text))
    throw SessionError("The session isn’t valid UTF-8.");
  Session session;
  forEachLine(text, [&](std::string_view content, std::int64_t number) {
    LineReader line(content, number);
    if (number == 1)
      readHeading(line, content);
    else if (!content.empty() && !content.starts_with('#'))
      readLine(line, number, session);
  });
  if (text.empty())
    readHeading(LineReader("", 1), "");
  if (session.language.empty())
    throw SessionError("The session names no language.");
  if (session.file && !session.initial.empty())
    throw SessionError("The session starts both with a file and with a text.");
  return session;
}

std::string writtenSession(const Session& session) {
  std::string text = fmt::format("{}{}\nlanguage {}\n", heading, version, session.language);
  if (session.file)
    text += fmt::format("file {}\n", *session.file);
  std::u16string_view rest = session.initial;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(u'\n'), rest.size() - 1) + 1;
    text += fmt::format("text {}\n", quotedText(rest.substr(0, end)));
    rest.remove_prefix(end);
  }
  for (const SessionEdit& edit : session.edits) {
    text += fmt::format("edit {} {} {}\n", edit.range.lowerBound, edit.range.length(),
                        quotedText(edit.text));
    if (edit.expected)
      text += expectationLine(*edit.expected);
  }
  if (session.expectedFinal)
    text += fmt::format("final {:016x}\n", *session.expectedFinal);
  return text;
}

std::string withExpectations(std::string_view text, const Session& session,
                             std::span<const std::uint64_t> digests, std::uint64_t final,
                             std::int64_t every) {
  std::string made;
  std::int64_t edit = 0;
  forEachLine(text, [&](std::string_view line, std::int64_t number) {
    if (line.starts_with("expect ") || line.starts_with("final "))
      return;
    made += line;
    made += '\n';
    if (edit == std::ssize(session.edits) ||
        session.edits[static_cast<std::size_t>(edit)].line != number)
      return;
    if (edit % every == every - 1)
      made += expectationLine(digests[static_cast<std::size_t>(edit)]);
    ++edit;
  });
  return made + fmt::format("final {:016x}\n", final);
}

void checkEdits(const Session& session, std::int64_t initialCount) {
  std::int64_t count = initialCount;
  for (const SessionEdit& edit : session.edits) {
    const auto fail = [&](std::string_view why) {
      throw SessionError(fmt::format("Line {} of the session: {}", edit.line, why));
    };
    if (edit.range.upperBound > count)
      fail(fmt::format("the edit ends at {}, but the text has {} units then.",
                       edit.range.upperBound, count));
    count += std::ssize(edit.text) - edit.range.length();
    if (count > largestParsableCount)
      fail("the edit makes the text too long.");
  }
}

} // namespace velmar::host
