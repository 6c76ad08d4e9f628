// Edit sessions: whatever is typed, wherever, into documents with languages inside languages, the
// engine holds what the plain reference works out, after every edit. A fresh parse of the text at
// the end gives the same where the runtime's trees are the same.

#include "VelmarPlatform/Basics/Precondition.h"
#include "cmake/SourceTree.h"
#include "host/Languages.h"
#include "tests/Support/Oracle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <string_view>

namespace {

using namespace velmar;

ParseConfiguration language(std::uint8_t choice) {
  static constexpr std::array<const char*, 6> names{"html",       "markdown", "javascript",
                                                    "typescript", "cpp",      "css"};
  // Never destroyed: configurations refer to it.
  static auto& languages = *new host::Languages({.packs = FilePath(sourcePath("packs")),
                                                 .shipped = FilePath(sourcePath("packs")),
                                                 .note = ""});
  return *languages.configurationFor(LanguageID(names[choice % names.size()]));
}

/// What opens, closes or names another language, or is half a character.
constexpr std::array<std::u16string_view, 64> pieces{u"a",
                                                     u" ",
                                                     u"\n",
                                                     u"\r\n",
                                                     u"\r",
                                                     u"\"",
                                                     u"'",
                                                     u"`",
                                                     u"(",
                                                     u")",
                                                     u"{",
                                                     u"}",
                                                     u"[",
                                                     u"]",
                                                     u"<",
                                                     u">",
                                                     u"/",
                                                     u"=",
                                                     u";",
                                                     u"*",
                                                     u"_",
                                                     u"#",
                                                     u"1",
                                                     u"\\",
                                                     u"/*",
                                                     u"*/",
                                                     u"/** @x {y} */",
                                                     u"//",
                                                     u"`${",
                                                     u"}`",
                                                     u"/a[b]+/g",
                                                     u"html`<b>`",
                                                     u"css`a{b:c}`",
                                                     u"<script>",
                                                     u"</script>",
                                                     u"<style>",
                                                     u"</style>",
                                                     u"<p onclick=\"f()\">",
                                                     u"<p style=\"color: red\">",
                                                     u"</p>",
                                                     u"<!--",
                                                     u"-->",
                                                     u"let a = ",
                                                     u"if (a) return ",
                                                     u"function f(a) {",
                                                     u"p { color: red }",
                                                     u"```js\n",
                                                     u"```html\n",
                                                     u"```\n",
                                                     u"~~~css\n",
                                                     u"---\n",
                                                     u"- ",
                                                     u"> ",
                                                     u"# ",
                                                     u"**",
                                                     u"[x](y)",
                                                     u"|a|b|\n|-|-|\n",
                                                     u"#define A ",
                                                     u"R\"css(",
                                                     u")css\"",
                                                     u"\u00e9",
                                                     u"\U0001F600",
                                                     u"\xD83D",
                                                     u"\xDE00"};

/// Two bytes of place and one of length, then pieces up to one with the highest bit.
class Session {
public:
  explicit Session(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  [[nodiscard]] bool isOver() const { return at_ >= bytes_.size(); }
  std::uint8_t byte() { return isOver() ? 0 : bytes_[at_++]; }

  testing::RandomEdit next(std::int64_t count) {
    const std::int64_t place = byte() * 256 + byte();
    const std::int64_t removed = byte();
    testing::RandomEdit edit;
    edit.range.lowerBound = place % (count + 1);
    // Mostly a few units; rarely very many.
    const std::int64_t most = removed < 192 ? removed % 4 : (removed - 192) * 4;
    edit.range.upperBound = std::min(count, edit.range.lowerBound + most);
    while (!isOver()) {
      const std::uint8_t piece = byte();
      edit.text += pieces[piece % pieces.size()];
      if (piece >= 128)
        break;
    }
    return edit;
  }

private:
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Every state costs as much as its whole text.
  constexpr std::size_t longestSession = 400;
  if (size < 2)
    return 0;
  Session session(std::span(data, std::min(size, longestSession)));
  testing::CheckedParse document(language(session.byte()));
  try {
    while (!session.isOver()) {
      const auto edit = session.next(document.document().count());
      document.edit(edit.range, edit.text);
    }
    document.compareWithFreshParse();
  } catch (const std::exception& difference) {
    std::cerr << difference.what() << '\n';
    precondition(false, "The document isn't what the reference says.");
  }
  return 0;
}
