#include "bench/packs/Documents.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "host/Languages.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace velmar::bench {

namespace {

/// `pattern` with `number` for each "#".
void append(std::string& text, std::string_view pattern, std::int64_t number) {
  for (const char letter : pattern) {
    if (letter == '#')
      text += std::to_string(number);
    else
      text += letter;
  }
}

constexpr std::string_view typeScriptPiece = R"(/** Adds up what stands before item #.
 *  @param {number} limit - where to stop */
export class Item# extends Base implements Summed<number> {
  private static readonly LIMIT: number = #;
  constructor(readonly name: string, protected value = #) {
    super(name); // keeps the name
    this.total# = value > 0 ? value : -1;
    console.log(`made ${name.toUpperCase()} of ${this.value}`);
  }
  get words(): string[] { return this.name.split(/[\s,;]+/u).filter((word) => word.length > #); }
  async sum(items: Map<string, Item#>, limit = MAX_COUNT): Promise<number | undefined> {
    for (const [key, item] of items) {
      if (item.value > limit && key !== "item #") this.total# += item.value * #;
    }
    return this.total# > 0 ? this.total# : undefined;
  }
}

)";
constexpr std::int64_t typeScriptPieceLines = 17;

constexpr std::array<std::string_view, 3> javaScriptPieces = {
    R"(/** Shows item #. @param {string} name */
export async function show#(name, { count = #, ...rest } = {}) {
  const found = items.filter((item) => /^item-\d+$/gi.test(item.id) && item.count > count);
  if (!found.length || rest.hidden === true) throw new RangeError(`No ${name} in ${count}`);
  return found.map(({ id }) => ({ id, label: "item #" })); // to be shown
}
)",
    R"(class Shelf# extends Base {
  static count = #;
  items = new Map([["first", #], ["second", null]]);
  get size() { return this.items.size ?? #; }
  *[Symbol.iterator]() { for (const [key, value] of this.items) yield key + value; }
}
)",
    R"(var table# = {
  title: 'Table #', rows: [1, 2.5e3, 0xff, ...more], "last-row": undefined,
  sum: function (a, b) { try { return a + b * # } catch (error) { console.warn(error) } finally { done() } },
};
switch (table#.rows.length) { case 0: break; default: draw(table#, document.title); }
)"};

constexpr std::array<std::string_view, 3> cPlusPlusPieces = {
    R"(using item# = shop::item<#>;
namespace shop# {
/// Adds up all that is worth more than `least`.
template <class Item, std::size_t count = #>
[[nodiscard]] constexpr auto sum#(const std::array<Item, count>& items, int least = 0x#) -> long {
  long total = 0; // of all
  for (const auto& item : items)
    total += item.value > least ? static_cast<long>(item.value) * #L : 'x';
  return total;
}
} // namespace shop#
)",
    R"(class Shelf# final : public Base {
public:
  explicit Shelf#(std::string name) noexcept : name_(std::move(name)) {}
  bool isFull() const override { return items_.size() >= # && !name_.empty(); }
  void add(Item&& item) { items_.push_back(std::forward<Item>(item)); /* kept */ }

private:
  std::string name_ = "shelf #\n";
  std::vector<Item> items_;
};
)",
    R"(static int draw#(struct table* table, const char* title) {
  if (!table || table->rows[#] == NULL)
    return -1;
  while (table->count-- > 0 && printf("%s %d\n", title, table->count) > 0) {
    switch (table->kind) {
    case #: goto done;
    default: table->sum += (table->count << 2) | 0x1fu;
    }
  }
done:
  return table->sum;
}
)"};

