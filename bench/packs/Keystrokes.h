// Keystrokes all over a document, and the least that they cost: what the bare runtime has to do for
// the layers that they change.
//
// Which layers a keystroke changes is seen by playing it once in a document and looking at its
// layers. The bare runtime then edits, parses and compares the trees of these and no others, from a
// text that nothing has to keep as lines. A layer that is made by a keystroke is parsed anew.
#pragma once

#include "VelmarParser/Document/Parse.h"

#include <tree_sitter/api.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velmar::bench {

/// Typed and then taken back.
struct Keystroke {
  std::int64_t place = 0;
  std::u16string_view text;
};

enum class Keys {
  plain,      ///< Letters, digits, blanks and points, as most are.
  unbalancing ///< Quotes, braces and starts of comments that nothing closes.
};

/// At random places of a text of that length. The same ones each time.
[[nodiscard]] std::vector<Keystroke> keystrokesIn(std::int64_t length, std::size_t count,
                                                  Keys keys);

/// How many lines are painted after a keystroke where that is asked for.
inline constexpr std::int64_t paintedLines = 60;

/// The 60 lines around a place.
[[nodiscard]] TextRange linesAround(const DocumentText& text, std::int64_t place);

class BareKeystrokes {
public:
  /// Plays `keystrokes` in `document`, which afterwards has the text that it had before. Throws
  /// std::runtime_error if its layers then aren't those that it had, for all must be able to begin
  /// anew.
  BareKeystrokes(Parse& document, std::span<const Keystroke> keystrokes);

  enum class Repaint { no, yes };

  /// Types all keystrokes and takes them back, and may then run the highlights queries over the
  /// lines around each. Calls `after(index)` after each of these edits, from 0. The document isn't
  /// used.
  template <class After>
  void play(Repaint repaint, After after) {
    for (std::size_t index = 0; index < edits_.size(); ++index) {
      playEdit(index);
      if (repaint == Repaint::yes)
        paint(edits_[index]);
      after(index);
    }
    beginAnew();
  }

private:
  struct TreeDeleter {
    void operator()(TSTree* tree) const noexcept { ts_tree_delete(tree); }
  };
  struct ParserDeleter {
    void operator()(TSParser* parser) const noexcept { ts_parser_delete(parser); }
  };
  struct CursorDeleter {
    void operator()(TSQueryCursor* cursor) const noexcept { ts_query_cursor_delete(cursor); }
  };
  using Tree = std::unique_ptr<TSTree, TreeDeleter>;

  struct LayerParse {
    std::size_t slot = 0; // a layer's tree
    const TSLanguage* language = nullptr;
    bool isNew = false;
    std::vector<TSRange> ranges;
  };
  struct LayerQuery {
    std::size_t slot = 0;
    std::shared_ptr<const Query> query;
  };
  struct Edit {
    TSInputEdit edit{};
    std::u16string_view typed; // empty where it is taken back
    std::vector<LayerParse> parses;
    std::vector<LayerQuery> queries;
    TextRange painted;
  };
  /// A layer's tree, and how many of the edits it has seen.
  struct Slot {
    Tree tree;
    std::size_t editsSeen = 0;
  };
  class Recorder;

  TSParser& parserFor(const TSLanguage* language);
  Tree parse(const LayerParse& layer, const TSTree* old, const Edit& edit);
  void playEdit(std::size_t index);
  void catchUp(Slot& slot, std::size_t index);
  void paint(const Edit& edit);
  void beginAnew();

  std::u16string text_; // without any keystroke
  std::vector<Edit> edits_;
  std::vector<Slot> slots_;
  std::vector<std::size_t> finalSlots_; // of the layers in their order, after all edits
  std::unordered_map<const TSLanguage*, std::unique_ptr<TSParser, ParserDeleter>> parsers_;
  std::unique_ptr<TSQueryCursor, CursorDeleter> cursor_;
};

} // namespace velmar::bench
