// Reads what the comments of a layer are good for beside being read: folds, and bookmarks.
//
//     // A run of line comments folds behind its first line.
//     // A blank line or code between two ends it.
//
//     // ! Parsing           a bookmark named "Parsing"
//     // ! - Helpers         a separator named "Helpers"
//
// The language says how comments look and, beyond the "!", which words make a bookmark.
#pragma once

#include "VelmarCode/Syntax/CodeSymbol.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Structure/CancellationTicks.h"
#include "VelmarParser/Structure/DisposedVector.h"
#include "VelmarParser/Structure/ScopingRegions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

/// Goes through the comments of one layer, once, by its lexical spans. One thread; the layer's
/// document and `pass` must outlive it.
class CommentReader {
public:
  CommentReader(const Parse::Layer& layer, RegularExpressionPass& pass, CancellationTicks& ticks);

  /// Throws CancellationError.
  void read();

  [[nodiscard]] DisposedVector<CodeSymbol> takeBookmarks() { return std::move(bookmarks_); }
  /// Each with the role of a comment; in no order.
  [[nodiscard]] DisposedVector<ScopingRegion> takeFolds() { return std::move(folds_); }

private:
  /// A run of lines that hold nothing but a line comment each, except for the first.
  struct Group {
    std::int64_t start; // behind the mark of its first comment
    std::int64_t end;   // of its last
  };
  struct Comment;

  void readFold(const Comment& comment);
  void addToGroup(const Comment& comment, std::int64_t markEnd);
  void closeGroup();
  void addFold(std::int64_t lower, std::int64_t upper);
  void readBookmark(const Comment& comment);
  [[nodiscard]] std::u16string_view contentOf(const Comment& comment) const;
  [[nodiscard]] std::optional<std::u16string_view> markedIn(std::u16string_view content);
  void addBookmark(const Comment& comment, std::u16string_view content);

  const Parse::Layer& layer_;
  const DocumentText& text_;
  RegularExpressionPass& pass_;
  CancellationTicks& ticks_;
  std::optional<std::u16string> single_;
  std::optional<std::u16string> prefix_; // of comments of several lines, and their suffix
  std::u16string suffix_;
  TextRangeSet sublayerRanges_;
  std::optional<Group> group_;
  DisposedVector<CodeSymbol> bookmarks_;
  DisposedVector<ScopingRegion> folds_;
};

} // namespace velmar