constexpr std::array<std::string_view, 2> pythonPieces = {
    R"(@dataclass(frozen=True)
class Item#(Base):
    """What stands on a shelf: item #."""
    name: str = "item #"
    value: float = #.5

    @property
    def words(self) -> list[str]:
        return [word.strip() for word in re.split(r"[\s,]+", self.name) if len(word) > #]

    async def sum(self, items, *, limit=None, **rest):
        total = 0  # of all
        async for key, item in items:
            if item.value > (limit or #) and key != f"item {item.name!r}":
                total += item.value * #
        return total

)",
    R"(def show_#(table, title='Table #', *rows):
    try:
        with open(title, "rb") as file:
            table[#] = {key: value for key, value in zip(rows, file)}
    except (OSError, ValueError) as error:
        print("no %s: %d" % (title, #), error, file=sys.stderr)
        raise
    else:
        return lambda row: row if row is not None else [None, True, -#]

)"};

constexpr std::array<std::string_view, 5> fences = {
    "```js\nconst item# = items.filter((item) => item.size > #);\nshow(`item ${item#}`); // and "
    "on\n```\n\n",
    "```cpp\n/// Item #.\nint sum#(const std::vector<int>& items) { return items.size() + #; "
    "}\n```\n\n",
    "```css\n.item-# > a:hover { color: #336699; margin: 0 #px }\n```\n\n",
    "```html\n<p class=\"item\" id=\"item-#\" onclick=\"show(#)\">Item <b>#</b></p>\n```\n\n",
    "```json\n{\"id\": #, \"tags\": [\"a\", true, null], \"size\": 1.5e3}\n```\n\n"};

constexpr std::string_view paragraph =
    "## Item #\n\nSome *words* about `item#`, with a [link](#item-#) and **weight**,\nin two "
    "lines. "
    "After them comes a list:\n\n- one thing\n- and <em>another</em>\n\n";

constexpr std::string_view section = R"html(<section class="item" id="item-#">
  <h2 style="color: teal; margin: 0 #px">Item #</h2> <!-- number # -->
  <p>Some words with <b>weight</b> &amp; more, <a href="#item-#" onclick="show('#')">shown</a>.</p>
  <script>
    /** Shows item #. */
    function show#(name, count = #) {
      const found = items.filter((item) => /^item-\d+$/.test(item.id) && item.count > count);
      return `${name}: ${found.length}`; // to be shown
    }
  </script>
</section>
)html";

constexpr std::string_view cppPiece = R"(/// Adds up what stands before item #.
template <class T>
class Total# : public Base<T> {
public:
  explicit Total#(std::string name, T value = #) : name_(std::move(name)), value_(value) {}
  [[nodiscard]] const std::string& name() const noexcept { return name_; } // as given
  T sum(const std::vector<T>& items) const {
    T total{};
    for (const T& item : items)
      total += item > value_ ? item * # : value_;
    log("item #: %d", static_cast<int>(total));
    return total;
  }

private:
  std::string name_;
  T value_;
};

)";
constexpr std::int64_t cppPieceLines = 19;

constexpr std::string_view sentence =
    "Some *words* about `item#`, with a [link](#item-#) and **weight** # of them.\n";

/// The pieces in turn, each with a number of its own, until `isEnough(text)`.
template <class Pieces, class Enough>
std::u16string repeated(const Pieces& pieces, Enough isEnough) {
  std::string text;
  for (std::size_t index = 0; !isEnough(text); ++index)
    append(text, pieces[index % pieces.size()], static_cast<std::int64_t>(index % 997));
  return utf16RepairingUTF8(text);
}

/// At least `lines`.
template <class Pieces>
std::u16string repeatedLines(const Pieces& pieces, std::int64_t lines) {
  std::size_t looked = 0;
  return repeated(pieces, [&](const std::string& text) {
    lines -= std::count(text.begin() + static_cast<std::ptrdiff_t>(looked), text.end(), '\n');
    looked = text.size();
    return lines <= 0;
  });
}

} // namespace

std::u16string openQuote(std::int64_t lines) {
  std::string text = "#include <vector>\nconst char* const open = \"never closed;\n";
  for (std::int64_t line = 0; line < lines; line += cppPieceLines)
    append(text, cppPiece, line % 997);
  return utf16RepairingUTF8(text);
}

std::u16string commas(std::int64_t count) {
  return u"f(" + std::u16string(static_cast<std::size_t>(count), u',') + u");\nlet a = 1;\n";
}

std::u16string oneLine(std::int64_t units) {
  std::string text = "[";
  for (std::int64_t number = 0; std::cmp_less(text.size(), units); ++number)
    append(text, R"({"id": #, "tags": ["a#", true, null], "size": 1.5e3}, )", number);
  return utf16RepairingUTF8(text + "0]");
}

std::u16string javaScript(std::int64_t units) {
  return repeated(javaScriptPieces,
                  [&](const std::string& text) { return std::ssize(text) >= units; });
}

std::u16string cPlusPlus(std::int64_t lines) {
  return repeatedLines(cPlusPlusPieces, lines);
}

std::u16string python(std::int64_t lines) {
  return repeatedLines(pythonPieces, lines);
}

std::u16string typeScript(std::int64_t lines) {
  std::string text;
  for (std::int64_t line = 0; line < lines; line += typeScriptPieceLines)
    append(text, typeScriptPiece, line % 997);
  return utf16RepairingUTF8(text);
}

std::u16string markdown(std::int64_t count) {
  std::string text = "---\ntitle: Items\n---\n\n# Items\n\n";
  for (std::int64_t index = 0; index < count; ++index) {
    append(text, paragraph, index);
    append(text, fences[static_cast<std::size_t>(index) % fences.size()], index);
  }
  return utf16RepairingUTF8(text);
}

std::u16string shortMarkdown(std::int64_t count) {
  std::string text = "# Items\n\n";
  for (std::int64_t index = 0; index < count; ++index) {
    append(text, sentence, index);
    append(text, fences[static_cast<std::size_t>(index) % fences.size()], index);
  }
  return utf16RepairingUTF8(text);
}

std::u16string html(std::int64_t scripts) {
  std::string text = "<!DOCTYPE html>\n<html>\n<head>\n<style>\n  body > p { margin: 0 auto "
                     "}\n</style>\n</head>\n<body>\n";
  for (std::int64_t index = 0; index < scripts; ++index)
    append(text, section, index);
  return utf16RepairingUTF8(text + "</body>\n</html>\n");
}

ParseConfiguration packedLanguage(std::string_view id) {
  // Never destroyed: configurations refer to it.
  static auto& languages = *new host::Languages({.packs = FilePath(sourcePath("packs")),
                                                 .shipped = FilePath(sourcePath("packs")),
                                                 .note = ""});
  const auto configuration = languages.configurationFor(LanguageID{std::string(id)});
  if (!configuration)
    throw std::invalid_argument("There is no language \"" + std::string(id) + "\".");
  return *configuration;
}

} // namespace velmar::bench
